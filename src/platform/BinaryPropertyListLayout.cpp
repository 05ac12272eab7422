#include "BinaryPropertyListLayout.h"

#include <QtEndian>

namespace {

using Result = ReadResult<BinaryPropertyListLayout>;

// The smallest file the platform accepts: a header, a one-byte object and the trailer.
constexpr qsizetype kMinimumSize = BinaryPropertyListLayout::kHeaderSize + 1 + BinaryPropertyListLayout::kTrailerSize;

// True when an unsigned field of width bytes can hold value.
bool fitsInWidth(quint64 value, qsizetype width)
{
    return width >= 8 || value >> (8 * width) == 0;
}

Result failure(ReadStatus status, qint64 offset, qint64 object, const QString &message)
{
    return Result::failure(status, SourcePosition{offset, 0, 0, object}, message);
}

} // namespace

quint64 BinaryPropertyListLayout::readBigEndian(const uchar *bytes, qsizetype width)
{
    switch (width) {
    case 1:
        return bytes[0];
    case 2:
        return qFromBigEndian<quint16>(bytes);
    case 4:
        return qFromBigEndian<quint32>(bytes);
    case 8:
        return qFromBigEndian<quint64>(bytes);
    default:
        break;
    }
    quint64 value = 0;
    for (qsizetype i = 0; i < width; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

ReadResult<BinaryPropertyListLayout> BinaryPropertyListLayout::read(QByteArrayView bytes)
{
    const qsizetype size = bytes.size();
    if (size < kMinimumSize)
        return failure(ReadStatus::Truncated, size, -1,
                       QStringLiteral("The file is too short for a binary property list: %1 bytes, at least %2 needed")
                           .arg(size)
                           .arg(kMinimumSize));
    BinaryPropertyListLayout layout;
    layout.m_data = reinterpret_cast<const uchar *>(bytes.data());
    const qsizetype at = size - kTrailerSize;
    // Five unused bytes and the sort version come first; neither is checked, as on 10.6 and later.
    const uchar *trailer = layout.m_data + at;
    layout.m_offsetSize = trailer[6];
    layout.m_referenceSize = trailer[7];
    layout.m_objectCount = readBigEndian(trailer + 8, 8);
    layout.m_topObject = readBigEndian(trailer + 16, 8);
    layout.m_tableOffset = readBigEndian(trailer + 24, 8);
    Result check = layout.checkTrailer(at);
    if (check) {
        layout.m_objectsEnd = qsizetype(layout.m_tableOffset);
        check = layout.checkWidths(at);
    }
    if (check)
        check = layout.checkOffsets();
    if (!check)
        return check;
    return Result::success(layout);
}

ReadResult<BinaryPropertyListLayout> BinaryPropertyListLayout::checkTrailer(qsizetype at) const
{
    if (m_offsetSize == 0)
        return failure(ReadStatus::BadTrailer, at + 6, -1, QStringLiteral("The trailer gives offsets a size of 0 bytes"));
    if (m_referenceSize == 0)
        return failure(ReadStatus::BadTrailer, at + 7, -1, QStringLiteral("The trailer gives references a size of 0 bytes"));
    if (m_objectCount == 0)
        return failure(ReadStatus::BadTrailer, at + 8, -1, QStringLiteral("The trailer declares no objects"));
    if (m_topObject >= m_objectCount)
        return failure(ReadStatus::OutOfRange, at + 16, -1,
                       QStringLiteral("The top object is number %1, but the objects are numbered 0 to %2")
                           .arg(m_topObject)
                           .arg(m_objectCount - 1));
    // The offset table sits after the header and at least one object, before the trailer.
    if (m_tableOffset < quint64(kHeaderSize + 1) || m_tableOffset >= quint64(at))
        return failure(ReadStatus::OutOfRange, at + 24, -1,
                       QStringLiteral("The offset table's position %1 is outside the object area (bytes 9 to %2)")
                           .arg(m_tableOffset)
                           .arg(at - 1));
    return {};
}

// The offset table must fill exactly the space up to the trailer, and the
// declared widths must be able to express the object count and the table's position.
ReadResult<BinaryPropertyListLayout> BinaryPropertyListLayout::checkWidths(qsizetype at) const
{
    const quint64 room = quint64(at - m_objectsEnd);
    // Dividing instead of multiplying: the count times the width must not overflow.
    if (m_objectCount > room / quint64(m_offsetSize))
        return failure(ReadStatus::TooLarge, at + 8, -1,
                       QStringLiteral("%1 objects with offsets of %2 bytes do not fit between byte %3 and the trailer")
                           .arg(m_objectCount)
                           .arg(m_offsetSize)
                           .arg(m_objectsEnd));
    const quint64 tableEnd = quint64(m_objectsEnd) + m_objectCount * quint64(m_offsetSize);
    if (tableEnd != quint64(at))
        return failure(ReadStatus::BadTrailer, qint64(tableEnd), -1,
                       QStringLiteral("%1 unexplained bytes lie between the offset table and the trailer")
                           .arg(quint64(at) - tableEnd));
    if (!fitsInWidth(m_objectCount, m_referenceSize))
        return failure(ReadStatus::BadTrailer, at + 7, -1,
                       QStringLiteral("References of %1 bytes cannot address %2 objects")
                           .arg(m_referenceSize)
                           .arg(m_objectCount));
    if (!fitsInWidth(m_tableOffset, m_offsetSize))
        return failure(ReadStatus::BadTrailer, at + 6, -1,
                       QStringLiteral("Offsets of %1 bytes cannot reach the offset table at byte %2")
                           .arg(m_offsetSize)
                           .arg(m_objectsEnd));
    return {};
}

ReadResult<BinaryPropertyListLayout> BinaryPropertyListLayout::checkOffsets() const
{
    for (quint64 i = 0; i < m_objectCount; ++i) {
        const qsizetype entry = m_objectsEnd + qsizetype(i) * m_offsetSize;
        const quint64 offset = readBigEndian(m_data + entry, m_offsetSize);
        if (offset >= quint64(m_objectsEnd))
            return failure(ReadStatus::OutOfRange, entry, qint64(i),
                           QStringLiteral("Object %1 is said to start at byte %2, beyond the object table, which ends at byte %3")
                               .arg(i)
                               .arg(offset)
                               .arg(m_objectsEnd));
    }
    const qsizetype rootEntry = m_objectsEnd + qsizetype(m_topObject) * m_offsetSize;
    if (readBigEndian(m_data + rootEntry, m_offsetSize) < quint64(kHeaderSize))
        return failure(ReadStatus::OutOfRange, rootEntry, qint64(m_topObject),
                       QStringLiteral("The top object is said to start inside the header"));
    return {};
}

qsizetype BinaryPropertyListLayout::offsetOf(quint64 number) const
{
    const qsizetype entry = m_objectsEnd + qsizetype(number) * m_offsetSize;
    return qsizetype(readBigEndian(m_data + entry, m_offsetSize));
}
