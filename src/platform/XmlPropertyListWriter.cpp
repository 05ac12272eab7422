#include "XmlPropertyListWriter.h"

#include "NumberText.h"
#include "XmlValueText.h"

#include <cmath>

namespace {

void appendTabs(QByteArray &out, int indent) { out.append(indent, '\t'); }

// Only &, < and > are escaped, as the platform writes strings; quotes and control
// characters go out raw.
void appendEscaped(QByteArray &out, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    for (const char c : utf8) {
        switch (c) {
        case '&':
            out.append("&amp;");
            break;
        case '<':
            out.append("&lt;");
            break;
        case '>':
            out.append("&gt;");
            break;
        default:
            out.append(c);
        }
    }
}

void appendElement(QByteArray &out, int indent, const char *tag, const QByteArray &content)
{
    appendTabs(out, indent);
    out.append('<').append(tag).append('>').append(content).append("</").append(tag).append(">\n");
}

QByteArray realText(double value)
{
    if (value == 0.0) // both zeros, which %.17g would write as "0" and "-0"
        return QByteArrayLiteral("0.0");
    if (std::isnan(value))
        return QByteArrayLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QByteArrayLiteral("+infinity") : QByteArrayLiteral("-infinity");
    return NumberText::formatGeneral(value, 17).toLatin1();
}

// Base64 in lines of 76 characters less 8 per level of indent (at most 8
// levels, so a line keeps 12), each line indented like the <data> tag.
void appendData(QByteArray &out, int indent, const QByteArray &data)
{
    appendTabs(out, indent);
    out.append("<data>\n");
    const QByteArray base64 = data.toBase64();
    const qsizetype lineLength = 76 - 8 * qMin(indent, 8);
    for (qsizetype at = 0; at < base64.size(); at += lineLength) {
        appendTabs(out, indent);
        out.append(QByteArrayView(base64).sliced(at, qMin(lineLength, base64.size() - at))).append('\n');
    }
    appendTabs(out, indent);
    out.append("</data>\n");
}

void appendValue(QByteArray &out, const PropertyList &value, int indent);

void appendArray(QByteArray &out, const PropertyArray &array, int indent)
{
    appendTabs(out, indent);
    if (array.isEmpty()) {
        out.append("<array/>\n");
        return;
    }
    out.append("<array>\n");
    for (const PropertyList &item : array.items())
        appendValue(out, item, indent + 1);
    appendTabs(out, indent);
    out.append("</array>\n");
}

void appendKey(QByteArray &out, int indent, const QString &key)
{
    appendTabs(out, indent);
    out.append("<key>");
    appendEscaped(out, key);
    out.append("</key>\n");
}

void appendDictionary(QByteArray &out, const PropertyDictionary &dictionary, int indent)
{
    appendTabs(out, indent);
    if (dictionary.isEmpty()) {
        out.append("<dict/>\n");
        return;
    }
    out.append("<dict>\n");
    const QStringList keys = dictionary.sortedKeys();
    for (const QString &key : keys) {
        appendKey(out, indent + 1, key);
        appendValue(out, *dictionary.find(key), indent + 1);
    }
    appendTabs(out, indent);
    out.append("</dict>\n");
}

void appendValue(QByteArray &out, const PropertyList &value, int indent)
{
    switch (value.type()) {
    case PropertyList::Type::String:
        appendTabs(out, indent);
        out.append("<string>");
        appendEscaped(out, value.toString());
        out.append("</string>\n");
        break;
    case PropertyList::Type::Data:
        appendData(out, indent, value.toData());
        break;
    case PropertyList::Type::Integer:
        appendElement(out, indent, "integer",
                      value.isUnsignedInteger() ? QByteArray::number(value.toUnsignedInteger())
                                                : QByteArray::number(value.toInteger()));
        break;
    case PropertyList::Type::Real:
        appendElement(out, indent, "real", realText(value.toReal()));
        break;
    case PropertyList::Type::Boolean:
        appendTabs(out, indent);
        out.append(value.toBool() ? "<true/>\n" : "<false/>\n");
        break;
    case PropertyList::Type::Date:
        appendElement(out, indent, "date", XmlValueText::dateText(value.toDate()));
        break;
    case PropertyList::Type::Array:
        appendArray(out, value.arrayRef(), indent);
        break;
    case PropertyList::Type::Dictionary:
        appendDictionary(out, value.dictionaryRef(), indent);
        break;
    case PropertyList::Type::Uid:
        // As systems up to 10.6 wrote them; every reader turns this back into a UID.
        appendTabs(out, indent);
        out.append("<dict>\n");
        appendKey(out, indent + 1, QStringLiteral("CF$UID"));
        appendElement(out, indent + 1, "integer", QByteArray::number(value.toUid()));
        appendTabs(out, indent);
        out.append("</dict>\n");
        break;
    }
}

} // namespace

QByteArray XmlPropertyListWriter::write(const PropertyList &value)
{
    QByteArray out;
    out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n");
    appendValue(out, value, 0);
    out.append("</plist>\n");
    return out;
}
