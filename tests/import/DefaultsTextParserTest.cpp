// Reading dropped `defaults write` lines: the one-blank token rules, the
// per-context outcomes of a token without an end, and real lines from setup scripts.
#include "Corpus.h"
#include "TestRegistry.h"

#include "import/DefaultsTextParser.h"

#include <QDateTime>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Outcome = DefaultsTextParser::Outcome;

PropertyList str(const QString &text) { return PropertyList(text); }
PropertyList i32(qint64 value) { return PropertyList::integer(value, 'i'); }

PropertyList utcDate(int year, int month, int day, int hour, int minute, int second)
{
    const QDateTime utc(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
    return PropertyList::date(double(utc.toSecsSinceEpoch() - 978307200));
}

void addColumns()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<QString>("key");
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
}

void entry(const char *name, const QString &text, const QString &domain, const QString &key, const PropertyList &value)
{
    QTest::newRow(name) << text << int(Outcome::Entry) << domain << key << value << 0 << 0 << 0;
}

void none(const char *name, const QString &text)
{
    QTest::newRow(name) << text << int(Outcome::NoResult) << QString() << QString() << PropertyList() << 0 << 0 << 0;
}

void error(const char *name, const QString &text, ReadStatus status, int line, int column)
{
    QTest::newRow(name) << text << int(Outcome::Error) << QString() << QString() << PropertyList() << int(status)
                        << line << column;
}

void checkRow()
{
    QFETCH(QString, text);
    QFETCH(int, outcome);
    const QString before = text;
    const DefaultsTextParser::Result result = DefaultsTextParser::dictionaryFromDefaultsString(text);
    QCOMPARE(text, before);
    QCOMPARE(int(result.outcome), outcome);
    switch (result.outcome) {
    case Outcome::Entry: {
        QFETCH(QString, domain);
        QFETCH(QString, key);
        QFETCH(PropertyList, value);
        QCOMPARE(result.domain, domain);
        QCOMPARE(result.dictionary.size(), 1);
        QCOMPARE(result.dictionary.keyAt(0), key);
        const PropertyList &read = result.dictionary.valueAt(0);
        QVERIFY2(read.isIdenticalTo(value), qPrintable(read.description() + u" is not "_s + value.description()));
        break;
    }
    case Outcome::NoResult:
        QVERIFY(result.dictionary.isEmpty());
        break;
    case Outcome::Error: {
        QFETCH(int, status);
        QFETCH(int, line);
        QFETCH(int, column);
        QCOMPARE(int(result.failure.status), status);
        QCOMPARE(result.failure.position.line, line);
        QCOMPARE(result.failure.position.column, column);
        QVERIFY(!result.failure.message.isEmpty());
        QVERIFY(result.errorText().contains(u"column %1"_s.arg(column)));
        break;
    }
    }
}

} // namespace

class DefaultsTextParserTest : public QObject {
    Q_OBJECT

private slots:
    void command_data();
    void command() { checkRow(); }
    void lists_data();
    void lists() { checkRow(); }
    void listReadersAppendToWhatIsThere();
    void everyCorpusLineReads();
    void corpusLines_data();
    void corpusLines();
};

