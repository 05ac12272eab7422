#include "FindOpening.h"

#include "findNode.h"

namespace FindOpening {

QString pathFor(const QString &folder, const findNode &node)
{
    return folder + QLatin1Char('/') + node.openName() + QStringLiteral(".plist");
}

void openFoundResult(const QList<const findNode *> &rows, const QString &folder, const Opener &opener)
{
    for (const findNode *row : rows) {
        const QString path = pathFor(folder, *row);
        if (!opener(path, false))
            opener(path, false);
    }
}

void openQuicklyInNewWindow(const QList<const findNode *> &rows, const QString &folder, const Opener &opener)
{
    bool first = true;
    for (const findNode *row : rows) {
        const QString path = pathFor(folder, *row);
        if (first) {
            if (!opener(path, true))
                opener(path, false);
            first = false;
        } else if (opener(path, false)) {
            opener(path, false);
        }
    }
}

QStringList infoPaths(const QList<const findNode *> &rows, const QString &folder)
{
    QStringList paths;
    for (const findNode *row : rows) {
        const QString path = pathFor(folder, *row);
        if (!paths.contains(path))
            paths.append(path);
    }
    return paths;
}

} // namespace FindOpening
