#include "UserDomainFile.h"

#include "platform/FolderLookup.h"
#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace UserDomainFile {

QString pathFor(const QString &domain, QString *reason)
{
    if (domain == QLatin1String("NSRegistrationDomain")) {
        *reason = QStringLiteral("NSRegistrationDomain only lives while a program runs");
        return QString();
    }
    if (domain.isEmpty() || domain.startsWith(u'-') || domain.contains(u'/') || domain.startsWith(u'.') ||
        domain.startsWith(u'~')) {
        *reason = QStringLiteral("'%1' is not the name of one of your domains").arg(domain);
        return QString();
    }
    // Both names of the global domain share its one file, so that lines
    // naming either edit the same document.
    const bool global =
        domain == QLatin1String("NSGlobalDomain") || domain == QLatin1String("kCFPreferencesAnyApplication");
    const QString name = global ? QStringLiteral(".GlobalPreferences") : domain;
    return FolderLookup::userPreferencesPath() + u'/' + name + QStringLiteral(".plist");
}

QString create(const QString &path)
{
    if (QFileInfo::exists(path))
        return QString();
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return QStringLiteral("cannot make the folder %1").arg(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    const QByteArray bytes = PropertyListSerialization::write(PropertyDictionary(), PropertyListFormat::Xml);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return file.errorString();
    if (!QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return QStringLiteral("cannot make %1 private").arg(path);
    return QString();
}

} // namespace UserDomainFile
