#include "FuzzCheck.h"
#include "platform/BinaryPropertyListReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const ReadResult<PropertyList> result = BinaryPropertyListReader::read(bytes);
    if (result)
        checkRoundTrip(result.value, PropertyListFormat::Binary);
    else if (result.message.isEmpty())
        std::abort(); // every failure must say what is wrong
    return 0;
}
