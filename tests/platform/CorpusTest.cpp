// Real files nobody here wrote: malformed ones must give their expected outcome
// through the same detection path the application uses, and every binary and
// XML file must read as Python's plistlib reads it, both from the original and
// from what our writers make of it.
#include "Corpus.h"
#include "TestRegistry.h"

#include "platform/PropertyListSerialization.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <cstring>

namespace {

QJsonValue canonical(const PropertyList &value)
{
    auto tagged = [](const char *tag, const QJsonValue &inner) { return QJsonObject{{QLatin1String(tag), inner}}; };
    switch (value.type()) {
    case PropertyList::Type::String:
        return tagged("string", value.toString());
    case PropertyList::Type::Data:
        return tagged("data", QString::fromLatin1(value.toData().toHex()));
    case PropertyList::Type::Boolean:
        return tagged("bool", value.toBool());
    case PropertyList::Type::Integer:
        return tagged("int", QString::number(value.toUnsignedInteger()));
    case PropertyList::Type::Real: {
        const double real = value.toReal();
        quint64 bits = 0;
        std::memcpy(&bits, &real, sizeof bits);
        return tagged("real", std::isnan(real) ? QStringLiteral("nan")
                                               : QStringLiteral("%1").arg(bits, 16, 16, QLatin1Char('0')));
    }
    case PropertyList::Type::Date:
        return tagged("date", static_cast<double>(std::llround(value.toDate() * 1000)));
    case PropertyList::Type::Uid:
        return tagged("uid", static_cast<double>(value.toUid()));
    case PropertyList::Type::Array: {
        QJsonArray items;
        for (const PropertyList &item : value.arrayRef().items())
            items.append(canonical(item));
        return tagged("array", items);
    }
    case PropertyList::Type::Dictionary: {
        QJsonObject entries;
        const PropertyDictionary &dictionary = value.dictionaryRef();
        for (qsizetype i = 0; i < dictionary.size(); ++i)
            entries.insert(dictionary.keyAt(i), canonical(dictionary.valueAt(i)));
        return tagged("dict", entries);
    }
    }
    return {};
}

bool hasXmlForbiddenCharacter(const PropertyList &value)
{
    auto forbidden = [](const QString &text) {
        return std::any_of(text.cbegin(), text.cend(), [](QChar c) {
            return c.unicode() < 0x20 && c != QLatin1Char('\t') && c != QLatin1Char('\n') && c != QLatin1Char('\r');
        });
    };
    switch (value.type()) {
    case PropertyList::Type::String:
        return forbidden(value.toString());
    case PropertyList::Type::Array:
        return std::any_of(value.arrayRef().items().cbegin(), value.arrayRef().items().cend(), hasXmlForbiddenCharacter);
    case PropertyList::Type::Dictionary: {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        for (qsizetype i = 0; i < dictionary.size(); ++i) {
            if (forbidden(dictionary.keyAt(i)) || hasXmlForbiddenCharacter(dictionary.valueAt(i)))
                return true;
        }
        return false;
    }
    default:
        return false;
    }
}

} // namespace

class CorpusTest : public QObject {
    Q_OBJECT
private slots:
    void malformed_data();
    void malformed();
    void plistlibAgrees_data();
    void plistlibAgrees();

private:
    void runPlistlib();

    QTemporaryDir m_written;
    QJsonObject m_python;
    bool m_pythonRan = false;
};

void CorpusTest::malformed_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    if (Corpus::root().isEmpty())
        return;
    const QHash<QString, QString> expectations = Corpus::malformedExpectations();
    for (const QString &path : Corpus::files(QStringLiteral("plists/malformed"))) {
        const QString name = QFileInfo(path).fileName();
        QTest::newRow(qPrintable(name)) << path << expectations.value(name, QStringLiteral("missing from the table"));
    }
}

