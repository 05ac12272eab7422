#include "SequentialArchive.h"

#include "PropertyListSerialization.h"

#include <QStringDecoder>

#include <cstring>

namespace {

constexpr char kMagic[4] = {'O', 'V', 'S', 'A'};

// Item tags: each item says what it is, so a reader never takes one type for another.
constexpr char kObjectTag = 'O';
constexpr char kCharTag = 'C';
constexpr char kNodeTag = 'N';
constexpr char kNodeListTag = 'L';

// A node's eight items take at least this many bytes, which bounds how many a count may claim.
constexpr qint64 kMinimumNodeSize = 8;

enum class ValueKind : quint8 { String, Data, Integer, Real, Boolean, Date, Array, Dictionary, Uid };

bool isIntegerCode(char c)
{
    return c == 'i' || c == 's' || c == 'l' || c == 'q' || c == 'I' || c == 'S' || c == 'L' || c == 'Q';
}

} // namespace

bool ArchivedNode::operator==(const ArchivedNode &other) const
{
    return children == other.children && name == other.name && isLeaf == other.isLeaf
           && menuValue.isIdenticalTo(other.menuValue) && objectValue.isIdenticalTo(other.objectValue)
           && canEditValue == other.canEditValue && displayValue == other.displayValue
           && valueIsBool == other.valueIsBool;
}

// ---- writing ---------------------------------------------------------------

SequentialArchiveWriter::SequentialArchiveWriter()
{
    m_buffer.setBuffer(&m_bytes);
    m_buffer.open(QIODevice::WriteOnly);
    m_stream.setDevice(&m_buffer);
    m_stream.setByteOrder(QDataStream::BigEndian);
    m_stream.writeRawData(kMagic, sizeof kMagic);
    m_stream << SequentialArchiveReader::kVersion;
}

void SequentialArchiveWriter::encodeObject(const PropertyList &value)
{
    m_stream << qint8(kObjectTag);
    writeValue(value);
}

void SequentialArchiveWriter::encodeChar(bool value) { m_stream << qint8(kCharTag) << qint8(value ? 1 : 0); }

void SequentialArchiveWriter::encodeNode(const ArchivedNode &node)
{
    m_stream << qint8(kNodeTag);
    encodeNodes(node.children);
    encodeObject(node.name);
    encodeChar(node.isLeaf);
    encodeObject(node.menuValue);
    encodeObject(node.objectValue);
    encodeChar(node.canEditValue);
    encodeObject(node.displayValue);
    encodeChar(node.valueIsBool);
}

void SequentialArchiveWriter::encodeNodes(const QList<ArchivedNode> &nodes)
{
    m_stream << qint8(kNodeListTag) << quint32(nodes.size());
    for (const ArchivedNode &node : nodes)
        encodeNode(node);
}

void SequentialArchiveWriter::writeString(const QString &text) { writeBytes(text.toUtf8()); }

void SequentialArchiveWriter::writeBytes(const QByteArray &bytes)
{
    m_stream << quint32(bytes.size());
    m_stream.writeRawData(bytes.constData(), static_cast<int>(bytes.size()));
}

void SequentialArchiveWriter::writeValue(const PropertyList &value)
{
    switch (value.type()) {
    case PropertyList::Type::String:
        m_stream << quint8(ValueKind::String);
        writeString(value.toString());
        break;
    case PropertyList::Type::Data:
        m_stream << quint8(ValueKind::Data);
        writeBytes(value.toData());
        break;
    case PropertyList::Type::Integer:
        m_stream << quint8(ValueKind::Integer) << qint8(value.typeCode()) << value.toUnsignedInteger();
        break;
    case PropertyList::Type::Real:
        m_stream << quint8(ValueKind::Real) << qint8(value.typeCode()) << value.toReal();
        break;
    case PropertyList::Type::Boolean:
        m_stream << quint8(ValueKind::Boolean) << qint8(value.toBool() ? 1 : 0);
        break;
    case PropertyList::Type::Date:
        m_stream << quint8(ValueKind::Date) << value.toDate();
        break;
    case PropertyList::Type::Uid:
        m_stream << quint8(ValueKind::Uid) << value.toUid();
        break;
    case PropertyList::Type::Array: {
        const auto &items = value.arrayRef().items();
        m_stream << quint8(ValueKind::Array) << quint32(items.size());
        for (const PropertyList &item : items)
            writeValue(item);
        break;
    }
    case PropertyList::Type::Dictionary: {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        m_stream << quint8(ValueKind::Dictionary) << quint32(dictionary.size());
        for (qsizetype i = 0; i < dictionary.size(); ++i) {
            writeString(dictionary.keyAt(i));
            writeValue(dictionary.valueAt(i));
        }
        break;
    }
    }
}

