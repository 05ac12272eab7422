#include "PropertyList.h"

#include <QHash>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <cmath>

class PropertyArrayData : public QSharedData {
public:
    QList<PropertyList> items;
};

// Most dictionaries in real files are small, and a hash per dictionary costs more
// than it saves there: smaller ones are searched in order, and larger ones get
// an index the first time a key is looked up in them. Readers append keys they
// know to be new and never look one up, so a large file read whole carries no
// index at all until something searches it. Lookups in a shared, unchanging
// dictionary may come from several threads at once: the index is built aside
// and published with one compare-and-swap, and a thread that loses the race
// uses the winner's.
class PropertyDictionaryData : public QSharedData {
public:
    static constexpr qsizetype kIndexThreshold = 8;
    using Index = QHash<QString, qsizetype>;

    PropertyDictionaryData() = default;
    PropertyDictionaryData(const PropertyDictionaryData &other)
        : QSharedData(other), keys(other.keys), values(other.values)
    {
    }
    PropertyDictionaryData &operator=(const PropertyDictionaryData &) = delete;
    ~PropertyDictionaryData() { delete index.load(std::memory_order_relaxed); }

    QStringList keys;
    QList<PropertyList> values;
    mutable std::atomic<Index *> index{nullptr}; // null until a lookup needs it

    qsizetype position(const QString &key) const
    {
        if (keys.size() <= kIndexThreshold)
            return keys.indexOf(key);
        const Index &lookup = indexForLookup();
        const auto it = lookup.constFind(key);
        return it == lookup.cend() ? -1 : *it;
    }

    const Index &indexForLookup() const
    {
        if (Index *built = index.load(std::memory_order_acquire))
            return *built;
        auto fresh = std::make_unique<Index>();
        fresh->reserve(keys.size());
        for (qsizetype i = 0; i < keys.size(); ++i)
            fresh->insert(keys.at(i), i);
        Index *expected = nullptr;
        if (index.compare_exchange_strong(expected, fresh.get(), std::memory_order_acq_rel))
            return *fresh.release();
        return *expected;
    }

    // Only the owner of an unshared copy changes it, so no lookup runs meanwhile.
    void noteAppended()
    {
        if (Index *built = index.load(std::memory_order_relaxed))
            built->insert(keys.last(), keys.size() - 1);
    }

    void dropIndex() { delete index.exchange(nullptr, std::memory_order_relaxed); }
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
    append(key, value);
}

bool PropertyDictionary::insertIfAbsent(const QString &key, const PropertyList &value)
{
    if (d->position(key) >= 0)
        return false;
    append(key, value);
    return true;
}

void PropertyDictionary::append(const QString &key, const PropertyList &value)
{
    d->keys.append(key);
    d->values.append(value);
    d->noteAppended();
}

void PropertyDictionary::appendNew(QString &&key, PropertyList &&value)
{
    d->keys.append(std::move(key));
    d->values.append(std::move(value));
    d->noteAppended();
}

