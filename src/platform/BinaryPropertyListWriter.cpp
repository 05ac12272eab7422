#include "BinaryPropertyListWriter.h"

#include <QHash>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <vector>

namespace {

// The smallest of 1, 2, 4 or 8 bytes that holds value read as unsigned, which
// is how the platform sizes integers, references and offsets.
int byteWidth(quint64 value)
{
    if (value <= 0xFF)
        return 1;
    if (value <= 0xFFFF)
        return 2;
    if (value <= 0xFFFFFFFF)
        return 4;
    return 8;
}

// log2 of a width of 1, 2, 4, 8 or 16 bytes, for the low nibble of an integer marker.
uchar widthPower(int width)
{
    return uchar(std::countr_zero(unsigned(width)));
}

void appendBigEndian(QByteArray &out, quint64 value, int width)
{
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        out.append(char(uchar(value >> shift)));
}

void appendMarker(QByteArray &out, uchar marker)
{
    out.append(char(marker));
}

// Integers take the smallest width that holds them read as unsigned, so negative
// ones always take 8 bytes. Unsigned 'Q' numbers are 128-bit storage on the
// platform and keep 16 bytes (high half zero), which also lets them read back as 'Q'.
void appendInteger(QByteArray &out, const PropertyList &value)
{
    const quint64 bits = value.toUnsignedInteger();
    if (value.typeCode() == 'Q'
        || (value.isUnsignedInteger() && bits > quint64(std::numeric_limits<qint64>::max()))) {
        appendMarker(out, 0x14);
        appendBigEndian(out, 0, 8);
        appendBigEndian(out, bits, 8);
        return;
    }
    const int width = byteWidth(bits);
    appendMarker(out, uchar(0x10 | widthPower(width)));
    appendBigEndian(out, bits, width);
}

// The type nibble with the count in the low nibble, or 15 and an integer object for 15 or more.
void appendCountedMarker(QByteArray &out, uchar type, quint64 count)
{
    if (count < 15) {
        appendMarker(out, uchar(type << 4 | count));
        return;
    }
    appendMarker(out, uchar(type << 4 | 0x0F));
    const int width = byteWidth(count);
    appendMarker(out, uchar(0x10 | widthPower(width)));
    appendBigEndian(out, count, width);
}

void appendString(QByteArray &out, const QString &text)
{
    const bool ascii = std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 0x80; });
    appendCountedMarker(out, ascii ? 0x5 : 0x6, quint64(text.size()));
    if (ascii) {
        out.append(text.toLatin1());
        return;
    }
    for (QChar c : text)
        appendBigEndian(out, c.unicode(), 2);
}

void appendReal(QByteArray &out, const PropertyList &value)
{
    if (value.typeCode() == 'f') {
        appendMarker(out, 0x22);
        appendBigEndian(out, std::bit_cast<quint32>(float(value.toReal())), 4);
        return;
    }
    appendMarker(out, 0x23);
    appendBigEndian(out, std::bit_cast<quint64>(value.toReal()), 8);
}

// Numbers, dates and UIDs are uniqued by kind, type code and bit pattern, so
// integer 1 and real 1.0 stay two objects (the platform's own equality would merge them).
struct ScalarKey {
    PropertyList::Type type;
    char typeCode;
    quint64 bits;
    bool operator==(const ScalarKey &) const = default;
};

size_t qHash(const ScalarKey &key, size_t seed = 0)
{
    return qHashMulti(seed, int(key.type), key.typeCode, key.bits);
}

// Values in the tree, dictionary keys included: the most objects the file can
// need, so that the tables are sized once.
qsizetype countValues(const PropertyList &value)
{
    qsizetype count = 1;
    if (value.isArray()) {
        for (const PropertyList &item : value.arrayRef().items())
            count += countValues(item);
    } else if (value.isDictionary()) {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        count += dictionary.size();
        for (qsizetype i = 0; i < dictionary.size(); ++i)
            count += countValues(dictionary.valueAt(i));
    }
    return count;
}

// Numbers the objects as the platform does: depth first, each before its
// contents, a dictionary's keys before its values, in the dictionary's own
// order. Containers and booleans always get a new object; other values reuse
// the object of an equal value written before.
class Flattener {
public:
    struct Object {
        PropertyList value;
        qsizetype firstReference = 0; // containers: where their references start in references
    };

    explicit Flattener(qsizetype valueCount)
    {
        objects.reserve(size_t(valueCount));
        references.reserve(size_t(valueCount));
        m_strings.reserve(valueCount);
    }

    std::vector<Object> objects;
    std::vector<quint64> references;

    quint64 add(const PropertyList &value);

private:
    quint64 addString(const QString &text);
    quint64 addScalar(const PropertyList &value, quint64 bits);
    quint64 addBoolean(const PropertyList &value);
    quint64 addContainer(const PropertyList &value);
    quint64 newObject(const PropertyList &value);
    template <typename Key>
    quint64 unique(QHash<Key, quint64> &table, const Key &key, const PropertyList &value);

    QHash<QString, quint64> m_strings;
    QHash<QByteArray, quint64> m_data;
    QHash<ScalarKey, quint64> m_scalars;
    // Child numbers of the containers being flattened, innermost last; each
    // container moves its own run into references when it is complete.
    std::vector<quint64> m_pending;
    // The first false and the first true, plus one (zero: none yet).
    quint64 m_firstBoolean[2] = {0, 0};
};

