#pragma once

#include <QString>

#include <optional>

// The standard folders the application asks for by the folder manager's
// (folder type, domain) codes. Folders are looked up, never created: a folder
// that is missing answers none.
//   user preferences     ('pref', kUserDomain)   $HOME/Library/Preferences
//   machine preferences  ('pref', kLocalDomain)  /Library/Preferences, or $ORVANE_LOCAL_PREFERENCES
//   temporary folder     ('temp', kLocalDomain)  the process's temporary folder
// The environment is read on every call, so tests can point HOME elsewhere.
namespace FolderLookup {

using FolderType = quint32;
using FolderDomain = qint16;

constexpr FolderType fourCharCode(const char (&code)[5])
{
    return (FolderType(quint8(code[0])) << 24) | (FolderType(quint8(code[1])) << 16)
        | (FolderType(quint8(code[2])) << 8) | FolderType(quint8(code[3]));
}

constexpr FolderType kPreferencesFolderType = fourCharCode("pref");
constexpr FolderType kTemporaryFolderType = fourCharCode("temp");
constexpr FolderDomain kUserDomain = -32763;
constexpr FolderDomain kLocalDomain = -32765;

// The path of an existing folder, without a trailing slash; none for an
// unknown pair or a folder that does not exist.
std::optional<QString> folderForType(FolderType type, FolderDomain domain);

// Where the folders would be, whether or not they exist (the preferences
// service creates the user folder on its first write).
QString userPreferencesPath();
QString localPreferencesPath();

} // namespace FolderLookup
