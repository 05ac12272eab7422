#pragma once

#include "platform/PreferencesService.h"
#include "platform/PropertyList.h"
#include "platform/ReadResult.h"

#include <QString>

#include <optional>

class UserDefaults;

// How a document's content is read from and written to the preference store.
// A path inside the user's or the machine's preferences folder is a domain and
// goes through the preferences service; the registration domain comes from the
// application's own defaults; any other path is a plain property-list file.
namespace CFReadWriteMethods {

// The only document type.
inline const QString kDocumentType = QStringLiteral("Property List");

enum class PathKind { PerHost, User, Machine, PlainFile };

// Where a path's content lives in the store. domainName is empty for a plain
// file, and for a path that is a preferences folder itself.
struct DomainLocation {
    PathKind kind = PathKind::PlainFile;
    QString domainName;
    PreferencesUser user = PreferencesUser::Current;
    PreferencesHost host = PreferencesHost::Any;

    bool isDomain() const { return kind != PathKind::PlainFile && !domainName.isEmpty(); }
};

// The services the operations use, always passed in: the application hands
// in the process's own, tests and tools their own.
struct Store {
    PreferencesService &service;
    UserDefaults &defaults;
};

// Per-host before user (the ByHost folder lies inside the user folder), then
// machine, by a plain prefix test on the folder paths.
DomainLocation locationForPath(const QString &path);

// Picks up changes made on disk and writes pending ones. A per-host or machine
// domain is synchronised alone; a user domain with everything this process
// touched, as the platform's application synchronise does. When there is no
// domain name or the store fails, the application's own defaults are
// synchronised instead and the answer is false. A plain file is left alone (true).
bool synchronizePreferencesAtPath(const QString &path, Store store);

// The domain's keys and values; none for a plain file or a domain without keys.
std::optional<PropertyDictionary> preferenceDictionaryFromPath(const QString &path, Store store);

// Sets every key of dictionary and removes the domain's keys it no longer
// holds, pending until the next synchronise. A domain that holds no keys is
// not written at all (false), nor is a plain file.
bool writePreferenceDictionary(const PropertyDictionary &dictionary, const QString &path, Store store);

// What a document opened on a path holds.
struct DocumentContent {
    PropertyList value;              // a dictionary or an array
    bool loadedByUserDefaults = false; // from the store: saved through it
    bool canEditPlist = true;          // the file can be written
};

// Opens a document: the registration domain from the defaults, a domain from
// the store (synchronised first), else the file as a dictionary or an array.
// A failure names the file and says why. A file read directly brings its
// reader's warnings; a domain from the store brings none.
ReadResult<DocumentContent> readFromFile(const QString &path, const QString &type, Store store);

// Writes a dictionary or an array as an XML property list, atomically: the old
// file is untouched unless the whole new one was written. Empty on success,
// else the reason.
QString writeToFile(const PropertyList &value, const QString &path);

} // namespace CFReadWriteMethods
