#pragma once

#include "platform/PropertyList.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <array>

// A throw-away account for one test: HOME, the machine's preferences folder
// and the host identifier all point into a temporary folder, so no test reads
// or writes the real account. The previous environment comes back on
// destruction.
class DomainSandbox {
public:
    static inline const QString kHostId = QStringLiteral("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9");

    DomainSandbox();
    ~DomainSandbox();
    DomainSandbox(const DomainSandbox &) = delete;
    DomainSandbox &operator=(const DomainSandbox &) = delete;

    QString home() const { return m_dir.path(); }
    QString userFolder() const { return m_dir.path() + QStringLiteral("/Library/Preferences"); }
    QString machineFolder() const { return m_dir.path() + QStringLiteral("/machine"); }

    // Writes bytes at path (relative to the sandbox unless absolute), making folders.
    QString write(const QString &path, const QByteArray &bytes) const;
    // Writes a dictionary as a binary property list, as the store does.
    QString writeDictionary(const QString &path, const PropertyDictionary &content) const;
    // Copies a file of the corpus's plists/binary folder to path.
    QString copyCorpus(const QString &corpusName, const QString &path) const;

private:
    struct Saved {
        const char *name;
        QByteArray value;
        bool wasSet;
    };
    QTemporaryDir m_dir;
    std::array<Saved, 3> m_saved;
};
