#pragma once

#include "platform/PropertyList.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

enum class PreferencesUser { Current, Any };
enum class PreferencesHost { Current, Any };

// The platform's preferences service (CFPreferences) over real files. A domain
// is keyed by (name, user, host) and lives in one file:
//   (D, Current, Any)   $HOME/Library/Preferences/D.plist
//   (D, Current, Current) $HOME/Library/Preferences/ByHost/D.HOSTID.plist
//   (D, Any, Current)   <machine folder>/D.plist
//   (D, Any, Any)       <machine folder>/Network/D.plist
// "NSGlobalDomain" and "kCFPreferencesAnyApplication" name ".GlobalPreferences";
// a name that is an absolute path is that file (with ".plist" added).
//
// As on the platform, reads are cached until a synchronise, and sets and
// removals stay pending until a synchronise, which re-reads the file under an
// exclusive lock, applies this instance's pending keys on top and writes the
// whole domain atomically. Each instance stands for one process: two instances
// over the same folder behave like two applications.
class PreferencesService {
public:
    PreferencesService();
    ~PreferencesService();
    PreferencesService(const PreferencesService &) = delete;
    PreferencesService &operator=(const PreferencesService &) = delete;

    // The process's own instance.
    static PreferencesService &shared();

    // The names of the domains with a file for (user, host) in directory order,
    // without recursing, global domain as ".GlobalPreferences", plus domains of
    // this instance that hold pending keys. None only when the folder cannot be
    // determined.
    std::optional<QStringList> copyApplicationList(PreferencesUser user, PreferencesHost host);
    // None when the domain holds no keys (no file, empty, unreadable, corrupt,
    // or a top level that is not a dictionary).
    std::optional<QStringList> copyKeyList(const QString &domain, PreferencesUser user, PreferencesHost host);
    // The values of the given keys that exist (possibly none of them).
    PropertyDictionary copyMultiple(const QStringList &keys, const QString &domain, PreferencesUser user,
                                    PreferencesHost host);
    // The whole domain, or none when it holds no keys.
    std::optional<PropertyDictionary> copyDomain(const QString &domain, PreferencesUser user, PreferencesHost host);
    std::optional<PropertyList> copyValue(const QString &key, const QString &domain, PreferencesUser user,
                                          PreferencesHost host);

    // Pending until synchronize. Every pair of keysToSet is stored first, then
    // every key of keysToRemove removed. Setting a value identical to the
    // current one (type included) or removing an absent key leaves the domain
    // clean.
    void setMultiple(const PropertyDictionary &keysToSet, const QStringList &keysToRemove, const QString &domain,
                     PreferencesUser user, PreferencesHost host);
    // A value of none removes the key.
    void setValue(const QString &key, const std::optional<PropertyList> &value, const QString &domain,
                  PreferencesUser user, PreferencesHost host);

    // With nothing pending: forget the cached content, unless the file is
    // unchanged since it was read (one stat). With pending changes: lock, re-read,
    // apply, write atomically keeping the file's format and permissions (a new
    // file: binary, 0600; machine-wide 0644), remove a file whose domain became
    // empty. False, with lastError(), when the write failed or the file on disk
    // does not parse (it is never overwritten silently); the pending changes
    // are then kept.
    bool synchronize(const QString &domain, PreferencesUser user, PreferencesHost host);
    // Synchronises every domain this instance has touched, as the platform's
    // application synchronise does. False if any of them failed.
    bool appSynchronize(const QString &domain);

    QString lastError() const;

    // The file a domain maps to.
    QString pathForDomain(const QString &domain, PreferencesUser user, PreferencesHost host) const;
    // The current host's identifier used in per-host file names: ORVANE_HOST_UUID
    // when set; else the identifier most often found in the ByHost folder; else
    // /etc/machine-id as an upper-case 8-4-4-4-12 UUID.
    QString hostIdentifier() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
