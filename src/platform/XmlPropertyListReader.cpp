#include "XmlPropertyListReader.h"

#include "DateMath.h"
#include "NumberText.h"

#include "PropertyListSerialization.h"
#include "XmlText.h"
#include "XmlValueText.h"

#include <optional>

// A hand-written reader, tolerant where the platform's own parser is: it takes
// what the platform's writer produces (raw control characters, any attributes,
// any DOCTYPE) and reads a document in one pass over its decoded text, without
// building a DOM or allocating per character.

namespace {

bool isSpace(QChar c)
{
    const char16_t u = c.unicode();
    return u == u' ' || u == u'\t' || u == u'\n' || u == u'\r';
}

// Older systems wrote the keyed archiver's object references as {CF$UID = n};
// every reader turns such a dictionary back into a UID.
PropertyList uidOrDictionary(const PropertyDictionary &dictionary)
{
    if (dictionary.size() == 1 && dictionary.keyAt(0) == QLatin1String("CF$UID")) {
        const PropertyList &value = dictionary.valueAt(0);
        if (value.isInteger() && (value.isUnsignedInteger() || value.toInteger() >= 0))
            return PropertyList::uid(value.toUnsignedInteger());
    }
    return PropertyList(dictionary);
}

// True for a date text that date() has read, "[-]Y…Y-MM-DDTHH:MM:SSZ", whose day
// lies past the end of its month (years counted from 0, proleptic Gregorian).
bool dayPastMonthEnd(QStringView text)
{
    const QStringView tail = text.last(16); // "-MM-DDTHH:MM:SSZ"
    const auto twoDigits = [tail](qsizetype at) {
        return (tail[at].unicode() - u'0') * 10 + tail[at + 1].unicode() - u'0';
    };
    const int day = twoDigits(4);
    if (day <= 28)
        return false;
    const int month = twoDigits(1);
    const qint64 year = text.first(text.size() - 16).toLongLong();
    return day > DateMath::daysInMonth(year, month);
}

enum class Element { Plist, Dict, Array, Key, String, Integer, Real, True, False, Date, Data, Unknown };

Element elementNamed(QStringView name)
{
    static const std::pair<QLatin1String, Element> names[] = {
        {QLatin1String("plist"), Element::Plist},     {QLatin1String("dict"), Element::Dict},
        {QLatin1String("array"), Element::Array},     {QLatin1String("key"), Element::Key},
        {QLatin1String("string"), Element::String},   {QLatin1String("integer"), Element::Integer},
        {QLatin1String("real"), Element::Real},       {QLatin1String("true"), Element::True},
        {QLatin1String("false"), Element::False},     {QLatin1String("date"), Element::Date},
        {QLatin1String("data"), Element::Data},
    };
    for (const auto &[text, element] : names) {
        if (name == text)
            return element;
    }
    return Element::Unknown;
}

// A start tag as read: which element, where its '<' is, and whether it closed itself (<true/>).
struct StartTag {
    Element element = Element::Unknown;
    QStringView name;
    qsizetype at = 0;
    bool empty = false;
};

// One pass over the decoded text. Each grammar rule is a member function; the
// first failure is recorded with its place and ends the parse.
class Parser {
public:
    explicit Parser(const XmlText &source) : m_source(source), m_text(source.text()) {}

    std::optional<PropertyList> parseDocument();

    ReadStatus status() const { return m_status; }
    qsizetype errorAt() const { return m_errorAt; }
    const QString &message() const { return m_message; }
    // What was resolved rather than refused, in text order with full positions.
    QList<ReadWarning> takeWarnings();

private:
    enum class Next { Child, EndTag, Failed };

    bool fail(ReadStatus status, qsizetype at, const QString &message);
    // Until takeWarnings(), a warning's offset holds its index in the text.
    void warn(ReadWarning::Kind kind, qsizetype at, const QString &message)
    {
        m_warnings.add(kind, SourcePosition{at}, message);
    }
    void noteTrailingText();
    std::nullopt_t failValue(ReadStatus status, qsizetype at, const QString &message)
    {
        fail(status, at, message);
        return std::nullopt;
    }

