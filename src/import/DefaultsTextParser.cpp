#include "DefaultsTextParser.h"
#include "DefaultsScalarNotes.h"

#include "platform/OpenStepPropertyListReader.h"
#include "platform/StringReadings.h"

#include <climits>

using namespace Qt::StringLiterals;

namespace {

using Entry = ReadResult<std::optional<DefaultsEntry>>;
using Items = ReadResult<std::monostate>;
// A value made from text: nothing when the text makes none and nothing is wrong.
using CommandValue = ReadResult<std::optional<PropertyList>>;
using WorkingText = DefaultsTextParser::WorkingText;

// The command is recognised by this text, trailing blank included, in this case only.
constexpr QStringView kCommandPrefix = u"defaults write ";

enum class Flag { String, Integer, Real, Boolean, Date, Data, Array, Dictionary, Unknown };

Flag flagNamed(QStringView name)
{
    // Whole, case-sensitive names. There is no -float: the command text the
    // editor itself generates for reals is deliberately not read back.
    if (name == u"-string")
        return Flag::String;
    if (name == u"-int" || name == u"-integer")
        return Flag::Integer;
    if (name == u"-real")
        return Flag::Real;
    if (name == u"-bool" || name == u"-boolean")
        return Flag::Boolean;
    if (name == u"-date")
        return Flag::Date;
    if (name == u"-data")
        return Flag::Data;
    if (name == u"-array" || name == u"-array-add")
        return Flag::Array;
    if (name == u"-dict" || name == u"-dict-add")
        return Flag::Dictionary;
    return Flag::Unknown;
}

bool isScalar(Flag flag)
{
    switch (flag) {
    case Flag::String:
    case Flag::Integer:
    case Flag::Real:
    case Flag::Boolean:
    case Flag::Date:
    case Flag::Data:
        return true;
    case Flag::Array:
    case Flag::Dictionary:
    case Flag::Unknown:
        return false;
    }
    return false;
}

// How a token ended. NoEnd: a quote without its partner, or no blank after a
// bare token; each context decides what that means. LeadingSpace: the token
// position begins with a blank, whose "preceding character" lies before the
// text, which is an out-of-range error wherever a token is read.
enum class TokenEnd { Found, NoEnd, LeadingSpace };

struct Token {
    bool quoted = false;
    TokenEnd end = TokenEnd::Found;
    QString text;         // for NoEnd: everything after the opening quote, or the whole rest
    qsizetype length = 0; // units of the working text the token takes up
};

Token readQuotedToken(QStringView rest)
{
    const qsizetype close = rest.indexOf(u'"', 1);
    if (close < 0)
        return {true, TokenEnd::NoEnd, rest.mid(1).toString(), rest.size()};
    // The unit after the closing quote goes with it, blank or not.
    return {true, TokenEnd::Found, rest.mid(1, close - 1).toString(), qMin(close + 2, rest.size())};
}

Token readBareToken(QStringView rest)
{
    qsizetype space = rest.indexOf(u' ');
    if (space == 0)
        return {false, TokenEnd::LeadingSpace, QString(), 0};
    Token token;
    qsizetype segment = 0;
    while (space > 0 && rest.at(space - 1) == u'\\') {
        // The backslash goes, the blank stays in the token, and the unit right
        // after it is never taken as the end, so "a\  b" is one token.
        token.text += rest.mid(segment, space - 1 - segment);
        segment = space;
        const qsizetype from = space + 2;
        space = from < rest.size() ? rest.indexOf(u' ', from) : -1;
    }
    if (space < 0) {
        token.text += rest.mid(segment);
        token.end = TokenEnd::NoEnd;
        token.length = rest.size();
        return token;
    }
    token.text += rest.mid(segment, space - segment);
    token.length = space + 1;
    return token;
}

Token readToken(QStringView rest)
{
    return rest.startsWith(u'"') ? readQuotedToken(rest) : readBareToken(rest);
}

// A type flag is read only where the text starts with "-"; otherwise it is
// -string and nothing is taken. No quotes or escapes apply. Answers nothing
// when the flag has no blank after it (and then takes nothing).
std::optional<Flag> readFlag(WorkingText &working)
{
    const QStringView rest = working.rest();
    if (!rest.startsWith(u'-'))
        return Flag::String;
    const qsizetype space = rest.indexOf(u' ');
    if (space < 0)
        return std::nullopt;
    const Flag flag = flagNamed(rest.first(space));
    working.consume(space + 1);
    return flag;
}

Items failureAt(const WorkingText &working, qsizetype index, ReadStatus status, const QString &message)
{
    return Items::failure(status, working.sourcePositionOf(index), message);
}

Items blankFailure(const WorkingText &working, const QString &what)
{
    return failureAt(working, working.index(), ReadStatus::OutOfRange,
                     u"A blank stands where %1 should start"_s.arg(what));
}

Items dateFailure(const WorkingText &working, qsizetype index, const QString &text)
{
    return failureAt(working, index, ReadStatus::BadValue,
                     u"\"%1\" is not a date of the form YYYY-MM-DD HH:MM:SS \u00B1HHMM"_s.arg(text));
}

// The data literal of old-style text: hex pairs with blanks between them.
// GNUstep's base64 form <[…]>, which the old-style reader also knows, is not
// one; and a NUL would make the reader take the bytes for UTF-16.
std::optional<QByteArray> dataFromLiteral(const QString &text)
{
    if (text.startsWith(u'[') || text.contains(QChar(0)))
        return std::nullopt;
    const QByteArray literal = '<' + text.toUtf8() + '>';
    const ReadResult<PropertyList> read = OpenStepPropertyListReader::read(literal);
    if (!read || !read.value.isData())
        return std::nullopt;
    return read.value.toData();
}

enum class Made { Value, Skip, BadDate };

// A scalar from its text. booleanText is what the boolean reading looks at:
// the value text itself in the command, the text left after the item in lists.
Made makeScalar(Flag flag, const QString &text, QStringView booleanText, PropertyList &out)
{
    switch (flag) {
    case Flag::String:
        out = PropertyList(text);
        return Made::Value;
    case Flag::Integer:
        out = PropertyList::integer(StringReadings::intValue(text), 'i');
        return Made::Value;
    case Flag::Real:
        out = PropertyList::real(StringReadings::doubleValue(text), 'd');
        return Made::Value;
    case Flag::Boolean:
        out = PropertyList::boolean(booleanText == u"true" || booleanText == u"yes");
        return Made::Value;
    case Flag::Date: {
        const std::optional<double> seconds = StringReadings::dateWithString(text);
        if (!seconds)
            return Made::BadDate;
        out = PropertyList::date(*seconds);
        return Made::Value;
    }
    case Flag::Data: {
        const std::optional<QByteArray> bytes = dataFromLiteral(text);
        if (!bytes)
            return Made::Skip;
        out = PropertyList(*bytes);
        return Made::Value;
    }
    case Flag::Array:
    case Flag::Dictionary:
    case Flag::Unknown:
        return Made::Skip; // lists never nest
    }
    return Made::Skip;
}

ReadWarning note(ReadWarning::Kind kind, const QString &message)
{
    return {kind, SourcePosition(), message};
}

// A warning gets its place only while more are kept: finding a line and column walks the text.
void addNote(ReadWarnings &warnings, const WorkingText &working, qsizetype index, const ReadWarning &what)
{
    const bool placed = warnings.wantsMore();
    warnings.add(what.kind, placed ? working.sourcePositionOf(index) : SourcePosition(), what.message);
}

// What the reading of a scalar made of its text where it did not take it as written.
std::optional<ReadWarning> coercionNote(Flag flag, const QString &text, QStringView booleanText,
                                        const PropertyList &value)
{
    switch (flag) {
    case Flag::Integer:
        return DefaultsScalarNotes::integer(text, int(value.toInteger()));
    case Flag::Real:
        return DefaultsScalarNotes::real(text, value.toReal());
    case Flag::Boolean:
        return DefaultsScalarNotes::boolean(text, booleanText, value.toBool());
    case Flag::String:
    case Flag::Date:
    case Flag::Data:
    case Flag::Array:
    case Flag::Dictionary:
    case Flag::Unknown:
        break;
    }
    return std::nullopt;
}

// Why a list leaves an item out.
ReadWarning skippedNote(Flag flag, const QString &text)
{
    const QString quoted = quotedForMessage(text);
    switch (flag) {
    case Flag::Data:
        return note(ReadWarning::Kind::Dropped, u"%1 is not hex data; the item is left out"_s.arg(quoted));
    case Flag::Array:
    case Flag::Dictionary:
        return note(ReadWarning::Kind::Dropped, u"Lists do not nest; the item %1 is left out"_s.arg(quoted));
    case Flag::String:
    case Flag::Integer:
    case Flag::Real:
    case Flag::Boolean:
    case Flag::Date:
    case Flag::Unknown:
        break;
    }
    return note(ReadWarning::Kind::Dropped,
                u"The item %1 follows an unknown type flag; it is left out"_s.arg(quoted));
}

Entry noResult()
{
    return Entry::success(std::nullopt);
}

// Reads the domain and the key; a failure or no entry when the command
// stops there.
std::optional<Entry> readDomainAndKey(WorkingText &working, QString &domain, QString &key)
{
    const Token domainToken = readToken(working.rest());
    if (domainToken.end == TokenEnd::LeadingSpace)
        return Entry::failure(blankFailure(working, u"the domain"_s));
    if (domainToken.end == TokenEnd::NoEnd && domainToken.quoted)
        return Entry::failure(failureAt(working, working.index(), ReadStatus::OutOfRange,
                                        u"The domain's opening quote has no closing quote"_s));
    // A bare domain without an end takes the rest, which leaves no key.
    working.consume(domainToken.length);
    domain = domainToken.text;
    if (working.isEmpty())
        return noResult();

    const Token keyToken = readToken(working.rest());
    switch (keyToken.end) {
    case TokenEnd::LeadingSpace:
        return Entry::failure(blankFailure(working, u"the key"_s));
    case TokenEnd::NoEnd:
        return Entry::failure(failureAt(working, working.index(), ReadStatus::OutOfRange,
                                        keyToken.quoted ? u"The key's opening quote has no closing quote"_s
                                                        : u"Nothing follows the key"_s));
    case TokenEnd::Found:
        break;
    }
    working.consume(keyToken.length);
    key = keyToken.text;
    if (working.isEmpty())
        return noResult();
    return std::nullopt;
}

ReadWarning keyWithoutValue(const Token &key)
{
    const bool unclosed = key.end == TokenEnd::NoEnd && key.quoted;
    const QString what = unclosed ? u"The quoted key %1 has no closing quote"_s : u"The key %1 has no value"_s;
    return note(ReadWarning::Kind::Dropped, what.arg(quotedForMessage(key.text)) + u"; it is left out"_s);
}

// The entries of -dict/-dict-add into an empty dictionary: a later key
// replaces an earlier one, with a warning.
Items readEntries(PropertyDictionary &dictionary, WorkingText &working, ReadWarnings &warnings)
{
    while (!working.isEmpty()) {
        // A key is always a token, never a flag: "-x" is a key here.
        const qsizetype keyIndex = working.index();
        const Token key = readToken(working.rest());
        if (key.end == TokenEnd::LeadingSpace)
            return blankFailure(working, u"a dictionary key"_s);
        const bool keyEnds = key.end == TokenEnd::Found;
        if (keyEnds)
            working.consume(key.length);
        const std::optional<Flag> flag = keyEnds && !working.isEmpty() ? readFlag(working) : std::nullopt;
        if (!flag || working.isEmpty()) {
            addNote(warnings, working, keyIndex, keyWithoutValue(key));
            return {};
        }
        const qsizetype valueIndex = working.index();
        const Token value = readToken(working.rest());
        if (value.end == TokenEnd::LeadingSpace)
            return blankFailure(working, u"a dictionary value"_s);
        if (value.end == TokenEnd::NoEnd && value.quoted) {
            const QString message = u"The value of the key %1 has no closing quote; the key is left out"_s;
            addNote(warnings, working, keyIndex,
                    note(ReadWarning::Kind::Dropped, message.arg(quotedForMessage(key.text))));
            return {};
        }
        working.consume(value.length);
        PropertyList item;
        switch (makeScalar(*flag, value.text, working.rest(), item)) {
        case Made::Value: {
            const qsizetype before = dictionary.size();
            dictionary.insert(key.text, item);
            if (dictionary.size() == before) {
                const QString message = u"The key %1 occurs again; its last value is kept"_s;
                addNote(warnings, working, keyIndex,
                        note(ReadWarning::Kind::DuplicateKey, message.arg(quotedForMessage(key.text))));
            }
            const std::optional<ReadWarning> coerced = coercionNote(*flag, value.text, working.rest(), item);
            if (coerced)
                addNote(warnings, working, valueIndex, *coerced);
            break;
        }
        case Made::Skip:
            addNote(warnings, working, valueIndex, skippedNote(*flag, value.text));
            break;
        case Made::BadDate:
            return dateFailure(working, valueIndex, value.text);
        }
    }
    return {};
}

// The command's value is the whole rest of the text, never a token.
CommandValue makeCommandValue(Flag flag, WorkingText &working)
{
    const qsizetype valueIndex = working.index();
    QString text = working.rest().toString();
    switch (flag) {
    case Flag::Array: {
        PropertyArray array;
        const Items items = DefaultsTextParser::populateArray(array, working);
        return items ? CommandValue::success(PropertyList(array), items) : CommandValue::failure(items);
    }
    case Flag::Dictionary: {
        PropertyDictionary dictionary;
        const Items items = DefaultsTextParser::populateDict(dictionary, working);
        return items ? CommandValue::success(PropertyList(dictionary), items) : CommandValue::failure(items);
    }
    case Flag::Date:
        // Surrounding quotes go, without checking that the last unit is one.
        if (text.startsWith(u'"'))
            text = text.size() >= 2 ? text.mid(1, text.size() - 2) : QString();
        break;
    case Flag::String:
    case Flag::Integer:
    case Flag::Real:
    case Flag::Boolean:
    case Flag::Data:
    case Flag::Unknown:
        break;
    }
    PropertyList value;
    switch (makeScalar(flag, text, text, value)) {
    case Made::Value: {
        ReadWarnings warnings;
        if (const std::optional<ReadWarning> coerced = coercionNote(flag, text, text, value))
            addNote(warnings, working, valueIndex, *coerced);
        return CommandValue::success(value, warnings.take());
    }
    case Made::Skip:
        return CommandValue::success(std::nullopt);
    case Made::BadDate:
        return CommandValue::failure(dateFailure(working, valueIndex, text));
    }
    return CommandValue::success(std::nullopt);
}

} // namespace

