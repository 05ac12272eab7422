// The `defaults write` text of an entry: quoting, the flag of every value kind,
// the refusal for nested containers, the domain taken from the path, real files.
#include "Corpus.h"
#include "TestRegistry.h"

#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

QString t(const char *utf8) { return QString::fromUtf8(utf8); }

QString refusal(const char *key)
{
    return t("Sorry, defaults can't handle the nested dictionaries / arrays found in the key \"%1\"").arg(t(key));
}

bool touch(const QString &path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}

} // namespace

class PListNodeDefaultsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void command_data();
    void command();
    void domain_data();
    void domain();
    void corpusEntries_data();
    void corpusEntries();

private:
    QString answer(const QString &key, const PropertyList &value, const QString &path, bool fullPath = false);

    QTemporaryDir m_root; // holds the home folder and a sibling outside it
    QByteArray m_savedHome;
    QString m_appFile;
};

// QDir::homePath() reads HOME, so a temporary home makes the tilde and the
// global domain testable without touching the real one.
void PListNodeDefaultsTest::initTestCase()
{
    QVERIFY(m_root.isValid());
    m_savedHome = qgetenv("HOME");
    qputenv("HOME", QFile::encodeName(m_root.filePath(QStringLiteral("home"))));
    m_appFile = m_root.filePath(QStringLiteral("home/Library/Preferences/com.example.app.plist"));
    const QStringList files{
        QStringLiteral("home/Library/Preferences/.GlobalPreferences.plist"),
        QStringLiteral("home/Library/Preferences/com.example.app.plist"),
        QStringLiteral("home/Library/Preferences/ByHost/.GlobalPreferences.0123456789ab.plist"),
        QStringLiteral("home/My Prefs.plist"),
        QStringLiteral("home/say\"hi.plist"),
        QStringLiteral("home/backup.plist.bak"),
        QStringLiteral("home/.hidden"),
        QStringLiteral("homework.plist"),
    };
    for (const QString &file : files)
        QVERIFY2(touch(m_root.filePath(file)), qPrintable(file));
}

void PListNodeDefaultsTest::cleanupTestCase() { qputenv("HOME", m_savedHome); }

QString PListNodeDefaultsTest::answer(const QString &key, const PropertyList &value, const QString &path, bool fullPath)
{
    const PListNodePtr root = PListNode::treeFromDictionary(PropertyDictionary{{key, value}});
    return root->firstChild()->returnStringWithPath(path, fullPath).first;
}

