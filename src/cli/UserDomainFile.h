#pragma once

#include <QString>

// The file of one of the current user's domains, for applying `defaults
// write` text to it: found, or made as an empty domain when it is missing.
namespace UserDomainFile {

// The file's path in the user's preferences folder; empty, with the reason,
// for a name that is no domain of the user's (a path, an option, the
// registration domain, which only lives while a program runs).
QString pathFor(const QString &domain, QString *reason);

// Makes the file an empty XML dictionary readable by its owner only, with
// its folder, unless it exists. Empty on success, else the reason.
QString create(const QString &path);

} // namespace UserDomainFile