void DefaultsTextParserTest::command_data()
{
    addColumns();
    const QString prefix = u"defaults write "_s;
    entry("plain integer is 32-bit", prefix + u"d k -int 42"_s, u"d"_s, u"k"_s, i32(42));
    none("scalar flag with nothing after it", prefix + u"d k -int"_s);
    error("key without a blank after it", prefix + u"d k"_s, ReadStatus::OutOfRange, 1, 18);
    none("nothing after the key's blank", prefix + u"d k "_s);
    entry("no flag keeps later blanks in the string", prefix + u"d k hello world"_s, u"d"_s, u"k"_s,
          str(u"hello world"_s));
    entry("string value is never unquoted", prefix + u"d k -string \"hello\""_s, u"d"_s, u"k"_s,
          str(u"\"hello\""_s));
    entry("quoted domain and key with blanks", prefix + u"\"My Domain\" \"My Key\" -bool yes"_s, u"My Domain"_s,
          u"My Key"_s, PropertyList::boolean(true));
    entry("boolean YES is false", prefix + u"d k -bool YES"_s, u"d"_s, u"k"_s, PropertyList::boolean(false));
    entry("boolean 1 is false", prefix + u"d k -bool 1"_s, u"d"_s, u"k"_s, PropertyList::boolean(false));
    entry("boolean true before a newline is false", prefix + u"d k -bool true\n"_s, u"d"_s, u"k"_s,
          PropertyList::boolean(false));
    entry("-boolean is -bool", prefix + u"d k -boolean true"_s, u"d"_s, u"k"_s, PropertyList::boolean(true));
    entry("escaped blank in the domain", prefix + u"My\\ Domain k -real 2.5"_s, u"My Domain"_s, u"k"_s,
          PropertyList::real(2.5));
    entry("several escaped blanks", prefix + u"a\\ b\\ c My\\ Key v"_s, u"a b c"_s, u"My Key"_s, str(u"v"_s));
    entry("unit after an escaped blank never ends the token", prefix + u"a\\  b k v"_s, u"a  b"_s, u"k"_s,
          str(u"v"_s));
    none("-float is not a flag", prefix + u"d k -float 1.5"_s);
    none("unknown flag", prefix + u"d k -intx 5"_s);
    entry("-integer is -int and reads a leading number", prefix + u"d k -integer 3.7"_s, u"d"_s, u"k"_s, i32(3));
    entry("integer clamps to 32 bits", prefix + u"d k -int 99999999999"_s, u"d"_s, u"k"_s, i32(2147483647));
    entry("real is a double", prefix + u"d k -real 1e3"_s, u"d"_s, u"k"_s, PropertyList::real(1000));
    entry("value's leading blank stays", prefix + u"d k  v"_s, u"d"_s, u"k"_s, str(u" v"_s));
    entry("newline is an ordinary unit", prefix + u"d k v\nw"_s, u"d"_s, u"k"_s, str(u"v\nw"_s));
    entry("tab is not a separator", prefix + u"d\tk x v"_s, u"d\tk"_s, u"x"_s, str(u"v"_s));
    entry("data literal", prefix + u"d k -data 48656c6c6f"_s, u"d"_s, u"k"_s, PropertyList(QByteArray("Hello")));
    entry("data with blanks between pairs", prefix + u"d k -data 48 65"_s, u"d"_s, u"k"_s,
          PropertyList(QByteArray("He")));
    none("data that is not hex", prefix + u"d k -data xyz"_s);
    none("data with an odd digit", prefix + u"d k -data 486"_s);
    none("data in base64 brackets", prefix + u"d k -data [SGk=]"_s);
    none("data of a typed integer", prefix + u"d k -data *I5"_s);
    none("data hiding UTF-16 behind NULs", prefix + u"d k -data \u00004\u00001\u0000>\u0000/\u0000/\u0000A"_s);
    entry("quoted date", prefix + u"d k -date \"2006-01-02 03:04:05 +0000\""_s, u"d"_s, u"k"_s,
          utcDate(2006, 1, 2, 3, 4, 5));
    entry("bare date is the whole rest", prefix + u"d k -date 2006-01-02 03:04:05 +0100"_s, u"d"_s, u"k"_s,
          utcDate(2006, 1, 2, 2, 4, 5));
    error("unreadable date", prefix + u"d k -date tomorrow"_s, ReadStatus::BadValue, 1, 26);
    error("date's last unit goes even when not a quote", prefix + u"d k -date \"2006-01-02 03:04:05 +0000"_s,
          ReadStatus::BadValue, 1, 26);
    error("lone quote as a date", prefix + u"d k -date \""_s, ReadStatus::BadValue, 1, 26);
    error("domain quote never closed", prefix + u"\"d k -int 1"_s, ReadStatus::OutOfRange, 1, 16);
    error("key quote never closed", prefix + u"d \"k -int 1"_s, ReadStatus::OutOfRange, 1, 18);
    error("two blanks before the domain", prefix + u" d k v"_s, ReadStatus::OutOfRange, 1, 16);
    error("two blanks before the key", prefix + u"d  k v"_s, ReadStatus::OutOfRange, 1, 18);
    error("closing quote eats the next unit", prefix + u"\"d\"x k v"_s, ReadStatus::OutOfRange, 1, 20);
    error("escaped blank at the end of the key", prefix + u"d k\\ "_s, ReadStatus::OutOfRange, 1, 18);
    error("position counts the text before the prefix", u"  defaults write d k v"_s, ReadStatus::OutOfRange, 1, 1);
    error("position skips the prefix and counts lines", u"x\ndefaults write d  k v"_s, ReadStatus::OutOfRange,
          2, 18);
    entry("text before the prefix starts the domain", u"$ defaults write d k v"_s, u"$"_s, u"d"_s,
          str(u"k v"_s));
    entry("only the first prefix goes", prefix + u"d defaults write k v"_s, u"d"_s, u"defaults"_s,
          str(u"write k v"_s));
    none("no prefix", u"defaults read d k"_s);
    none("prefix in another case", u"Defaults Write d k v"_s);
    none("prefix without its blank", u"defaults write"_s);
    none("nothing after the prefix", prefix);
    none("bare domain with nothing after it", prefix + u"d"_s);
    none("quoted domain closed at the very end", prefix + u"\"d\""_s);
    none("quoted key closed at the very end", prefix + u"d \"k\""_s);
    none("explicit -string with nothing after it", prefix + u"d k -string "_s);
}

