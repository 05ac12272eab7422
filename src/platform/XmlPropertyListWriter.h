#pragma once

#include "PropertyList.h"

#include <QByteArray>

// Writes a value as XML (format 100), byte for byte as the platform writes it:
// tab indentation, keys in UTF-16 code-unit order, only & < > escaped, %.17g
// reals, dates truncated to the second, and UIDs as {CF$UID = n} dictionaries.
class XmlPropertyListWriter {
public:
    static QByteArray write(const PropertyList &value);
};
