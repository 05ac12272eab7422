// The application object's state: folders and the tree, start-up and quit,
// the settings it observes, and the selection in rows of the outline.
#include "openDomain.h"

#include "domains/ApplicationSettings.h"
#include "model/OutlineRows.h"
#include "model/RowSelection.h"
#include "domains/DomainOutlineModel.h"
#include "domains/PathText.h"
#include "domains/SettingsKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"

#include <QDirIterator>
#include <QFile>
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

std::unique_ptr<openDomain> openDomain::launch(const Services &services, const AppearanceDefaults &appearance,
                                               const QDateTime &now)
{
    ApplicationSettings::registerDefaults(services.defaults, appearance, now);
    ApplicationSettings::transferPreferences(services.defaults);
    return std::make_unique<openDomain>(services);
}

openDomain::openDomain(const Services &services, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_treeData(fullDomainTree())
    , m_cachedTreeData(m_treeData)
    , m_placeholder(placeholderPath())
    , m_model(new DomainOutlineModel(this))
    , m_selection(new QItemSelectionModel(m_model, this))
{
    m_model->resetRoot(m_treeData);
    createPlaceholder();
    readWarnSetting();
    observeSettings();
}

openDomain::~openDomain()
{
    // The undo records hold nodes the model may show.
    m_undoManager.removeAllActions();
    m_selection->clear();
}

QString openDomain::placeholderPath()
{
    const QString folder = folderForType(FolderLookup::kTemporaryFolderType, FolderLookup::kLocalDomain)
                               .value_or(QDir::tempPath());
    return folder + QLatin1Char('/') + kPlaceholderFileName;
}

void openDomain::createPlaceholder()
{
    // A file left by a run that did not quit is read-only: it goes first.
    QFile::remove(m_placeholder);
    QFile file(m_placeholder);
    if (file.open(QIODevice::WriteOnly))
        file.setPermissions(QFileDevice::ReadOwner);
}

bool openDomain::applicationShouldTerminate()
{
    QFile::remove(m_placeholder);
    return true;
}

void openDomain::observeSettings()
{
    using namespace SettingsNotifications;
    m_services.center.addObserver(this, VXDomainWarningChangedNotification,
                                  [this](const Notification &) { readWarnSetting(); });
    for (const QString &name :
         {VXColorsChangedNotification, VXUseCustomColorsChangedNotification, VXTextFontChangedNotification}) {
        m_services.center.addObserver(this, name, [this](const Notification &) { m_model->redrawAll(); });
    }
}

void openDomain::readWarnSetting()
{
    m_warn = m_services.defaults.boolForKey(SettingsKeys::VXWarnOnDomainDelete);
}

void openDomain::beep() const
{
    if (m_screen)
        m_screen->beep();
}

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

openNodePtr openDomain::fullDomainTree()
{
    // Looked up once, so the listing and the node that shows as "System
    // Preferences" agree even if the folder comes or goes meanwhile.
    const QString machine = preferencesFolderPathForDomain(FolderLookup::kLocalDomain).value_or(QString());
    return openNode::treeFromFileArray(browserFileArray(machine), machine);
}

// ---- selection --------------------------------------------------------------------

openNodePtr openDomain::sharedNode(const openNode *node) const
{
    if (!node)
        return nullptr;
    if (node == m_treeData.get())
        return m_treeData;
    if (node == m_cachedTreeData.get())
        return m_cachedTreeData;
    const openNode *parent = node->nodeParent();
    return parent ? parent->childAtIndex(parent->indexOfChild(node)) : nullptr;
}

QList<openNodePtr> openDomain::selectedNodes() const
{
    QList<openNodePtr> nodes;
    for (const QModelIndex &row : RowSelection::inOutlineOrder(*m_selection)) {
        if (openNodePtr node = sharedNode(m_model->nodeAt(row)))
            nodes.append(std::move(node));
    }
    return nodes;
}

QStringList openDomain::selectedPaths() const
{
    QStringList paths;
    for (const openNodePtr &node : selectedNodes())
        paths.append(node->name());
    return paths;
}

void openDomain::selectNodes(const QList<openNodePtr> &nodes, bool extending)
{
    QModelIndexList indexes;
    for (const openNodePtr &node : nodes)
        indexes.append(m_model->indexOf(node.get()));
    RowSelection::select(*m_selection, indexes, extending);
}

void openDomain::selectRow(int row)
{
    RowSelection::selectOnly(*m_selection, m_model->indexOf(nodeAtRow(row)));
}

// ---- rows -------------------------------------------------------------------------------

bool openDomain::isExpanded(const openNode *node) const
{
    return node == m_treeData.get() || (m_screen && m_screen->isItemExpanded(node));
}

int openDomain::rowForNode(const openNode *node) const
{
    if (!node || node == m_treeData.get() || !m_model->holds(node))
        return -1;
    const auto indexOf = [](const openNode *parent, const openNode *child) { return parent->indexOfChild(child); };
    const auto open = [this](const openNode *at) { return isExpanded(at); };
    return OutlineRows::rowOf<openNode>(m_treeData.get(), node, open, indexOf);
}

openNode *openDomain::nodeAtRow(int row) const
{
    const auto open = [this](const openNode *at) { return isExpanded(at); };
    return OutlineRows::nodeAt<openNode>(m_treeData.get(), row, open);
}
