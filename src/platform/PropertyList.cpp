#include "PropertyList.h"

#include <QHash>

#include <algorithm>
#include <cmath>

class PropertyArrayData : public QSharedData {
public:
    QList<PropertyList> items;
};

// Most dictionaries in real files are small, and a hash per dictionary costs more
// than it saves there: the index exists only past kIndexThreshold keys, and
// smaller ones are searched in order.
class PropertyDictionaryData : public QSharedData {
public:
    static constexpr qsizetype kIndexThreshold = 8;

    QStringList keys;
    QList<PropertyList> values;
    QHash<QString, qsizetype> index; // empty while keys.size() <= kIndexThreshold

    qsizetype position(const QString &key) const
    {
        if (keys.size() <= kIndexThreshold)
            return keys.indexOf(key);
        const auto it = index.constFind(key);
        return it == index.cend() ? -1 : *it;
    }

    void rebuildIndex()
    {
        index.clear();
        if (keys.size() <= kIndexThreshold)
            return;
        index.reserve(keys.size());
        for (qsizetype i = 0; i < keys.size(); ++i)
            index.insert(keys.at(i), i);
    }
};

// ---- PropertyArray ---------------------------------------------------------

PropertyArray::PropertyArray() : d(new PropertyArrayData) {}
PropertyArray::PropertyArray(std::initializer_list<PropertyList> items) : d(new PropertyArrayData)
{
    d->items = items;
}
PropertyArray::PropertyArray(const PropertyArray &other) = default;
PropertyArray &PropertyArray::operator=(const PropertyArray &other) = default;
PropertyArray::~PropertyArray() = default;

qsizetype PropertyArray::size() const { return d->items.size(); }
const PropertyList &PropertyArray::at(qsizetype index) const { return d->items.at(index); }
void PropertyArray::append(const PropertyList &value) { d->items.append(value); }
void PropertyArray::reserve(qsizetype count) { d->items.reserve(count); }
const QList<PropertyList> &PropertyArray::items() const { return d->items; }

bool PropertyArray::operator==(const PropertyArray &other) const
{
    return d == other.d || d->items == other.d->items;
}

// ---- PropertyDictionary ----------------------------------------------------

PropertyDictionary::PropertyDictionary() : d(new PropertyDictionaryData) {}
PropertyDictionary::PropertyDictionary(
    std::initializer_list<std::pair<QString, PropertyList>> entries)
    : d(new PropertyDictionaryData)
{
    for (const auto &[key, value] : entries)
        insert(key, value);
}
PropertyDictionary::PropertyDictionary(const PropertyDictionary &other) = default;
PropertyDictionary &PropertyDictionary::operator=(const PropertyDictionary &other) = default;
PropertyDictionary::~PropertyDictionary() = default;

qsizetype PropertyDictionary::size() const { return d->keys.size(); }
const QString &PropertyDictionary::keyAt(qsizetype index) const { return d->keys.at(index); }
const PropertyList &PropertyDictionary::valueAt(qsizetype index) const
{
    return d->values.at(index);
}
const QStringList &PropertyDictionary::keys() const { return d->keys; }
bool PropertyDictionary::contains(const QString &key) const { return d->position(key) >= 0; }

const PropertyList *PropertyDictionary::find(const QString &key) const
{
    const qsizetype position = d->position(key);
    return position < 0 ? nullptr : &d->values.at(position);
}

void PropertyDictionary::insert(const QString &key, const PropertyList &value)
{
    const qsizetype position = d->position(key);
    if (position >= 0) {
        d->values[position] = value;
        return;
    }
    d->keys.append(key);
    d->values.append(value);
    if (d->keys.size() == PropertyDictionaryData::kIndexThreshold + 1)
        d->rebuildIndex();
    else if (!d->index.isEmpty())
        d->index.insert(key, d->keys.size() - 1);
}

bool PropertyDictionary::remove(const QString &key)
{
    const qsizetype position = d->position(key);
    if (position < 0)
        return false;
    d->keys.removeAt(position);
    d->values.removeAt(position);
    d->rebuildIndex();
    return true;
}

void PropertyDictionary::reserve(qsizetype count)
{
    d->keys.reserve(count);
    d->values.reserve(count);
}

