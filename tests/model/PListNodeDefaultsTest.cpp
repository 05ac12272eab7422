// The `defaults write` text of an entry: quoting of domain, key and values, the
// flag of every value kind, the refusal for nested containers, the domain taken
// from the path, and real preference files.
#include "Corpus.h"
#include "TestRegistry.h"

#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

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

PropertyArray strings(std::initializer_list<const char *> texts)
{
    PropertyArray array;
    for (const char *text : texts)
        array.append(PropertyList(t(text)));
    return array;
}

// Whether a value holds a container directly inside it: the one thing the
// command line cannot say.
bool nestsContainer(const PropertyList &value)
{
    if (value.isArray()) {
        const auto &items = value.arrayRef().items();
        return std::any_of(items.cbegin(), items.cend(), [](const PropertyList &item) { return item.isContainer(); });
    }
    if (value.isDictionary()) {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        for (qsizetype i = 0; i < dictionary.size(); ++i) {
            if (dictionary.valueAt(i).isContainer())
                return true;
        }
    }
    return false;
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
    void missingFileGivesNoCommand_data();
    void missingFileGivesNoCommand();
    void elementFlag_data();
    void elementFlag();
    void corpusEntriesAreCommandsOrRefusals();
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
        QStringLiteral("home/Settings"),
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
    row("a lone double quote is quoted after escaping", "Greeting", t("\""), R"(Greeting -string "\"")");
    row("backslash quotes but is not escaped", "Greeting", t(R"(a\b)"), R"(Greeting -string "a\b")");
    row("apostrophe quotes", "Greeting", t("it's"), R"(Greeting -string "it's")");
    row("tilde quotes", "Greeting", t("~/Music"), R"(Greeting -string "~/Music")");
    row("non-ASCII quotes", "Greeting", t("Grüße"), R"(Greeting -string "Grüße")");
    row("all plain punctuation stays bare", "Greeting", t("a.b+c-d_e/f,g@h:i=j$k%l^m[n]o{p}"),
        "Greeting -string a.b+c-d_e/f,g@h:i=j$k%l^m[n]o{p}");
    row("empty string leaves the flag's blank", "Greeting", t(""), "Greeting -string ");
    row("blank in a key quotes it", "My Key", t("x"), R"("My Key" -string x)");
    row("double quote in a key", "a\"b", t("x"), R"("a\"b" -string x)");
    row("apostrophe, tilde and umlaut in a key", "~it's ü", t("x"), R"("~it's ü" -string x)");
    row("percent in a key is not a placeholder", "%1%@", t("%2"), "%1%@ -string %2");
    row("three bytes of data", "Token", PropertyList(QByteArray("\x0a\x0b\x0c", 3)), "Token -data 0a0b0c");
    row("data longer than one group loses its blanks", "Token", PropertyList(QByteArray("\x00\x01\x02\x03\x04\xff", 6)),
        "Token -data 0001020304ff");
    row("empty data", "Token", PropertyList(QByteArray()), "Token -data ");
    row("int", "Count", PropertyList::integer(5, 'i'), "Count -int 5");
    row("long is an int as a whole entry", "Count", PropertyList::integer(7, 'l'), "Count -int 7");
    row("negative long long", "Count", PropertyList::integer(-3, 'q'), "Count -int -3");
    row("unsigned long long keeps every digit", "Count", PropertyList::unsignedInteger(18446744073709551615ULL, 'Q'),
        "Count -int 18446744073709551615");
    row("double", "Scale", PropertyList::real(2.5), "Scale -float 2.5");
    row("float", "Scale", PropertyList::real(0.5, 'f'), "Scale -float 0.5");
    row("true uses the display text", "Enabled", PropertyList::boolean(true), "Enabled -bool true");
    row("false uses the display text", "Enabled", PropertyList::boolean(false), "Enabled -bool false");
    // The date text is the value's description (local time, as the platform prints it).
    const PropertyList date = PropertyList::date(86400.0 * 365);
    QTest::newRow("date is quoted with its description")
        << t("Stamp") << date << QStringLiteral("Stamp -date \"%1\"").arg(date.description());
    row("archiver UID has no flag", "Ref", PropertyList::uid(3), "Ref ");
    row("array of two strings ends in two blanks", "List", strings({"a", "b"}), "List -array -string a -string b  ");
    row("empty array", "List", PropertyArray(), "List -array  ");
    row("array elements are quoted like values", "List", strings({"x y", "q\""}),
        R"(List -array -string "x y" -string "q\""  )");
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
    row("empty dictionary", "Dict", PropertyDictionary(), "Dict -dict  ");
    row("array holding a dictionary is refused", "Grid", PropertyArray{t("a"), PropertyDictionary()}, "");
    row("array holding an array is refused", "Grid", PropertyArray{PropertyList(PropertyArray{t("a")})}, "");
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
    QTest::addColumn<QString>("domain");

    const auto row = [](const char *name, const char *file, bool fullPath, const QString &domain) {
        QTest::newRow(name) << t(file) << fullPath << domain;
    };
    row("global preferences are NSGlobalDomain", "home/Library/Preferences/.GlobalPreferences.plist", false,
        t("NSGlobalDomain"));
    row("full path overrides the global name, with tilde (quoted)", "home/Library/Preferences/.GlobalPreferences.plist",
        true, t(R"("~/Library/Preferences/.GlobalPreferences")"));
    row("per-host global file is not the global domain", "home/Library/Preferences/ByHost/.GlobalPreferences.0123456789ab.plist",
        false, t(".GlobalPreferences.0123456789ab"));
    row("application domain", "home/Library/Preferences/com.example.app.plist", false, t("com.example.app"));
    row("application domain, full path", "home/Library/Preferences/com.example.app.plist", true,
        t(R"("~/Library/Preferences/com.example.app")"));
    row("blank in the file name", "home/My Prefs.plist", false, t(R"("My Prefs")"));
    row("double quote in the file name", "home/say\"hi.plist", false, t(R"("say\"hi")"));
    row("no extension", "home/Settings", false, t("Settings"));
    row("only the last extension goes", "home/backup.plist.bak", false, t("backup.plist"));
    row("a leading dot is not an extension", "home/.hidden", false, t(".hidden"));
    // "homework" starts with the home folder's path but is not inside it.
    // An empty domain here means: the whole path, as the test computes it.
    QTest::newRow("a sibling of home keeps its whole path") << t("homework.plist") << true << QString();
}

void PListNodeDefaultsTest::domain()
{
    QFETCH(QString, file);
    QFETCH(bool, fullPath);
    QFETCH(QString, domain);
    if (domain.isEmpty())
        domain = m_root.filePath(QStringLiteral("homework"));
    const QString text = answer(QStringLiteral("AppleLanguages"), t("en"), m_root.filePath(file), fullPath);
    QCOMPARE(text, QStringLiteral("defaults write %1 AppleLanguages -string en").arg(domain));
}

void PListNodeDefaultsTest::missingFileGivesNoCommand_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<PropertyList>("value");
    QTest::newRow("missing file, string entry") << t("home/Library/Preferences/gone.plist") << PropertyList(t("x"));
    QTest::newRow("missing global file, array entry") << t("elsewhere/.GlobalPreferences.plist") << PropertyList(strings({"en"}));
    QTest::newRow("missing file, nested entry (no refusal either)")
        << t("home/gone.plist") << PropertyList(PropertyArray{PropertyList(PropertyArray())});
}

void PListNodeDefaultsTest::missingFileGivesNoCommand()
{
    QFETCH(QString, file);
    QFETCH(PropertyList, value);
    const PListNodePtr root = PListNode::treeFromDictionary(PropertyDictionary{{t("Key"), value}});
    const auto [text, entry] = root->firstChild()->returnStringWithPath(m_root.filePath(file), false);
    QCOMPARE(text, QString());
    QCOMPARE(entry.keys(), QStringList{t("Key")});
    QVERIFY(entry.valueAt(0).isIdenticalTo(value));
}

void PListNodeDefaultsTest::elementFlag_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<bool>("asDictEntry");
    QTest::addColumn<bool>("flagBefore");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("flagAfter");

    QTest::newRow("a scalar never sets the flag true") << PropertyList(t("a")) << false << false << t("-string a") << false;
    QTest::newRow("a scalar leaves a true flag alone") << PropertyList(t("a")) << false << true << t("-string a") << true;
    QTest::newRow("an array element clears the flag") << PropertyList(PropertyArray()) << false << true << QString() << false;
    QTest::newRow("a dictionary element clears the flag") << PropertyList(PropertyDictionary()) << false << true << QString()
                                                          << false;
    QTest::newRow("dict entry: key then value") << PropertyList::integer(9, 'l') << true << true << t("\"It's\" -bool 9")
                                                << true;
    QTest::newRow("dict entry holding an array: key, no value") << PropertyList(PropertyArray()) << true << true
                                                                << t("\"It's\" ") << false;
}

void PListNodeDefaultsTest::elementFlag()
{
    QFETCH(PropertyList, value);
    QFETCH(bool, asDictEntry);
    QFETCH(bool, flagBefore);
    QFETCH(QString, expected);
    QFETCH(bool, flagAfter);
    const PListNodePtr root = PListNode::treeFromDictionary(PropertyDictionary{{t("It's"), value}});
    const PListNodePtr node = root->firstChild();
    bool flag = flagBefore;
    QCOMPARE(asDictEntry ? node->returnDictDefaults(&flag) : node->returnArrayDefaults(&flag), expected);
    QCOMPARE(flag, flagAfter);
    // Callers that do not ask about nesting pass no flag at all.
    QCOMPARE(asDictEntry ? node->returnDictDefaults(nullptr) : node->returnArrayDefaults(nullptr), expected);
}

// Every top-level entry of real preference files is a command for its domain,
// unless (and only if) its value holds a container inside a container.
void PListNodeDefaultsTest::corpusEntriesAreCommandsOrRefusals()
{
    ORVANE_REQUIRE_CORPUS();
    const QList<std::pair<QString, QString>> files{
        {t("com.apple.dock.plist"), t("com.apple.dock")},
        {t("com.apple.finder.plist"), t("com.apple.finder")},
        {t(".GlobalPreferences.plist"), t("NSGlobalDomain")},
        {t("com.apple.symbolichotkeys.plist"), t("com.apple.symbolichotkeys")},
    };
    for (const auto &[file, domain] : files) {
        const QString path = Corpus::root() + QStringLiteral("/plists/binary/") + file;
        const auto read = PropertyListSerialization::readFile(path);
        QVERIFY2(read.ok() && read.value.value.isDictionary(), qPrintable(path));
        const PropertyDictionary &top = read.value.value.dictionaryRef();
        const PListNodePtr root = PListNode::treeFromDictionary(top);
        QCOMPARE(root->numberOfChildren(), top.size());
        for (qsizetype i = 0; i < top.size(); ++i) {
            const auto [text, entry] = root->childAtIndex(int(i))->returnStringWithPath(path, false);
            const QString where = file + QLatin1Char(' ') + top.keyAt(i) + QStringLiteral(": ") + text;
            if (nestsContainer(top.valueAt(i)))
                QVERIFY2(text == refusal(top.keyAt(i).toUtf8().constData()), qPrintable(where));
            else
                QVERIFY2(text.startsWith(QStringLiteral("defaults write ") + domain + u' '), qPrintable(where));
            QVERIFY2(entry.size() == 1 && entry.keyAt(0) == top.keyAt(i) && entry.valueAt(0).isIdenticalTo(top.valueAt(i)),
                     qPrintable(where));
        }
    }
}

void PListNodeDefaultsTest::corpusEntries_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const char *file, const char *key, const char *expected) {
        QTest::newRow(name) << t(file) << t(key) << t(expected);
    };
    row("global string array", ".GlobalPreferences.plist", "AppleLanguages",
        "defaults write NSGlobalDomain AppleLanguages -array -string en -string us  ");
    row("string with blanks", ".GlobalPreferences.plist", "AppleHighlightColor",
        R"(defaults write NSGlobalDomain AppleHighlightColor -string "1.000000 0.874510 0.701961 Orange")");
    row("curly quotes are quoted", ".GlobalPreferences.plist", "NSUserQuotesArray",
        R"(defaults write NSGlobalDomain NSUserQuotesArray -array -string "“" -string "”" -string "‘" -string "’"  )");
    row("empty dictionary", ".GlobalPreferences.plist", "NSUserKeyEquivalents",
        "defaults write NSGlobalDomain NSUserKeyEquivalents -dict  ");
    row("dictionary of a boolean", ".GlobalPreferences.plist", "KB_SpellingLanguage",
        "defaults write NSGlobalDomain KB_SpellingLanguage -dict KB_SpellingLanguageIsAutomatic -bool true  ");
    row("integer", ".GlobalPreferences.plist", "InitialKeyRepeat", "defaults write NSGlobalDomain InitialKeyRepeat -int 10");
    row("real", ".GlobalPreferences.plist", "com.apple.springing.delay",
        "defaults write NSGlobalDomain com.apple.springing.delay -float 0.5");
    row("array of dictionaries is refused", ".GlobalPreferences.plist", "NSUserDictionaryReplacementItems",
        "Sorry, defaults can't handle the nested dictionaries / arrays found in the key \"NSUserDictionaryReplacementItems\"");
    row("dock region", "com.apple.dock.plist", "region", "defaults write com.apple.dock region -string US");
    row("empty first string leaves two blanks", "com.apple.finder.plist", "FavoriteTagNames",
        "defaults write com.apple.finder FavoriteTagNames -array -string  -string Red -string Orange -string Yellow "
        "-string Green -string Blue -string Purple -string Gray  ");
    row("quoted key, integer entries", "com.apple.finder.plist", "NSToolbar Configuration Browser",
        R"(defaults write com.apple.finder "NSToolbar Configuration Browser" -dict "TB Is Shown" -int 1 )"
        R"("TB Icon Size Mode" -int 1 "TB Size Mode" -int 1 "TB Display Mode" -int 2  )");
    row("percent signs stay bare", "com.apple.finder.plist", "MyDocsLibrarySavedViewStyleVersion",
        "defaults write com.apple.finder MyDocsLibrarySavedViewStyleVersion -string %00%00%00%01");
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
