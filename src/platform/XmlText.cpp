#include "XmlText.h"

#include <QStringDecoder>
#include <QtEndian>

#include <algorithm>
#include <limits>
#include <optional>

namespace {

using Decoded = ReadResult<QString>;

const uchar *unsignedBytes(QByteArrayView bytes) { return reinterpret_cast<const uchar *>(bytes.data()); }

// Offset of the first byte that does not start a valid UTF-8 sequence, or -1.
// Overlong forms, surrogates and values past U+10FFFF are invalid too.
qsizetype firstInvalidUtf8(QByteArrayView bytes)
{
    const uchar *p = unsignedBytes(bytes);
    const qsizetype size = bytes.size();
    for (qsizetype i = 0; i < size;) {
        const uchar lead = p[i];
        if (lead < 0x80) {
            ++i;
            continue;
        }
        int length = 0;
        char32_t code = 0, minimum = 0;
        if ((lead & 0xE0) == 0xC0) {
            length = 2, code = lead & 0x1F, minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3, code = lead & 0x0F, minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4, code = lead & 0x07, minimum = 0x10000;
        } else {
            return i;
        }
        if (size - i < length)
            return i;
        for (int k = 1; k < length; ++k) {
            if ((p[i + k] & 0xC0) != 0x80)
                return i;
            code = (code << 6) | (p[i + k] & 0x3F);
        }
        if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return i;
        i += length;
    }
    return -1;
}

// Walks the text forwards to ever later indexes, keeping the line and the byte
// count, so that many positions cost one pass.
class PositionWalk {
public:
    PositionWalk(QStringView text, XmlText::Form form, int markLength)
        : m_text(text), m_form(form), m_markLength(markLength)
    {
    }