DefaultsTextParser::WorkingText::WorkingText(const QString &text) : m_text(text), m_source(text) {}

DefaultsTextParser::WorkingText::WorkingText(const QString &text, const QString &source, qsizetype cut,
                                             qsizetype cutLength)
    : m_text(text), m_source(source), m_cut(cut), m_cutLength(cutLength)
{
}

SourcePosition DefaultsTextParser::WorkingText::sourcePositionOf(qsizetype index) const
{
    qsizetype offset = m_cut >= 0 && index >= m_cut ? index + m_cutLength : index;
    offset = qBound(qsizetype(0), offset, m_source.size());
    const QStringView before = QStringView(m_source).first(offset);
    const qsizetype lineStart = before.lastIndexOf(u'\n') + 1;
    SourcePosition position;
    position.line = int(qMin<qsizetype>(before.count(u'\n') + 1, INT_MAX));
    position.column = int(qMin<qsizetype>(offset - lineStart + 1, INT_MAX));
    return position;
}

ReadResult<std::optional<DefaultsEntry>> DefaultsTextParser::dictionaryFromDefaultsString(const QString &text)
{
    const qsizetype cut = text.indexOf(kCommandPrefix);
    if (cut < 0)
        return noResult();
    // Only the prefix goes: text before it stays and starts the domain.
    QString workingCopy;
    workingCopy.reserve(text.size() - kCommandPrefix.size());
    workingCopy.append(QStringView(text).first(cut)).append(QStringView(text).mid(cut + kCommandPrefix.size()));
    WorkingText working(workingCopy, text, cut, kCommandPrefix.size());
    if (working.isEmpty())
        return noResult();

    QString domain;
    QString key;
    if (std::optional<Entry> stopped = readDomainAndKey(working, domain, key))
        return std::move(*stopped);

    // In the command a flag with no blank after it is the rest of the text.
    std::optional<Flag> flag = readFlag(working);
    if (!flag) {
        flag = flagNamed(working.rest());
        working.consume(working.rest().size());
    }
    if (working.isEmpty() && isScalar(*flag))
        return noResult();

    const CommandValue made = makeCommandValue(*flag, working);
    if (!made)
        return Entry::failure(made);
    if (!made.value)
        return noResult();
    DefaultsEntry entry{domain, {}};
    entry.dictionary.insert(key, *made.value);
    return Entry::success(std::move(entry), made);
}

