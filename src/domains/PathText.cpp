#include "PathText.h"

namespace {

// The path without trailing slashes, except that the root stays "/".
QString withoutTrailingSlashes(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == QLatin1Char('/'))
        --end;
    return path.left(end);
}

// Where the last component starts in a path without trailing slashes.
qsizetype lastComponentStart(const QString &path)
{
    if (path == QLatin1String("/"))
        return 0;
    return path.lastIndexOf(QLatin1Char('/')) + 1;
}

// The index of the extension's dot, or -1. A dot that opens the component
// names a hidden file, not an extension.
qsizetype extensionDot(const QString &path)
{
    const qsizetype start = lastComponentStart(path);
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot <= start)
        return -1;
    return dot;
}

} // namespace

namespace PathText {

QString lastPathComponent(const QString &path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    return trimmed.mid(lastComponentStart(trimmed));
}

QString pathExtension(const QString &path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    const qsizetype dot = extensionDot(trimmed);
    return dot < 0 ? QString() : trimmed.mid(dot + 1);
}

QString deletingPathExtension(const QString &path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    const qsizetype dot = extensionDot(trimmed);
    return dot < 0 ? trimmed : trimmed.left(dot);
}

} // namespace PathText
