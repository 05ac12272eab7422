#include "BinaryPropertyListReader.h"

#include "BinaryPropertyListLayout.h"
#include "PropertyListSerialization.h"

#include <QHash>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using Result = ReadResult<PropertyList>;

constexpr uchar kOnPath = 1;
constexpr uchar kSeen = 2;
constexpr uchar kWarned = 4;
constexpr quint64 kLargestCount = quint64(std::numeric_limits<qint64>::max());
// Dates are kept to years of at most four digits either side of year 0 (from
// -9999-01-01 up to, not including, 10000-01-01, in seconds from 2001), so that
// the date texts stay well defined. The platform's own extremes, distantPast
// (year 1) and distantFuture (year 4001), lie well inside.
constexpr double kEarliestDate = -378683510400.0;
constexpr double kEndOfDates = 252423993600.0;

quint64 readBigEndian(const uchar *bytes, qsizetype width)
{
    return BinaryPropertyListLayout::readBigEndian(bytes, width);
}

QString hexByte(uchar byte)
{
    return QStringLiteral("0x%1").arg(uint(byte), 2, 16, QLatin1Char('0'));
}

// One object of the object table, as the offset table locates it.
struct ObjectRef {
    quint64 number;
    qsizetype offset;
    uchar marker;
};

// Decodes the objects of one file whose layout has been checked. Every read is
// checked against the end of the object table; containers recurse, bounded by
// the nesting limit, with the containers on the current path marked so that a
// cycle is caught at its first repeat.
class Parser {
public:
    Parser(const BinaryPropertyListLayout &layout, qsizetype fileSize)
        : m_layout(layout), m_data(layout.data()), m_objectsEnd(layout.objectsEnd()),
          m_referenceSize(layout.referenceSize()),
          m_budget(std::max<qint64>(qint64(1) << 20, 16 * qint64(fileSize))),
          m_flags(layout.objectCount(), 0)
    {
    }

    Result run();

private:
    ObjectRef objectAt(quint64 number) const;
    bool readObject(quint64 number, int depth, PropertyList &out);
    bool readInteger(const ObjectRef &object, PropertyList &out);
    bool readReal(const ObjectRef &object, PropertyList &out);
    bool readDate(const ObjectRef &object, PropertyList &out);
    bool readData(const ObjectRef &object, PropertyList &out);
    bool readString(const ObjectRef &object, QString &out);
    bool decodeAscii(const ObjectRef &object, qsizetype at, quint64 count, QString &out);
    bool decodeUtf16(const ObjectRef &object, qsizetype at, quint64 count, QString &out);
    bool readUid(const ObjectRef &object, PropertyList &out);
    bool readArray(const ObjectRef &object, int depth, PropertyList &out);
    bool readDictionary(const ObjectRef &object, int depth, PropertyList &out);
    bool enterContainer(const ObjectRef &object, int depth);
    bool readCount(const ObjectRef &object, qsizetype &at, quint64 &count);
    bool need(const ObjectRef &object, qsizetype at, quint64 count, quint64 unitSize, const char *what);
    bool readReference(const ObjectRef &container, qsizetype at, quint64 &number);
    bool spend(const ObjectRef &object);
    bool findShared(const ObjectRef &object, PropertyList &out) const;
    bool decodedBefore(const ObjectRef &object);
    bool unsupported(const ObjectRef &object);
    bool fail(ReadStatus status, qint64 offset, qint64 object, QString message);
    // An object read once per reference warns the first time only.
    bool firstWarning(const ObjectRef &object);

    const BinaryPropertyListLayout &m_layout;
    const uchar *m_data;
    qsizetype m_objectsEnd;
    qsizetype m_referenceSize;
    qint64 m_budget;
    // Per object: kOnPath while a container is being read, kSeen once a string or
    // data was decoded, kWarned once it gave a warning.
    std::vector<uchar> m_flags;
    // Strings and data met a second time, shared by every later reference: the
    // platform stores each dictionary key once for all dictionaries, and a large
    // data object referenced over and over must not be copied each time.
    QHash<quint64, PropertyList> m_shared;
    Result m_error;
    ReadWarnings m_warnings;
};

Result Parser::run()
{
    PropertyList root;
    if (!readObject(m_layout.topObject(), 0, root)) {
        m_error.warnings = m_warnings.take();
        return m_error;
    }
    return Result::success(root, m_warnings.take());
}