ReadResult<std::monostate> DefaultsTextParser::populateDict(PropertyDictionary &dictionary,
                                                            WorkingText &working)
{
    // Read into a dictionary of its own, so that a key the text repeats is told
    // from one that was there before.
    PropertyDictionary read;
    ReadWarnings warnings;
    Items result = readEntries(read, working, warnings);
    if (dictionary.isEmpty()) {
        dictionary = read;
    } else {
        for (qsizetype index = 0; index < read.size(); ++index)
            dictionary.insert(read.keyAt(index), read.valueAt(index));
    }
    result.warnings = warnings.take();
    return result;
}

ReadResult<std::monostate> DefaultsTextParser::populateArray(PropertyArray &array, WorkingText &working)
{
    ReadWarnings warnings;
    while (!working.isEmpty()) {
        const qsizetype flagIndex = working.index();
        const std::optional<Flag> flag = readFlag(working);
        if (!flag || working.isEmpty()) {
            const QString message = u"A type flag ends the list without an item; it is left out"_s;
            addNote(warnings, working, flagIndex, note(ReadWarning::Kind::Dropped, message));
            break;
        }
        const qsizetype itemIndex = working.index();
        // An item without an end, quoted or not, is the rest of the text.
        const Token token = readToken(working.rest());
        if (token.end == TokenEnd::LeadingSpace)
            return blankFailure(working, u"an array item"_s);
        working.consume(token.length);
        PropertyList item;
        switch (makeScalar(*flag, token.text, working.rest(), item)) {
        case Made::Value: {
            array.append(item);
            const std::optional<ReadWarning> coerced = coercionNote(*flag, token.text, working.rest(), item);
            if (coerced)
                addNote(warnings, working, itemIndex, *coerced);
            break;
        }
        case Made::Skip:
            addNote(warnings, working, itemIndex, skippedNote(*flag, token.text));
            break;
        case Made::BadDate:
            return dateFailure(working, itemIndex, token.text);
        }
    }
    return Items::success({}, warnings.take());
}