// ---- reading ---------------------------------------------------------------

SequentialArchiveReader::SequentialArchiveReader(const QByteArray &bytes) : m_bytes(bytes)
{
    m_buffer.setBuffer(&m_bytes);
    m_buffer.open(QIODevice::ReadOnly);
    m_stream.setDevice(&m_buffer);
    m_stream.setByteOrder(QDataStream::BigEndian);

    char magic[sizeof kMagic] = {};
    quint16 version = 0;
    if (m_stream.readRawData(magic, sizeof magic) != sizeof magic || std::memcmp(magic, kMagic, sizeof magic) != 0) {
        fail<bool>(ReadStatus::BadHeader, QStringLiteral("Not an archive of property-list nodes"));
        return;
    }
    m_stream >> version;
    if (m_stream.status() != QDataStream::Ok)
        fail<bool>(ReadStatus::Truncated, QStringLiteral("The archive ends inside its header"));
    else if (version == 0 || version > kVersion)
        fail<bool>(ReadStatus::BadVersion, QStringLiteral("Archive version %1 is not supported (this build reads up to %2)")
                                               .arg(version).arg(kVersion));
}

template <typename T>
ReadResult<T> SequentialArchiveReader::fail(ReadStatus status, const QString &message)
{
    if (m_failure) // the first failure is the one worth reporting
        m_failure = ReadResult<bool>::failure(status, {m_buffer.pos()}, message);
    return ReadResult<T>::failure(m_failure);
}

qint64 SequentialArchiveReader::remaining() const { return m_buffer.size() - m_buffer.pos(); }

bool SequentialArchiveReader::atEnd() const { return m_failure && remaining() == 0; }

bool SequentialArchiveReader::expectTag(char tag, const char *what)
{
    qint8 found = 0;
    m_stream >> found;
    if (m_stream.status() != QDataStream::Ok) {
        fail<bool>(ReadStatus::Truncated, QStringLiteral("The archive ends where %1 was expected").arg(QLatin1String(what)));
        return false;
    }
    if (found != tag) {
        fail<bool>(ReadStatus::BadValue, QStringLiteral("Expected %1 in the archive").arg(QLatin1String(what)));
        return false;
    }
    return true;
}

bool SequentialArchiveReader::readCount(quint32 *count, qint64 minimumItemSize)
{
    m_stream >> *count;
    if (m_stream.status() != QDataStream::Ok) {
        fail<bool>(ReadStatus::Truncated, QStringLiteral("The archive ends inside a count"));
        return false;
    }
    if (static_cast<qint64>(*count) * minimumItemSize > remaining()) {
        fail<bool>(ReadStatus::OutOfRange, QStringLiteral("A count of %1 is more than the archive holds").arg(*count));
        return false;
    }
    return true;
}

bool SequentialArchiveReader::readBytes(QByteArray *bytes)
{
    quint32 length = 0;
    if (!readCount(&length, 1))
        return false;
    bytes->resize(length);
    m_stream.readRawData(bytes->data(), static_cast<int>(length));
    return true;
}

bool SequentialArchiveReader::readString(QString *text)
{
    QByteArray utf8;
    if (!readBytes(&utf8))
        return false;
    QStringDecoder decoder(QStringDecoder::Utf8);
    *text = decoder(utf8);
    if (decoder.hasError()) {
        fail<bool>(ReadStatus::BadEncoding, QStringLiteral("A string in the archive is not valid UTF-8"));
        return false;
    }
    return true;
}

ReadResult<PropertyList> SequentialArchiveReader::decodeObject()
{
    if (!m_failure || !expectTag(kObjectTag, "an object"))
        return ReadResult<PropertyList>::failure(m_failure);
    return readValue(0);
}

