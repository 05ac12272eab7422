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

} // namespace Corpus
