#include "CFReadWriteMethods.h"

#include "domains/PathText.h"
#include "model/VXAdditions.h"
#include "platform/FolderLookup.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QSaveFile>

namespace {

const QString kRegistrationFileName = QStringLiteral("NSRegistrationDomain.plist");

// The rest of path after base and its slash, with the extension deleted
// `extensions` times; empty when nothing follows the folder.
QString domainNameAfter(const QString &path, const QString &base, int extensions)
{
    QString name = VXAdditions::subPathFromBase(path, base, true).value_or(QString());
    for (int i = 0; i < extensions && !name.isEmpty(); ++i)
        name = PathText::deletingPathExtension(name);
    return name;
}

CFReadWriteMethods::DomainLocation makeLocation(CFReadWriteMethods::PathKind kind, const QString &name)
{
    using CFReadWriteMethods::PathKind;
    CFReadWriteMethods::DomainLocation location;
    location.kind = kind;
    location.domainName = name;
    switch (kind) {
    case PathKind::PerHost:
        location.user = PreferencesUser::Current;
        location.host = PreferencesHost::Current;
        break;
    case PathKind::User:
        location.user = PreferencesUser::Current;
        location.host = PreferencesHost::Any;
        break;
    case PathKind::Machine:
        // Any user with the current host is the machine folder itself; the
        // same pair is used for reading, writing and synchronising.
        location.user = PreferencesUser::Any;
        location.host = PreferencesHost::Current;
        break;
    case PathKind::PlainFile:
        break;
    }
    return location;
}

// Whatever the first attempt, the open fails for one of these reasons.
ReadResult<CFReadWriteMethods::DocumentContent> openFailure(const QString &path, ReadStatus status,
                                                            const QString &reason)
{
    return ReadResult<CFReadWriteMethods::DocumentContent>::failure(
        status, SourcePosition(), QStringLiteral("The file “%1” could not be opened: %2").arg(path, reason));
}

// The content the store or the registration domain has for path, if any.
std::optional<PropertyDictionary> storedDictionary(const QString &path, CFReadWriteMethods::Store store)
{
    if (PathText::lastPathComponent(path) == kRegistrationFileName)
        return store.defaults.volatileDomainForName(UserDefaults::kRegistrationDomain);
    CFReadWriteMethods::synchronizePreferencesAtPath(path, store);
    return CFReadWriteMethods::preferenceDictionaryFromPath(path, store);
}

} // namespace

namespace CFReadWriteMethods {

DomainLocation locationForPath(const QString &path)
{
    using FolderLookup::folderForType, FolderLookup::kPreferencesFolderType, VXAdditions::beginsWithString;
    const auto user = folderForType(kPreferencesFolderType, FolderLookup::kUserDomain);
    const auto machine = folderForType(kPreferencesFolderType, FolderLookup::kLocalDomain);
    if (user) {
        const QString byHost = *user + QStringLiteral("/ByHost");
        // A per-host file is named domain.HOSTID.plist: both the extension
        // and the host identifier go.
        if (beginsWithString(path, byHost))
            return makeLocation(PathKind::PerHost, domainNameAfter(path, byHost, 2));
        if (beginsWithString(path, *user))
            return makeLocation(PathKind::User, domainNameAfter(path, *user, 1));
    }
    if (machine && beginsWithString(path, *machine))
        return makeLocation(PathKind::Machine, domainNameAfter(path, *machine, 1));
    return makeLocation(PathKind::PlainFile, QString());
}

bool synchronizePreferencesAtPath(const QString &path, Store store)
{
    const DomainLocation location = locationForPath(path);
    bool synchronized = false;
    switch (location.kind) {
    case PathKind::PlainFile:
        return true;
    case PathKind::User:
        synchronized = location.isDomain() && store.service.appSynchronize(location.domainName);
        break;
    case PathKind::PerHost:
    case PathKind::Machine:
        synchronized = location.isDomain()
            && store.service.synchronize(location.domainName, location.user, location.host);
        break;
    }
    if (!synchronized)
        store.defaults.synchronize();
    return synchronized;
}

std::optional<PropertyDictionary> preferenceDictionaryFromPath(const QString &path, Store store)
{
    const DomainLocation location = locationForPath(path);
    if (!location.isDomain())
        return std::nullopt;
    const auto keys = store.service.copyKeyList(location.domainName, location.user, location.host);
    if (!keys)
        return std::nullopt;
    return store.service.copyMultiple(*keys, location.domainName, location.user, location.host);
}

bool writePreferenceDictionary(const PropertyDictionary &dictionary, const QString &path, Store store)
{
    const DomainLocation location = locationForPath(path);
    if (!location.isDomain())
        return false;
    // A domain that holds no keys yet is never written: the original only
    // ever rewrote domains that already existed.
    const auto current = store.service.copyKeyList(location.domainName, location.user, location.host);
    if (!current)
        return false;
    QStringList keysToRemove;
    for (const QString &key : *current) {
        if (!dictionary.contains(key))
            keysToRemove.append(key);
    }
    store.service.setMultiple(dictionary, keysToRemove, location.domainName, location.user, location.host);
    return true;
}

ReadResult<DocumentContent> readFromFile(const QString &path, const QString &type, Store store)
{
    if (type != kDocumentType)
        return openFailure(path, ReadStatus::Unsupported, QStringLiteral("“%1” is not a known document type").arg(type));
    DocumentContent content;
    QList<ReadWarning> warnings;
    if (auto stored = storedDictionary(path, store)) {
        content.value = PropertyList(*stored);
        content.loadedByUserDefaults = true;
    } else {
        const auto file = PropertyListSerialization::readFile(path);
        if (!file)
            return openFailure(path, file.status, file.errorText());
        if (!file.value.value.isContainer())
            return openFailure(path, ReadStatus::BadValue,
                               QStringLiteral("its top level is neither a dictionary nor an array"));
        content.value = file.value.value;
        warnings = file.warnings;
    }
    content.canEditPlist = QFileInfo(path).isWritable();
    return ReadResult<DocumentContent>::success(std::move(content), std::move(warnings));
}

QString writeToFile(const PropertyList &value, const QString &path)
{
    if (!value.isContainer())
        return QStringLiteral("only a dictionary or an array can be written as a property-list file");
    const QByteArray bytes = PropertyListSerialization::write(value, PropertyListFormat::Xml);
    if (bytes.isEmpty())
        return PropertyListSerialization::writeProblem(value);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return file.errorString();
    return QString();
}

} // namespace CFReadWriteMethods
