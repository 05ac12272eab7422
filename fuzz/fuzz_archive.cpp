#include "platform/SequentialArchive.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto nodes = SequentialArchiveReader::readNodes(bytes);
    if (nodes) {
        // What was read must come back unchanged after being written again.
        SequentialArchiveWriter writer;
        writer.encodeNodes(nodes.value);
        const auto again = SequentialArchiveReader::readNodes(writer.data());
        if (!again || !(again.value == nodes.value))
            std::abort();
    } else if (nodes.message.isEmpty()) {
        std::abort(); // every failure must say what is wrong
    }
    return 0;
}