ReadResult<bool> SequentialArchiveReader::decodeChar()
{
    if (!m_failure || !expectTag(kCharTag, "a char"))
        return ReadResult<bool>::failure(m_failure);
    qint8 value = 0;
    m_stream >> value;
    if (m_stream.status() != QDataStream::Ok)
        return fail<bool>(ReadStatus::Truncated, QStringLiteral("The archive ends inside a char"));
    return ReadResult<bool>::success(value != 0);
}

ReadResult<ArchivedNode> SequentialArchiveReader::decodeNode()
{
    if (!m_failure)
        return ReadResult<ArchivedNode>::failure(m_failure);
    return readNode(0);
}

ReadResult<QList<ArchivedNode>> SequentialArchiveReader::decodeNodes()
{
    if (!m_failure)
        return ReadResult<QList<ArchivedNode>>::failure(m_failure);
    return readNodeList(0);
}

ReadResult<QList<ArchivedNode>> SequentialArchiveReader::readNodeList(int depth)
{
    using Result = ReadResult<QList<ArchivedNode>>;
    if (!expectTag(kNodeListTag, "a list of nodes"))
        return Result::failure(m_failure);
    quint32 count = 0;
    if (!readCount(&count, kMinimumNodeSize))
        return Result::failure(m_failure);
    QList<ArchivedNode> nodes;
    nodes.reserve(count);
    for (quint32 i = 0; i < count; ++i) {
        auto node = readNode(depth);
        if (!node)
            return Result::failure(node);
        nodes.append(std::move(node.value));
    }
    return Result::success(std::move(nodes));
}

ReadResult<ArchivedNode> SequentialArchiveReader::readNode(int depth)
{
    using Result = ReadResult<ArchivedNode>;
    if (depth >= PropertyListSerialization::kMaxDepth)
        return fail<ArchivedNode>(ReadStatus::TooDeep, QStringLiteral("Archived nodes nest too deeply"));
    if (!expectTag(kNodeTag, "a node"))
        return Result::failure(m_failure);
    ArchivedNode node;
    auto children = readNodeList(depth + 1);
    if (!children)
        return Result::failure(children);
    node.children = std::move(children.value);

    // The remaining seven items, in the order a node archives them.
    ReadResult<PropertyList> name = decodeObject();
    ReadResult<bool> isLeaf = name ? decodeChar() : ReadResult<bool>::failure(name);
    ReadResult<PropertyList> menu = isLeaf ? decodeObject() : ReadResult<PropertyList>::failure(isLeaf);
    ReadResult<PropertyList> object = menu ? decodeObject() : menu;
    ReadResult<bool> canEditValue = object ? decodeChar() : ReadResult<bool>::failure(object);
    ReadResult<PropertyList> display = canEditValue ? decodeObject() : ReadResult<PropertyList>::failure(canEditValue);
    ReadResult<bool> valueIsBool = display ? decodeChar() : ReadResult<bool>::failure(display);
    if (!valueIsBool)
        return Result::failure(valueIsBool);
    if (!name.value.isString() || !display.value.isString() || !menu.value.isNumber())
        return fail<ArchivedNode>(ReadStatus::BadValue, QStringLiteral("An archived node's name, class or display text has the wrong type"));
    node.name = name.value.toString();
    node.isLeaf = isLeaf.value;
    node.menuValue = menu.value;
    node.objectValue = object.value;
    node.canEditValue = canEditValue.value;
    node.displayValue = display.value.toString();
    node.valueIsBool = valueIsBool.value;
    return Result::success(std::move(node));
}

