#pragma once

#include <QFile>
#include <QList>

#include <malloc.h>
#include <unistd.h>

// What the process holds, for the benchmarks' memory counters.
namespace ProcessMemory {

inline qint64 residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields.at(1).toLongLong() * sysconf(_SC_PAGESIZE) : 0;
}

inline qint64 heapBytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
}

} // namespace ProcessMemory
