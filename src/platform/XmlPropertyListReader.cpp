#include "XmlPropertyListReader.h"

bool XmlPropertyListReader::sniff(QByteArrayView) { return false; }

ReadResult<PropertyList> XmlPropertyListReader::read(const QByteArray &)
{
    return ReadResult<PropertyList>::failure(ReadStatus::Unsupported, {}, QStringLiteral("not yet readable"));
}
