// Writes the benchmarks' generated preferences file (94 MB of XML) to the path
// given, for timings made from outside a process, such as bench/startup.sh.
#include "GeneratedPreferences.h"

#include <QSaveFile>
#include <QString>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: write-generated-preferences OUT\n");
        return 2;
    }
    QSaveFile out(QString::fromLocal8Bit(argv[1]));
    if (!out.open(QIODevice::WriteOnly) || out.write(GeneratedPreferences::xml()) < 0 || !out.commit()) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(out.errorString()));
        return 1;
    }
    return 0;
}