// A one-element array of an array is spelled PropertyArray{PropertyList(…)}:
// with braces alone, compilers disagree on whether it is a copy.
void PListNodeDefaultsTest::command_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<QString>("expected"); // after "defaults write com.example.app "

    const auto row = [](const char *name, const char *key, const PropertyList &value, const char *expected) {
        QTest::newRow(name) << t(key) << value << t(expected);
    };
    row("plain string stays bare", "Greeting", t("Hello"), "Greeting -string Hello");
    row("blank in a string quotes it", "Greeting", t("Hello world"), R"(Greeting -string "Hello world")");
    row("double quotes get backslashes", "Greeting", t(R"(say "hi")"), R"(Greeting -string "say \"hi\"")");
    row("backslash quotes but is not escaped", "Greeting", t(R"(a\b)"), R"(Greeting -string "a\b")");
    row("apostrophe quotes", "Greeting", t("it's"), R"(Greeting -string "it's")");
    row("non-ASCII quotes", "Greeting", t("Grüße"), R"(Greeting -string "Grüße")");
    row("all plain punctuation stays bare", "Greeting", t("a.b+c-d_e/f,g@h:i=j$k%l^m[n]o{p}"),
        "Greeting -string a.b+c-d_e/f,g@h:i=j$k%l^m[n]o{p}");
    row("empty string leaves the flag's blank", "Greeting", t(""), "Greeting -string ");
    row("blank in a key quotes it", "My Key", t("x"), R"("My Key" -string x)");
    row("double quote in a key", "a\"b", t("x"), R"("a\"b" -string x)");
    row("percent in a key is not a placeholder", "%1%@", t("%2"), "%1%@ -string %2");
    row("data has no blanks", "Token", PropertyList(QByteArray("\x00\x01\x02\x03\x04\xff", 6)), "Token -data 0001020304ff");
    row("long is an int as a whole entry", "Count", PropertyList::integer(7, 'l'), "Count -int 7");
    row("unsigned long long keeps every digit", "Count", PropertyList::unsignedInteger(18446744073709551615ULL, 'Q'),
        "Count -int 18446744073709551615");
    row("double", "Scale", PropertyList::real(2.5), "Scale -float 2.5");
    row("true uses the display text", "Enabled", PropertyList::boolean(true), "Enabled -bool true");
    // The date text is the value's description (local time, as the platform prints it).
    const PropertyList date = PropertyList::date(86400.0 * 365);
    QTest::newRow("date is quoted with its description")
        << t("Stamp") << date << QStringLiteral("Stamp -date \"%1\"").arg(date.description());
    row("archiver UID has no flag", "Ref", PropertyList::uid(3), "Ref ");
    row("array of two strings ends in two blanks", "List", PropertyArray{t("a"), t("b")}, "List -array -string a -string b  ");
    row("empty array", "List", PropertyArray(), "List -array  ");
    row("array: only i, s, q integers are -int", "List",
        PropertyArray{PropertyList::integer(1, 'i'), PropertyList::integer(2, 's'), PropertyList::integer(3, 'q'),
                      PropertyList::integer(4, 'l'), PropertyList::integer(5, 'I'), PropertyList::integer(6, 'S'),
                      PropertyList::integer(7, 'L'), PropertyList::unsignedInteger(8, 'Q')},
        "List -array -int 1 -int 2 -int 3 -bool 4 -bool 5 -bool 6 -bool 7 -bool 8  ");
    row("array of reals, booleans and data", "List",
        PropertyArray{PropertyList::real(1.5), PropertyList::real(0.25, 'f'), PropertyList::boolean(true),
                      PropertyList(QByteArray("\xab", 1))},
        "List -array -float 1.5 -float 0.25 -bool true -data ab  ");
    row("dictionary keys are quoted like keys", "Dict",
        PropertyDictionary{{t("k"), t("v")}, {t("a b"), PropertyList::integer(1, 'i')}, {t("w\"x"), PropertyList::integer(2, 'l')}},
        R"(Dict -dict k -string v "a b" -int 1 "w\"x" -bool 2  )");
    row("array holding a dictionary is refused", "Grid", PropertyArray{t("a"), PropertyDictionary()}, "");
    row("dictionary holding an array is refused", "Grid", PropertyDictionary{{t("k"), PropertyArray()}}, "");
    row("refusal names the key unescaped", "a\"b c", PropertyArray{PropertyList(PropertyArray())}, "");
}

void PListNodeDefaultsTest::command()
{
    QFETCH(QString, key);
    QFETCH(PropertyList, value);
    QFETCH(QString, expected);
    const QString text = answer(key, value, m_appFile);
    if (expected.isEmpty())
        QCOMPARE(text, refusal(key.toUtf8().constData()));
    else
        QCOMPARE(text, QStringLiteral("defaults write com.example.app ") + expected);
}

