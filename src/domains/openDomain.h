#pragma once

#include "domains/FileArrayItem.h"
#include "domains/openNode.h"
#include "platform/FolderLookup.h"

#include <QObject>
#include <QString>

#include <optional>

// The application object: it finds the preference folders, lists them and owns
// the browser's tree of domains. This part holds what needs no window; the
// browser window, deleting domains and start-up build on it.
class openDomain : public QObject {
    Q_OBJECT
public:
    explicit openDomain(QObject *parent = nullptr);

    // The folder for a folder-manager (type, domain) pair; none when it is
    // missing (it is never created) or the pair is unknown.
    static std::optional<QString> folderForType(FolderLookup::FolderType type, FolderLookup::FolderDomain domain);
    static std::optional<QString> preferencesFolderPathForDomain(FolderLookup::FolderDomain domain);

    // returnFileArrayFromPath lists a preferences folder for the browser: the
    // readable ".plist" files of the folder and, recursively, of its
    // sub-folders, in the file system's listing order. A sub-folder without
    // such a file at any depth is left out; a missing or unreadable folder
    // gives an empty list.
    static FileArray returnFileArrayFromPath(const QString &path);

    // getSize formats a file size: a byte count as the information panel
    // shows it ("512 bytes", "1.50 KB", "3.20 MB", "1.00 GB"), worked out in
    // single precision as the original did, so the unit changes exactly where
    // it did there.
    static QString getSize(quint32 bytes);

    // The browser's top level: the machine folder as one group (left out when
    // machineFolder is empty: the machine has no preferences folder), the
    // registration domain's leaf, then the user's files and folders.
    static FileArray browserFileArray(const QString &machineFolder);

    // Lists both folders again and makes a new root for treeData and
    // cachedTreeData.
    void buildTree();
    openNodePtr treeData() const { return m_treeData; }
    openNodePtr cachedTreeData() const { return m_cachedTreeData; }

private:
    openNodePtr m_treeData;       // what the browser shows: the full tree or a search result
    openNodePtr m_cachedTreeData; // the full tree
};