bool PropertyDictionary::remove(const QString &key)
{
    const qsizetype position = d->position(key);
    if (position < 0)
        return false;
    d->keys.removeAt(position);
    d->values.removeAt(position);
    d->dropIndex();
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

PropertyList::PropertyList() : PropertyList(QString()) {}

PropertyList::PropertyList(const QString &string) : m_type(Type::String)
{
    new (&m_payload.string) QString(string);
}

PropertyList::PropertyList(const QByteArray &data) : m_type(Type::Data)
{
    new (&m_payload.data) QByteArray(data);
}

PropertyList::PropertyList(const PropertyArray &array) : m_type(Type::Array)
{
    new (&m_payload.array) PropertyArray(array);
}

PropertyList::PropertyList(const PropertyDictionary &dictionary) : m_type(Type::Dictionary)
{
    new (&m_payload.dictionary) PropertyDictionary(dictionary);
}

// For the types whose payload is a plain number, set by the caller.
PropertyList::PropertyList(Type type, char typeCode) : m_type(type), m_typeCode(typeCode) {}

PropertyList::PropertyList(const PropertyList &other) : m_type(other.m_type), m_typeCode(other.m_typeCode)
{
    copyPayload(other);
}

PropertyList::PropertyList(PropertyList &&other) noexcept : m_type(other.m_type), m_typeCode(other.m_typeCode)
{
    movePayload(std::move(other));
}

PropertyList &PropertyList::operator=(const PropertyList &other)
{
    if (this != &other) {
        PropertyList copy(other);
        *this = std::move(copy);
    }
    return *this;
}

PropertyList &PropertyList::operator=(PropertyList &&other) noexcept
{
    if (this != &other) {
        destroyPayload();
        m_type = other.m_type;
        m_typeCode = other.m_typeCode;
        movePayload(std::move(other));
    }
    return *this;
}

PropertyList::~PropertyList() { destroyPayload(); }

// The payload's member for m_type is constructed from other's; m_type is already set.
void PropertyList::copyPayload(const PropertyList &other)
{
    switch (m_type) {
    case Type::String:
        new (&m_payload.string) QString(other.m_payload.string);
        break;
    case Type::Data:
        new (&m_payload.data) QByteArray(other.m_payload.data);
        break;
    case Type::Array:
        new (&m_payload.array) PropertyArray(other.m_payload.array);
        break;
    case Type::Dictionary:
        new (&m_payload.dictionary) PropertyDictionary(other.m_payload.dictionary);
        break;
    case Type::Integer:
    case Type::Uid:
        m_payload.bits = other.m_payload.bits;
        break;
    case Type::Real:
    case Type::Date:
        m_payload.number = other.m_payload.number;
        break;
    case Type::Boolean:
        m_payload.flag = other.m_payload.flag;
        break;
    }
}

// Strings and data are moved, leaving other empty of its type; shared
// containers are copied (one reference count), which keeps other whole.
void PropertyList::movePayload(PropertyList &&other) noexcept
{
    switch (m_type) {
    case Type::String:
        new (&m_payload.string) QString(std::move(other.m_payload.string));
        break;
    case Type::Data:
        new (&m_payload.data) QByteArray(std::move(other.m_payload.data));
        break;
    case Type::Array:
    case Type::Dictionary:
    case Type::Integer:
    case Type::Real:
    case Type::Boolean:
    case Type::Date:
    case Type::Uid:
        copyPayload(other);
        break;
    }
}

void PropertyList::destroyPayload() noexcept
{
    switch (m_type) {
    case Type::String:
        m_payload.string.~QString();
        break;
    case Type::Data:
        m_payload.data.~QByteArray();
        break;
    case Type::Array:
        m_payload.array.~PropertyArray();
        break;
    case Type::Dictionary:
        m_payload.dictionary.~PropertyDictionary();
        break;
    case Type::Integer:
    case Type::Real:
    case Type::Boolean:
    case Type::Date:
    case Type::Uid:
        break;
    }
}

PropertyList PropertyList::integer(qint64 value, char typeCode)
{
    return unsignedInteger(static_cast<quint64>(value), typeCode);
}

PropertyList PropertyList::unsignedInteger(quint64 value, char typeCode)
{
    PropertyList number(Type::Integer, typeCode);
    number.m_payload.bits = value;
    return number;
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
    PropertyList number(Type::Real, typeCode);
    number.m_payload.number = value;
    return number;
}

PropertyList PropertyList::boolean(bool value)
{
    PropertyList boolean(Type::Boolean, 'c');
    boolean.m_payload.flag = value;
    return boolean;
}

PropertyList PropertyList::date(double seconds)
{
    PropertyList date(Type::Date, 0);
    date.m_payload.number = seconds;
    return date;
}

PropertyList PropertyList::uid(quint64 value)
{
    PropertyList uid(Type::Uid, 0);
    uid.m_payload.bits = value;
    return uid;
}

bool PropertyList::isUnsignedInteger() const
{
    return m_type == Type::Integer
           && (m_typeCode == 'Q' || m_typeCode == 'I' || m_typeCode == 'S' || m_typeCode == 'L');
}

QString PropertyList::toString() const
{
    return m_type == Type::String ? m_payload.string : QString();
}

QByteArray PropertyList::toData() const
{
    return m_type == Type::Data ? m_payload.data : QByteArray();
}

qint64 PropertyList::toInteger() const { return static_cast<qint64>(toUnsignedInteger()); }

quint64 PropertyList::toUnsignedInteger() const
{
    switch (m_type) {
    case Type::Integer:
        return m_payload.bits;
    case Type::Boolean:
        return m_payload.flag ? 1 : 0;
    case Type::Real:
        return static_cast<quint64>(static_cast<qint64>(m_payload.number));
    default:
        return 0;
    }
}

double PropertyList::toReal() const
{
    switch (m_type) {
    case Type::Real:
    case Type::Date:
        return m_payload.number;
    case Type::Integer:
        return isUnsignedInteger() ? static_cast<double>(toUnsignedInteger())
                                   : static_cast<double>(toInteger());
    case Type::Boolean:
        return m_payload.flag ? 1.0 : 0.0;
    default:
        return 0.0;
    }
}

bool PropertyList::toBool() const
{
    switch (m_type) {
    case Type::Boolean:
        return m_payload.flag;
    case Type::Integer:
        return toUnsignedInteger() != 0;
    case Type::Real:
        return m_payload.number != 0.0;
    default:
        return false;
    }
}

double PropertyList::toDate() const
{
    return m_type == Type::Date ? m_payload.number : 0.0;
}

quint64 PropertyList::toUid() const
{
    return m_type == Type::Uid ? m_payload.bits : 0;
}

PropertyArray PropertyList::toArray() const
{
    return m_type == Type::Array ? m_payload.array : PropertyArray();
}

PropertyDictionary PropertyList::toDictionary() const
{
    return m_type == Type::Dictionary ? m_payload.dictionary
                                      : PropertyDictionary();
}

const QString &PropertyList::stringRef() const
{
    Q_ASSERT(m_type == Type::String);
    return m_payload.string;
}

const PropertyArray &PropertyList::arrayRef() const
{
    Q_ASSERT(m_type == Type::Array);
    return m_payload.array;
}

const PropertyDictionary &PropertyList::dictionaryRef() const
{
    Q_ASSERT(m_type == Type::Dictionary);
    return m_payload.dictionary;
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
        return realsEqual(m_payload.number, other.m_payload.number);
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
    case Type::String:
        return m_payload.string == other.m_payload.string;
    case Type::Data:
        return m_payload.data == other.m_payload.data;
    case Type::Boolean:
        return m_payload.flag == other.m_payload.flag;
    case Type::Uid:
        return m_payload.bits == other.m_payload.bits;
    }
    return false;
}