void DefaultsTextParserTest::lists_data()
{
    addColumns();
    const QString prefix = u"defaults write d k "_s;
    const auto array = [](std::initializer_list<PropertyList> items) { return PropertyList(PropertyArray(items)); };
    const auto dict = [](std::initializer_list<std::pair<QString, PropertyList>> entries) {
        return PropertyList(PropertyDictionary(entries));
    };
    entry("empty array", prefix + u"-array"_s, u"d"_s, u"k"_s, array({}));
    entry("empty array after a blank", prefix + u"-array "_s, u"d"_s, u"k"_s, array({}));
    entry("array of bare, quoted and typed items", prefix + u"-array a \"b c\" -int 7"_s, u"d"_s, u"k"_s,
          array({str(u"a"_s), str(u"b c"_s), i32(7)}));
    entry("array boolean looks at nothing left", prefix + u"-array -bool true"_s, u"d"_s, u"k"_s,
          array({PropertyList::boolean(false)}));
    entry("array boolean looks at the rest of the list", prefix + u"-array -bool false true"_s, u"d"_s, u"k"_s,
          array({PropertyList::boolean(true), str(u"true"_s)}));
    entry("-array-add reads as -array", prefix + u"-array-add x"_s, u"d"_s, u"k"_s, array({str(u"x"_s)}));
    entry("array quote never closed takes the rest", prefix + u"-array a \"b c"_s, u"d"_s, u"k"_s,
          array({str(u"a"_s), str(u"b c"_s)}));
    entry("array escaped blank at the end", prefix + u"-array a\\ "_s, u"d"_s, u"k"_s, array({str(u"a "_s)}));
    entry("array backslash not before a blank stays", prefix + u"-array a\\b c"_s, u"d"_s, u"k"_s,
          array({str(u"a\\b"_s), str(u"c"_s)}));
    entry("array flag without a blank stops", prefix + u"-array a -int"_s, u"d"_s, u"k"_s, array({str(u"a"_s)}));
    entry("array unknown flag drops its item", prefix + u"-array -float 1 x"_s, u"d"_s, u"k"_s,
          array({str(u"x"_s)}));
    entry("array never nests", prefix + u"-array -dict x y"_s, u"d"_s, u"k"_s, array({str(u"y"_s)}));
    entry("array skips bad data", prefix + u"-array -data zz -data 4142"_s, u"d"_s, u"k"_s,
          array({PropertyList(QByteArray("AB"))}));
    entry("array numbers keep their widths", prefix + u"-array -int 7 -real 2.5"_s, u"d"_s, u"k"_s,
          array({i32(7), PropertyList::real(2.5)}));
    error("array unreadable date", prefix + u"-array x -date never"_s, ReadStatus::BadValue, 1, 35);
    error("array item after two blanks", prefix + u"-array a  b"_s, ReadStatus::OutOfRange, 1, 29);
    entry("dictionary of string and integer", prefix + u"-dict a 1 b -int 2"_s, u"d"_s, u"k"_s,
          dict({{u"a"_s, str(u"1"_s)}, {u"b"_s, i32(2)}}));
    entry("dictionary key alone is dropped", prefix + u"-dict a"_s, u"d"_s, u"k"_s, dict({}));
    entry("dictionary key is never a flag", prefix + u"-dict -x 1"_s, u"d"_s, u"k"_s, dict({{u"-x"_s, str(u"1"_s)}}));
    entry("-dict-add reads as -dict", prefix + u"-dict-add \"a b\" -int 1"_s, u"d"_s, u"k"_s,
          dict({{u"a b"_s, i32(1)}}));
    entry("dictionary later key replaces", prefix + u"-dict a 1 a 2"_s, u"d"_s, u"k"_s, dict({{u"a"_s, str(u"2"_s)}}));
    entry("dictionary boolean looks at nothing left", prefix + u"-dict a -bool yes"_s, u"d"_s, u"k"_s,
          dict({{u"a"_s, PropertyList::boolean(false)}}));
    entry("dictionary boolean looks at the rest", prefix + u"-dict a -bool no yes"_s, u"d"_s, u"k"_s,
          dict({{u"a"_s, PropertyList::boolean(true)}}));
    entry("dictionary quoted value never closed stops", prefix + u"-dict a 1 b \"2"_s, u"d"_s, u"k"_s,
          dict({{u"a"_s, str(u"1"_s)}}));
    entry("dictionary bare value takes the rest", prefix + u"-dict a b\\ "_s, u"d"_s, u"k"_s,
          dict({{u"a"_s, str(u"b "_s)}}));
    entry("dictionary quoted key never closed stops", prefix + u"-dict \"a b"_s, u"d"_s, u"k"_s, dict({}));
    entry("dictionary flag without a blank stops", prefix + u"-dict a -int"_s, u"d"_s, u"k"_s, dict({}));
    entry("dictionary drops unknown and nested flags", prefix + u"-dict a -float 1 b -array x c y"_s, u"d"_s,
          u"k"_s, dict({{u"c"_s, str(u"y"_s)}}));
    entry("dictionary date is unquoted by the token", prefix + u"-dict a -date \"2006-01-02 03:04:05 +0000\""_s,
          u"d"_s, u"k"_s, dict({{u"a"_s, utcDate(2006, 1, 2, 3, 4, 5)}}));
    entry("dictionary data", prefix + u"-dict a -data 4142"_s, u"d"_s, u"k"_s,
          dict({{u"a"_s, PropertyList(QByteArray("AB"))}}));
    error("dictionary unreadable date", prefix + u"-dict a -date 2006"_s, ReadStatus::BadValue, 1, 34);
    error("dictionary key after two blanks", prefix + u"-dict  a b"_s, ReadStatus::OutOfRange, 1, 26);
    error("dictionary value after two blanks", prefix + u"-dict a  b"_s, ReadStatus::OutOfRange, 1, 28);
}

