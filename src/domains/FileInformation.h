#pragma once

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

// What the information panel shows about one file, as text: its dates, its
// size as the panel words it, its owner, group and permissions. A path that
// does not exist gives exists == false and empty texts.
struct FileInformation {
    Q_DECLARE_TR_FUNCTIONS(FileInformation)
public:
    QString path;
    bool exists = false;
    QString creationDate; // "unknown" where the file system keeps no birth time
    QString modificationDate;
    QString accessDate;
    QString size;
    QString owner;
    QString group;
    QString permissions; // "rw-r--r--": owner, group, others

    static FileInformation of(const QString &path);
    // A date as the panel shows it, in local time: "1 March 2026, 13:34:56".
    static QString dateText(const QDateTime &date);
    static QString permissionsText(int unixMode);
};