quint64 Flattener::add(const PropertyList &value)
{
    switch (value.type()) {
    case PropertyList::Type::String:
        return addString(value.toString());
    case PropertyList::Type::Data:
        return unique(m_data, value.toData(), value);
    case PropertyList::Type::Integer:
        return addScalar(value, value.toUnsignedInteger());
    case PropertyList::Type::Real:
        return addScalar(value, std::bit_cast<quint64>(value.toReal()));
    case PropertyList::Type::Date:
        return addScalar(value, std::bit_cast<quint64>(value.toDate()));
    case PropertyList::Type::Uid:
        return addScalar(value, value.toUid());
    case PropertyList::Type::Boolean:
        return addBoolean(value);
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
        return addContainer(value);
    }
    return newObject(value);
}

quint64 Flattener::addString(const QString &text)
{
    return unique(m_strings, text, PropertyList(text));
}

// The platform writes every boolean as an object of its own, yet every
// reference goes to the first true or the first false it wrote; the later ones
// are never referred to. Its files show this throughout, so it is kept.
quint64 Flattener::addBoolean(const PropertyList &value)
{
    const quint64 number = newObject(value);
    quint64 &first = m_firstBoolean[value.toBool() ? 1 : 0];
    if (first == 0)
        first = number + 1;
    return first - 1;
}

quint64 Flattener::addScalar(const PropertyList &value, quint64 bits)
{
    return unique(m_scalars, ScalarKey{value.type(), value.typeCode(), bits}, value);
}

template <typename Key>
quint64 Flattener::unique(QHash<Key, quint64> &table, const Key &key, const PropertyList &value)
{
    // Slots hold the object number plus one, so that the zero of a new slot
    // means "not written yet" and one lookup serves both cases.
    quint64 &slot = table[key];
    if (slot == 0)
        slot = newObject(value) + 1;
    return slot - 1;
}

quint64 Flattener::addContainer(const PropertyList &value)
{
    const quint64 number = newObject(value);
    const size_t mark = m_pending.size();
    if (value.isArray()) {
        for (const PropertyList &item : value.arrayRef().items())
            m_pending.push_back(add(item));
    } else {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        for (const QString &key : dictionary.keys())
            m_pending.push_back(addString(key));
        for (qsizetype i = 0; i < dictionary.size(); ++i)
            m_pending.push_back(add(dictionary.valueAt(i)));
    }
    objects[number].firstReference = qsizetype(references.size());
    references.insert(references.end(), m_pending.begin() + qsizetype(mark), m_pending.end());
    m_pending.resize(mark);
    return number;
}

quint64 Flattener::newObject(const PropertyList &value)
{
    objects.push_back({value, 0});
    return objects.size() - 1;
}

void appendReferences(QByteArray &out, const Flattener &flat, const Flattener::Object &object,
                      qsizetype count, int referenceSize)
{
    const auto first = flat.references.begin() + object.firstReference;
    for (auto it = first; it != first + count; ++it)
        appendBigEndian(out, *it, referenceSize);
}

void appendObject(QByteArray &out, const Flattener &flat, const Flattener::Object &object, int referenceSize)
{
    const PropertyList &value = object.value;
    switch (value.type()) {
    case PropertyList::Type::String:
        appendString(out, value.toString());
        break;
    case PropertyList::Type::Data: {
        const QByteArray bytes = value.toData();
        appendCountedMarker(out, 0x4, quint64(bytes.size()));
        out.append(bytes);
        break;
    }
    case PropertyList::Type::Integer:
        appendInteger(out, value);
        break;
    case PropertyList::Type::Real:
        appendReal(out, value);
        break;
    case PropertyList::Type::Boolean:
        appendMarker(out, value.toBool() ? 0x09 : 0x08);
        break;
    case PropertyList::Type::Date:
        appendMarker(out, 0x33);
        appendBigEndian(out, std::bit_cast<quint64>(value.toDate()), 8);
        break;
    case PropertyList::Type::Uid: {
        const int width = byteWidth(value.toUid());
        appendMarker(out, uchar(0x80 | (width - 1)));
        appendBigEndian(out, value.toUid(), width);
        break;
    }
    case PropertyList::Type::Array: {
        const qsizetype count = value.arrayRef().size();
        appendCountedMarker(out, 0xA, quint64(count));
        appendReferences(out, flat, object, count, referenceSize);
        break;
    }
    case PropertyList::Type::Dictionary: {
        const qsizetype count = value.dictionaryRef().size();
        appendCountedMarker(out, 0xD, quint64(count));
        appendReferences(out, flat, object, 2 * count, referenceSize);
        break;
    }
    }
}

} // namespace

QByteArray BinaryPropertyListWriter::write(const PropertyList &value)
{
    Flattener flat(countValues(value));
    flat.add(value);
    const quint64 numObjects = flat.objects.size();
    const int referenceSize = byteWidth(numObjects);

    QByteArray out("bplist00");
    std::vector<quint64> offsets;
    offsets.reserve(numObjects);
    for (const Flattener::Object &object : flat.objects) {
        offsets.push_back(quint64(out.size()));
        appendObject(out, flat, object, referenceSize);
    }

    const auto offsetTableOffset = quint64(out.size());
    const int offsetSize = byteWidth(offsetTableOffset);
    for (quint64 offset : offsets)
        appendBigEndian(out, offset, offsetSize);

    // Trailer: five unused bytes, the sort version (0), the two widths, then the
    // object count, the top object (always the first) and the table's position.
    out.append(6, '\0');
    appendMarker(out, uchar(offsetSize));
    appendMarker(out, uchar(referenceSize));
    appendBigEndian(out, numObjects, 8);
    appendBigEndian(out, 0, 8);
    appendBigEndian(out, offsetTableOffset, 8);
    return out;
}
