// Reading dropped `defaults write` lines: the one-blank token rules, the
// per-context outcomes of a token without an end, and real lines from setup scripts.
#include "Corpus.h"
#include "TestRegistry.h"
#include "WarningsPicture.h"

#include "import/DefaultsTextParser.h"

#include <QDateTime>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

// What a row expects: an entry, no entry, or a failure.
enum class Outcome { Entry, NoResult, Error };
using Result = ReadResult<std::optional<DefaultsEntry>>;

Outcome outcomeOf(const Result &result)
{
    return !result ? Outcome::Error : result.value ? Outcome::Entry : Outcome::NoResult;
}

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
    QTest::addColumn<QString>("warnings");
}

// warnings: what was resolved rather than taken as written, as WarningsPicture shows it.
void entry(const char *name, const QString &text, const QString &domain, const QString &key, const PropertyList &value,
           const char *warnings = "")
{
    QTest::newRow(name) << text << int(Outcome::Entry) << domain << key << value << 0 << 0 << 0
                        << QString::fromLatin1(warnings);
}

// The common case: domain d, key k.
void dk(const char *name, const QString &text, const PropertyList &value, const char *warnings = "")
{
    entry(name, text, u"d"_s, u"k"_s, value, warnings);
}

void none(const char *name, const QString &text)
{
    QTest::newRow(name) << text << int(Outcome::NoResult) << QString() << QString() << PropertyList() << 0 << 0 << 0
                        << QString();
}

void error(const char *name, const QString &text, ReadStatus status, int line, int column)
{
    QTest::newRow(name) << text << int(Outcome::Error) << QString() << QString() << PropertyList() << int(status)
                        << line << column << QString();
}

