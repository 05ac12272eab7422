#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QSharedDataPointer>
#include <QString>
#include <QStringList>


class PropertyList;
class PropertyArrayData;
class PropertyDictionaryData;

// An ordered list of values. Copies share their items until one of them is
// changed (copy on write), so passing arrays around is O(1).
class PropertyArray {
public:
    PropertyArray();
    PropertyArray(std::initializer_list<PropertyList> items);
    PropertyArray(const PropertyArray &other);
    PropertyArray &operator=(const PropertyArray &other);
    ~PropertyArray();

    qsizetype size() const;
    bool isEmpty() const { return size() == 0; }
    const PropertyList &at(qsizetype index) const;
    void append(const PropertyList &value);
    void reserve(qsizetype count);
    const QList<PropertyList> &items() const;

    bool operator==(const PropertyArray &other) const;

private:
    QSharedDataPointer<PropertyArrayData> d;
};

// A dictionary with string keys that remembers the order in which its keys
// were first inserted (the order of the file), with constant-time lookup.
// Inserting an existing key replaces its value in place.
class PropertyDictionary {
public:
    PropertyDictionary();
    PropertyDictionary(std::initializer_list<std::pair<QString, PropertyList>> entries);
    PropertyDictionary(const PropertyDictionary &other);
    PropertyDictionary &operator=(const PropertyDictionary &other);
    ~PropertyDictionary();

    qsizetype size() const;
    bool isEmpty() const { return size() == 0; }
    const QString &keyAt(qsizetype index) const;
    const PropertyList &valueAt(qsizetype index) const;
    const QStringList &keys() const;
    bool contains(const QString &key) const;
    // The value stored under key, or nullptr when there is none.
    const PropertyList *find(const QString &key) const;
    void insert(const QString &key, const PropertyList &value);
    // Inserts only a new key; false (and nothing changed) when key is there.
    bool insertIfAbsent(const QString &key, const PropertyList &value);
    // Appends a key the caller knows is not there yet, without looking it up:
    // readers that keep track of their keys use it to fill large dictionaries.
    void appendNew(QString &&key, PropertyList &&value);
    bool remove(const QString &key);
    void reserve(qsizetype count);
    // Keys in ascending UTF-16 code-unit order, as the platform's writers list them.
    QStringList sortedKeys() const;

    // Equal when both hold the same keys with equal values; order is not compared.
    bool operator==(const PropertyDictionary &other) const;

private:
    void append(const QString &key, const PropertyList &value);

    QSharedDataPointer<PropertyDictionaryData> d;
};

// One property-list value: string, data, integer, real, boolean, date, array,
// dictionary, or the keyed archiver's object reference (UID). Numbers keep the
// platform's type code (objCType) so that a value written back has the width it
// was read with. Copying is O(1): strings, data and containers are implicitly
// shared.
class PropertyList {
public:
    enum class Type : quint8 { String, Data, Integer, Real, Boolean, Date, Array, Dictionary, Uid };

    PropertyList(); // the empty string
    PropertyList(const QString &string);
    PropertyList(const PropertyList &other);
    PropertyList(PropertyList &&other) noexcept;
    PropertyList &operator=(const PropertyList &other);
    PropertyList &operator=(PropertyList &&other) noexcept;
    ~PropertyList();
    PropertyList(const char *utf8) = delete; // say QStringLiteral, so no encoding is guessed
    PropertyList(const QByteArray &data);
    PropertyList(const PropertyArray &array);
    PropertyList(const PropertyDictionary &dictionary);

    // Integers with an explicit type code among i s l q I S L Q. Signed codes
    // keep the value as qint64; unsigned ones as quint64.
    static PropertyList integer(qint64 value, char typeCode = 'q');
    static PropertyList unsignedInteger(quint64 value, char typeCode = 'Q');
    // The type code a number read from a file gets (small values come from the
    // platform's shared cache and are 'i').
    static PropertyList integerFromFile(qint64 value);
    static PropertyList real(double value, char typeCode = 'd');
    static PropertyList boolean(bool value);
    // Seconds since 2001-01-01 00:00:00 UTC, the platform's reference date.
    static PropertyList date(double secondsSinceReferenceDate);
    static PropertyList uid(quint64 value);

    Type type() const { return m_type; }
    bool isString() const { return m_type == Type::String; }
    bool isData() const { return m_type == Type::Data; }
    bool isInteger() const { return m_type == Type::Integer; }
    bool isReal() const { return m_type == Type::Real; }
    bool isBoolean() const { return m_type == Type::Boolean; }
    bool isDate() const { return m_type == Type::Date; }
    bool isArray() const { return m_type == Type::Array; }
    bool isDictionary() const { return m_type == Type::Dictionary; }
    bool isUid() const { return m_type == Type::Uid; }
    bool isNumber() const { return isInteger() || isReal() || isBoolean(); }
    bool isContainer() const { return isArray() || isDictionary(); }

    // The objCType of a number: i s l q I S L Q for integers, d f for reals,
    // c for booleans; 0 for anything else.
    char typeCode() const { return m_typeCode; }
    bool isUnsignedInteger() const;

    // Accessors answer a neutral value (empty, 0, false) for another type.
    QString toString() const;
    QByteArray toData() const;
    qint64 toInteger() const;          // the bits as signed
    quint64 toUnsignedInteger() const; // the bits as unsigned
    double toReal() const;             // integers and booleans convert
    bool toBool() const;
    double toDate() const;
    quint64 toUid() const;
    PropertyArray toArray() const;
    PropertyDictionary toDictionary() const;
    // No copy, for walking large trees; the referenced value must be of that type.
    const QString &stringRef() const;
    const PropertyArray &arrayRef() const;
    const PropertyDictionary &dictionaryRef() const;

    // The platform's property-list equality (numbers compare by value, dictionaries
    // ignore order), except that an integer never equals a real or a boolean.
    bool operator==(const PropertyList &other) const;
    // As == but number type codes must match too; what a round trip must keep.
    bool isIdenticalTo(const PropertyList &other) const;

    // The platform's description text (old-style, as NSLog prints it).
    QString description() const;

private:
    // One payload per type, told apart by m_type. A hand-made union rather than
    // a std::variant: the variant's own tag would round a value up to 40 bytes,
    // and trees hold millions of values.
    union Payload {
        Payload() : bits(0) {}
        ~Payload() {}
        QString string;
        QByteArray data;
        quint64 bits;  // integers and UIDs
        double number; // reals and dates
        bool flag;
        PropertyArray array;
        PropertyDictionary dictionary;
    };

    PropertyList(Type type, char typeCode);
    void copyPayload(const PropertyList &other);
    void movePayload(PropertyList &&other) noexcept;
    void destroyPayload() noexcept;
    bool equals(const PropertyList &other, bool strictTypes) const;

    Payload m_payload;
    Type m_type = Type::String;
    char m_typeCode = 0;
};

static_assert(sizeof(PropertyList) <= 32, "a value is one shared handle or number, its type and its type code");

Q_DECLARE_METATYPE(PropertyList)
