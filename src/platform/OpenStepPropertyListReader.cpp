#include "OpenStepPropertyListReader.h"
#include "NumberText.h"

#include "PropertyListSerialization.h"
#include "StringReadings.h"
#include "XmlText.h"

#include <array>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace {

using Result = ReadResult<PropertyList>;

// ---------------------------------------------------------------------------
// Character classes

constexpr std::array<bool, 128> makeUnquotedTable()
{
    std::array<bool, 128> table{};
    for (char c = 'a'; c <= 'z'; ++c)
        table[static_cast<size_t>(c)] = true;
    for (char c = 'A'; c <= 'Z'; ++c)
        table[static_cast<size_t>(c)] = true;
    for (char c = '0'; c <= '9'; ++c)
        table[static_cast<size_t>(c)] = true;
    for (char c : std::string_view("_$/:.-"))
        table[static_cast<size_t>(c)] = true;
    return table;
}
constexpr std::array<bool, 128> kUnquoted = makeUnquotedTable();

bool isUnquotedChar(char16_t unit)
{
    return unit < 128 && kUnquoted[unit];
}

bool isWhitespace(char16_t unit)
{
    return (unit >= 0x09 && unit <= 0x0D) || unit == u' ' || unit == 0x2028 || unit == 0x2029;
}

// Between the hex pairs of data the platform allows fewer blanks than between tokens.
bool isDataSpace(char16_t unit)
{
    return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n' || unit == 0x2028 ||
           unit == 0x2029;
}

// NeXTSTEP Latin, the byte encoding of octal escapes, from 0x80 up; the lower
// half is ASCII. 0xFE and 0xFF are unassigned.
constexpr char16_t kNextStepHigh[128] = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC,
    0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB,
    0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192,
    0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021,
    0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9,
    0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD,
    0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5,
    0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB,
    0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD,
};

char16_t fromNextStep(int byte)
{
    return byte < 0x80 ? static_cast<char16_t>(byte) : kNextStepHigh[byte - 0x80];
}

QString describeUnit(char16_t unit)
{
    if (unit > 0x20 && unit < 0x7F)
        return QStringLiteral("'%1'").arg(QChar(unit));
    return QStringLiteral("U+%1").arg(int(unit), 4, 16, QLatin1Char('0')).toUpper();
}

// ---------------------------------------------------------------------------
// GNUstep typed values (<*I…>, <*R…>, <*B…>, <*D…>)

std::optional<PropertyList> typedInteger(QStringView text)
{
    const bool negative = text.startsWith(u'-');
    const QStringView digits = negative ? text.sliced(1) : text;
    if (digits.isEmpty())
        return std::nullopt;
    quint64 magnitude = 0;
    for (QChar unit : digits) {
        const int digit = unit.unicode() - u'0';
        if (digit < 0 || digit > 9 || magnitude > (std::numeric_limits<quint64>::max() - digit) / 10)
            return std::nullopt;
        magnitude = magnitude * 10 + digit;
    }
    constexpr quint64 kInt64Max = std::numeric_limits<qint64>::max();
    if (negative) {
        // GNUstep reads a leading '-' as signed long long.
        if (magnitude > kInt64Max + 1)
            return std::nullopt;
        return PropertyList::integerFromFile(static_cast<qint64>(0 - magnitude));
    }
    // Otherwise as unsigned; above INT64_MAX only the unsigned 64-bit type holds it, as XML does.
    if (magnitude > kInt64Max)
        return PropertyList::unsignedInteger(magnitude, 'Q');
    return PropertyList::integerFromFile(static_cast<qint64>(magnitude));
}

