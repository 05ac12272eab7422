// Writes the benchmarks' generated account (600 user domains, ByHost, a
// machine folder) under the folder given, for timings made from outside a
// process, such as the browser's start in bench/startup.sh.
#include "GeneratedAccount.h"

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: write-generated-account DIR\n");
        return 2;
    }
    const GeneratedAccount::Written written = GeneratedAccount::write(QString::fromLocal8Bit(argv[1]));
    if (written.domainPaths.isEmpty()) {
        std::fprintf(stderr, "%s: nothing could be written\n", argv[1]);
        return 1;
    }
    return 0;
}
