#pragma once

#include "PropertyList.h"
#include "ReadResult.h"

#include <QByteArrayView>

// Reads XML (format 100) property lists from untrusted bytes, as tolerantly as
// the platform does: raw control characters, any DOCTYPE or attributes, no
// <plist> wrapper and text after the first element are all accepted; entity
// declarations are refused without anything being expanded.
class XmlPropertyListReader {
public:
    // True when, after an optional byte-order mark and white space, the text
    // starts with '<' and then '?', '!' or a letter (so old-style <0a0b> data is
    // not taken for markup), or when the bytes are UTF-16/32 without a mark.
    static bool sniff(QByteArrayView bytes);
    // The value of the first element; an empty <plist></plist> is an empty
    // dictionary and {CF$UID = n} a UID. Failures carry line and column (in
    // UTF-16 units) and, where the encoding allows, the byte offset.
    static ReadResult<PropertyList> read(const QByteArray &bytes);
};