ObjectRef Parser::objectAt(quint64 number) const
{
    const qsizetype offset = m_layout.offsetOf(number);
    return {number, offset, m_data[offset]};
}

bool Parser::readObject(quint64 number, int depth, PropertyList &out)
{
    const ObjectRef object = objectAt(number);
    if (!spend(object))
        return false;
    switch (object.marker >> 4) {
    case 0x0:
        if (object.marker == 0x08 || object.marker == 0x09) {
            out = PropertyList::boolean(object.marker == 0x09);
            return true;
        }
        return unsupported(object);
    case 0x1:
        return readInteger(object, out);
    case 0x2:
        return readReal(object, out);
    case 0x3:
        return readDate(object, out);
    case 0x4:
        return readData(object, out);
    case 0x5:
    case 0x6: {
        QString text;
        if (!readString(object, text))
            return false;
        out = PropertyList(text);
        return true;
    }
    case 0x8:
        return readUid(object, out);
    case 0xA:
        return readArray(object, depth, out);
    case 0xD:
        return readDictionary(object, depth, out);
    default:
        return unsupported(object);
    }
}

// Shared references turn the file's graph into a tree that can be far larger
// than the file; the budget stops a few hundred bytes from becoming millions of values.
bool Parser::spend(const ObjectRef &object)
{
    if (--m_budget >= 0)
        return true;
    return fail(ReadStatus::TooLarge, object.offset, qint64(object.number),
                QStringLiteral("The file expands into more values than its size allows; shared references repeat too often"));
}

// Most strings and data are used once; only the flag is touched for them.
bool Parser::findShared(const ObjectRef &object, PropertyList &out) const
{
    if (!(m_flags[object.number] & kSeen))
        return false;
    const auto found = m_shared.constFind(object.number);
    if (found == m_shared.cend())
        return false;
    out = *found;
    return true;
}

// Marks the object as decoded and tells whether it had been before.
bool Parser::decodedBefore(const ObjectRef &object)
{
    uchar &flags = m_flags[object.number];
    const bool before = flags & kSeen;
    flags |= kSeen;
    return before;
}

// Markers that exist only in bplist1x files, and bytes that are no marker at all.
bool Parser::unsupported(const ObjectRef &object)
{
    const qint64 number = qint64(object.number);
    QString why;
    switch (object.marker >> 4) {
    case 0x0:
        switch (object.marker) {
        case 0x00:
            why = QStringLiteral("a null object");
            break;
        case 0x0C:
        case 0x0D:
            why = QStringLiteral("a URL");
            break;
        case 0x0E:
            why = QStringLiteral("a UUID");
            break;
        default:
            break;
        }
        break;
    case 0x7:
        why = QStringLiteral("a UTF-8 string");
        break;
    case 0xB:
        why = QStringLiteral("an ordered set");
        break;
    case 0xC:
        return fail(ReadStatus::Unsupported, object.offset, number,
                    QStringLiteral("Object %1 is a set, which property lists in this editor cannot hold").arg(number));
    default:
        break;
    }
    if (why.isEmpty())
        return fail(ReadStatus::BadValue, object.offset, number,
                    QStringLiteral("Unknown object marker %1").arg(hexByte(object.marker)));
    return fail(ReadStatus::Unsupported, object.offset, number,
                QStringLiteral("Marker %1 is %2, which only bplist1x files hold")
                    .arg(hexByte(object.marker), why));
}

bool Parser::readInteger(const ObjectRef &object, PropertyList &out)
{
    const int power = object.marker & 0x0F;
    if (power > 4)
        return fail(ReadStatus::BadValue, object.offset, qint64(object.number),
                    QStringLiteral("An integer of 2^%1 bytes; at most 16 bytes are allowed").arg(power));
    const qsizetype width = qsizetype(1) << power;
    if (!need(object, object.offset + 1, quint64(width), 1, "integer"))
        return false;
    const quint64 value = readBigEndian(m_data + object.offset + 1, width);
    // 1, 2 and 4 bytes read unsigned and 8 bytes signed; a 16-byte number keeps
    // its low 64 bits as unsigned and stays 'Q' whatever its size.
    if (width != 16) {
        out = PropertyList::integerFromFile(static_cast<qint64>(value));
        return true;
    }
    out = PropertyList::unsignedInteger(value, 'Q');
    const uchar *high = m_data + object.offset + 1;
    if (std::any_of(high, high + 8, [](uchar c) { return c != 0; }) && firstWarning(object))
        m_warnings.add(ReadWarning::Kind::OutOfRange, SourcePosition{object.offset, 0, 0, qint64(object.number)},
                       QStringLiteral("The 16-byte integer of object %1 does not fit in 64 bits; "
                                      "its low 64 bits, %2, are kept")
                           .arg(object.number)
                           .arg(value));
    return true;
}

