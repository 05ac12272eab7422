#pragma once

#include "PropertyList.h"
#include "ReadResult.h"

#include <QByteArrayView>

// Reads XML (format 100) property lists from untrusted bytes.
class XmlPropertyListReader {
public:
    // True when the bytes look like this format (a cheap check of the first bytes).
    static bool sniff(QByteArrayView bytes);
    static ReadResult<PropertyList> read(const QByteArray &bytes);
};