void CorpusTest::malformed()
{
    ORVANE_REQUIRE_CORPUS();
    QFETCH(QString, path);
    QFETCH(QString, expected);
    const auto result = PropertyListSerialization::readFile(path);
    if (expected.startsWith(QLatin1String("reject")) && expected != QLatin1String("reject-or-unwrap")) {
        QVERIFY2(!result.ok(), "accepted a file that must be refused");
    } else if (expected == QLatin1String("reject-or-unwrap")) {
        QVERIFY2(!result.ok(), "a signed profile is not a property list as it stands");
    } else if (expected.startsWith(QLatin1String("accept(")) || expected == QLatin1String("accept")) {
        QVERIFY2(result.ok(), qPrintable(result.errorText()));
    } else {
        QVERIFY2(expected.startsWith(QLatin1String("accept-or-reject")), qPrintable(expected));
    }
    if (!result.ok()) {
        QVERIFY2(!result.message.isEmpty(), "a refusal must say why");
        QVERIFY2(result.position.isKnown() || result.status == ReadStatus::Empty, qPrintable(result.errorText()));
    }
}

void CorpusTest::runPlistlib()
{
    m_pythonRan = true;
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty() || Corpus::root().isEmpty())
        return;
    QStringList files = Corpus::files(QStringLiteral("plists/binary")) + Corpus::files(QStringLiteral("plists/xml"));
    QStringList arguments{Corpus::testDataPath(QStringLiteral("plistlib_canonical.py"))};
    for (const QString &path : files) {
        arguments << path;
        const auto read = PropertyListSerialization::readFile(path);
        if (!read)
            continue;
        const QString base = m_written.filePath(QFileInfo(path).fileName());
        for (auto format : {PropertyListFormat::Xml, PropertyListFormat::Binary}) {
            QFile out(base + (format == PropertyListFormat::Xml ? QStringLiteral(".xml") : QStringLiteral(".bin")));
            if (out.open(QIODevice::WriteOnly) && out.write(PropertyListSerialization::write(read.value.value, format)) >= 0)
                arguments << out.fileName();
        }
    }
    QProcess process;
    process.start(python, arguments);
    process.waitForFinished(300000);
    m_python = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
}

void CorpusTest::plistlibAgrees_data()
{
    QTest::addColumn<QString>("path");
    if (Corpus::root().isEmpty())
        return;
    for (const QString &path : Corpus::files(QStringLiteral("plists/binary")) + Corpus::files(QStringLiteral("plists/xml")))
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
}

void CorpusTest::plistlibAgrees()
{
    ORVANE_REQUIRE_CORPUS();
    if (QStandardPaths::findExecutable(QStringLiteral("python3")).isEmpty())
        QSKIP("python3 not found: the cross-check against plistlib needs it");
    if (!m_pythonRan)
        runPlistlib();
    QFETCH(QString, path);
    const auto read = PropertyListSerialization::readFile(path);
    QVERIFY2(read.ok(), qPrintable(read.errorText()));
    const QJsonValue ours = canonical(read.value.value);
    QVERIFY2(m_python.contains(path), "plistlib gave no answer");
    QCOMPARE(m_python.value(path), ours);

    // plistlib reads back what our writers wrote for this file. XML keeps dates
    // to the whole second, so that side is compared with what XML can carry.
    const QString base = m_written.filePath(QFileInfo(path).fileName());
    QCOMPARE(m_python.value(base + QStringLiteral(".bin")), ours);
    const auto throughXml = PropertyListSerialization::read(
        PropertyListSerialization::write(read.value.value, PropertyListFormat::Xml));
    QVERIFY(throughXml.ok());
    const QJsonValue pythonXml = m_python.value(base + QStringLiteral(".xml"));
    if (pythonXml.toObject().contains(QStringLiteral("error")) && hasXmlForbiddenCharacter(read.value.value)) {
        // The platform writes control characters into XML as they are; expat refuses such files.
        qInfo("plistlib refuses our XML for %s: it holds a control character", qPrintable(path));
        return;
    }
    QCOMPARE(pythonXml, canonical(throughXml.value.value));
}

ORVANE_TEST(CorpusTest)
#include "CorpusTest.moc"
