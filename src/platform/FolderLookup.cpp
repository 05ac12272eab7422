#include "FolderLookup.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace {

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

bool isFolder(const QString &path)
{
    struct stat info;
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

namespace FolderLookup {

QString userPreferencesPath()
{
    QString home = qEnvironmentVariable("HOME");
    if (home.isEmpty())
        home = QDir::homePath();
    return withoutTrailingSlash(home) + QStringLiteral("/Library/Preferences");
}

QString localPreferencesPath()
{
    const QString local = qEnvironmentVariable("ORVANE_LOCAL_PREFERENCES");
    return local.isEmpty() ? QStringLiteral("/Library/Preferences") : withoutTrailingSlash(local);
}

std::optional<QString> folderForType(FolderType type, FolderDomain domain)
{
    QString path;
    if (type == kPreferencesFolderType && domain == kUserDomain)
        path = userPreferencesPath();
    else if (type == kPreferencesFolderType && domain == kLocalDomain)
        path = localPreferencesPath();
    else if (type == kTemporaryFolderType && domain == kLocalDomain)
        path = withoutTrailingSlash(QDir::tempPath());
    if (path.isEmpty() || !isFolder(path))
        return std::nullopt;
    return path;
}

} // namespace FolderLookup
