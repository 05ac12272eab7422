#include "PlistTool.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    PlistTool tool(out, err);
    const int status = tool.run(app.arguments().mid(1));
    out.flush();
    err.flush();
    std::fflush(stdout);
    std::fflush(stderr);
    // Everything is written; the system takes back the memory of the values
    // read at once, where destructors would free them one by one.
    std::_Exit(status);
}
