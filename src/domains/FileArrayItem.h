#pragma once

#include <QList>
#include <QString>

#include <utility>

// One element of a listed preferences folder: either a readable property-list
// file (isFolder false, no children) or a sub-folder with the same kind of list
// for its own content. The browser's tree is built from a list of these, in the
// order the file system listed them.
struct FileArrayItem {
    QString path;
    QList<FileArrayItem> children;
    bool isFolder = false;

    static FileArrayItem file(const QString &path) { return {path, {}, false}; }
    static FileArrayItem folder(const QString &path, QList<FileArrayItem> children)
    {
        return {path, std::move(children), true};
    }

    bool operator==(const FileArrayItem &other) const = default;
};

using FileArray = QList<FileArrayItem>;
