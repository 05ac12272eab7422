#include "BinaryPropertyListWriter.h"

QByteArray BinaryPropertyListWriter::write(const PropertyList &) { return QByteArray(); }