ReadResult<PropertyList> SequentialArchiveReader::readValue(int depth)
{
    using Result = ReadResult<PropertyList>;
    if (depth >= PropertyListSerialization::kMaxDepth)
        return fail<PropertyList>(ReadStatus::TooDeep, QStringLiteral("Archived values nest too deeply"));
    quint8 kind = 0;
    m_stream >> kind;
    if (m_stream.status() != QDataStream::Ok)
        return fail<PropertyList>(ReadStatus::Truncated, QStringLiteral("The archive ends inside a value"));
    switch (static_cast<ValueKind>(kind)) {
    case ValueKind::String: {
        QString text;
        return readString(&text) ? Result::success(text) : Result::failure(m_failure);
    }
    case ValueKind::Data: {
        QByteArray bytes;
        return readBytes(&bytes) ? Result::success(bytes) : Result::failure(m_failure);
    }
    case ValueKind::Integer:
    case ValueKind::Real:
        return readNumber(static_cast<ValueKind>(kind) == ValueKind::Integer);
    case ValueKind::Boolean:
    case ValueKind::Date:
    case ValueKind::Uid:
        return readScalar(kind);
    case ValueKind::Array:
    case ValueKind::Dictionary:
        return readContainer(static_cast<ValueKind>(kind) == ValueKind::Array, depth);
    }
    return fail<PropertyList>(ReadStatus::BadValue, QStringLiteral("Unknown value kind %1 in the archive").arg(kind));
}

ReadResult<PropertyList> SequentialArchiveReader::readNumber(bool integer)
{
    qint8 code = 0;
    m_stream >> code;
    const char typeCode = static_cast<char>(code);
    if (integer) {
        quint64 bits = 0;
        m_stream >> bits;
        if (m_stream.status() == QDataStream::Ok && isIntegerCode(typeCode))
            return ReadResult<PropertyList>::success(PropertyList::unsignedInteger(bits, typeCode));
    } else {
        double value = 0;
        m_stream >> value;
        if (m_stream.status() == QDataStream::Ok && (typeCode == 'd' || typeCode == 'f'))
            return ReadResult<PropertyList>::success(PropertyList::real(value, typeCode));
    }
    if (m_stream.status() != QDataStream::Ok)
        return fail<PropertyList>(ReadStatus::Truncated, QStringLiteral("The archive ends inside a number"));
    return fail<PropertyList>(ReadStatus::BadValue, QStringLiteral("A number in the archive has an unknown type code"));
}

ReadResult<PropertyList> SequentialArchiveReader::readScalar(quint8 kind)
{
    PropertyList value;
    switch (static_cast<ValueKind>(kind)) {
    case ValueKind::Boolean: {
        qint8 flag = 0;
        m_stream >> flag;
        value = PropertyList::boolean(flag != 0);
        break;
    }
    case ValueKind::Date: {
        double seconds = 0;
        m_stream >> seconds;
        value = PropertyList::date(seconds);
        break;
    }
    default: {
        quint64 uid = 0;
        m_stream >> uid;
        value = PropertyList::uid(uid);
        break;
    }
    }
    if (m_stream.status() != QDataStream::Ok)
        return fail<PropertyList>(ReadStatus::Truncated, QStringLiteral("The archive ends inside a value"));
    return ReadResult<PropertyList>::success(value);
}

ReadResult<PropertyList> SequentialArchiveReader::readContainer(bool isArray, int depth)
{
    using Result = ReadResult<PropertyList>;
    quint32 count = 0;
    // An array item takes at least 2 bytes (kind and a boolean); a dictionary entry 6 (key length, kind, boolean).
    if (!readCount(&count, isArray ? 2 : 6))
        return Result::failure(m_failure);
    if (isArray) {
        PropertyArray items;
        items.reserve(count);
        for (quint32 i = 0; i < count; ++i) {
            auto item = readValue(depth + 1);
            if (!item)
                return item;
            items.append(item.value);
        }
        return Result::success(items);
    }
    PropertyDictionary dictionary;
    dictionary.reserve(count);
    for (quint32 i = 0; i < count; ++i) {
        QString key;
        if (!readString(&key))
            return Result::failure(m_failure);
        auto item = readValue(depth + 1);
        if (!item)
            return item;
        dictionary.insert(key, item.value);
    }
    return Result::success(dictionary);
}

ReadResult<QList<ArchivedNode>> SequentialArchiveReader::readNodes(const QByteArray &bytes)
{
    SequentialArchiveReader reader(bytes);
    auto nodes = reader.decodeNodes();
    if (nodes && !reader.atEnd())
        return reader.fail<QList<ArchivedNode>>(ReadStatus::Syntax, QStringLiteral("Unexpected bytes after the archived nodes"));
    return nodes;
}
