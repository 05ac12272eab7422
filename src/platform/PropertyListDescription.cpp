// The old-style description texts the platform prints for property-list values:
// bare text for a value on its own, quoted and escaped text inside containers,
// and the doubled indentation of nested containers.
#include "DateMath.h"
#include "NumberText.h"
#include "PropertyList.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace {

QString numberText(const PropertyList &value)
{
    switch (value.type()) {
    case PropertyList::Type::Boolean:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case PropertyList::Type::Integer:
        return value.isUnsignedInteger() ? QString::number(value.toUnsignedInteger())
                                         : QString::number(value.toInteger());
    case PropertyList::Type::Real:
        return NumberText::formatGeneral(value.toReal(), value.typeCode() == 'f' ? 7 : 16);
    default:
        return QString();
    }
}

QString dateText(double secondsSinceReferenceDate)
{
    // Whole seconds only: the description has no fraction, and rounds towards the past.
    // localtime_r rather than QDateTime: a large file formats hundreds of thousands of dates.
    const double floored = std::floor(secondsSinceReferenceDate);
    const auto unixSeconds =
        static_cast<time_t>(DateMath::kReferenceDateUnixSeconds + static_cast<qint64>(floored));
    struct tm local {};
    if (!localtime_r(&unixSeconds, &local))
        return QString();
    const long offset = local.tm_gmtoff;
    const long absOffset = offset < 0 ? -offset : offset;
    char buffer[64];
    const int length = std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d %c%02ld%02ld",
                                     local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                                     local.tm_min, local.tm_sec, offset < 0 ? '-' : '+', absOffset / 3600,
                                     (absOffset % 3600) / 60);
    return QString::fromLatin1(buffer, length);
}

QString dataText(const QByteArray &bytes)
{
    static const char hex[] = "0123456789abcdef";
    QString text;
    text.reserve(2 + bytes.size() * 2 + bytes.size() / 4);
    text += QLatin1Char('<');
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0)
            text += QLatin1Char(' ');
        const auto byte = static_cast<unsigned char>(bytes.at(i));
        text += QLatin1Char(hex[byte >> 4]);
        text += QLatin1Char(hex[byte & 0xf]);
    }
    text += QLatin1Char('>');
    return text;
}

QString uidText(quint64 value)
{
    return QStringLiteral("<CFKeyedArchiverUID>{value = %1}").arg(value);
}

bool isAsciiAlphanumeric(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9');
}

// Inside a container a text stays bare only when it is non-empty and purely
// alphanumeric; anything else is quoted, with Apple's escapes.
void appendQuoted(QString &out, const QString &text)
{
    if (!text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar c) { return isAsciiAlphanumeric(c.unicode()); })) {
        out += text;
        return;
    }
    static const char hex[] = "0123456789abcdef";
    out += QLatin1Char('"');
    for (const QChar qc : text) {
        const char16_t c = qc.unicode();
        if (c == u'"' || c == u'\\') {
            out += QLatin1Char('\\');
            out += qc;
        } else if (c == u'\n') {
            out += QStringLiteral("\\n");
        } else if (c == u'\t') {
            out += QStringLiteral("\\t");
        } else if (c < 0x20 || c >= 0x7f) {
            out += QStringLiteral("\\U");
            for (int shift = 12; shift >= 0; shift -= 4)
                out += QLatin1Char(hex[(c >> shift) & 0xf]);
        } else {
            out += qc;
        }
    }
    out += QLatin1Char('"');
}

void appendIndent(QString &out, int level) { out += QString(4 * level, QLatin1Char(' ')); }

void appendDescription(QString &out, const PropertyList &value, int level);

void appendElement(QString &out, const PropertyList &value, int level)
{
    switch (value.type()) {
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
        appendDescription(out, value, level);
        break;
    case PropertyList::Type::Data:
        out += dataText(value.toData());
        break;
    case PropertyList::Type::Uid:
        out += uidText(value.toUid());
        break;
    default:
        appendQuoted(out, value.description());
        break;
    }
}

void appendDescription(QString &out, const PropertyList &value, int level)
{
    appendIndent(out, level);
    if (value.isArray()) {
        out += QStringLiteral("(\n");
        const auto &items = value.arrayRef().items();
        for (qsizetype i = 0; i < items.size(); ++i) {
            appendIndent(out, level + 1);
            appendElement(out, items.at(i), level + 1);
            out += i + 1 < items.size() ? QStringLiteral(",\n") : QStringLiteral("\n");
        }
        appendIndent(out, level);
        out += QLatin1Char(')');
        return;
    }
    const PropertyDictionary &dictionary = value.dictionaryRef();
    out += QStringLiteral("{\n");
    for (const QString &key : dictionary.sortedKeys()) {
        appendIndent(out, level + 1);
        appendQuoted(out, key);
        out += QStringLiteral(" = ");
        appendElement(out, *dictionary.find(key), level + 1);
        out += QStringLiteral(";\n");
    }
    appendIndent(out, level);
    out += QLatin1Char('}');
}

} // namespace

QString PropertyList::description() const
{
    switch (m_type) {
    case Type::String:
        return toString();
    case Type::Data:
        return dataText(toData());
    case Type::Integer:
    case Type::Real:
    case Type::Boolean:
        return numberText(*this);
    case Type::Date:
        return dateText(toDate());
    case Type::Uid:
        return uidText(toUid());
    case Type::Array:
    case Type::Dictionary: {
        QString out;
        appendDescription(out, *this, 0);
        return out;
    }
    }
    return QString();
}
