#pragma once

#include <QCoreApplication>
#include <QString>

// The file a `defaults write <domain> ...` line writes to, found or created.
// The domain browser's drop and paste and the command line's apply share it,
// so a line lands in the same file whichever way it comes in.
//
// How the domain name becomes a file, in order:
//  - a leading "~" or "~/" is the home folder ("~user" is left as written);
//    "//", "." and ".." are resolved
//    (QDir::cleanPath); then ".plist" is appended, even to a name that
//    already ends in ".plist" ("x.plist" names the file "x.plist.plist");
//  - a path containing "NSRegistrationDomain" is refused: that domain lives
//    only in memory and has no file to write;
//  - the first "NSGlobalDomain" becomes ".GlobalPreferences", the global
//    domain's file name;
//  - a file (or folder) that exists at that path as it stands, relative to
//    the working directory or absolute, is the answer, so that a domain given
//    as a path ("~/Desktop/test") names that file; otherwise the path is
//    appended to the user's preferences folder with a "/", so an absolute
//    path ends up below it, in folders that do not exist;
//  - if no file is there either, it is created holding an empty dictionary
//    as an XML property list, mode 0600, making a missing preferences folder
//    (mode 0700) but no other folder.
// An existing file is taken as it is, whatever its permissions or content:
// whoever opens it reports what is wrong with it.
class DefaultsDomainFile {
    Q_DECLARE_TR_FUNCTIONS(DefaultsDomainFile)

public:
    enum class Status {
        Existing,           // path is a file that was already there
        Missing,            // path is where the file would be created (find only)
        Created,            // path is a new, empty domain file
        RegistrationDomain, // refused; nothing touched
        CannotCreate,       // path could not be made; error says why
    };

    struct Location {
        Status status = Status::CannotCreate;
        QString path;  // the file, or the one that could not be made
        QString error; // for the refusals, a sentence for the user

        bool found() const { return status == Status::Existing || status == Status::Created; }
    };

    // Where the domain's file is, or would be made; nothing is written.
    static Location find(const QString &domain);
    static Location findOrCreate(const QString &domain);
    // The first step alone: the domain name as a path ending in ".plist",
    // before the registration and global domains are looked for.
    static QString standardizedPath(const QString &domain);
};