void PListNodeDefaultsTest::domain_data()
{
    QTest::addColumn<QString>("file"); // below the temporary folder that holds "home"
    QTest::addColumn<bool>("fullPath");
    QTest::addColumn<QString>("domain"); // empty: the file is missing, so there is no command
    const auto row = [](const char *name, const char *file, bool fullPath, const QString &domain) {
        QTest::newRow(name) << t(file) << fullPath << domain;
    };
    row("global preferences are NSGlobalDomain", "home/Library/Preferences/.GlobalPreferences.plist", false,
        t("NSGlobalDomain"));
    row("full path overrides the global name, with tilde (quoted)", "home/Library/Preferences/.GlobalPreferences.plist",
        true, t(R"("~/Library/Preferences/.GlobalPreferences")"));
    row("per-host global file is not the global domain", "home/Library/Preferences/ByHost/.GlobalPreferences.0123456789ab.plist",
        false, t(".GlobalPreferences.0123456789ab"));
    row("blank in the file name", "home/My Prefs.plist", false, t(R"("My Prefs")"));
    row("double quote in the file name", "home/say\"hi.plist", false, t(R"("say\"hi")"));
    row("only the last extension goes", "home/backup.plist.bak", false, t("backup.plist"));
    row("a leading dot is not an extension", "home/.hidden", false, t(".hidden"));
    // "homework" starts with the home folder's path but is not inside it.
    row("a sibling of home keeps its whole path", "homework.plist", true, m_root.filePath(QStringLiteral("homework")));
    row("missing file", "home/Library/Preferences/gone.plist", false, QString());
}

void PListNodeDefaultsTest::domain()
{
    QFETCH(QString, file);
    QFETCH(bool, fullPath);
    QFETCH(QString, domain);
    // A missing file gets no refusal either, and every answer carries the entry.
    const PropertyList value =
        domain.isEmpty() ? PropertyList(PropertyArray{PropertyList(PropertyArray())}) : PropertyList(t("en"));
    const PListNodePtr root = PListNode::treeFromDictionary(PropertyDictionary{{t("AppleLanguages"), value}});
    const auto [text, entry] = root->firstChild()->returnStringWithPath(m_root.filePath(file), fullPath);
    QCOMPARE(text, domain.isEmpty() ? QString() : QStringLiteral("defaults write %1 AppleLanguages -string en").arg(domain));
    QCOMPARE(entry.keys(), QStringList{t("AppleLanguages")});
    QVERIFY(entry.valueAt(0).isIdenticalTo(value));
}

void PListNodeDefaultsTest::corpusEntries_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const char *file, const char *key, const char *expected) {
        QTest::newRow(name) << t(file) << t(key) << t(expected);
    };
    row("curly quotes are quoted", ".GlobalPreferences.plist", "NSUserQuotesArray",
        R"(defaults write NSGlobalDomain NSUserQuotesArray -array -string "“" -string "”" -string "‘" -string "’"  )");
    row("array of dictionaries is refused", ".GlobalPreferences.plist", "NSUserDictionaryReplacementItems",
        "Sorry, defaults can't handle the nested dictionaries / arrays found in the key \"NSUserDictionaryReplacementItems\"");
    row("empty first string leaves two blanks", "com.apple.finder.plist", "FavoriteTagNames",
        "defaults write com.apple.finder FavoriteTagNames -array -string  -string Red -string Orange -string Yellow "
        "-string Green -string Blue -string Purple -string Gray  ");
    row("quoted key, integer entries", "com.apple.finder.plist", "NSToolbar Configuration Browser",
        R"(defaults write com.apple.finder "NSToolbar Configuration Browser" -dict "TB Is Shown" -int 1 )"
        R"("TB Icon Size Mode" -int 1 "TB Size Mode" -int 1 "TB Display Mode" -int 2  )");
}

void PListNodeDefaultsTest::corpusEntries()
{
    ORVANE_REQUIRE_CORPUS();
    QFETCH(QString, file);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    const QString path = Corpus::root() + QStringLiteral("/plists/binary/") + file;
    const auto read = PropertyListSerialization::readFile(path);
    QVERIFY2(read.ok(), qPrintable(read.errorText()));
    const PListNodePtr root = PListNode::treeFromDictionary(read.value.value.toDictionary());
    const PListNodePtr entry = root->childWithName(key);
    QVERIFY(entry);
    QCOMPARE(entry->returnStringWithPath(path, false).first, expected);
}

ORVANE_TEST(PListNodeDefaultsTest)
#include "PListNodeDefaultsTest.moc"
