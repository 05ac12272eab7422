#include "DocumentReader.h"

#include "document/DocumentStrings.h"
#include "domains/PathText.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>

namespace DocumentReader {

std::optional<PropertyDictionary> storedContent(const QString &path, CFReadWriteMethods::Store store)
{
    if (PathText::lastPathComponent(path) == DocumentStrings::kRegistrationFileName)
        return store.defaults.volatileDomainForName(UserDefaults::kRegistrationDomain);
    CFReadWriteMethods::synchronizePreferencesAtPath(path, store);
    return CFReadWriteMethods::preferenceDictionaryFromPath(path, store);
}

namespace {

ReadResult<DocumentContent> failure(const QString &path, ReadStatus status, const QString &reason)
{
    return ReadResult<DocumentContent>::failure(
        status, SourcePosition(), QStringLiteral("The file “%1” could not be opened: %2").arg(path, reason));
}

PListNodePtr treeOf(const PropertyList &value)
{
    if (value.isArray())
        return PListNode::initFromArray(value.arrayRef(), DocumentStrings::kRootName);
    return PListNode::treeFromDictionary(value.dictionaryRef());
}

} // namespace

DocumentContent contentOf(const PropertyList &value, bool loadedByUserDefaults, bool canEditPlist)
{
    DocumentContent content;
    content.loadedByUserDefaults = loadedByUserDefaults;
    content.canEditPlist = canEditPlist;
    content.root = treeOf(value);
    content.root->setLoadedByUserDefaults(loadedByUserDefaults);
    content.root->recursiveSortChildren();
    content.root->setCanEdit(canEditPlist);
    return content;
}

ReadResult<DocumentContent> buildContent(const QString &path, std::optional<PropertyDictionary> stored)
{
    const PreferenceDomainFile::Stamp stamp = PreferenceDomainFile::stamp(path);
    PropertyList value;
    PropertyListFormat format = PropertyListFormat::Xml;
    QList<ReadWarning> warnings;
    if (stored) {
        value = PropertyList(*stored);
        // The service keeps no account of what it resolved in the domain's
        // file; the file is read once more for that alone.
        if (stamp.exists && !QFileInfo(path).isDir())
            warnings = PropertyListSerialization::readFile(path).warnings;
    } else {
        if (QFileInfo(path).isDir())
            return failure(path, ReadStatus::CannotOpen, QStringLiteral("it is a folder"));
        auto file = PropertyListSerialization::readFile(path);
        if (!file)
            return failure(path, file.status, file.errorText());
        if (!file.value.value.isContainer())
            return failure(path, ReadStatus::BadValue,
                           QStringLiteral("its top level is neither a dictionary nor an array"));
        value = std::move(file.value.value);
        format = file.value.format;
        warnings = std::move(file.warnings);
    }
    DocumentContent content = contentOf(value, stored.has_value(), QFileInfo(path).isWritable());
    content.format = format;
    content.stamp = stamp;
    content.warnings = std::move(warnings);
    return ReadResult<DocumentContent>::success(std::move(content));
}

ReadResult<DocumentContent> read(const QString &path, CFReadWriteMethods::Store store)
{
    return buildContent(path, storedContent(path, store));
}

} // namespace DocumentReader