void checkRow()
{
    QFETCH(QString, text);
    QFETCH(int, outcome);
    QFETCH(QString, warnings);
    const Result result = DefaultsTextParser::dictionaryFromDefaultsString(text);
    QCOMPARE(int(outcomeOf(result)), outcome);
    QCOMPARE(WarningsPicture::of(result.warnings), warnings);
    switch (outcomeOf(result)) {
    case Outcome::Entry: {
        QFETCH(QString, domain);
        QFETCH(QString, key);
        QFETCH(PropertyList, value);
        QCOMPARE(result.value->domain, domain);
        QCOMPARE(result.value->dictionary.size(), 1);
        QCOMPARE(result.value->dictionary.keyAt(0), key);
        const PropertyList &read = result.value->dictionary.valueAt(0);
        QVERIFY2(read.isIdenticalTo(value), qPrintable(read.description() + u" is not "_s + value.description()));
        break;
    }
    case Outcome::NoResult:
        break;
    case Outcome::Error: {
        QFETCH(int, status);
        QFETCH(int, line);
        QFETCH(int, column);
        QCOMPARE(int(result.status), status);
        QCOMPARE(result.position.line, line);
        QCOMPARE(result.position.column, column);
        QVERIFY(!result.message.isEmpty());
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
    const QString p = u"defaults write d k "_s;
    const PropertyList no = PropertyList::boolean(false);
    // Token ends and positions.
    error("key without a blank after it", prefix + u"d k"_s, ReadStatus::OutOfRange, 1, 18);
    none("nothing after the key's blank", p);
    none("bare domain with nothing after it", prefix + u"d"_s);
    entry("unit after an escaped blank never ends the token", prefix + u"a\\  b k v"_s, u"a  b"_s, u"k"_s,
          str(u"v"_s));
    error("escaped blank at the end of the key", prefix + u"d k\\ "_s, ReadStatus::OutOfRange, 1, 18);
    error("domain quote never closed", prefix + u"\"d k -int 1"_s, ReadStatus::OutOfRange, 1, 16);
    error("closing quote eats the next unit", prefix + u"\"d\"x k v"_s, ReadStatus::OutOfRange, 1, 20);
    none("quoted domain closed at the very end", prefix + u"\"d\""_s);
    error("two blanks before the domain", prefix + u" d k v"_s, ReadStatus::OutOfRange, 1, 16);
    error("position counts the text before the prefix", u"  defaults write d k v"_s, ReadStatus::OutOfRange, 1, 1);
    error("position skips the prefix and counts lines", u"x\ndefaults write d  k v"_s, ReadStatus::OutOfRange,
          2, 18);
    entry("tab is not a separator", prefix + u"d\tk x v"_s, u"d\tk"_s, u"x"_s, str(u"v"_s));
    entry("only the first prefix goes", prefix + u"d defaults write k v"_s, u"d"_s, u"defaults"_s,
          str(u"write k v"_s));
    none("prefix in another case", u"Defaults Write d k v"_s);
    // Values.
    dk("no flag keeps later blanks in the string", p + u"hello world"_s, str(u"hello world"_s));
    dk("value's leading blank stays", p + u" v"_s, str(u" v"_s));
    dk("string value is never unquoted", p + u"-string \"hello\""_s, str(u"\"hello\""_s));
    none("scalar flag with nothing after it", p + u"-int"_s);
    none("unknown flag", p + u"-intx 5"_s);
    dk("-integer is -int and reads a leading number", p + u"-integer 3.7"_s, i32(3), "Adjusted at line 1, column 29");
    dk("integer clamps to 32 bits", p + u"-int 99999999999"_s, i32(2147483647), "OutOfRange at line 1, column 25");
    dk("real reads a leading number", p + u"-real 1.5x"_s, PropertyList::real(1.5), "Adjusted at line 1, column 26");
    dk("real beyond a double is infinity", p + u"-real -1e999"_s,
       PropertyList::real(-std::numeric_limits<double>::infinity()), "OutOfRange at line 1, column 26");
    dk("boolean YES is false", p + u"-bool YES"_s, no, "Adjusted at line 1, column 26");
    dk("-boolean is -bool", p + u"-boolean true"_s, PropertyList::boolean(true));
    dk("data with blanks between pairs", p + u"-data 48 65"_s, PropertyList(QByteArray("He")));
    none("data with an odd digit", p + u"-data 486"_s);
    none("data in base64 brackets", p + u"-data [SGk=]"_s);
    none("data of a typed integer", p + u"-data *I5"_s);
    none("data hiding UTF-16 behind NULs", p + u"-data \u00004\u00001\u0000>\u0000/\u0000/\u0000A"_s);
    dk("bare date is the whole rest", p + u"-date 2006-01-02 03:04:05 +0100"_s, utcDate(2006, 1, 2, 2, 4, 5));
    error("unreadable date", p + u"-date tomorrow"_s, ReadStatus::BadValue, 1, 26);
    error("date's last unit goes even when not a quote", p + u"-date \"2006-01-02 03:04:05 +0000"_s,
          ReadStatus::BadValue, 1, 26);
}

void DefaultsTextParserTest::lists_data()
{
    addColumns();
    const QString p = u"defaults write d k "_s;
    const auto array = [](std::initializer_list<PropertyList> items) { return PropertyList(PropertyArray(items)); };
    const auto dict = [](std::initializer_list<std::pair<QString, PropertyList>> entries) {
        return PropertyList(PropertyDictionary(entries));
    };
    dk("empty array", p + u"-array"_s, array({}));
    dk("array of bare, quoted and typed items", p + u"-array a \"b c\" -int 7"_s,
       array({str(u"a"_s), str(u"b c"_s), i32(7)}));
    dk("array boolean looks at nothing left", p + u"-array -bool true"_s, array({PropertyList::boolean(false)}),
       "Adjusted at line 1, column 33");
    dk("array boolean looks at the rest of the list", p + u"-array -bool false true"_s,
       array({PropertyList::boolean(true), str(u"true"_s)}), "Adjusted at line 1, column 33");
    dk("array quote never closed takes the rest", p + u"-array a \"b c"_s, array({str(u"a"_s), str(u"b c"_s)}));
    dk("array escaped blank at the end", p + u"-array a\\ "_s, array({str(u"a "_s)}));
    dk("array backslash not before a blank stays", p + u"-array a\\b c"_s, array({str(u"a\\b"_s), str(u"c"_s)}));
    dk("array flag without a blank stops", p + u"-array a -int"_s, array({str(u"a"_s)}), "Dropped at line 1, column 29");
    dk("array unknown flag drops its item", p + u"-array -float 1 x"_s, array({str(u"x"_s)}),
       "Dropped at line 1, column 34");
    dk("array never nests", p + u"-array -dict x y"_s, array({str(u"y"_s)}), "Dropped at line 1, column 33");
    dk("array skips bad data", p + u"-array -data zz -data 4142"_s, array({PropertyList(QByteArray("AB"))}),
       "Dropped at line 1, column 33");
    error("array unreadable date", p + u"-array x -date never"_s, ReadStatus::BadValue, 1, 35);
    error("array item after two blanks", p + u"-array a  b"_s, ReadStatus::OutOfRange, 1, 29);
    dk("dictionary of string and integer", p + u"-dict a 1 b -int 2"_s,
       dict({{u"a"_s, str(u"1"_s)}, {u"b"_s, i32(2)}}));
    dk("dictionary key alone is dropped", p + u"-dict a"_s, dict({}), "Dropped at line 1, column 26");
    dk("dictionary key is never a flag", p + u"-dict -x 1"_s, dict({{u"-x"_s, str(u"1"_s)}}));
    dk("dictionary later key replaces", p + u"-dict a 1 a 2"_s, dict({{u"a"_s, str(u"2"_s)}}),
       "DuplicateKey at line 1, column 30");
    dk("dictionary boolean looks at the rest", p + u"-dict a -bool no yes"_s,
       dict({{u"a"_s, PropertyList::boolean(true)}}), "Adjusted at line 1, column 34; Dropped at line 1, column 37");
    dk("dictionary quoted value never closed stops", p + u"-dict a 1 b \"2"_s, dict({{u"a"_s, str(u"1"_s)}}),
       "Dropped at line 1, column 30");
    dk("dictionary bare value takes the rest", p + u"-dict a b\\ "_s, dict({{u"a"_s, str(u"b "_s)}}));
    dk("dictionary quoted key never closed stops", p + u"-dict \"a b"_s, dict({}), "Dropped at line 1, column 26");
    dk("dictionary drops unknown and nested flags", p + u"-dict a -float 1 b -array x c y"_s,
       dict({{u"c"_s, str(u"y"_s)}}), "Dropped at line 1, column 35; Dropped at line 1, column 46");
    dk("dictionary date is unquoted by the token", p + u"-dict a -date \"2006-01-02 03:04:05 +0000\""_s,
       dict({{u"a"_s, utcDate(2006, 1, 2, 3, 4, 5)}}));
    error("dictionary unreadable date", p + u"-dict a -date 2006"_s, ReadStatus::BadValue, 1, 34);
    error("dictionary key after two blanks", p + u"-dict  a b"_s, ReadStatus::OutOfRange, 1, 26);
}

void DefaultsTextParserTest::listReadersAppendToWhatIsThere()
{
    PropertyArray array{str(u"old"_s)};
    DefaultsTextParser::WorkingText items(u"a -int 2"_s);
    QVERIFY(DefaultsTextParser::populateArray(array, items));
    QVERIFY(array == PropertyArray({str(u"old"_s), str(u"a"_s), i32(2)}));
    QVERIFY(items.isEmpty());

    PropertyDictionary dictionary{{u"a"_s, str(u"old"_s)}, {u"b"_s, str(u"kept"_s)}};
    DefaultsTextParser::WorkingText entries(u"a new c -date x"_s);
    const ReadResult<std::monostate> failure = DefaultsTextParser::populateDict(dictionary, entries);
    QVERIFY(!failure);
    QCOMPARE(failure.status, ReadStatus::BadValue);
    QCOMPARE(failure.position.column, 15);
    // What was read before the failure is in the dictionary; the caller drops it all.
    QVERIFY(dictionary == PropertyDictionary({{u"a"_s, str(u"new"_s)}, {u"b"_s, str(u"kept"_s)}}));

    // Replacing what was there is what the list is for; only a key the text repeats is worth a warning.
    DefaultsTextParser::WorkingText again(u"a new a newer"_s);
    const ReadResult<std::monostate> replaced = DefaultsTextParser::populateDict(dictionary, again);
    QVERIFY(dictionary == PropertyDictionary({{u"a"_s, str(u"newer"_s)}, {u"b"_s, str(u"kept"_s)}}));
    QCOMPARE(WarningsPicture::of(replaced.warnings), u"DuplicateKey at line 1, column 7"_s);
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
        const Result result = DefaultsTextParser::dictionaryFromDefaultsString(line);
        const bool isEntry = outcomeOf(result) == Outcome::Entry;
        entries += isEntry ? 1 : 0;
        QVERIFY2(!isEntry || result.value->dictionary.size() == 1, qPrintable(line));
        QVERIFY2(result || !result.message.isEmpty(), qPrintable(line));
    }
    // Most real lines are plain, well-formed commands.
    QVERIFY2(entries > lines.size() / 2, qPrintable(QString::number(entries)));
}

void DefaultsTextParserTest::corpusLines_data()
{
    addColumns();
    none("-float gives no result", u"defaults write NSGlobalDomain NSWindowResizeTime -float 0.001"_s);
    none("-currentHost before write", u"defaults -currentHost write NSGlobalDomain com.apple.mouse.tapBehavior -int 1"_s);
    entry("quoted number and trailing shell read as 0",
          u"defaults write com.apple.ActivityMonitor \"IconType\" -int \"5\" && killall Activity\\ Monitor"_s,
          u"com.apple.ActivityMonitor"_s, u"IconType"_s, i32(0), "Adjusted at line 1, column 58");
    entry("sudo becomes the domain",
          u"sudo defaults write /Library/Preferences/com.apple.timezone.auto Active -bool YES"_s, u"sudo"_s,
          u"/Library/Preferences/com.apple.timezone.auto"_s, str(u"Active -bool YES"_s));
    entry("-dict-add keeps the backslash of a quoted value",
          u"defaults write com.apple.mail NSUserKeyEquivalents -dict-add \"Send\" \"@\\U21a9\""_s,
          u"com.apple.mail"_s, u"NSUserKeyEquivalents"_s,
          PropertyList(PropertyDictionary{{u"Send"_s, str(u"@\\U21a9"_s)}}));
    entry("quoted domain, string keeps its quotes", u"defaults write \"com.apple.sharingd\" DiscoverableMode -string \"Everyone\""_s,
          u"com.apple.sharingd"_s, u"DiscoverableMode"_s, str(u"\"Everyone\""_s));
    entry("tilde path as the domain",
          u"defaults write ~/Library/Preferences/org.gpgtools.gpgmail SignNewEmailsByDefault -bool false"_s,
          u"~/Library/Preferences/org.gpgtools.gpgmail"_s, u"SignNewEmailsByDefault"_s, PropertyList::boolean(false));
    entry("-array-add takes the trailing shell as items",
          u"defaults write com.apple.dt.Xcode \"IDEAdditionalCounterpartSuffixes\" -array-add \"ViewModel\" \"View\" && killall Xcode"_s,
          u"com.apple.dt.Xcode"_s, u"IDEAdditionalCounterpartSuffixes"_s,
          PropertyList(PropertyArray{str(u"ViewModel"_s), str(u"View"_s), str(u"&&"_s), str(u"killall"_s), str(u"Xcode"_s)}));
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
