#pragma once

#include "ReadResult.h"

#include <QByteArrayView>

// The frame of a binary property list: the trailer and the offset table that
// locate its objects. read() checks them as the platform does, entry by entry,
// so that afterwards every object can be located without further checks. A
// layout only points into the bytes it was read from, which must outlive it.
class BinaryPropertyListLayout {
public:
    static constexpr qsizetype kHeaderSize = 8;
    static constexpr qsizetype kTrailerSize = 32;

    // The bytes are known to start with the magic; the failure names the field at fault and its byte offset.
    static ReadResult<BinaryPropertyListLayout> read(QByteArrayView bytes);

    // A big-endian unsigned number of any width. Wider fields keep only their
    // low 64 bits and odd widths (3 bytes) are read byte by byte, as the platform does.
    static quint64 readBigEndian(const uchar *bytes, qsizetype width);

    const uchar *data() const { return m_data; }
    quint64 objectCount() const { return m_objectCount; }
    quint64 topObject() const { return m_topObject; }
    qsizetype referenceSize() const { return m_referenceSize; }
    // Where the object table ends and the offset table starts: no object may be read past it.
    qsizetype objectsEnd() const { return m_objectsEnd; }
    // Where object number (below objectCount()) starts; always below objectsEnd().
    qsizetype offsetOf(quint64 number) const;

private:
    ReadResult<BinaryPropertyListLayout> checkTrailer(qsizetype at) const;
    ReadResult<BinaryPropertyListLayout> checkWidths(qsizetype at) const;
    ReadResult<BinaryPropertyListLayout> checkOffsets() const;

    const uchar *m_data = nullptr;
    quint64 m_objectCount = 0;
    quint64 m_topObject = 0;
    quint64 m_tableOffset = 0;
    qsizetype m_offsetSize = 0;
    qsizetype m_referenceSize = 0;
    qsizetype m_objectsEnd = 0;
};
