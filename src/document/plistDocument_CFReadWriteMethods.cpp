// Reading a document's content and writing it back: through the preferences
// service for a domain, into the file (in the format it came in) otherwise.
#include "plistDocument.h"

#include "document/DocumentReader.h"
#include "document/DocumentStrings.h"
#include "document/OutlineModel.h"
#include "platform/PreferencesService.h"

#include <QFileSystemWatcher>
#include <QSaveFile>

namespace {

PropertyList valueOfShown(const PListNode &node)
{
    if (node.isLeaf())
        return node.value();
    if (node.value().isArray()) {
        PropertyArray items;
        items.reserve(node.numberOfChildren());
        for (const PListNodePtr &child : node.children())
            items.append(valueOfShown(*child));
        return items;
    }
    PropertyDictionary entries;
    entries.reserve(node.numberOfChildren());
    for (const PListNodePtr &child : node.children())
        entries.insert(child->name(), valueOfShown(*child));
    return entries;
}

} // namespace

bool plistDocument::readFromFile(const QString &path, QString *error)
{
    auto result = DocumentReader::read(path, m_services.store);
    if (!result) {
        if (error)
            *error = result.errorText();
        return false;
    }
    adoptContent(path, std::move(result.value));
    return true;
}

void plistDocument::adoptContent(const QString &path, DocumentContent content)
{
    const bool renamed = path != m_fileName;
    m_fileName = path;
    replaceContent(std::move(content));
    if (m_canEditPlist)
        selectRow(0);
    if (renamed)
        emit fileNameChanged(path);
}

void plistDocument::replaceContent(DocumentContent content)
{
    m_canEditPlist = content.canEditPlist;
    m_format = content.format;
    m_stamp = content.stamp;
    m_warnings = std::move(content.warnings);
    m_undoManager.removeAllActions();
    m_undoManager.setClean();
    m_cachedTreeData = content.root;
    showRoot(m_cachedTreeData);
    watchFile();
    emit contentAdopted();
}

bool plistDocument::reloadData()
{
    auto result = DocumentReader::read(m_fileName, m_services.store);
    if (!result) {
        beep();
        return false;
    }
    adoptReloadedContent(std::move(result.value));
    return true;
}

void plistDocument::adoptReloadedContent(DocumentContent content)
{
    const QList<PListNodePtr> selected = selectedNodes();
    // The old trees stay whole until the selection has been looked for.
    const PListNodePtr oldShown = m_treeData;
    const PListNodePtr oldReal = m_cachedTreeData;
    replaceContent(std::move(content));
    // Only nodes that are still the same objects would be found again, and a
    // reload makes every node anew: the first row is selected instead.
    selectNodes(selected, false);
    if (!m_selection->hasSelection())
        selectRow(0);
}

bool plistDocument::needsFormatChangeToSave() const
{
    return !loadedByUserDefaults() && !PropertyListSerialization::canWrite(m_format);
}

// ---- watching the file ------------------------------------------------------------

void plistDocument::watchFile()
{
    if (!m_watcher) {
        m_watcher = new QFileSystemWatcher(this);
        connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &plistDocument::fileChanged);
    }
    if (!m_watcher->files().isEmpty())
        m_watcher->removePaths(m_watcher->files());
    if (m_stamp.exists)
        m_watcher->addPath(m_fileName);
}

void plistDocument::fileChanged()
{
    // A file replaced by renaming another over it drops out of the watch.
    if (!m_watcher->files().contains(m_fileName) && PreferenceDomainFile::stamp(m_fileName).exists)
        m_watcher->addPath(m_fileName);
    const PreferenceDomainFile::Stamp now = PreferenceDomainFile::stamp(m_fileName);
    if (now == m_stamp || now == m_reportedStamp)
        return; // this document's own save, or a change already reported
    if (isDocumentEdited()) {
        m_reportedStamp = now;
        emit changedOnDisk();
    } else {
        reloadData();
    }
}

bool plistDocument::fileChangedOnDisk() const { return PreferenceDomainFile::stamp(m_fileName) != m_stamp; }

void plistDocument::keepOwnVersion() { m_stamp = PreferenceDomainFile::stamp(m_fileName); }

// ---- saving -----------------------------------------------------------------------

bool plistDocument::saveDocument(QString *error)
{
    const bool saved = loadedByUserDefaults() ? writeDomain(error) : writeFile(m_fileName, m_format, error);
    if (saved)
        m_undoManager.setClean();
    return saved;
}

bool plistDocument::saveDocumentAs(const QString &path, PropertyListFormat format, QString *error)
{
    if (!writeFile(path, format, error))
        return false;
    const bool renamed = path != m_fileName;
    m_fileName = path;
    m_format = format;
    // Whatever it was read from, the content now lives in that file.
    m_cachedTreeData->setLoadedByUserDefaults(false);
    m_undoManager.setClean();
    watchFile();
    if (renamed)
        emit fileNameChanged(path);
    return true;
}

bool plistDocument::writeDomain(QString *error)
{
    const PropertyList value = m_cachedTreeData->initialValue();
    if (!CFReadWriteMethods::writePreferenceDictionary(value.dictionaryRef(), m_fileName, m_services.store)) {
        // The service never writes a domain that holds no keys: saying so
        // keeps the edits, which the user can still save to a file.
        *error = tr("The domain no longer holds any keys in the preferences, so nothing was written. "
                    "Use Save As to keep your changes in a file.");
        return false;
    }
    if (!CFReadWriteMethods::synchronizePreferencesAtPath(m_fileName, m_services.store)) {
        *error = m_services.store.service.lastError();
        return false;
    }
    m_stamp = PreferenceDomainFile::stamp(m_fileName);
    return true;
}

bool plistDocument::writeFile(const QString &path, PropertyListFormat format, QString *error)
{
    if (!PropertyListSerialization::canWrite(format)) {
        *error = tr("Old-style text cannot be written; save the document as XML or binary.");
        return false;
    }
    const PropertyList value = m_cachedTreeData->initialValue();
    const QByteArray bytes = PropertyListSerialization::write(value, format);
    if (bytes.isEmpty()) {
        *error = PropertyListSerialization::writeProblem(value);
        return false;
    }
    // Written beside the file and renamed over it only when complete, so a
    // failed save leaves the old file as it was; an existing file keeps its
    // permissions.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    // The file written is the document's file from now on (Save As included).
    m_stamp = PreferenceDomainFile::stamp(path);
    return true;
}

PropertyList plistDocument::shownValue() const { return valueOfShown(*m_treeData); }