bool Parser::readReal(const ObjectRef &object, PropertyList &out)
{
    if (object.marker != 0x22 && object.marker != 0x23)
        return fail(ReadStatus::BadValue, object.offset, qint64(object.number),
                    QStringLiteral("A real of 2^%1 bytes; only 4 and 8 bytes are allowed").arg(object.marker & 0x0F));
    const bool isFloat = object.marker == 0x22;
    if (!need(object, object.offset + 1, isFloat ? 4 : 8, 1, "real"))
        return false;
    const uchar *bytes = m_data + object.offset + 1;
    if (isFloat) {
        const auto bits = quint32(readBigEndian(bytes, 4));
        float value;
        std::memcpy(&value, &bits, sizeof value);
        out = PropertyList::real(double(value), 'f');
    } else {
        const quint64 bits = readBigEndian(bytes, 8);
        double value;
        std::memcpy(&value, &bits, sizeof value);
        out = PropertyList::real(value, 'd');
    }
    return true;
}

bool Parser::readDate(const ObjectRef &object, PropertyList &out)
{
    if (object.marker != 0x33)
        return fail(ReadStatus::BadValue, object.offset, qint64(object.number),
                    QStringLiteral("Unknown object marker %1; a date is 0x33").arg(hexByte(object.marker)));
    if (!need(object, object.offset + 1, 8, 1, "date"))
        return false;
    const quint64 bits = readBigEndian(m_data + object.offset + 1, 8);
    double seconds;
    std::memcpy(&seconds, &bits, sizeof seconds);
    if (std::isnan(seconds))
        return fail(ReadStatus::BadValue, object.offset, qint64(object.number), QStringLiteral("The date is not a number"));
    if (seconds < kEarliestDate || seconds >= kEndOfDates)
        return fail(ReadStatus::BadValue, object.offset, qint64(object.number),
                    QStringLiteral("The date %1 seconds from 2001 lies outside the years -9999 to 9999").arg(seconds, 0, 'g', 17));
    out = PropertyList::date(seconds);
    return true;
}

bool Parser::readData(const ObjectRef &object, PropertyList &out)
{
    if (findShared(object, out))
        return true;
    qsizetype at = object.offset + 1;
    quint64 count = 0;
    if (!readCount(object, at, count) || !need(object, at, count, 1, "data"))
        return false;
    out = PropertyList(QByteArray(reinterpret_cast<const char *>(m_data + at), qsizetype(count)));
    if (decodedBefore(object))
        m_shared.insert(object.number, out);
    return true;
}

bool Parser::readString(const ObjectRef &object, QString &out)
{
    PropertyList shared;
    if (findShared(object, shared)) {
        out = shared.toString();
        return true;
    }
    qsizetype at = object.offset + 1;
    quint64 count = 0;
    if (!readCount(object, at, count))
        return false;
    const bool ascii = (object.marker >> 4) == 0x5;
    if (ascii ? !decodeAscii(object, at, count, out) : !decodeUtf16(object, at, count, out))
        return false;
    if (decodedBefore(object))
        m_shared.insert(object.number, PropertyList(out));
    return true;
}

bool Parser::decodeAscii(const ObjectRef &object, qsizetype at, quint64 count, QString &out)
{
    if (!need(object, at, count, 1, "ASCII string"))
        return false;
    const uchar *bytes = m_data + at;
    const qsizetype length = qsizetype(count);
    // OR-ing every byte is a loop the compiler vectorises; the search runs only for a bad string.
    uchar any = 0;
    for (qsizetype i = 0; i < length; ++i)
        any |= bytes[i];
    const uchar *bad = (any & 0x80) ? std::find_if(bytes, bytes + length, [](uchar c) { return c >= 0x80; }) : nullptr;
    if (bad)
        return fail(ReadStatus::BadEncoding, at + (bad - bytes), qint64(object.number),
                    QStringLiteral("An ASCII string holds the byte %1, which is not ASCII").arg(hexByte(*bad)));
    out = QString::fromLatin1(reinterpret_cast<const char *>(bytes), length);
    return true;
}

