#pragma once

#include "PropertyList.h"

#include <QByteArray>

// Writes a value as binary bplist00 (format 200), with uniqued objects and the smallest reference widths.
class BinaryPropertyListWriter {
public:
    static QByteArray write(const PropertyList &value);
};
