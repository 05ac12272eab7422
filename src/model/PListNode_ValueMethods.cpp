// Value classes: converting typed values and class changes, and the renditions.
#include "PListNode.h"

#include "VXAdditions.h"
#include "platform/NumberConversion.h"
#include "platform/StringReadings.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

namespace {

// A number's value as a 64-bit pattern, the way the platform's number class
// hands it to a narrower accessor: integers as their bits, booleans as 0 or 1,
// reals truncated towards zero. Reals beyond the 64-bit range have no defined
// conversion in the language, so they saturate at the limits of the target's
// signedness (and NaN reads as 0); narrower widths then wrap.
quint64 numberBits(const PropertyList &number, bool unsignedTarget)
{
    if (!number.isReal())
        return number.toUnsignedInteger();
    const double value = number.toReal();
    if (unsignedTarget && value >= 0x1p63)
        return NumberConversion::saturatedUInt64(value);
    return static_cast<quint64>(NumberConversion::saturatedInt64(value));
}

// Keeps the low bits of a pattern and reads them as the signed type of that
// width: two's-complement wrapping, spelt out rather than left to a cast.
template<typename Signed>
qint64 wrapSigned(quint64 bits)
{
    using Unsigned = std::make_unsigned_t<Signed>;
    const auto low = static_cast<Unsigned>(bits);
    if (low <= static_cast<Unsigned>(std::numeric_limits<Signed>::max()))
        return static_cast<qint64>(low);
    return static_cast<qint64>(low) - static_cast<qint64>(std::numeric_limits<Unsigned>::max()) - 1;
}

qint64 wrapSigned64(quint64 bits)
{
    if (bits <= static_cast<quint64>(std::numeric_limits<qint64>::max()))
        return static_cast<qint64>(bits);
    return -static_cast<qint64>(~bits) - 1;
}

// An integer of the given type code holding bits, narrowed to that width. The
// node keeps its code: typing -1 into an unsigned-int node stores 4294967295.
// "l" and "L" are the 64-bit longs of the platform's 64-bit runtime; any code
// that is not an integer type gets a plain int.
PropertyList integerOfType(char typeCode, quint64 bits)
{
    switch (typeCode) {
    case 's':
        return PropertyList::integer(wrapSigned<qint16>(bits), 's');
    case 'l':
    case 'q':
        return PropertyList::integer(wrapSigned64(bits), typeCode);
    case 'I':
        return PropertyList::unsignedInteger(static_cast<quint32>(bits), 'I');
    case 'S':
        return PropertyList::unsignedInteger(static_cast<quint16>(bits), 'S');
    case 'L':
    case 'Q':
        return PropertyList::unsignedInteger(bits, typeCode);
    default:
        return PropertyList::integer(wrapSigned<qint32>(bits), 'i');
    }
}

// The text a value is read from when it is not a number: a string's own text,
// anything else its description.
QString readableText(const PropertyList &value)
{
    return value.isString() ? value.toString() : value.description();
}

// A typed-in value for an integer node: a number taken as the node's type, text
// read as a signed int and then stored in the node's width.
PropertyList integerFor(const PropertyList &present, const PropertyList &newValue)
{
    const char code = present.typeCode();
    if (newValue.isNumber()) {
        const bool unsignedTarget = code == 'I' || code == 'S' || code == 'L' || code == 'Q';
        return integerOfType(code, numberBits(newValue, unsignedTarget));
    }
    const qint32 typed = StringReadings::intValue(readableText(newValue));
    return integerOfType(code, static_cast<quint64>(static_cast<qint64>(typed)));
}

// Narrowing a double beyond the float range is not defined by the language; the
// platform's float is infinity there.
float toFloat(double value)
{
    if (std::isfinite(value) && std::fabs(value) > static_cast<double>(std::numeric_limits<float>::max()))
        return value > 0 ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

// A typed-in value for a real node: a double node stays double, every other
// real code becomes a float.
PropertyList realFor(const PropertyList &present, const PropertyList &newValue)
{
    if (present.typeCode() == 'd') {
        const double value = newValue.isNumber() ? newValue.toReal() : StringReadings::doubleValue(readableText(newValue));
        return PropertyList::real(value, 'd');
    }
    const float value = newValue.isNumber() ? toFloat(newValue.toReal()) : StringReadings::floatValue(readableText(newValue));
    return PropertyList::real(static_cast<double>(value), 'f');
}

// Numbers answer their own truth; text follows the application's rule ("YES",
// "yes", "TRUE", "true" or a positive leading integer).
bool truthOf(const PropertyList &value)
{
    if (value.isNumber())
        return value.toBool();
    return VXAdditions::boolValue(readableText(value));
}

// The date a value stands for: a date as it is, anything else read from its
// text in the description format; nothing when it does not parse.
std::optional<PropertyList> dateFor(const PropertyList &value)
{
    if (value.isDate())
        return value;
    const std::optional<double> seconds = StringReadings::dateWithString(readableText(value));
    if (!seconds)
        return std::nullopt;
    return PropertyList::date(*seconds);
}

} // namespace

// ---- editing ---------------------------------------------------------------------

void PListNode::setValue(const PropertyList &newValue)
{
    if (m_searchReference) {
        m_searchReference->setValue(newValue);
        return;
    }
    // Work out the stored value first, so that an edit which stores nothing (a
    // date that does not parse, data, groups) leaves the node as it was, name
    // included.
    std::optional<PropertyList> stored;
    switch (m_menuValue) {
    case StringClass:
        stored = PropertyList(newValue.description());
        break;
    case IntegerClass:
        stored = integerFor(m_objectValue, newValue);
        break;
    case FloatClass:
        stored = realFor(m_objectValue, newValue);
        break;
    case BooleanClass:
        stored = PropertyList::boolean(truthOf(newValue));
        break;
    case DateClass:
        // A string must parse; anything else (an undo putting back the old
        // value) is kept as it comes.
        stored = newValue.isString() ? dateFor(newValue) : std::optional<PropertyList>(newValue);
        break;
    default:
        break;
    }
    if (!stored || !m_isLeaf)
        return;

    // Array elements are named by their value's text.
    if (m_parent && m_parent->isArray())
        setName(newValue.description());
    else
        keepNameFromValue();
    m_objectValue = *stored;
    m_valueIsBool = m_menuValue == BooleanClass;
    m_describesValue = true;
    changed();
}

bool PListNode::setMenu(int tag)
{
    if (m_searchReference)
        return m_searchReference->setMenu(tag);
    // A group's children are its value; it has no class to change to.
    if (!m_isLeaf)
        return false;

    // The tag is stored before the conversion is tried and stays when the
    // conversion fails: the caller has already recorded the old tag and value
    // for undo. Tags only fit a byte; C++20 conversion wraps the rest, and the
    // conversion follows the tag as stored.
    m_menuValue = static_cast<qint8>(tag);
    std::optional<PropertyList> converted;
    switch (m_menuValue) {
    case StringClass:
        converted = PropertyList(readableText(m_objectValue));
        break;
    case IntegerClass:
        converted = PropertyList::integer(StringReadings::intValue(readableText(m_objectValue)), 'i');
        break;
    case FloatClass:
        converted = PropertyList::real(static_cast<double>(StringReadings::floatValue(readableText(m_objectValue))), 'f');
        break;
    case BooleanClass:
        converted = PropertyList::boolean(truthOf(m_objectValue));
        break;
    case DateClass:
        converted = dateFor(m_objectValue);
        break;
    default:
        // Data, groups and unknown tags cannot be chosen for a leaf.
        break;
    }
    if (!converted) {
        changed();
        return false;
    }

    // An array element keeps the name its old value gave it.
    keepNameFromValue();
    m_objectValue = *converted;
    // Leaving Boolean does not clear the flag; only setValue does.
    if (m_menuValue == BooleanClass)
        m_valueIsBool = true;
    m_describesValue = true;
    changed();
    return true;
}

// ---- content snapshots -----------------------------------------------------------

PListNode::Content PListNode::content() const
{
    const PListNode *node = target();
    Content content;
    content.name = node->m_name;
    content.value = node->m_objectValue;
    content.menuValue = node->m_menuValue;
    content.nameIsDescription = node->m_nameIsDescription;
    content.valueIsBool = node->m_valueIsBool;
    content.describesValue = node->m_describesValue;
    return content;
}

void PListNode::swapContent(Content &content)
{
    PListNode *node = target();
    std::swap(node->m_name, content.name);
    std::swap(node->m_objectValue, content.value);
    std::swap(node->m_menuValue, content.menuValue);
    // Bit-fields cannot be swapped by reference.
    const bool nameIsDescription = node->m_nameIsDescription;
    const bool valueIsBool = node->m_valueIsBool;
    const bool describesValue = node->m_describesValue;
    node->m_nameIsDescription = content.nameIsDescription;
    node->m_valueIsBool = content.valueIsBool;
    node->m_describesValue = content.describesValue;
    content.nameIsDescription = nameIsDescription;
    content.valueIsBool = valueIsBool;
    content.describesValue = describesValue;
    node->changed();
}

// ---- renditions --------------------------------------------------------------------

QString PListNode::stringValue() const { return target()->ownDisplayText(); }

QString PListNode::displayName() const
{
    // A filtered entry is labelled as the real one, by the real position.
    const PListNode *node = target();
    if (node->m_parent && node->m_parent->isArray()) {
        const int position = node->m_parent->indexOfChildIdenticalTo(node) + 1;
        return ValueClasses::itemLabel(position);
    }
    return node->ownName();
}

QString PListNode::countedText() const
{
    // A filtered group counts its own (matching) children.
    const int count = numberOfChildren();
    const ValueClasses::Texts &texts = ValueClasses::texts();
    return QString::number(count) + QLatin1Char(' ') + (count == 1 ? texts.item : texts.items);
}

RenditionStyle PListNode::style(Rendition rendition, const RenditionSettings &settings, bool itemCount) const
{
    RenditionStyle result;
    result.fontName = settings.fontName;
    result.fontSize = settings.fontSize;
    switch (rendition) {
    case Rendition::Selected:
        result.colour = RenditionStyle::Colour::AlternateSelectedText;
        return result;
    case Rendition::BackgroundSelected:
        result.colour = RenditionStyle::Colour::StandardText;
        return result;
    case Rendition::Normal:
        break;
    }
    // Item counts are never edited in place, so they always look disabled.
    const bool editable = !itemCount && target()->m_canEdit;
    if (settings.useCustomColors) {
        result.colour = editable ? RenditionStyle::Colour::CustomText : RenditionStyle::Colour::CustomDisabled;
        result.customColor = editable ? settings.textColor : settings.disabledColor;
    } else {
        result.colour = editable ? RenditionStyle::Colour::StandardText : RenditionStyle::Colour::DisabledText;
    }
    return result;
}
