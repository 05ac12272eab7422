#include "BinaryPropertyListReader.h"

bool BinaryPropertyListReader::sniff(QByteArrayView) { return false; }

ReadResult<PropertyList> BinaryPropertyListReader::read(const QByteArray &)
{
    return ReadResult<PropertyList>::failure(ReadStatus::Unsupported, {}, QStringLiteral("not yet readable"));
}
