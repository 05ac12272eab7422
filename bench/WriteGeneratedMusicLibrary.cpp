// Writes the benchmarks' generated music library as XML (about 100 MB) and as
// its binary twin, for timings made from outside a process: the anchors, the
// command-line tool and the application's start.
#include "GeneratedMusicLibrary.h"

#include "platform/PropertyListSerialization.h"

#include <QSaveFile>
#include <QString>

#include <cstdio>

namespace {

bool writeFile(const char *path, const QByteArray &bytes)
{
    QSaveFile out(QString::fromLocal8Bit(path));
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) < 0 || !out.commit()) {
        std::fprintf(stderr, "%s: %s\n", path, qPrintable(out.errorString()));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: write-generated-music-library OUT.xml OUT.plist\n");
        return 2;
    }
    const PropertyDictionary library = GeneratedMusicLibrary::value();
    const bool written = writeFile(argv[1], PropertyListSerialization::write(library, PropertyListFormat::Xml))
        && writeFile(argv[2], PropertyListSerialization::write(library, PropertyListFormat::Binary));
    return written ? 0 : 1;
}