    // The position of text[index]; index is clamped to the text and must not go back.
    SourcePosition to(qsizetype index);

private:
    QStringView m_text;
    XmlText::Form m_form;
    int m_markLength;
    qsizetype m_index = 0;
    int m_line = 1;
    qsizetype m_lineStart = 0;
    qint64 m_units = 0; // UTF-8 bytes, or low surrogates for UTF-32, before m_index
};

SourcePosition PositionWalk::to(qsizetype index)
{
    index = qBound<qsizetype>(m_index, index, m_text.size());
    for (; m_index < index; ++m_index) {
        const QChar c = m_text[m_index];
        // CR LF, CR and LF each end a line.
        if (c == u'\n' || (c == u'\r' && (m_index + 1 >= m_text.size() || m_text[m_index + 1] != u'\n'))) {
            ++m_line;
            m_lineStart = m_index + 1;
        }
        if (m_form == XmlText::Form::Utf8)
            m_units += c.unicode() < 0x80 ? 1 : c.unicode() < 0x800 || c.isSurrogate() ? 2 : 3;
        else if (c.isLowSurrogate())
            ++m_units;
    }
    SourcePosition where;
    where.line = m_line;
    where.column = static_cast<int>(qMin<qsizetype>(index - m_lineStart + 1, INT_MAX));
    switch (m_form) {
    case XmlText::Form::Utf8:
        where.offset = m_markLength + m_units;
        break;
    case XmlText::Form::Utf16LE:
    case XmlText::Form::Utf16BE:
        where.offset = m_markLength + 2 * index;
        break;
    case XmlText::Form::Utf32LE:
    case XmlText::Form::Utf32BE:
        where.offset = m_markLength + 4 * (index - m_units);
        break;
    case XmlText::Form::Latin1:
    case XmlText::Form::Ascii:
        where.offset = index;
        break;
    case XmlText::Form::Named:
        break; // a multi-byte charset Qt decodes has no simple way back
    }
    return where;
}

// Line and column of text[index].
void lineAndColumn(QStringView text, qsizetype index, SourcePosition &where)
{
    const SourcePosition found = PositionWalk(text, XmlText::Form::Latin1, 0).to(index);
    where.line = found.line;
    where.column = found.column;
}

Decoded encodingFailure(QStringView decodedSoFar, qint64 offset, const QString &message)
{
    SourcePosition where;
    where.offset = offset;
    lineAndColumn(decodedSoFar, decodedSoFar.size(), where);
    return Decoded::failure(ReadStatus::BadEncoding, where, message);
}

struct Charset {
    QByteArray name;
    qsizetype offset = -1;
};

// The charset named by encoding="…" in a leading <?xml …?> declaration, if any.
Charset declaredEncoding(QByteArrayView bytes)
{
    qsizetype at = 0;
    while (at < bytes.size() && (bytes[at] == ' ' || bytes[at] == '\t' || bytes[at] == '\r' || bytes[at] == '\n'))
        ++at;
    if (!bytes.sliced(at).startsWith("<?xml"))
        return {};
    // A declaration missing its "?>" ends at the first '>', never deep in the document.
    qsizetype end = bytes.indexOf("?>", at);
    if (end < 0)
        end = bytes.indexOf('>', at);
    const QByteArrayView declaration = bytes.sliced(at, (end < 0 ? bytes.size() : end) - at);
    qsizetype name = declaration.indexOf("encoding");
    if (name < 0)
        return {};
    name += 8;
    auto skipSpace = [&] {
        while (name < declaration.size() && (declaration[name] == ' ' || declaration[name] == '\t'))
            ++name;
    };
    skipSpace();
    if (name >= declaration.size() || declaration[name] != '=')
        return {};
    ++name;
    skipSpace();
    if (name >= declaration.size() || (declaration[name] != '"' && declaration[name] != '\''))
        return {};
    const qsizetype close = declaration.indexOf(declaration[name], name + 1);
    if (close < 0)
        return {};
    return {declaration.sliced(name + 1, close - name - 1).toByteArray(), at + name + 1};
}

QString hexByte(uchar byte) { return QStringLiteral("0x%1").arg(byte, 2, 16, QLatin1Char('0')); }

Decoded decodeUtf8(QByteArrayView body, int markLength)
{
    const qsizetype bad = firstInvalidUtf8(body);
    if (bad >= 0)
        return encodingFailure(QString::fromUtf8(body.first(bad)), markLength + bad,
                               QStringLiteral("Invalid UTF-8: byte %1 does not start a valid sequence")
                                   .arg(hexByte(unsignedBytes(body)[bad])));
    return Decoded::success(QString::fromUtf8(body));
}

Decoded decodeUtf16(QByteArrayView body, int markLength, bool bigEndian)
{
    const uchar *p = unsignedBytes(body);
    const qsizetype units = body.size() / 2;
    QString text(units, Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    for (qsizetype i = 0; i < units; ++i)
        out[i] = bigEndian ? qFromBigEndian<quint16>(p + 2 * i) : qFromLittleEndian<quint16>(p + 2 * i);
    for (qsizetype i = 0; i < units; ++i) {
        if (!QChar::isSurrogate(out[i]))
            continue;
        if (QChar::isHighSurrogate(out[i]) && i + 1 < units && QChar::isLowSurrogate(out[i + 1])) {
            ++i;
            continue;
        }
        return encodingFailure(QStringView(text).first(i), markLength + 2 * i,
                               QStringLiteral("Invalid UTF-16: lone surrogate U+%1")
                                   .arg(QString::number(out[i], 16).toUpper()));
    }
    if (body.size() % 2 != 0)
        return encodingFailure(text, markLength + body.size() - 1,
                               QStringLiteral("Invalid UTF-16: the text ends in half a character"));
    return Decoded::success(text);
}

Decoded decodeUtf32(QByteArrayView body, int markLength, bool bigEndian)
{
    const uchar *p = unsignedBytes(body);
    QString text;
    text.reserve(body.size() / 4);
    for (qsizetype i = 0; i + 4 <= body.size(); i += 4) {
        const quint32 code = bigEndian ? qFromBigEndian<quint32>(p + i) : qFromLittleEndian<quint32>(p + i);
        if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return encodingFailure(text, markLength + i,
                                   QStringLiteral("Invalid UTF-32: 0x%1 is not a character").arg(code, 0, 16));
        if (QChar::requiresSurrogates(code)) {
            text.append(QChar(QChar::highSurrogate(code)));
            text.append(QChar(QChar::lowSurrogate(code)));
        } else {
            text.append(QChar(static_cast<char16_t>(code)));
        }
    }
    if (body.size() % 4 != 0)
        return encodingFailure(text, markLength + body.size() - body.size() % 4,
                               QStringLiteral("Invalid UTF-32: the text ends in part of a character"));
    return Decoded::success(text);
}

Decoded decodeAscii(QByteArrayView body)
{
    const uchar *p = unsignedBytes(body);
    for (qsizetype i = 0; i < body.size(); ++i) {
        if (p[i] >= 0x80)
            return encodingFailure(QString::fromLatin1(body.first(i)), i,
                                   QStringLiteral("Byte %1 is not US-ASCII, the declared encoding").arg(hexByte(p[i])));
    }
    return Decoded::success(QString::fromLatin1(body));
}

Decoded decodeNamed(QByteArrayView body, const QByteArray &charset)
{
    QStringDecoder decoder(charset.constData());
    const QString text = decoder(body);
    if (decoder.hasError())
        return Decoded::failure(ReadStatus::BadEncoding, {},
                                QStringLiteral("The text is not valid %1, its declared encoding")
                                    .arg(QString::fromLatin1(charset)));
    return Decoded::success(text);
}

// A charset of 16- or 32-bit units, in any case.
bool namesWideUnits(QByteArrayView name)
{
    const auto is = [name](QByteArrayView start, bool whole) {
        return (whole ? name.size() == start.size() : name.size() >= start.size())
            && name.first(start.size()).compare(start, Qt::CaseInsensitive) == 0;
    };
    return is("utf-16", false) || is("utf-32", false) || is("ucs-", false) || is("unicode", true);
}

// The form for a declared charset name, or nothing when it cannot be decoded here.
std::optional<XmlText::Form> formForCharset(const QByteArray &charset)
{
    using Form = XmlText::Form;
    const QByteArray name = charset.toLower();
    if (name.isEmpty() || name == "utf-8" || name == "utf8")
        return Form::Utf8;
    // A declaration that could be read byte by byte is not in 16- or 32-bit units,
    // whatever it claims; such files were re-encoded to UTF-8 without their
    // declaration being updated, so read them as UTF-8.
    if (namesWideUnits(name))
        return Form::Utf8;
    if (name == "iso-8859-1" || name == "iso_8859-1" || name == "iso8859-1" || name == "latin1"
        || name == "latin-1" || name == "l1")
        return Form::Latin1;
    if (name == "us-ascii" || name == "ascii")
        return Form::Ascii;
    if (QStringDecoder(charset.constData()).isValid())
        return Form::Named;
    return std::nullopt;
}

Decoded decodeAs(XmlText::Form form, QByteArrayView body, int markLength, const QByteArray &charset)
{
    switch (form) {
    case XmlText::Form::Utf8:
        return decodeUtf8(body, markLength);
    case XmlText::Form::Utf16LE:
    case XmlText::Form::Utf16BE:
        return decodeUtf16(body, markLength, form == XmlText::Form::Utf16BE);
    case XmlText::Form::Utf32LE:
    case XmlText::Form::Utf32BE:
        return decodeUtf32(body, markLength, form == XmlText::Form::Utf32BE);
    case XmlText::Form::Latin1:
        return Decoded::success(QString::fromLatin1(body));
    case XmlText::Form::Ascii:
        return decodeAscii(body);
    case XmlText::Form::Named:
        return decodeNamed(body, charset);
    }
    return Decoded::failure(ReadStatus::BadEncoding, {}, QStringLiteral("Unknown text form"));
}

} // namespace

XmlText::UnicodeForm XmlText::unicodeForm(QByteArrayView bytes)
{
    const uchar *p = unsignedBytes(bytes);
    const qsizetype size = bytes.size();
    if (size >= 4 && p[0] == 0xFF && p[1] == 0xFE && p[2] == 0 && p[3] == 0)
        return {Form::Utf32LE, 4, true};
    if (size >= 4 && p[0] == 0 && p[1] == 0 && p[2] == 0xFE && p[3] == 0xFF)
        return {Form::Utf32BE, 4, true};
    if (size >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF)
        return {Form::Utf8, 3, true};
    if (size >= 2 && p[0] == 0xFF && p[1] == 0xFE)
        return {Form::Utf16LE, 2, true};
    if (size >= 2 && p[0] == 0xFE && p[1] == 0xFF)
        return {Form::Utf16BE, 2, true};
    // Without a mark, markup starts with an ASCII '<', so a NUL among the first
    // bytes means wider units; three NULs beside it mean 32-bit ones.
    if (size >= 4 && p[0] == 0 && p[1] == 0 && p[2] == 0 && p[3] != 0)
        return {Form::Utf32BE, 0, true};
    if (size >= 4 && p[0] != 0 && p[1] == 0 && p[2] == 0 && p[3] == 0)
        return {Form::Utf32LE, 0, true};
    if (size >= 2 && p[0] == 0)
        return {Form::Utf16BE, 0, true};
    if (size >= 2 && p[1] == 0)
        return {Form::Utf16LE, 0, true};
    return {};
}

ReadResult<XmlText> XmlText::decode(const QByteArray &bytes)
{
    using Result = ReadResult<XmlText>;
    if (bytes.isEmpty())
        return Result::failure(ReadStatus::Empty, {0}, QStringLiteral("The file is empty"));
    XmlText result;
    const UnicodeForm announced = unicodeForm(bytes);
    result.m_form = announced.form;
    result.m_markLength = announced.markLength;
    Charset charset;
    QList<ReadWarning> warnings;
    if (!announced.announced) {
        charset = declaredEncoding(bytes);
        const auto charsetPlace = [&] {
            SourcePosition where;
            where.offset = charset.offset;
            lineAndColumn(QString::fromLatin1(QByteArrayView(bytes).first(charset.offset)), charset.offset, where);
            return where;
        };
        const std::optional<Form> form = formForCharset(charset.name);
        if (!form)
            return Result::failure(ReadStatus::BadEncoding, charsetPlace(),
                                   QStringLiteral("Unknown text encoding \"%1\" in the XML declaration")
                                       .arg(QString::fromLatin1(charset.name)));
        if (namesWideUnits(charset.name))
            warnings.append({ReadWarning::Kind::Reinterpreted, charsetPlace(),
                             QStringLiteral("The declaration names %1, but the text is in single bytes; it is read as UTF-8")
                                 .arg(QString::fromLatin1(charset.name))});
        result.m_form = *form;
    }
    Decoded decoded = decodeAs(result.m_form, QByteArrayView(bytes).sliced(result.m_markLength),
                               result.m_markLength, charset.name);
    if (!decoded)
        return Result::failure(decoded);
    result.m_text = std::move(decoded.value);
    return Result::success(std::move(result), std::move(warnings));
}

SourcePosition XmlText::positionOf(qsizetype index) const
{
    return PositionWalk(m_text, m_form, m_markLength).to(index);
}

void XmlText::placeWarnings(QList<ReadWarning> &warnings) const
{
    // Warnings without an index (the count of those left out) stay at the end.
    const auto index = [](const ReadWarning &warning) {
        return warning.position.offset < 0 ? std::numeric_limits<qint64>::max() : warning.position.offset;
    };
    std::stable_sort(warnings.begin(), warnings.end(),
                     [&index](const ReadWarning &a, const ReadWarning &b) { return index(a) < index(b); });
    PositionWalk walk(m_text, m_form, m_markLength);
    for (ReadWarning &warning : warnings) {
        if (warning.position.offset >= 0)
            warning.position = walk.to(warning.position.offset);
    }
}
