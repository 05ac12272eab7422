#include "PlistTool.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    PlistTool tool(out, err);
    const int status = tool.run(app.arguments().mid(1));
    out.flush();
    err.flush();
    return status;
}
