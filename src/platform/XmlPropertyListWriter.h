#pragma once

#include "PropertyList.h"

#include <QByteArray>

// Writes a value as XML (format 100), byte for byte as the platform writes it.
class XmlPropertyListWriter {
public:
    static QByteArray write(const PropertyList &value);
};