    bool atEnd() const { return m_pos >= m_text.size(); }
    bool lookingAt(QStringView literal) const { return m_text.sliced(m_pos).startsWith(literal); }
    void skipSpace();
    QString found() const;
    QString notClosed(const StartTag &tag) const;

    bool skipMisc(bool inProlog);
    bool skipPast(QStringView terminator, qsizetype openingLength, const QString &what);
    bool skipQuoted();
    bool skipDoctype();
    bool skipInternalSubset();

    bool readStartTag(StartTag &tag);
    bool readEndTag(QStringView name);
    Next nextChild(const StartTag &parent, StartTag &child);
    bool readText(const StartTag &tag, QString &out);
    bool readReference(QString &out);
    bool appendCharacterReference(QStringView reference, qsizetype at, QString &out);
    bool readEmptyContent(const StartTag &tag);

    std::optional<PropertyList> parsePlist(const StartTag &plist);
    std::optional<PropertyList> parseValue(const StartTag &tag, int depth);
    std::optional<PropertyList> parseArray(const StartTag &tag, int depth);
    std::optional<PropertyList> parseDict(const StartTag &tag, int depth);
    bool readDictEntries(const StartTag &tag, int depth, PropertyDictionary &dictionary);
    std::optional<PropertyList> parseScalar(const StartTag &tag);
    std::optional<PropertyList> parseData(const StartTag &tag);
    void noteCoercion(const StartTag &tag, qsizetype contentAt, const PropertyList &value);