QStringList PropertyDictionary::sortedKeys() const
{
    QStringList sorted = d->keys;
    // QString's operator< compares UTF-16 code units, as CFStringCompare without options does.
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

bool PropertyDictionary::operator==(const PropertyDictionary &other) const
{
    if (d == other.d)
        return true;
    if (size() != other.size())
        return false;
    for (qsizetype i = 0; i < size(); ++i) {
        const PropertyList *theirs = other.find(d->keys.at(i));
        if (!theirs || !(d->values.at(i) == *theirs))
            return false;
    }
    return true;
}

// ---- PropertyList ----------------------------------------------------------

PropertyList::PropertyList() : m_storage(QString()), m_type(Type::String) {}
PropertyList::PropertyList(const QString &string) : m_storage(string), m_type(Type::String) {}
PropertyList::PropertyList(const QByteArray &data) : m_storage(data), m_type(Type::Data) {}
PropertyList::PropertyList(const PropertyArray &array) : m_storage(array), m_type(Type::Array) {}
PropertyList::PropertyList(const PropertyDictionary &dictionary)
    : m_storage(dictionary), m_type(Type::Dictionary)
{
}

PropertyList::PropertyList(Type type, char typeCode, Storage storage)
    : m_storage(std::move(storage)), m_type(type), m_typeCode(typeCode)
{
}

PropertyList PropertyList::integer(qint64 value, char typeCode)
{
    return PropertyList(Type::Integer, typeCode, static_cast<quint64>(value));
}

PropertyList PropertyList::unsignedInteger(quint64 value, char typeCode)
{
    return PropertyList(Type::Integer, typeCode, value);
}

PropertyList PropertyList::integerFromFile(qint64 value)
{
    // The platform hands out numbers from -1 to 12 from a cache of 32-bit objects.
    return integer(value, value >= -1 && value <= 12 ? 'i' : 'q');
}

PropertyList PropertyList::real(double value, char typeCode)
{
    if (typeCode == 'f')
        value = static_cast<double>(static_cast<float>(value));
    return PropertyList(Type::Real, typeCode, value);
}

PropertyList PropertyList::boolean(bool value) { return PropertyList(Type::Boolean, 'c', value); }
PropertyList PropertyList::date(double seconds) { return PropertyList(Type::Date, 0, seconds); }
PropertyList PropertyList::uid(quint64 value) { return PropertyList(Type::Uid, 0, Uid{value}); }

bool PropertyList::isUnsignedInteger() const
{
    return m_type == Type::Integer
           && (m_typeCode == 'Q' || m_typeCode == 'I' || m_typeCode == 'S' || m_typeCode == 'L');
}

QString PropertyList::toString() const
{
    return m_type == Type::String ? std::get<QString>(m_storage) : QString();
}

QByteArray PropertyList::toData() const
{
    return m_type == Type::Data ? std::get<QByteArray>(m_storage) : QByteArray();
}

qint64 PropertyList::toInteger() const { return static_cast<qint64>(toUnsignedInteger()); }

quint64 PropertyList::toUnsignedInteger() const
{
    switch (m_type) {
    case Type::Integer:
        return std::get<quint64>(m_storage);
    case Type::Boolean:
        return std::get<bool>(m_storage) ? 1 : 0;
    case Type::Real:
        return static_cast<quint64>(static_cast<qint64>(std::get<double>(m_storage)));
    default:
        return 0;
    }
}

double PropertyList::toReal() const
{
    switch (m_type) {
    case Type::Real:
    case Type::Date:
        return std::get<double>(m_storage);
    case Type::Integer:
        return isUnsignedInteger() ? static_cast<double>(toUnsignedInteger())
                                   : static_cast<double>(toInteger());
    case Type::Boolean:
        return std::get<bool>(m_storage) ? 1.0 : 0.0;
    default:
        return 0.0;
    }
}

bool PropertyList::toBool() const
{
    switch (m_type) {
    case Type::Boolean:
        return std::get<bool>(m_storage);
    case Type::Integer:
        return toUnsignedInteger() != 0;
    case Type::Real:
        return std::get<double>(m_storage) != 0.0;
    default:
        return false;
    }
}

double PropertyList::toDate() const
{
    return m_type == Type::Date ? std::get<double>(m_storage) : 0.0;
}

quint64 PropertyList::toUid() const
{
    return m_type == Type::Uid ? std::get<Uid>(m_storage).value : 0;
}

PropertyArray PropertyList::toArray() const
{
    return m_type == Type::Array ? std::get<PropertyArray>(m_storage) : PropertyArray();
}

PropertyDictionary PropertyList::toDictionary() const
{
    return m_type == Type::Dictionary ? std::get<PropertyDictionary>(m_storage)
                                      : PropertyDictionary();
}

const PropertyArray &PropertyList::arrayRef() const { return std::get<PropertyArray>(m_storage); }

const PropertyDictionary &PropertyList::dictionaryRef() const
{
    return std::get<PropertyDictionary>(m_storage);
}

namespace {

bool integersEqual(const PropertyList &a, const PropertyList &b)
{
    const bool aUnsigned = a.isUnsignedInteger();
    const bool bUnsigned = b.isUnsignedInteger();
    if (aUnsigned == bUnsigned)
        return a.toUnsignedInteger() == b.toUnsignedInteger();
    const PropertyList &signedOne = aUnsigned ? b : a;
    const PropertyList &unsignedOne = aUnsigned ? a : b;
    return signedOne.toInteger() >= 0 && signedOne.toUnsignedInteger() == unsignedOne.toUnsignedInteger();
}

bool realsEqual(double a, double b)
{
    // NaN equals itself here, so that every value equals its own copy.
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace

bool PropertyList::operator==(const PropertyList &other) const { return equals(other, false); }
bool PropertyList::isIdenticalTo(const PropertyList &other) const { return equals(other, true); }

bool PropertyList::equals(const PropertyList &other, bool strictTypes) const
{
    if (m_type != other.m_type)
        return false;
    if (strictTypes && m_typeCode != other.m_typeCode)
        return false;
    switch (m_type) {
    case Type::Integer:
        return integersEqual(*this, other);
    case Type::Real:
    case Type::Date:
        return realsEqual(std::get<double>(m_storage), std::get<double>(other.m_storage));
    case Type::Array: {
        if (!strictTypes)
            return arrayRef() == other.arrayRef();
        const auto &mine = arrayRef().items();
        const auto &theirs = other.arrayRef().items();
        return std::equal(mine.begin(), mine.end(), theirs.begin(), theirs.end(),
                          [](const PropertyList &x, const PropertyList &y) { return x.isIdenticalTo(y); });
    }
    case Type::Dictionary: {
        if (!strictTypes)
            return dictionaryRef() == other.dictionaryRef();
        const PropertyDictionary &mine = dictionaryRef();
        const PropertyDictionary &theirs = other.dictionaryRef();
        if (mine.size() != theirs.size())
            return false;
        for (qsizetype i = 0; i < mine.size(); ++i) {
            const PropertyList *match = theirs.find(mine.keyAt(i));
            if (!match || !mine.valueAt(i).isIdenticalTo(*match))
                return false;
        }
        return true;
    }
    default:
        return m_storage == other.m_storage;
    }
}