// GNUstep reads reals with strtod; the whole text must be the number.
std::optional<PropertyList> typedReal(QStringView text)
{
    std::string ascii;
    ascii.reserve(static_cast<size_t>(text.size()));
    for (QChar unit : text) {
        if (unit.unicode() == 0 || unit.unicode() >= 0x80)
            return std::nullopt;
        ascii.push_back(static_cast<char>(unit.unicode()));
    }
    if (ascii.empty())
        return std::nullopt;
    char *end = nullptr;
    const double value = NumberText::strtodC(ascii.c_str(), &end);
    if (end != ascii.c_str() + ascii.size())
        return std::nullopt;
    return PropertyList::real(value);
}

std::optional<PropertyList> typedValue(char16_t type, QStringView text)
{
    switch (type) {
    case u'I':
        return typedInteger(text);
    case u'R':
        return typedReal(text);
    case u'B':
        if (text == u"Y")
            return PropertyList::boolean(true);
        if (text == u"N")
            return PropertyList::boolean(false);
        return std::nullopt;
    case u'D':
        if (const std::optional<double> seconds = StringReadings::dateWithString(text.toString()))
            return PropertyList::date(*seconds);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

// ---------------------------------------------------------------------------
// The parser: one function per grammar rule, working on indexes into the
// decoded text. Strings are built from slices of the text, one allocation each.

class Parser {
public:
    explicit Parser(QStringView text) : m_text(text) {}

    std::optional<PropertyList> parseDocument();
    // Skips whitespace and comments; false (with the error set) on an unterminated comment.
    bool skipIgnorable();
    bool atEnd() const { return m_pos >= m_text.size(); }
    char16_t current() const { return m_text[m_pos].unicode(); }

    ReadStatus status = ReadStatus::Ok;
    qsizetype errorIndex = 0;
    QString message;
    // What was resolved rather than refused; each offset holds an index in the text.
    ReadWarnings warnings;

private:
    bool fail(ReadStatus failure, qsizetype index, const QString &text);
    void warn(ReadWarning::Kind kind, qsizetype index, const QString &text)
    {
        warnings.add(kind, SourcePosition{index}, text);
    }
    void insertEntry(PropertyDictionary &out, qsizetype keyAt, const QString &key, const PropertyList &value);
    char16_t unitAt(qsizetype index) const { return index < m_text.size() ? m_text[index].unicode() : 0; }
    qsizetype find(char16_t unit, qsizetype from) const;

    bool parseValue(int depth, PropertyList &out);
    bool parseString(QString &out);
    bool parseQuoted(QString &out);
    bool parseEscape(qsizetype open, QString &out);
    bool parseUnicodeEscape(qsizetype escape, QString &out);
    bool parseOctalEscape(qsizetype escape, QString &out);
    std::optional<char16_t> hexUnit();
    bool parseArray(int depth, PropertyList &out);
    bool parseDictionary(int depth, PropertyList &out);
    bool parseEntries(int depth, qsizetype open, PropertyDictionary &out);
    bool parseEntry(int depth, qsizetype open, PropertyDictionary &out);
    bool endInside(qsizetype open, const QString &what);
    bool parseData(PropertyList &out);
    bool parseHexData(PropertyList &out);
    bool parseTyped(PropertyList &out);
    bool parseBase64(PropertyList &out);

    QStringView m_text;
    qsizetype m_pos = 0;
};

bool Parser::fail(ReadStatus failure, qsizetype index, const QString &text)
{
    status = failure;
    errorIndex = index;
    message = text;
    return false;
}

qsizetype Parser::find(char16_t unit, qsizetype from) const
{
    return from < m_text.size() ? m_text.indexOf(QChar(unit), from) : -1;
}

bool Parser::skipIgnorable()
{
    while (!atEnd()) {
        const char16_t unit = current();
        if (isWhitespace(unit)) {
            ++m_pos;
        } else if (unit == u'/' && unitAt(m_pos + 1) == u'/') {
            while (!atEnd() && current() != u'\n' && current() != u'\r')
                ++m_pos;
        } else if (unit == u'/' && unitAt(m_pos + 1) == u'*') {
            const qsizetype close = m_text.indexOf(u"*/", m_pos + 2);
            if (close < 0)
                return fail(ReadStatus::Truncated, m_pos, QStringLiteral("Unterminated comment"));
            m_pos = close + 2;
        } else {
            break;
        }
    }
    return true;
}

std::optional<PropertyList> Parser::parseDocument()
{
    if (!skipIgnorable())
        return std::nullopt;
    if (atEnd())
        return PropertyList(PropertyDictionary());
    PropertyList top;
    if (!parseValue(0, top) || !skipIgnorable())
        return std::nullopt;
    if (atEnd())
        return top;
    if (!top.isString()) {
        fail(ReadStatus::Syntax, m_pos,
             QStringLiteral("Unexpected %1 after the property list").arg(describeUnit(current())));
        return std::nullopt;
    }
    // A string followed by more text is the start of a strings file: read the
    // whole text again as the entries of a dictionary without braces.
    m_pos = 0;
    warnings = ReadWarnings();
    PropertyDictionary entries;
    if (!parseEntries(1, -1, entries))
        return std::nullopt;
    return PropertyList(entries);
}

bool Parser::parseValue(int depth, PropertyList &out)
{
    if (atEnd())
        return fail(ReadStatus::Truncated, m_pos, QStringLiteral("The text ends where a value was expected"));
    const char16_t unit = current();
    switch (unit) {
    case u'{':
        return parseDictionary(depth + 1, out);
    case u'(':
        return parseArray(depth + 1, out);
    case u'<':
        return parseData(out);
    default: {
        QString string;
        if (!parseString(string))
            return false;
        out = PropertyList(string);
        return true;
    }
    }
}

bool Parser::parseString(QString &out)
{
    const char16_t unit = current();
    if (unit == u'"' || unit == u'\'')
        return parseQuoted(out);
    if (!isUnquotedChar(unit))
        return fail(ReadStatus::Syntax, m_pos,
                    QStringLiteral("Unexpected character %1").arg(describeUnit(unit)));
    const qsizetype start = m_pos;
    while (!atEnd() && isUnquotedChar(current()))
        ++m_pos;
    out = m_text.sliced(start, m_pos - start).toString();
    return true;
}

bool Parser::parseQuoted(QString &out)
{
    const qsizetype open = m_pos;
    const char16_t quote = current();
    qsizetype runStart = ++m_pos;
    bool escaped = false;
    while (!atEnd()) {
        const char16_t unit = current();
        if (unit == quote) {
            const QStringView run = m_text.sliced(runStart, m_pos - runStart);
            if (escaped)
                out.append(run);
            else
                out = run.toString();
            ++m_pos;
            return true;
        }
        if (unit == 0)
            return fail(ReadStatus::Syntax, m_pos, QStringLiteral("NUL character in a quoted string"));
        if (unit == u'\\') {
            if (!escaped)
                out.clear();
            escaped = true;
            out.append(m_text.sliced(runStart, m_pos - runStart));
            if (!parseEscape(open, out))
                return false;
            runStart = m_pos;
            continue;
        }
        ++m_pos;
    }
    return fail(ReadStatus::Truncated, open, QStringLiteral("Unterminated quoted string"));
}

// Letters and the digits 8 and 9 after a backslash are reserved for named
// escapes: an unknown one ("\d", "\x41") is a mistake in the file, usually text
// meant for another syntax, and dropping the backslash would change its meaning
// silently. Every other character stands for itself ("\\", "\'", "\/", "\é").
bool Parser::parseEscape(qsizetype open, QString &out)
{
    const qsizetype escape = m_pos++;
    if (atEnd())
        return fail(ReadStatus::Truncated, open, QStringLiteral("Unterminated quoted string"));
    const char16_t unit = current();
    char16_t named = 0;
    switch (unit) {
    case u'a':
        named = u'\a';
        break;
    case u'b':
        named = u'\b';
        break;
    case u'f':
        named = u'\f';
        break;
    case u'n':
        named = u'\n';
        break;
    case u'r':
        named = u'\r';
        break;
    case u't':
        named = u'\t';
        break;
    case u'v':
        named = u'\v';
        break;
    case u'U':
    case u'u': // GNUstep writes the lower-case form
        return parseUnicodeEscape(escape, out);
    case 0:
        return fail(ReadStatus::Syntax, m_pos, QStringLiteral("NUL character in a quoted string"));
    default:
        if (unit >= u'0' && unit <= u'7')
            return parseOctalEscape(escape, out);
        if ((unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'8' || unit == u'9')
            return fail(ReadStatus::Syntax, escape,
                        QStringLiteral("Unknown escape sequence \\%1").arg(QChar(unit)));
        named = unit;
        break;
    }
    out.append(QChar(named));
    ++m_pos;
    return true;
}

bool Parser::parseOctalEscape(qsizetype escape, QString &out)
{
    int value = 0;
    for (int digits = 0; digits < 3 && !atEnd() && current() >= u'0' && current() <= u'7'; ++digits)
        value = value * 8 + (m_text[m_pos++].unicode() - u'0');
    if (value > 0xFF)
        return fail(ReadStatus::BadValue, escape, QStringLiteral("Octal escape above \\377"));
    const char16_t unit = fromNextStep(value);
    if (unit == 0xFFFD)
        warn(ReadWarning::Kind::Adjusted, escape,
             QStringLiteral("The octal escape \\%1 names no character of NeXTSTEP Latin; it is read as U+FFFD")
                 .arg(value, 0, 8));
    out.append(QChar(unit));
    return true;
}

// \U with up to four hex digits is one UTF-16 unit. A surrogate half must be
// completed by the escape right after it, or the string would not be valid text.
bool Parser::parseUnicodeEscape(qsizetype escape, QString &out)
{
    const std::optional<char16_t> unit = hexUnit();
    if (!unit)
        return fail(ReadStatus::Syntax, escape, QStringLiteral("\\U escape without hex digits"));
    if (QChar::isHighSurrogate(*unit)) {
        const char16_t next = unitAt(m_pos + 1);
        std::optional<char16_t> low;
        if (unitAt(m_pos) == u'\\' && (next == u'U' || next == u'u')) {
            ++m_pos;
            low = hexUnit();
        }
        if (!low || !QChar::isLowSurrogate(*low))
            return fail(ReadStatus::BadEncoding, escape,
                        QStringLiteral("Unpaired surrogate in a \\U escape"));
        out.append(QChar(*unit));
        out.append(QChar(*low));
        return true;
    }
    if (QChar::isLowSurrogate(*unit))
        return fail(ReadStatus::BadEncoding, escape, QStringLiteral("Unpaired surrogate in a \\U escape"));
    out.append(QChar(*unit));
    return true;
}

// The up to four hex digits after the U at the current position; nothing when there are none.
std::optional<char16_t> Parser::hexUnit()
{
    const qsizetype digitsStart = ++m_pos;
    int unit = 0;
    while (m_pos - digitsStart < 4 && !atEnd() && NumberText::digitValue(current(), 16) >= 0)
        unit = unit * 16 + NumberText::digitValue(m_text[m_pos++].unicode(), 16);
    if (m_pos == digitsStart)
        return std::nullopt;
    return static_cast<char16_t>(unit);
}

bool Parser::parseArray(int depth, PropertyList &out)
{
    const qsizetype open = m_pos++;
    if (depth > PropertyListSerialization::kMaxDepth)
        return fail(ReadStatus::TooDeep, open, QStringLiteral("Nesting is too deep"));
    PropertyArray array;
    for (;;) {
        if (!skipIgnorable())
            return false;
        if (atEnd())
            return endInside(open, QStringLiteral("array"));
        if (current() == u')')
            break;
        PropertyList item;
        if (!parseValue(depth, item) || !skipIgnorable())
            return false;
        array.append(item);
        if (atEnd())
            return endInside(open, QStringLiteral("array"));
        if (current() == u')')
            break;
        if (current() != u',')
            return fail(
                ReadStatus::Syntax, m_pos,
                QStringLiteral("Expected ',' or ')' in an array, found %1").arg(describeUnit(current())));
        ++m_pos;
    }
    ++m_pos;
    out = PropertyList(array);
    return true;
}

bool Parser::parseDictionary(int depth, PropertyList &out)
{
    const qsizetype open = m_pos++;
    if (depth > PropertyListSerialization::kMaxDepth)
        return fail(ReadStatus::TooDeep, open, QStringLiteral("Nesting is too deep"));
    PropertyDictionary dictionary;
    if (!parseEntries(depth, open, dictionary))
        return false;
    out = PropertyList(dictionary);
    return true;
}

// Entries up to the closing brace, or up to the end of the text for a strings
// file (open < 0).
bool Parser::parseEntries(int depth, qsizetype open, PropertyDictionary &out)
{
    for (;;) {
        if (!skipIgnorable())
            return false;
        if (atEnd())
            return open < 0 || endInside(open, QStringLiteral("dictionary"));
        if (open >= 0 && current() == u'}') {
            ++m_pos;
            return true;
        }
        if (!parseEntry(depth, open, out))
            return false;
    }
}

bool Parser::parseEntry(int depth, qsizetype open, PropertyDictionary &out)
{
    const qsizetype keyAt = m_pos;
    const char16_t first = current();
    if (first == u'{' || first == u'(' || first == u'<')
        return fail(ReadStatus::Syntax, m_pos, QStringLiteral("Dictionary keys must be strings"));
    QString key;
    if (!parseString(key) || !skipIgnorable())
        return false;
    if (atEnd())
        return endInside(open, QStringLiteral("dictionary"));
    if (current() == u';') {
        // The strings-file shorthand: "key;" means key = key.
        ++m_pos;
        insertEntry(out, keyAt, key, PropertyList(key));
        return true;
    }
    if (current() != u'=')
        return fail(ReadStatus::Syntax, m_pos,
                    QStringLiteral("Expected '=' or ';' after a dictionary key, found %1")
                        .arg(describeUnit(current())));
    ++m_pos;
    PropertyList value;
    if (!skipIgnorable())
        return false;
    if (atEnd())
        return endInside(open, QStringLiteral("dictionary"));
    if (!parseValue(depth, value) || !skipIgnorable())
        return false;
    if (atEnd())
        return endInside(open, QStringLiteral("dictionary"));
    if (current() != u';')
        return fail(
            ReadStatus::Syntax, m_pos,
            QStringLiteral("Expected ';' after a dictionary entry, found %1").arg(describeUnit(current())));
    ++m_pos;
    insertEntry(out, keyAt, key, value);
    return true;
}

// A repeated key replaces the earlier value.
void Parser::insertEntry(PropertyDictionary &out, qsizetype keyAt, const QString &key, const PropertyList &value)
{
    const qsizetype before = out.size();
    out.insert(key, value);
    if (out.size() == before)
        warn(ReadWarning::Kind::DuplicateKey, keyAt,
             QStringLiteral("The key %1 occurs again in this dictionary; its last value is kept")
                 .arg(quotedForMessage(key)));
}

// The text ended inside a container: point at its opening bracket, which is
// where the reader has to look. A strings file has none; point at the end.
bool Parser::endInside(qsizetype open, const QString &what)
{
    if (open < 0)
        return fail(ReadStatus::Truncated, m_pos, QStringLiteral("The text ends inside a dictionary entry"));
    return fail(ReadStatus::Truncated, open, QStringLiteral("Unterminated %1").arg(what));
}

bool Parser::parseData(PropertyList &out)
{
    switch (unitAt(m_pos + 1)) {
    case u'*':
        return parseTyped(out);
    case u'[':
        return parseBase64(out);
    default:
        return parseHexData(out);
    }
}

bool Parser::parseHexData(PropertyList &out)
{
    const qsizetype open = m_pos++;
    const qsizetype close = find(u'>', m_pos);
    if (close < 0)
        return fail(ReadStatus::Truncated, open, QStringLiteral("Unterminated data"));
    QByteArray bytes;
    bytes.reserve((close - m_pos) / 2);
    while (m_pos < close) {
        const char16_t unit = current();
        if (isDataSpace(unit)) {
            ++m_pos;
            continue;
        }
        const int high = NumberText::digitValue(unit, 16);
        if (high < 0)
            return fail(ReadStatus::Syntax, m_pos,
                        QStringLiteral("Invalid character %1 in data").arg(describeUnit(unit)));
        const char16_t second = unitAt(m_pos + 1);
        if (m_pos + 1 == close || isDataSpace(second))
            return fail(ReadStatus::BadValue, m_pos, QStringLiteral("Hex digits in data must come in pairs"));
        const int low = NumberText::digitValue(second, 16);
        if (low < 0)
            return fail(ReadStatus::Syntax, m_pos + 1,
                        QStringLiteral("Invalid character %1 in data").arg(describeUnit(second)));
        bytes.append(static_cast<char>(high * 16 + low));
        m_pos += 2;
    }
    m_pos = close + 1;
    out = PropertyList(bytes);
    return true;
}

// GNUstep's typed values: <*I12>, <*R1.5>, <*BY>, <*D2001-01-01 00:00:00 +0000>,
// the text after the type letter optionally in double quotes.
bool Parser::parseTyped(PropertyList &out)
{
    const qsizetype open = m_pos;
    const char16_t type = unitAt(m_pos + 2);
    qsizetype start = m_pos + 3;
    qsizetype end = -1;
    if (unitAt(start) == u'"') {
        ++start;
        end = find(u'"', start);
        if (end >= 0 && unitAt(end + 1) != u'>')
            return fail(ReadStatus::Syntax, end + 1,
                        QStringLiteral("Expected '>' after a quoted typed value"));
        m_pos = end + 2;
    } else {
        end = find(u'>', start);
        m_pos = end + 1;
    }
    if (end < 0)
        return fail(ReadStatus::Truncated, open, QStringLiteral("Unterminated typed value"));
    const QStringView text = m_text.sliced(start, end - start);
    const std::optional<PropertyList> value = typedValue(type, text);
    if (!value) {
        const QString kind =
            type > 0x20 && type < 0x7F ? QStringLiteral("<*%1>").arg(QChar(type)) : QStringLiteral("typed");
        return fail(ReadStatus::BadValue, open, QStringLiteral("Invalid %1 value").arg(kind));
    }
    if (type == u'R' && NumberText::isBeyondDouble(text, value->toReal()))
        warn(ReadWarning::Kind::OutOfRange, open,
             QStringLiteral("The real %1 lies beyond the range of a double; it is read as %2")
                 .arg(quotedForMessage(text), NumberText::formatGeneral(value->toReal(), 17)));
    out = *value;
    return true;
}

// GNUstep's <[base64]> data.
bool Parser::parseBase64(PropertyList &out)
{
    const qsizetype open = m_pos;
    const qsizetype close = find(u']', m_pos + 2);
    if (close < 0 || unitAt(close + 1) != u'>')
        return fail(ReadStatus::Truncated, open, QStringLiteral("Unterminated base64 data"));
    QByteArray ascii;
    ascii.reserve(close - open);
    for (qsizetype i = open + 2; i < close; ++i) {
        const char16_t unit = m_text[i].unicode();
        if (isWhitespace(unit))
            continue;
        if (unit >= 0x80)
            return fail(ReadStatus::BadValue, i, QStringLiteral("Invalid character in base64 data"));
        ascii.append(static_cast<char>(unit));
    }
    const auto decoded = QByteArray::fromBase64Encoding(ascii, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return fail(ReadStatus::BadValue, open, QStringLiteral("Invalid base64 data"));
    m_pos = close + 2;
    out = PropertyList(*decoded);
    return true;
}

// "bplist" is the binary format's marker, followed by its version. Bytes that
// start with it are a binary file that is damaged or of an unknown version;
// reading them as the unquoted string "bplist…" would hide that.
bool startsWithBinaryMarker(QByteArrayView bytes)
{
    return bytes.startsWith("bplist");
}

// How many bytes sniff looks at: enough for a licence comment at the top.
constexpr qsizetype kSniffBytes = 4096;

// A prefix of the input that ends on a whole character.
QByteArray sniffPrefix(QByteArrayView bytes, XmlText::Form form)
{
    if (bytes.size() <= kSniffBytes)
        return bytes.toByteArray();
    qsizetype cut = kSniffBytes;
    switch (form) {
    case XmlText::Form::Utf16LE:
    case XmlText::Form::Utf16BE: {
        // Keep a surrogate pair whole: leave out a final high surrogate.
        const qsizetype highByte = cut - (form == XmlText::Form::Utf16BE ? 2 : 1);
        if ((static_cast<uchar>(bytes[highByte]) & 0xFC) == 0xD8)
            cut -= 2;
        break;
    }
    case XmlText::Form::Utf32LE:
    case XmlText::Form::Utf32BE:
        break;
    case XmlText::Form::Utf8:
    case XmlText::Form::Latin1:
    case XmlText::Form::Ascii:
    case XmlText::Form::Named:
        // Step back over UTF-8 continuation bytes to the start of a character.
        while (cut > 0 && (static_cast<uchar>(bytes[cut]) & 0xC0) == 0x80)
            --cut;
        break;
    }
    return bytes.first(cut).toByteArray();
}

} // namespace

bool OpenStepPropertyListReader::sniff(QByteArrayView bytes)
{
    if (bytes.isEmpty() || startsWithBinaryMarker(bytes))
        return false;
    const QByteArray prefix = sniffPrefix(bytes, XmlText::unicodeForm(bytes).form);
    const ReadResult<XmlText> decoded = XmlText::decode(prefix);
    if (!decoded)
        return false;
    Parser parser(decoded.value.text());
    if (!parser.skipIgnorable())
        return prefix.size() < bytes.size(); // the comment may close after the part looked at
    if (parser.atEnd())
        return true; // blank or comment-only text is an empty dictionary
    const char16_t first = parser.current();
    return first == u'{' || first == u'(' || first == u'"' || first == u'\'' || first == u'<' ||
           isUnquotedChar(first);
}

ReadResult<PropertyList> OpenStepPropertyListReader::read(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return Result::success(PropertyDictionary());
    if (startsWithBinaryMarker(bytes))
        return Result::failure(ReadStatus::BadHeader, SourcePosition{0, 1, 1},
                               QStringLiteral("A damaged binary property list (it starts with \"bplist\")"));
    // The platform decodes the bytes as it does for XML (byte-order mark, NULs
    // for unmarked UTF-16, otherwise UTF-8) and parses the same text as
    // old-style when it is not XML, so both readers share the decoding.
    const ReadResult<XmlText> decoded = XmlText::decode(bytes);
    if (!decoded)
        return Result::failure(decoded);
    Parser parser(decoded.value.text());
    std::optional<PropertyList> value = parser.parseDocument();
    QList<ReadWarning> placed = parser.warnings.take();
    decoded.value.placeWarnings(placed);
    QList<ReadWarning> warnings = decoded.warnings;
    warnings.append(std::move(placed));
    if (!value)
        return Result::failure(parser.status, decoded.value.positionOf(parser.errorIndex), parser.message,
                               std::move(warnings));
    return Result::success(std::move(*value), std::move(warnings));
}