    const XmlText &m_source;
    QStringView m_text;
    qsizetype m_pos = 0;
    QString m_scratch; // reused for the text of numbers and dates
    ReadStatus m_status = ReadStatus::Ok;
    qsizetype m_errorAt = 0;
    QString m_message;
    ReadWarnings m_warnings;
};

QList<ReadWarning> Parser::takeWarnings()
{
    QList<ReadWarning> warnings = m_warnings.take();
    m_source.placeWarnings(warnings);
    return warnings;
}

bool Parser::fail(ReadStatus status, qsizetype at, const QString &message)
{
    if (m_status == ReadStatus::Ok) {
        m_status = status;
        m_errorAt = at;
        m_message = message;
    }
    return false;
}

void Parser::skipSpace()
{
    while (!atEnd() && isSpace(m_text[m_pos]))
        ++m_pos;
}

// What stands at the current place, for "expected …, found …" messages.
QString Parser::found() const
{
    if (atEnd())
        return QStringLiteral("the end of the input");
    const QStringView rest = m_text.sliced(m_pos);
    if (rest[0] == u'<') {
        const qsizetype close = rest.first(qMin<qsizetype>(rest.size(), 40)).indexOf(u'>');
        return quotedForMessage(close < 0 ? rest : rest.first(close + 1));
    }
    const qsizetype markup = rest.first(qMin<qsizetype>(rest.size(), 40)).indexOf(u'<');
    return QStringLiteral("the text ") + quotedForMessage(markup < 0 ? rest : rest.first(markup));
}

QString Parser::notClosed(const StartTag &tag) const
{
    const SourcePosition opened = m_source.positionOf(tag.at);
    return QStringLiteral("Unexpected end of input: <%1> at line %2, column %3 is not closed")
        .arg(tag.name)
        .arg(opened.line)
        .arg(opened.column);
}

// White space, comments and processing instructions may stand between
// elements; before the first element a DOCTYPE may too.
bool Parser::skipMisc(bool inProlog)
{
    for (;;) {
        skipSpace();
        if (lookingAt(u"<!--")) {
            if (!skipPast(u"-->", 4, QStringLiteral("comment")))
                return false;
        } else if (lookingAt(u"<?")) {
            if (!skipPast(u"?>", 2, QStringLiteral("processing instruction")))
                return false;
        } else if (inProlog && lookingAt(u"<!DOCTYPE")) {
            if (!skipDoctype())
                return false;
        } else {
            return true;
        }
    }
}

bool Parser::skipPast(QStringView terminator, qsizetype openingLength, const QString &what)
{
    const qsizetype end = m_text.indexOf(terminator, m_pos + openingLength);
    if (end < 0)
        return fail(ReadStatus::Truncated, m_pos,
                    QStringLiteral("Unterminated %1: no \"%2\" before the end of the input").arg(what, terminator));
    m_pos = end + terminator.size();
    return true;
}

bool Parser::skipQuoted()
{
    const qsizetype close = m_text.indexOf(m_text[m_pos], m_pos + 1);
    if (close < 0)
        return fail(ReadStatus::Truncated, m_pos,
                    QStringLiteral("Unterminated quoted text: no closing %1 before the end of the input")
                        .arg(m_text[m_pos]));
    m_pos = close + 1;
    return true;
}

// The DOCTYPE is skipped whatever it names: the platform accepts both the
// "-//Apple//" and the older "-//Apple Computer//" public identifiers.
bool Parser::skipDoctype()
{
    const qsizetype start = m_pos;
    m_pos += 9; // "<!DOCTYPE"
    while (!atEnd()) {
        const QChar c = m_text[m_pos];
        if (c == u'>') {
            ++m_pos;
            return true;
        }
        if (c == u'"' || c == u'\'') {
            if (!skipQuoted())
                return false;
        } else if (c == u'[') {
            ++m_pos;
            if (!skipInternalSubset())
                return false;
        } else {
            ++m_pos;
        }
    }
    return fail(ReadStatus::Truncated, start, QStringLiteral("Unterminated <!DOCTYPE: no '>' before the end of the input"));
}

// The internal subset, up to its ']'. Entity declarations are refused before
// anything could be expanded, which is what makes "billion laughs" harmless.
bool Parser::skipInternalSubset()
{
    const qsizetype start = m_pos - 1;
    while (!atEnd()) {
        const QChar c = m_text[m_pos];
        if (c == u']') {
            ++m_pos;
            return true;
        }
        if (c == u'"' || c == u'\'') {
            if (!skipQuoted())
                return false;
        } else if (lookingAt(u"<!--")) {
            if (!skipPast(u"-->", 4, QStringLiteral("comment")))
                return false;
        } else if (lookingAt(u"<!ENTITY")) {
            return fail(ReadStatus::Unsupported, m_pos,
                        QStringLiteral("Entity declarations are not allowed in a property list"));
        } else {
            ++m_pos;
        }
    }
    return fail(ReadStatus::Truncated, start,
                QStringLiteral("Unterminated DOCTYPE internal subset: no ']' before the end of the input"));
}

// At '<': the element name, then any attributes (ignored) up to '>' or '/>'.
bool Parser::readStartTag(StartTag &tag)
{
    tag.at = m_pos;
    qsizetype end = ++m_pos;
    while (end < m_text.size() && !isSpace(m_text[end]) && m_text[end] != u'>' && m_text[end] != u'/'
           && m_text[end] != u'<')
        ++end;
    tag.name = m_text.sliced(m_pos, end - m_pos);
    m_pos = end;
    if (tag.name.isEmpty())
        return fail(ReadStatus::Syntax, tag.at, QStringLiteral("Expected an element name after '<', found %1").arg(found()));
    tag.element = elementNamed(tag.name);
    for (;;) {
        if (atEnd())
            return fail(ReadStatus::Truncated, tag.at,
                        QStringLiteral("Unterminated tag <%1: no '>' before the end of the input").arg(tag.name));
        const QChar c = m_text[m_pos];
        if (c == u'>' || (c == u'/' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == u'>')) {
            tag.empty = c == u'/';
            m_pos += tag.empty ? 2 : 1;
            return true;
        }
        if (c == u'<')
            return fail(ReadStatus::Syntax, m_pos, QStringLiteral("Expected '>' to end the tag <%1, found '<'").arg(tag.name));
        if (c == u'"' || c == u'\'') {
            if (!skipQuoted())
                return false;
        } else {
            ++m_pos;
        }
    }
}

// At "</": the end tag, which must close the element called name.
bool Parser::readEndTag(QStringView name)
{
    const qsizetype start = m_pos;
    qsizetype end = m_pos + 2;
    while (end < m_text.size() && !isSpace(m_text[end]) && m_text[end] != u'>' && m_text[end] != u'<')
        ++end;
    if (m_text.sliced(m_pos + 2, end - m_pos - 2) != name)
        return fail(ReadStatus::Syntax, start, QStringLiteral("Expected </%1>, found %2").arg(name, found()));
    m_pos = end;
    skipSpace();
    if (atEnd())
        return fail(ReadStatus::Truncated, start,
                    QStringLiteral("Unterminated end tag </%1: no '>' before the end of the input").arg(name));
    if (m_text[m_pos] != u'>')
        return fail(ReadStatus::Syntax, m_pos, QStringLiteral("Expected '>' to end </%1, found %2").arg(name, found()));
    ++m_pos;
    return true;
}

// Inside a container: the next child's start tag, or the place of an end tag.
Parser::Next Parser::nextChild(const StartTag &parent, StartTag &child)
{
    if (!skipMisc(false))
        return Next::Failed;
    if (atEnd()) {
        fail(ReadStatus::Truncated, m_pos, notClosed(parent));
        return Next::Failed;
    }
    if (lookingAt(u"</"))
        return Next::EndTag;
    if (m_text[m_pos] != u'<') {
        fail(ReadStatus::Syntax, m_pos, QStringLiteral("Unexpected %1 inside <%2>, expected an element").arg(found(), parent.name));
        return Next::Failed;
    }
    return readStartTag(child) ? Next::Child : Next::Failed;
}

// The character content of a text element up to its end tag, with entities and
// CDATA sections resolved and comments dropped. Any other markup is an error.
bool Parser::readText(const StartTag &tag, QString &out)
{
    out.resize(0); // keeps the capacity of a reused buffer
    if (tag.empty)
        return true;
    for (;;) {
        const qsizetype runStart = m_pos;
        while (!atEnd() && m_text[m_pos] != u'<' && m_text[m_pos] != u'&')
            ++m_pos;
        out += m_text.sliced(runStart, m_pos - runStart);
        if (atEnd())
            return fail(ReadStatus::Truncated, m_pos, notClosed(tag));
        if (m_text[m_pos] == u'&') {
            if (!readReference(out))
                return false;
        } else if (lookingAt(u"</")) {
            return readEndTag(tag.name);
        } else if (lookingAt(u"<![CDATA[")) {
            const qsizetype end = m_text.indexOf(u"]]>", m_pos + 9);
            if (end < 0)
                return fail(ReadStatus::Truncated, m_pos,
                            QStringLiteral("Unterminated CDATA section: no \"]]>\" before the end of the input"));
            out += m_text.sliced(m_pos + 9, end - m_pos - 9);
            m_pos = end + 3;
        } else if (lookingAt(u"<!--")) {
            if (!skipPast(u"-->", 4, QStringLiteral("comment")))
                return false;
        } else {
            return fail(ReadStatus::Syntax, m_pos,
                        QStringLiteral("Unexpected %1 inside <%2>, which holds only text").arg(found(), tag.name));
        }
    }
}

// At '&': one of the five predefined entities or a character reference.
bool Parser::readReference(QString &out)
{
    const qsizetype start = m_pos;
    constexpr qsizetype kLongestName = 32; // room for zero-padded character references
    qsizetype end = start + 1;
    while (end < m_text.size() && end - start <= kLongestName
           && (m_text[end].isLetterOrNumber() || m_text[end] == u'#') && m_text[end].unicode() < 0x80)
        ++end;
    if (end >= m_text.size() || m_text[end] != u';')
        return fail(ReadStatus::Syntax, start,
                    QStringLiteral("Unterminated entity reference %1: expected ';'")
                        .arg(quotedForMessage(m_text.sliced(start, end - start))));
    const QStringView name = m_text.sliced(start + 1, end - start - 1);
    m_pos = end + 1;
    if (name == QLatin1String("lt"))
        out += u'<';
    else if (name == QLatin1String("gt"))
        out += u'>';
    else if (name == QLatin1String("amp"))
        out += u'&';
    else if (name == QLatin1String("apos"))
        out += u'\'';
    else if (name == QLatin1String("quot"))
        out += u'"';
    else if (name.startsWith(u'#'))
        return appendCharacterReference(name.sliced(1), start, out);
    else
        return fail(ReadStatus::Syntax, start,
                    QStringLiteral("Unknown entity &%1;: only &lt; &gt; &amp; &apos; &quot; and character references are defined")
                        .arg(name));
    return true;
}

// "123" or "x1F" after "&#": the character with that code.
bool Parser::appendCharacterReference(QStringView reference, qsizetype at, QString &out)
{
    const bool hex = reference.startsWith(u'x') || reference.startsWith(u'X');
    const QStringView digits = hex ? reference.sliced(1) : reference;
    char32_t code = 0;
    for (const QChar c : digits) {
        const int digit = NumberText::digitValue(c.unicode(), hex ? 16 : 10);
        if (digit < 0)
            return fail(ReadStatus::Syntax, at, QStringLiteral("Malformed character reference &#%1;").arg(reference));
        code = qMin<char32_t>(code * (hex ? 16 : 10) + char32_t(digit), 0x110000); // saturate past Unicode
    }
    if (digits.isEmpty())
        return fail(ReadStatus::Syntax, at, QStringLiteral("Malformed character reference &#%1;").arg(reference));
    if (code >= 0xD800 && code <= 0xDFFF)
        return fail(ReadStatus::BadEncoding, at,
                    QStringLiteral("Character reference &#%1; is a lone surrogate, not a character").arg(reference));
    if (code > 0x10FFFF)
        return fail(ReadStatus::BadEncoding, at,
                    QStringLiteral("Character reference &#%1; is beyond Unicode").arg(reference));
    if (QChar::requiresSurrogates(code)) {
        out += QChar(QChar::highSurrogate(code));
        out += QChar(QChar::lowSurrogate(code));
    } else {
        out += QChar(static_cast<char16_t>(code));
    }
    return true;
}

// <true/> and <false/> may also be written with an end tag, but hold nothing.
bool Parser::readEmptyContent(const StartTag &tag)
{
    if (tag.empty)
        return true;
    skipSpace();
    if (lookingAt(u"</"))
        return readEndTag(tag.name);
    if (atEnd())
        return fail(ReadStatus::Truncated, m_pos, notClosed(tag));
    return fail(ReadStatus::Syntax, m_pos, QStringLiteral("Expected </%1>, found %2: <%1> holds nothing").arg(tag.name, found()));
}

std::optional<PropertyList> Parser::parseDocument()
{
    if (!skipMisc(true))
        return std::nullopt;
    if (atEnd())
        return failValue(ReadStatus::Syntax, m_pos, QStringLiteral("Expected an element, found the end of the input"));
    if (m_text[m_pos] != u'<')
        return failValue(ReadStatus::Syntax, m_pos, QStringLiteral("Expected '<' to start an element, found %1").arg(found()));
    StartTag tag;
    if (!readStartTag(tag))
        return std::nullopt;
    std::optional<PropertyList> value = tag.element == Element::Plist ? parsePlist(tag) : parseValue(tag, 1);
    if (value)
        noteTrailingText();
    return value;
}

// Whatever follows the first element is ignored, as the platform ignores it;
// only what XML allows there (space, comments, instructions) goes unmentioned.
void Parser::noteTrailingText()
{
    if (skipMisc(false) && atEnd())
        return;
    m_status = ReadStatus::Ok; // an unterminated comment here is trailing text like any other
    warn(ReadWarning::Kind::Dropped, m_pos, QStringLiteral("Ignored after the property list: %1").arg(found()));
}

// The optional <plist> wrapper holds one value. A wrapper with nothing in it
// reads as an empty dictionary: real files are like that (a preference file
// whose last key was removed), and a domain without keys is what they mean.
std::optional<PropertyList> Parser::parsePlist(const StartTag &plist)
{
    if (plist.empty)
        return PropertyList(PropertyDictionary());
    StartTag tag;
    switch (nextChild(plist, tag)) {
    case Next::Failed:
        return std::nullopt;
    case Next::EndTag:
        if (!readEndTag(plist.name))
            return std::nullopt;
        return PropertyList(PropertyDictionary());
    case Next::Child:
        break;
    }
    std::optional<PropertyList> value = parseValue(tag, 1);
    if (!value || !skipMisc(false))
        return std::nullopt;
    if (atEnd())
        return failValue(ReadStatus::Truncated, m_pos, notClosed(plist));
    if (!lookingAt(u"</"))
        return failValue(ReadStatus::Syntax, m_pos,
                         QStringLiteral("Expected </plist>, found %1: a plist holds one value").arg(found()));
    if (!readEndTag(plist.name))
        return std::nullopt;
    return value;
}

std::optional<PropertyList> Parser::parseValue(const StartTag &tag, int depth)
{
    switch (tag.element) {
    case Element::Dict:
        return parseDict(tag, depth);
    case Element::Array:
        return parseArray(tag, depth);
    case Element::String: {
        QString text;
        if (!readText(tag, text))
            return std::nullopt;
        return PropertyList(text);
    }
    case Element::Data:
        return parseData(tag);
    case Element::Integer:
    case Element::Real:
    case Element::Date:
        return parseScalar(tag);
    case Element::True:
    case Element::False:
        if (!readEmptyContent(tag))
            return std::nullopt;
        return PropertyList::boolean(tag.element == Element::True);
    case Element::Key:
        return failValue(ReadStatus::Syntax, tag.at, QStringLiteral("Unexpected <key> outside a dictionary"));
    case Element::Plist:
        return failValue(ReadStatus::Syntax, tag.at, QStringLiteral("Unexpected <plist> inside a property list"));
    case Element::Unknown:
        break;
    }
    return failValue(ReadStatus::Syntax, tag.at,
                     QStringLiteral("Unknown element <%1>, expected dict, array, string, data, date, integer, real, "
                                    "true or false")
                         .arg(tag.name));
}

std::optional<PropertyList> Parser::parseArray(const StartTag &tag, int depth)
{
    if (depth > PropertyListSerialization::kMaxDepth)
        return failValue(ReadStatus::TooDeep, tag.at,
                         QStringLiteral("Containers nested deeper than %1 levels").arg(PropertyListSerialization::kMaxDepth));
    PropertyArray array;
    if (tag.empty)
        return PropertyList(array);
    for (;;) {
        StartTag child;
        switch (nextChild(tag, child)) {
        case Next::Failed:
            return std::nullopt;
        case Next::EndTag:
            if (!readEndTag(tag.name))
                return std::nullopt;
            return PropertyList(array);
        case Next::Child:
            break;
        }
        if (child.element == Element::Key)
            return failValue(ReadStatus::Syntax, child.at, QStringLiteral("Unexpected <key> inside <array>, which holds only values"));
        std::optional<PropertyList> value = parseValue(child, depth + 1);
        if (!value)
            return std::nullopt;
        array.append(*value);
    }
}

std::optional<PropertyList> Parser::parseDict(const StartTag &tag, int depth)
{
    if (depth > PropertyListSerialization::kMaxDepth)
        return failValue(ReadStatus::TooDeep, tag.at,
                         QStringLiteral("Containers nested deeper than %1 levels").arg(PropertyListSerialization::kMaxDepth));
    PropertyDictionary dictionary;
    if (!tag.empty && !readDictEntries(tag, depth, dictionary))
        return std::nullopt;
    return uidOrDictionary(dictionary);
}

// Pairs of <key> and value up to </dict>. A repeated key keeps the last value.
bool Parser::readDictEntries(const StartTag &tag, int depth, PropertyDictionary &dictionary)
{
    for (;;) {
        StartTag keyTag;
        switch (nextChild(tag, keyTag)) {
        case Next::Failed:
            return false;
        case Next::EndTag:
            return readEndTag(tag.name);
        case Next::Child:
            break;
        }
        if (keyTag.element != Element::Key)
            return fail(ReadStatus::Syntax, keyTag.at,
                        QStringLiteral("Expected <key> inside <dict>, found <%1>: every value needs a key before it")
                            .arg(keyTag.name));
        QString key;
        if (!readText(keyTag, key))
            return false;
        StartTag valueTag;
        switch (nextChild(tag, valueTag)) {
        case Next::Failed:
            return false;
        case Next::EndTag:
            return fail(ReadStatus::Syntax, m_pos,
                        QStringLiteral("Expected a value for the key %1, found %2").arg(quotedForMessage(key), found()));
        case Next::Child:
            break;
        }
        if (valueTag.element == Element::Key)
            return fail(ReadStatus::Syntax, valueTag.at,
                        QStringLiteral("Expected a value for the key %1, found another <key>")
                            .arg(quotedForMessage(key)));
        std::optional<PropertyList> value = parseValue(valueTag, depth + 1);
        if (!value)
            return false;
        const qsizetype before = dictionary.size();
        dictionary.insert(key, *value);
        if (dictionary.size() == before)
            warn(ReadWarning::Kind::DuplicateKey, keyTag.at,
                 QStringLiteral("The key %1 occurs again in this dictionary; its last value is kept")
                     .arg(quotedForMessage(key)));
    }
}

// <integer>, <real> and <date>: the text must be the whole value.
std::optional<PropertyList> Parser::parseScalar(const StartTag &tag)
{
    const qsizetype contentAt = m_pos;
    if (!readText(tag, m_scratch))
        return std::nullopt;
    std::optional<PropertyList> value;
    XmlValueText::Problem problem = XmlValueText::Problem::Malformed;
    QString expected;
    if (tag.element == Element::Integer) {
        value = XmlValueText::integer(m_scratch, &problem);
        expected = QStringLiteral("an integer");
    } else if (tag.element == Element::Real) {
        if (const std::optional<double> real = XmlValueText::real(m_scratch))
            value = PropertyList::real(*real);
        expected = QStringLiteral("a real number");
    } else {
        if (const std::optional<double> seconds = XmlValueText::date(m_scratch))
            value = PropertyList::date(*seconds);
        expected = QStringLiteral("a date of the form YYYY-MM-DDTHH:MM:SSZ");
    }
    if (value) {
        noteCoercion(tag, contentAt, *value);
        return value;
    }
    const QStringView text = QStringView(m_scratch).trimmed();
    if (text.isEmpty())
        return failValue(ReadStatus::BadValue, contentAt, QStringLiteral("Empty <%1>, expected %2").arg(tag.name, expected));
    if (problem == XmlValueText::Problem::OutOfRange)
        return failValue(ReadStatus::BadValue, contentAt,
                         QStringLiteral("The integer %1 is out of the 64-bit range").arg(quotedForMessage(text)));
    return failValue(ReadStatus::BadValue, contentAt,
                     QStringLiteral("%1 is not %2").arg(quotedForMessage(text), expected));
}

// The text of <data> is base64; anything else but white space in it is left out.
std::optional<PropertyList> Parser::parseData(const StartTag &tag)
{
    const qsizetype contentAt = m_pos;
    if (!readText(tag, m_scratch))
        return std::nullopt;
    qsizetype stray = -1;
    PropertyList value(XmlValueText::data(m_scratch, &stray));
    if (stray >= 0)
        warn(ReadWarning::Kind::Dropped, contentAt,
             QStringLiteral("The data holds characters that are not base64, the first %1; they are left out")
                 .arg(quotedForMessage(QStringView(m_scratch).sliced(stray, 1))));
    return value;
}

// A real beyond a double's range, or a date whose day lies past the end of its month.
void Parser::noteCoercion(const StartTag &tag, qsizetype contentAt, const PropertyList &value)
{
    if (tag.element == Element::Integer)
        return;
    const QStringView text = QStringView(m_scratch).trimmed();
    if (tag.element == Element::Real && NumberText::isBeyondDouble(text, value.toReal()))
        warn(ReadWarning::Kind::OutOfRange, contentAt,
             QStringLiteral("The real %1 lies beyond the range of a double; it is read as %2")
                 .arg(quotedForMessage(text), NumberText::formatGeneral(value.toReal(), 17)));
    else if (tag.element == Element::Date && dayPastMonthEnd(text))
        warn(ReadWarning::Kind::Adjusted, contentAt,
             QStringLiteral("The date %1 names a day past the end of its month; it is read as %2")
                 .arg(quotedForMessage(text), QString::fromLatin1(XmlValueText::dateText(value.toDate()))));
}

} // namespace

