// orvane-plist apply: `defaults write` lines land in the user's domains as a
// drop on the browser puts them there, and what each line did is reported.
#include "Corpus.h"
#include "DomainSandbox.h"
#include "InProcessTool.h"
#include "TestRegistry.h"
#include "TreePicture.h"

#include "import/DefaultsTextParser.h"
#include "model/PListNode.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// What a later read finds holds what the line wrote: the same value, or for
// a dictionary merged into one already there, at least its entries.
bool holds(const PropertyList &found, const PropertyList &written)
{
    if (!found.isDictionary() || !written.isDictionary())
        return found == written;
    const PropertyDictionary &have = found.dictionaryRef();
    const PropertyDictionary &want = written.dictionaryRef();
    for (qsizetype i = 0; i < want.size(); ++i) {
        const PropertyList *value = have.find(want.keyAt(i));
        if (!value || !holds(*value, want.valueAt(i)))
            return false;
    }
    return true;
}

} // namespace

class PlistToolApplyTest : public QObject {
    Q_OBJECT
private slots:
    void lines_data();
    void lines();
    void corpusLines();
};

void PlistToolApplyTest::lines_data()
{
    QTest::addColumn<QByteArray>("existing"); // com.example.app before, old-style text; empty: no file
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("dryRun");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("file");    // the domain file to look at afterwards
    QTest::addColumn<QString>("picture"); // its content then; empty: it does not exist

    const QString app = u"com.example.app.plist"_s;
    QTest::newRow("each outcome, and the refusals")
        << QByteArray("{a = 1; d = {x = 1;};}")
        << QByteArray(
               "defaults write com.example.app a -string 2\n# a comment\n"
               "defaults write com.example.app b -string hi\ndefaults write com.example.app d -dict y 2\n"
               "defaults write com.example.app b -string hi\ndefaults write NSRegistrationDomain k -bool "
               "yes\n"
               "defaults write -g k -bool yes\necho hello\n")
        << false
        << u"1: com.example.app a: replaced\n3: com.example.app b: added\n4: com.example.app d: merged\n"
           "5: com.example.app b: unchanged\n6: refused: The registration domain is kept in memory only.\n"
           "7: -g k: added\n"
           "8: refused: not a 'defaults write' command\n"_s
        << app << u"{a = 2; b = hi; d = {x = 1; y = 2;};}"_s;
    QTest::newRow("-n writes nothing, not even a new domain")
        << QByteArray() << QByteArray("defaults write com.example.app a -int 2\n") << true
        << u"1: com.example.app a: added\n"_s << app << QString();
    QTest::newRow("-n leaves an existing domain as it was")
        << QByteArray("{a = 1;}") << QByteArray("defaults write com.example.app a -string 3\n") << true
        << u"1: com.example.app a: replaced\n"_s << app << u"{a = 1;}"_s;
    QTest::newRow("the global domain made in its own file")
        << QByteArray() << QByteArray("defaults write NSGlobalDomain k -bool true\n") << false
        << u"1: NSGlobalDomain k: added\n"_s << u".GlobalPreferences.plist"_s << u"{k = true;}"_s;
}

void PlistToolApplyTest::lines()
{
    QFETCH(QByteArray, existing);
    QFETCH(QByteArray, input);
    QFETCH(bool, dryRun);
    QFETCH(QString, file);
    QFETCH(QString, picture);
    DomainSandbox sandbox;
    if (!existing.isEmpty()) {
        sandbox.writeDictionary(sandbox.userFolder() + u"/com.example.app.plist"_s,
                                PropertyListSerialization::read(existing).value.value.toDictionary());
    }
    QStringList arguments{u"apply"_s, sandbox.write(u"input.txt"_s, input)};
    if (dryRun)
        arguments << u"-n"_s;

    const ToolRun run = runToolInProcess(arguments);
    QTEST(run.out, "output");
    QCOMPARE(run.status, run.out.contains(u"refused"_s) ? 1 : 0);
    const QString path = sandbox.userFolder() + u'/' + file;
    QCOMPARE(QFile::exists(path), !picture.isEmpty());
    if (picture.isEmpty())
        return;
    const auto read = PropertyListSerialization::readFile(path);
    QVERIFY(read);
    const PListNodePtr tree = PListNode::treeFromDictionary(read.value.value.toDictionary());
    tree->recursiveSortChildren();
    QCOMPARE(TreePicture::of(*tree), picture);
    if (existing.isEmpty())
        QCOMPARE(QFile::permissions(path) & QFileDevice::Permissions(0x0077), QFileDevice::Permissions());
}

void PlistToolApplyTest::corpusLines()
{
    ORVANE_REQUIRE_CORPUS();
    DomainSandbox sandbox;
    const QString commands = Corpus::root() + u"/defaults/commands.txt"_s;
    const ToolRun run = runToolInProcess({u"apply"_s, commands});
    QVERIFY2(run.err.isEmpty(), qPrintable(run.err));

    // The last line that set each key decides what the domain holds now.
    const QStringList lines = QString::fromUtf8(Corpus::readAll(commands)).split(u'\n');
    QHash<QString, std::pair<QString, PropertyList>> last; // "domain\nkey" → line record, value
    int applied = 0;
    for (const QString &record : run.out.split(u'\n', Qt::SkipEmptyParts)) {
        const int number = record.section(u':', 0, 0).toInt();
        QVERIFY2(number > 0 && number <= lines.size(), qPrintable(record));
        if (record.contains(u": refused: "_s)) {
            QVERIFY2(!record.section(u"refused: "_s, 1).trimmed().isEmpty(), qPrintable(record));
            continue;
        }
        const auto entry = DefaultsTextParser::dictionaryFromDefaultsString(lines.at(number - 1));
        QVERIFY2(entry && entry.value, qPrintable(record));
        // The options naming the global domain write its one file.
        const QString domain = QStringList{u"-g"_s, u"-globalDomain"_s, u"kCFPreferencesAnyApplication"_s}.contains(
                                   entry.value->domain)
                                   ? u"NSGlobalDomain"_s
                                   : entry.value->domain;
        last.insert(domain + u'\n' + entry.value->dictionary.keyAt(0),
                    {record, entry.value->dictionary.valueAt(0)});
        ++applied;
    }
    QVERIFY(applied > lines.size() / 2);

    PreferencesService service;
    for (auto it = last.cbegin(); it != last.cend(); ++it) {
        const QString domain = it.key().section(u'\n', 0, 0);
        const QString key = it.key().section(u'\n', 1);
        const auto found = service.copyValue(key, domain, PreferencesUser::Current, PreferencesHost::Any);
        QVERIFY2(found && holds(*found, it.value().second), qPrintable(it.value().first));
    }
}

ORVANE_TEST(PlistToolApplyTest)
#include "PlistToolApplyTest.moc"
