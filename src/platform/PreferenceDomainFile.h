#pragma once

#include "platform/PropertyList.h"
#include "platform/PropertyListSerialization.h"

#include <QByteArray>
#include <QString>

#include <sys/types.h>

// One preference domain's file on disk: reading it in one go, telling with a
// single stat whether it changed since then, the writers' lock, and the atomic
// replacement. It holds no content itself; the preferences service caches what
// it reads. The lock is an exclusive flock on "<file>.lock" beside the file: the
// domain file itself is replaced by rename, so a lock on it would guard an inode
// that is about to disappear. The lock file is left in place after use, because
// removing it would let two writers hold locks on different inodes.
//
// A writer killed between making its temporary file and renaming it leaves that
// file behind. Writers only make one while holding the lock, so whoever holds
// the lock next knows any such file is abandoned, and removes it.
class PreferenceDomainFile {
public:
    // What one stat says about a file: enough to tell a rewrite in place (size,
    // modification time to the nanosecond) and a replacement (inode) from an
    // untouched file. A missing file has a default stamp.
    struct Stamp {
        bool exists = false;
        qint64 size = 0;
        qint64 modifiedSeconds = 0;
        qint64 modifiedNanoseconds = 0;
        quint64 inode = 0;
        quint64 device = 0;

        bool operator==(const Stamp &) const = default;
    };

    enum class State {
        Missing,    // no file: the domain holds no keys
        Ok,         // a dictionary was read (an empty file reads as an empty dictionary)
        Unreadable, // cannot be opened, does not parse, or its top level is not a dictionary
    };

    struct Content {
        State state = State::Missing;
        PropertyDictionary dictionary;
        PropertyListFormat format = PropertyListFormat::Binary;
        mode_t mode = 0; // permission bits of an existing file
        Stamp stamp;
        QString problem; // why an unreadable file could not be used
    };

    explicit PreferenceDomainFile(QString path);
    ~PreferenceDomainFile();
    PreferenceDomainFile(const PreferenceDomainFile &) = delete;
    PreferenceDomainFile &operator=(const PreferenceDomainFile &) = delete;

    const QString &path() const { return m_path; }
    QString lockPath() const { return m_path + QStringLiteral(".lock"); }

    static Stamp stamp(const QString &path);
    Content read() const;

    // Waits for the exclusive lock; a new lock file gets mode. Released by
    // unlock() or the destructor. Once it is held, temporary files that dead
    // writers left beside the file are removed.
    bool lock(mode_t mode, QString *error);
    void unlock();

    // Writes bytes to a temporary file in the same folder (".<file name>.orvane-XXXXXX",
    // hidden and not ending in ".plist", so a leftover from a crash is never
    // taken for a domain), gives it mode, flushes it to disk and renames it over
    // the file, so readers see the old or the new content and never a part. The
    // stamp of the new file goes to written. Only while holding the lock: the
    // next holder takes any temporary file it finds for abandoned.
    bool replace(const QByteArray &bytes, mode_t mode, Stamp *written, QString *error) const;
    // Removes the file; a file that is already gone is fine.
    bool remove(QString *error) const;

    // Creates folder and its missing parents with mode (existing ones are left alone).
    static bool makeFolder(const QString &folder, mode_t mode, QString *error);

private:
    QString folderPath() const;
    QString fileName() const;
    void removeAbandonedTemporaryFiles() const;

    QString m_path;
    int m_lockFd = -1;
};