bool XmlPropertyListReader::sniff(QByteArrayView bytes)
{
    const XmlText::UnicodeForm form = XmlText::unicodeForm(bytes);
    // Unmarked 16- or 32-bit text: only markup puts NULs among the first bytes.
    if (form.announced && form.markLength == 0)
        return true;
    int unit = 1;
    bool bigEndian = false;
    switch (form.form) {
    case XmlText::Form::Utf16LE:
    case XmlText::Form::Utf16BE:
        unit = 2;
        bigEndian = form.form == XmlText::Form::Utf16BE;
        break;
    case XmlText::Form::Utf32LE:
    case XmlText::Form::Utf32BE:
        unit = 4;
        bigEndian = form.form == XmlText::Form::Utf32BE;
        break;
    default:
        break;
    }
    // The character at a unit index, enough to see ASCII markup (0 beyond the end).
    auto at = [&](qsizetype index) -> char32_t {
        const qsizetype offset = form.markLength + index * unit;
        if (offset + unit > bytes.size())
            return 0;
        char32_t code = 0;
        for (int k = 0; k < unit; ++k)
            code |= char32_t(uchar(bytes[offset + k])) << (8 * (bigEndian ? unit - 1 - k : k));
        return code;
    };
    qsizetype index = 0;
    while (at(index) == U' ' || at(index) == U'\t' || at(index) == U'\r' || at(index) == U'\n')
        ++index;
    const char32_t next = at(index + 1);
    // '<' then '?', '!' or a letter: old-style data such as <0a0b> is not markup.
    return at(index) == U'<'
           && (next == U'?' || next == U'!' || (next >= U'a' && next <= U'z') || (next >= U'A' && next <= U'Z'));
}

ReadResult<PropertyList> XmlPropertyListReader::read(const QByteArray &bytes)
{
    using Result = ReadResult<PropertyList>;
    const ReadResult<XmlText> decoded = XmlText::decode(bytes);
    if (!decoded)
        return Result::failure(decoded);
    Parser parser(decoded.value);
    std::optional<PropertyList> value = parser.parseDocument();
    QList<ReadWarning> warnings = decoded.warnings;
    warnings.append(parser.takeWarnings());
    if (!value)
        return Result::failure(parser.status(), decoded.value.positionOf(parser.errorAt()), parser.message(),
                               std::move(warnings));
    return Result::success(std::move(*value), std::move(warnings));
}
