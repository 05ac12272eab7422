#include "openDomain.h"

#include "domains/PathText.h"
#include "platform/PropertyListSerialization.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QSet>

namespace {

const QString kPlistExtension = QStringLiteral("plist");

// Lists one folder. chain holds the canonical paths of the folders being
// listed above this one, so a symbolic link back up the tree is not followed
// round for ever; depth caps pathological nesting the same way.
FileArray listFolder(const QString &path, QSet<QString> &chain, int depth)
{
    FileArray items;
    if (depth > PropertyListSerialization::kMaxDepth)
        return items;
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonical.isEmpty() || chain.contains(canonical))
        return items;
    chain.insert(canonical);

    // QDirIterator hands out entries in the order readdir gives them, which is
    // the order the browser shows: nothing is sorted.
    QDirIterator entries(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        entries.next();
        const QString name = entries.fileName();
        const QString full = path + QLatin1Char('/') + name;
        const QFileInfo info(full);
        // The extension test comes first, case-sensitively: a readable folder
        // named x.plist is listed as a file, and Foo.PLIST is not a domain.
        if (PathText::pathExtension(name) == kPlistExtension && info.isReadable()) {
            items.append(FileArrayItem::file(full));
        } else if (info.isDir()) {
            FileArray content = listFolder(full, chain, depth + 1);
            if (!content.isEmpty())
                items.append(FileArrayItem::folder(full, std::move(content)));
        }
    }
    chain.remove(canonical);
    return items;
}

} // namespace

openDomain::openDomain(QObject *parent) : QObject(parent) {}

std::optional<QString> openDomain::folderForType(FolderLookup::FolderType type, FolderLookup::FolderDomain domain)
{
    return FolderLookup::folderForType(type, domain);
}

std::optional<QString> openDomain::preferencesFolderPathForDomain(FolderLookup::FolderDomain domain)
{
    return folderForType(FolderLookup::kPreferencesFolderType, domain);
}

FileArray openDomain::returnFileArrayFromPath(const QString &path)
{
    QSet<QString> chain;
    return listFolder(path, chain, 0);
}

QString openDomain::getSize(quint32 bytes)
{
    // Single precision on purpose: 1073741825 bytes is 1048576.0f KB, which is
    // not more than 1024 MB, so it shows as MB where doubles would say GB.
    const float kilobytes = static_cast<float>(bytes) / 1024.0f;
    if (kilobytes > 1024.0f) {
        const float megabytes = kilobytes / 1024.0f;
        if (megabytes > 1024.0f)
            return tr("%1 GB").arg(static_cast<double>(megabytes / 1024.0f), 0, 'f', 2);
        return tr("%1 MB").arg(static_cast<double>(megabytes), 0, 'f', 2);
    }
    if (kilobytes < 1.0f)
        return tr("%1 bytes").arg(bytes);
    return tr("%1 KB").arg(static_cast<double>(kilobytes), 0, 'f', 2);
}

FileArray openDomain::browserFileArray(const QString &machineFolder)
{
    FileArray top;
    if (!machineFolder.isEmpty())
        top.append(FileArrayItem::folder(machineFolder, returnFileArrayFromPath(machineFolder)));

    // The registration domain has no file; its leaf is shown where the file
    // would be. Without a user folder yet, that is where the folder will be.
    const auto user = preferencesFolderPathForDomain(FolderLookup::kUserDomain);
    const QString userPath = user.value_or(FolderLookup::userPreferencesPath());
    top.append(FileArrayItem::file(userPath + QStringLiteral("/NSRegistrationDomain.plist")));
    if (user)
        top.append(returnFileArrayFromPath(*user));
    return top;
}

void openDomain::buildTree()
{
    // Looked up once, so the listing and the node that shows as "System
    // Preferences" agree even if the folder comes or goes meanwhile.
    const QString machine = preferencesFolderPathForDomain(FolderLookup::kLocalDomain).value_or(QString());
    m_treeData = openNode::treeFromFileArray(browserFileArray(machine), machine);
    m_cachedTreeData = m_treeData;
}
