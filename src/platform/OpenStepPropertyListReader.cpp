#include "OpenStepPropertyListReader.h"

bool OpenStepPropertyListReader::sniff(QByteArrayView) { return false; }

ReadResult<PropertyList> OpenStepPropertyListReader::read(const QByteArray &)
{
    return ReadResult<PropertyList>::failure(ReadStatus::Unsupported, {}, QStringLiteral("not yet readable"));
}
