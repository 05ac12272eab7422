#include "Corpus.h"

#include <QFile>

namespace Corpus {

QString root()
{
    const QString fromEnvironment = qEnvironmentVariable("ORVANE_CORPUS");
    if (!fromEnvironment.isEmpty())
        return QDir(fromEnvironment).exists() ? fromEnvironment : QString();
    const QDir beside(QStringLiteral(ORVANE_SOURCE_DIR "/../shared/corpus"));
    return beside.exists() ? beside.absolutePath() : QString();
}

QStringList files(const QString &subFolder)
{
    const QDir folder(root() + QLatin1Char('/') + subFolder);
    QStringList paths;
    const auto entries = folder.entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo &info : entries)
        paths << info.absoluteFilePath();
    return paths;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

QString testDataPath(const QString &name)
{
    return QStringLiteral(ORVANE_SOURCE_DIR "/tests/data/") + name;
}

QHash<QString, QString> malformedExpectations()
{
    QHash<QString, QString> expected;
    const QList<QByteArray> lines = readAll(root() + QStringLiteral("/malformed-expectations.tsv")).split('\n');
    for (const QByteArray &line : lines.mid(1)) { // the first line names the columns
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() >= 2)
            expected.insert(QString::fromUtf8(fields.at(0)), QString::fromUtf8(fields.at(1)));
    }
    return expected;
}

} // namespace Corpus
