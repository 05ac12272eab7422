#include "XmlPropertyListWriter.h"

QByteArray XmlPropertyListWriter::write(const PropertyList &) { return QByteArray(); }
