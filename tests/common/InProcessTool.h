#pragma once

// orvane-plist run in this process, over whatever account the test set up.
#include "PlistTool.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

struct ToolRun {
    int status = -1;
    QString out;
    QString err;
};

inline ToolRun runToolInProcess(const QStringList &arguments)
{
    ToolRun run;
    QTextStream out(&run.out);
    QTextStream err(&run.err);
    run.status = PlistTool(out, err).run(arguments);
    out.flush();
    err.flush();
    return run;
}
