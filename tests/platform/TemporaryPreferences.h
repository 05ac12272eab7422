#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <optional>
#include <utility>
#include <vector>

// A throw-away account for tests of the preferences service: HOME, the machine
// folder and the host identifier point into a temporary folder while the object
// lives, and the previous environment comes back afterwards.
class TemporaryPreferences {
public:
    static inline const QString kHostId = QStringLiteral("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9");

    TemporaryPreferences()
    {
        set("HOME", m_dir.path() + QStringLiteral("/home"));
        set("ORVANE_LOCAL_PREFERENCES", local());
        set("ORVANE_HOST_UUID", kHostId);
    }
    ~TemporaryPreferences()
    {
        for (const auto &[name, value] : m_saved)
            value ? qputenv(name, *value) : qunsetenv(name);
    }

    bool isValid() const { return m_dir.isValid(); }
    QString userFolder() const { return m_dir.path() + QStringLiteral("/home/Library/Preferences"); }
    QString local() const { return m_dir.path() + QStringLiteral("/local"); }

private:
    void set(const char *name, const QString &value)
    {
        const bool wasSet = qEnvironmentVariableIsSet(name);
        m_saved.emplace_back(name, wasSet ? std::optional(qgetenv(name)) : std::nullopt);
        qputenv(name, QFile::encodeName(value));
    }

    QTemporaryDir m_dir; // not copyable, so neither is this
    std::vector<std::pair<const char *, std::optional<QByteArray>>> m_saved;
};