bool Parser::decodeUtf16(const ObjectRef &object, qsizetype at, quint64 count, QString &out)
{
    if (!need(object, at, count, 2, "UTF-16 string"))
        return false;
    const qsizetype length = qsizetype(count);
    const uchar *bytes = m_data + at;
    QString text(length, Qt::Uninitialized);
    QChar *units = text.data();
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t unit = qFromBigEndian<quint16>(bytes + 2 * i);
        const bool high = QChar::isHighSurrogate(unit);
        const bool paired = high && i + 1 < length && QChar::isLowSurrogate(qFromBigEndian<quint16>(bytes + 2 * i + 2));
        if ((high && !paired) || QChar::isLowSurrogate(unit))
            return fail(ReadStatus::BadEncoding, at + 2 * i, qint64(object.number),
                        QStringLiteral("A UTF-16 string holds the lone surrogate U+%1")
                            .arg(QString::number(uint(unit), 16).toUpper()));
        units[i] = QChar(unit);
        if (paired) {
            ++i;
            units[i] = QChar(qFromBigEndian<quint16>(bytes + 2 * i));
        }
    }
    out = text;
    return true;
}

bool Parser::readUid(const ObjectRef &object, PropertyList &out)
{
    const qsizetype width = (object.marker & 0x0F) + 1;
    if (!need(object, object.offset + 1, quint64(width), 1, "UID"))
        return false;
    const uchar *bytes = m_data + object.offset + 1;
    // The keyed archiver's references are 32-bit; leading bytes beyond that must be zero.
    const qsizetype extra = std::max<qsizetype>(0, width - 4);
    if (std::any_of(bytes, bytes + extra, [](uchar c) { return c != 0; }))
        return fail(ReadStatus::BadValue, object.offset, qint64(object.number),
                    QStringLiteral("A UID above 4294967295"));
    out = PropertyList::uid(readBigEndian(bytes + extra, width - extra));
    return true;
}

bool Parser::enterContainer(const ObjectRef &object, int depth)
{
    if (m_flags[object.number] & kOnPath)
        return fail(ReadStatus::Cycle, object.offset, qint64(object.number),
                    QStringLiteral("Object %1 contains itself").arg(object.number));
    if (depth >= PropertyListSerialization::kMaxDepth)
        return fail(ReadStatus::TooDeep, object.offset, qint64(object.number),
                    QStringLiteral("Containers are nested more than %1 deep").arg(PropertyListSerialization::kMaxDepth));
    m_flags[object.number] |= kOnPath;
    return true;
}

bool Parser::readArray(const ObjectRef &object, int depth, PropertyList &out)
{
    qsizetype at = object.offset + 1;
    quint64 count = 0;
    if (!readCount(object, at, count) || !need(object, at, count, quint64(m_referenceSize), "array")
        || !enterContainer(object, depth))
        return false;
    PropertyArray array;
    array.reserve(qsizetype(count));
    PropertyList item;
    for (quint64 i = 0; i < count; ++i) {
        quint64 reference = 0;
        if (!readReference(object, at + qsizetype(i) * m_referenceSize, reference)
            || !readObject(reference, depth + 1, item))
            return false;
        array.append(item);
    }
    m_flags[object.number] &= uchar(~kOnPath);
    out = PropertyList(array);
    return true;
}

