#pragma once

#include <QString>
#include <QStringList>

// The preference store at the size of a long-used account: 600 binary domains
// whose sizes fall off like a long tail (2 MB / rank^1.2, at least 1 KB), a
// ByHost folder and a small machine folder, the same at every run.
namespace GeneratedAccount {

inline const QString kHostId = QStringLiteral("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9");

struct Written {
    QStringList domainPaths; // the user's domains first, largest first
    qint64 totalBytes = 0;
};

// The user's folder as HOME sees it and the machine's folder under root.
QString userFolder(const QString &root);
QString machineFolder(const QString &root);
// Writes the account's folders under root.
Written write(const QString &root);

} // namespace GeneratedAccount
