#pragma once

#include "PropertyList.h"
#include "ReadResult.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

// The platform's format codes (NSPropertyListFormat).
enum class PropertyListFormat { OpenStep = 1, Xml = 100, Binary = 200 };

// A value together with the format it was read in, so it can be written back the same way.
struct PropertyListFile {
    PropertyList value;
    PropertyListFormat format = PropertyListFormat::Xml;
};

// One entry of the format registry: how to recognise a format by its first
// bytes, how to read it, and how to write it (no writer for a read-only format).
struct PropertyListCodec {
    PropertyListFormat format;
    const char *name; // as orvane-plist spells it: "openstep1", "xml1", "binary1"
    bool (*sniff)(QByteArrayView bytes);
    ReadResult<PropertyList> (*read)(const QByteArray &bytes);
    QByteArray (*write)(const PropertyList &value);
};

// Reads and writes property lists in every registered format; the format of
// input is found from its content, never from a file name.
class PropertyListSerialization {
public:
    // Nesting deeper than this is refused by every reader: the readers recurse,
    // and no real property list comes anywhere near it.
    static constexpr int kMaxDepth = 512;

    static const QList<PropertyListCodec> &codecs();
    static const PropertyListCodec *codec(PropertyListFormat format);
    static const PropertyListCodec *codecNamed(QByteArrayView name);

    // Detects the format and reads. When text that looks like XML fails as XML,
    // it is tried as old-style text, as the platform does; if that fails too the
    // XML error is the one reported.
    static ReadResult<PropertyListFile> read(const QByteArray &bytes);
    static ReadResult<PropertyListFile> readFile(const QString &path);

    static bool canWrite(PropertyListFormat format);
    // Empty when the format cannot be written, or when the value cannot be
    // (writeProblem says why).
    static QByteArray write(const PropertyList &value, PropertyListFormat format);
    // Why no file can carry the value, or empty when one can: a string or key
    // holding half of a UTF-16 pair would come back altered from XML and be
    // refused by a binary reader, so it is never written.
    static QString writeProblem(const PropertyList &value);
};
