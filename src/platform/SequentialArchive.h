#pragma once

#include "PropertyList.h"
#include "ReadResult.h"

#include <QBuffer>
#include <QByteArray>
#include <QDataStream>
#include <QList>

// The eight items a tree node archives, in the order it archives them. The
// node class turns itself into this record and back; the archive only knows
// the items and their types.
struct ArchivedNode {
    QList<ArchivedNode> children;
    QString name;
    bool isLeaf = true;
    PropertyList menuValue;   // the value-class tag, a number
    PropertyList objectValue; // the leaf's value, or the group's empty marker
    bool canEditValue = true;
    QString displayValue;
    bool valueIsBool = false;

    bool operator==(const ArchivedNode &other) const;
};

// A sequential (non-keyed) archive: typed items written one after the other and
// read back in the same order. It carries nodes on the pasteboard between
// windows and processes, so reading treats the bytes as untrusted: every item is
// tagged with its type, every length is checked against what is left, and
// nesting is bounded.
class SequentialArchiveWriter {
public:
    SequentialArchiveWriter();

    void encodeObject(const PropertyList &value);
    void encodeChar(bool value);
    void encodeNode(const ArchivedNode &node);
    void encodeNodes(const QList<ArchivedNode> &nodes);

    QByteArray data() const { return m_bytes; }

private:
    void writeValue(const PropertyList &value);
    void writeString(const QString &text);
    void writeBytes(const QByteArray &bytes);

    QByteArray m_bytes;
    QBuffer m_buffer;
    QDataStream m_stream;
};

class SequentialArchiveReader {
public:
    // The archive version this build writes; older ones would be read here too.
    static constexpr quint16 kVersion = 1;

    explicit SequentialArchiveReader(const QByteArray &bytes);

    // The header's verdict; every decode after a failure fails the same way.
    ReadResult<bool> header() const { return m_failure; }
    ReadResult<PropertyList> decodeObject();
    ReadResult<bool> decodeChar();
    ReadResult<ArchivedNode> decodeNode();
    ReadResult<QList<ArchivedNode>> decodeNodes();
    bool atEnd() const;

    // A whole archive of nodes, as encodeNodes wrote it, with nothing after it.
    static ReadResult<QList<ArchivedNode>> readNodes(const QByteArray &bytes);

private:
    template <typename T>
    ReadResult<T> fail(ReadStatus status, const QString &message);
    bool expectTag(char tag, const char *what);
    ReadResult<PropertyList> readValue(int depth);
    ReadResult<PropertyList> readNumber(bool integer);
    ReadResult<PropertyList> readScalar(quint8 kind);
    ReadResult<PropertyList> readContainer(bool isArray, int depth);
    ReadResult<ArchivedNode> readNode(int depth);
    ReadResult<QList<ArchivedNode>> readNodeList(int depth);
    bool readCount(quint32 *count, qint64 minimumItemSize);
    bool readString(QString *text);
    bool readBytes(QByteArray *bytes);
    qint64 remaining() const;

    QByteArray m_bytes;
    QBuffer m_buffer;
    QDataStream m_stream;
    ReadResult<bool> m_failure;
};
