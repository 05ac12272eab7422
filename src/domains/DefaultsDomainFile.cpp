#include "DefaultsDomainFile.h"

#include "platform/FolderLookup.h"
#include "platform/PreferenceDomainFile.h"
#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

using Location = DefaultsDomainFile::Location;
using Status = DefaultsDomainFile::Status;

const QString kRegistrationDomain = QStringLiteral("NSRegistrationDomain");
const QString kGlobalDomain = QStringLiteral("NSGlobalDomain");
const QString kGlobalDomainFile = QStringLiteral(".GlobalPreferences");
constexpr QFileDevice::Permissions kNewFileMode = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr mode_t kNewFolderMode = 0700;

QString cannotCreate(const QString &path, const QString &reason)
{
    return DefaultsDomainFile::tr("The file %1 cannot be created: %2").arg(path, reason);
}

// The file is made exclusively, so a file that appears meanwhile is never
// overwritten; the permissions are set again after writing because the
// process's umask may have taken bits off at creation.
Location createEmptyDomain(const QString &path)
{
    const QByteArray bytes = PropertyListSerialization::write(PropertyDictionary(), PropertyListFormat::Xml);
    if (bytes.isEmpty())
        return {Status::CannotCreate, path,
                cannotCreate(path, DefaultsDomainFile::tr("no empty property list"))};
    QString problem;
    if (!PreferenceDomainFile::makeFolder(FolderLookup::userPreferencesPath(), kNewFolderMode, &problem))
        return {Status::CannotCreate, path, cannotCreate(path, problem)};
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, kNewFileMode))
        return {Status::CannotCreate, path, cannotCreate(path, file.errorString())};
    if (file.write(bytes) != bytes.size() || !file.flush() || !file.setPermissions(kNewFileMode)) {
        problem = file.errorString();
        file.remove();
        return {Status::CannotCreate, path, cannotCreate(path, problem)};
    }
    return {Status::Created, path, {}};
}

} // namespace

QString DefaultsDomainFile::standardizedPath(const QString &domain)
{
    QString path = domain;
    if (path == u"~" || path.startsWith(u"~/"))
        path.replace(0, 1, QDir::homePath());
    return QDir::cleanPath(path) + QStringLiteral(".plist");
}

DefaultsDomainFile::Location DefaultsDomainFile::findOrCreate(const QString &domain)
{
    const Location location = find(domain);
    return location.status == Status::Missing ? createEmptyDomain(location.path) : location;
}

DefaultsDomainFile::Location DefaultsDomainFile::find(const QString &domain)
{
    // An empty name would make the hidden file ".plist", which the browser
    // does not list as a domain.
    if (domain.isEmpty())
        return {Status::CannotCreate, QString(), tr("The domain has no name.")};
    QString path = standardizedPath(domain);
    if (path.contains(kRegistrationDomain))
        return {Status::RegistrationDomain, path, tr("The registration domain is kept in memory only.")};
    const qsizetype global = path.indexOf(kGlobalDomain);
    if (global >= 0)
        path.replace(global, kGlobalDomain.size(), kGlobalDomainFile);
    if (QFileInfo::exists(path))
        return {Status::Existing, path, {}};
    path = FolderLookup::userPreferencesPath() + QLatin1Char('/') + path;
    if (QFileInfo::exists(path))
        return {Status::Existing, path, {}};
    return {Status::Missing, path, {}};
}