void DefaultsTextParserTest::listReadersAppendToWhatIsThere()
{
    PropertyArray array{str(u"old"_s)};
    DefaultsTextParser::WorkingText items(u"a -int 2"_s);
    QVERIFY(!DefaultsTextParser::populateArray(array, items));
    QVERIFY(array == PropertyArray({str(u"old"_s), str(u"a"_s), i32(2)}));
    QVERIFY(items.isEmpty());

    PropertyDictionary dictionary{{u"a"_s, str(u"old"_s)}, {u"b"_s, str(u"kept"_s)}};
    DefaultsTextParser::WorkingText entries(u"a new c -date x"_s);
    const std::optional<DefaultsTextParser::Failure> failure = DefaultsTextParser::populateDict(dictionary, entries);
    QVERIFY(failure);
    QCOMPARE(failure->status, ReadStatus::BadValue);
    QCOMPARE(failure->position.column, 15);
    // What was read before the failure is in the dictionary; the caller drops it all.
    QVERIFY(dictionary == PropertyDictionary({{u"a"_s, str(u"new"_s)}, {u"b"_s, str(u"kept"_s)}}));
}

namespace {

QStringList corpusCommandLines()
{
    const QByteArray bytes = Corpus::readAll(Corpus::root() + u"/defaults/commands.txt"_s);
    return QString::fromUtf8(bytes).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

void DefaultsTextParserTest::everyCorpusLineReads()
{
    ORVANE_REQUIRE_CORPUS();
    const QStringList lines = corpusCommandLines();
    QVERIFY(lines.size() > 600);
    int entries = 0;
    for (const QString &line : lines) {
        const DefaultsTextParser::Result result = DefaultsTextParser::dictionaryFromDefaultsString(line);
        switch (result.outcome) {
        case Outcome::Entry:
            QCOMPARE(result.dictionary.size(), 1);
            ++entries;
            break;
        case Outcome::NoResult:
            QVERIFY2(result.dictionary.isEmpty(), qPrintable(line));
            break;
        case Outcome::Error:
            QVERIFY2(!result.failure.message.isEmpty(), qPrintable(line));
            break;
        }
    }
    // Most real lines are plain, well-formed commands.
    QVERIFY2(entries > lines.size() / 2, qPrintable(QString::number(entries)));
}

void DefaultsTextParserTest::corpusLines_data()
{
    addColumns();
    const auto f = [] { return PropertyList::boolean(false); };
    const auto array = [](std::initializer_list<PropertyList> items) { return PropertyList(PropertyArray(items)); };
    none("-float gives no result", u"defaults write NSGlobalDomain NSWindowResizeTime -float 0.001"_s);
    none("-currentHost before write", u"defaults -currentHost write NSGlobalDomain com.apple.mouse.tapBehavior -int 1"_s);
    entry("quoted domain and key with blanks",
          u"defaults write \"com.apple.controlcenter\" \"NSStatusItem Visible Bluetooth\" -bool true"_s,
          u"com.apple.controlcenter"_s, u"NSStatusItem Visible Bluetooth"_s, PropertyList::boolean(true));
    entry("quoted boolean word is false", u"defaults write com.apple.screencapture \"include-date\" -bool \"true\""_s,
          u"com.apple.screencapture"_s, u"include-date"_s, f());
    entry("quoted number and trailing shell read as 0",
          u"defaults write com.apple.ActivityMonitor \"IconType\" -int \"5\" && killall Activity\\ Monitor"_s,
          u"com.apple.ActivityMonitor"_s, u"IconType"_s, i32(0));
    entry("sudo becomes the domain",
          u"sudo defaults write /Library/Preferences/com.apple.timezone.auto Active -bool YES"_s, u"sudo"_s,
          u"/Library/Preferences/com.apple.timezone.auto"_s, str(u"Active -bool YES"_s));
    entry("tilde domain stays as written",
          u"defaults write ~/Library/Preferences/org.gpgtools.gpgmail SignNewEmailsByDefault -bool false"_s,
          u"~/Library/Preferences/org.gpgtools.gpgmail"_s, u"SignNewEmailsByDefault"_s, f());
    entry("dictionary booleans all read the rest of the list",
          u"defaults write com.apple.finder FXInfoPanesExpanded -dict General -bool true OpenWith -bool true "
          u"Privileges -bool true"_s,
          u"com.apple.finder"_s, u"FXInfoPanesExpanded"_s,
          PropertyList(PropertyDictionary{{u"General"_s, f()}, {u"OpenWith"_s, f()}, {u"Privileges"_s, f()}}));
    entry("-dict-add keeps the backslash of a quoted value",
          u"defaults write com.apple.mail NSUserKeyEquivalents -dict-add \"Send\" \"@\\U21a9\""_s,
          u"com.apple.mail"_s, u"NSUserKeyEquivalents"_s,
          PropertyList(PropertyDictionary{{u"Send"_s, str(u"@\\U21a9"_s)}}));
    entry("-array-add takes the trailing shell words",
          u"defaults write com.apple.dt.Xcode \"IDEAdditionalCounterpartSuffixes\" -array-add \"ViewModel\" \"View\" "
          u"&& killall Xcode"_s,
          u"com.apple.dt.Xcode"_s, u"IDEAdditionalCounterpartSuffixes"_s,
          array({str(u"ViewModel"_s), str(u"View"_s), str(u"&&"_s), str(u"killall"_s), str(u"Xcode"_s)}));
    entry("shell variable stays in the array", u"defaults write NSGlobalDomain AppleLanguages -array ${LANGUAGES[@]}"_s,
          u"NSGlobalDomain"_s, u"AppleLanguages"_s, array({str(u"${LANGUAGES[@]}"_s)}));
    entry("flag-like domain", u"defaults write -globalDomain AppleLanguages -array en-GB pl-GB"_s, u"-globalDomain"_s,
          u"AppleLanguages"_s, array({str(u"en-GB"_s), str(u"pl-GB"_s)}));
    entry("string keeps quotes and escapes",
          u"defaults write com.apple.menuextra.clock \"DateFormat\" -string \"\\\"EEE h:mm:ss\\\"\""_s,
          u"com.apple.menuextra.clock"_s, u"DateFormat"_s, str(u"\"\\\"EEE h:mm:ss\\\"\""_s));
}

void DefaultsTextParserTest::corpusLines()
{
    ORVANE_REQUIRE_CORPUS();
    QFETCH(QString, text);
    QVERIFY2(corpusCommandLines().contains(text), "the row must quote a line of the corpus");
    checkRow();
}

ORVANE_TEST(DefaultsTextParserTest)
#include "DefaultsTextParserTest.moc"