bool Parser::readDictionary(const ObjectRef &object, int depth, PropertyList &out)
{
    qsizetype at = object.offset + 1;
    quint64 count = 0;
    const auto refSize = quint64(m_referenceSize);
    if (!readCount(object, at, count) || !need(object, at, count, 2 * refSize, "dictionary")
        || !enterContainer(object, depth))
        return false;
    PropertyDictionary dictionary;
    dictionary.reserve(qsizetype(count));
    QString key;
    PropertyList value;
    const bool quiet = m_flags[object.number] & kWarned;
    for (quint64 i = 0; i < count; ++i) {
        quint64 keyNumber = 0;
        quint64 valueNumber = 0;
        if (!readReference(object, at + qsizetype(i * refSize), keyNumber)
            || !readReference(object, at + qsizetype((count + i) * refSize), valueNumber))
            return false;
        const ObjectRef keyObject = objectAt(keyNumber);
        const int kind = keyObject.marker >> 4;
        if (kind != 0x5 && kind != 0x6)
            return fail(ReadStatus::Unsupported, keyObject.offset, qint64(keyNumber),
                        QStringLiteral("A dictionary key (marker %1) is not a string").arg(hexByte(keyObject.marker)));
        if (!spend(keyObject) || !readString(keyObject, key) || !readObject(valueNumber, depth + 1, value))
            return false;
        // The platform's mutable reading keeps the first of duplicate keys.
        if (!dictionary.insertIfAbsent(key, value) && !quiet) {
            m_flags[object.number] |= kWarned;
            m_warnings.add(ReadWarning::Kind::DuplicateKey,
                           SourcePosition{at + qsizetype(i * refSize), 0, 0, qint64(object.number)},
                           QStringLiteral("The key %1 occurs again in object %2; its first value is kept")
                               .arg(quotedForMessage(key))
                               .arg(object.number));
        }
    }
    m_flags[object.number] &= uchar(~kOnPath);
    out = PropertyList(dictionary);
    return true;
}

// The low nibble is the count, or 15 followed by an integer object holding it.
bool Parser::readCount(const ObjectRef &object, qsizetype &at, quint64 &count)
{
    count = object.marker & 0x0F;
    if (count != 0x0F)
        return true;
    if (!need(object, at, 1, 1, "count"))
        return false;
    const uchar marker = m_data[at];
    if ((marker >> 4) != 0x1 || (marker & 0x0F) > 4)
        return fail(ReadStatus::BadValue, at, qint64(object.number),
                    QStringLiteral("The count of object %1 should be an integer, found marker %2")
                        .arg(object.number)
                        .arg(hexByte(marker)));
    const qsizetype width = qsizetype(1) << (marker & 0x0F);
    if (!need(object, at + 1, quint64(width), 1, "count"))
        return false;
    count = readBigEndian(m_data + at + 1, width);
    if (count > kLargestCount)
        return fail(ReadStatus::TooLarge, at, qint64(object.number),
                    QStringLiteral("The count %1 of object %2 is too large").arg(count).arg(object.number));
    at += 1 + width;
    return true;
}

// Checks that count units of unitSize bytes starting at `at` lie inside the object table.
bool Parser::need(const ObjectRef &object, qsizetype at, quint64 count, quint64 unitSize, const char *what)
{
    const quint64 left = at <= m_objectsEnd ? quint64(m_objectsEnd - at) : 0;
    if (count <= left / unitSize)
        return true;
    return fail(ReadStatus::Truncated, object.offset, qint64(object.number),
                QStringLiteral("The %1 (object %2) needs more bytes than the %3 left before the offset table")
                    .arg(QLatin1String(what))
                    .arg(object.number)
                    .arg(left));
}

bool Parser::readReference(const ObjectRef &container, qsizetype at, quint64 &number)
{
    number = readBigEndian(m_data + at, m_referenceSize);
    if (number < m_layout.objectCount())
        return true;
    return fail(ReadStatus::OutOfRange, at, qint64(container.number),
                QStringLiteral("Object %1 refers to object %2, but the file has only %3")
                    .arg(container.number)
                    .arg(number)
                    .arg(m_layout.objectCount()));
}

bool Parser::firstWarning(const ObjectRef &object)
{
    uchar &flags = m_flags[object.number];
    const bool first = !(flags & kWarned);
    flags |= kWarned;
    return first;
}

bool Parser::fail(ReadStatus status, qint64 offset, qint64 object, QString message)
{
    m_error = Result::failure(status, SourcePosition{offset, 0, 0, object}, std::move(message));
    return false;
}

} // namespace

bool BinaryPropertyListReader::sniff(QByteArrayView bytes)
{
    // Any eighth character: the platform has read bplist00 as well as the later bplist0x variants.
    return bytes.startsWith("bplist0");
}

ReadResult<PropertyList> BinaryPropertyListReader::read(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return Result::failure(ReadStatus::Empty, {0}, QStringLiteral("The file is empty"));
    if (!sniff(bytes))
        return Result::failure(ReadStatus::BadHeader, {0},
                               QStringLiteral("Not a binary property list: the file does not start with \"bplist0\""));
    const ReadResult<BinaryPropertyListLayout> layout = BinaryPropertyListLayout::read(bytes);
    if (!layout)
        return Result::failure(layout);
    return Parser(layout.value, bytes.size()).run();
}
