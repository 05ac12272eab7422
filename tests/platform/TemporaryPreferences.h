#pragma once

#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <optional>

// A throw-away account for tests of the preferences service: HOME, the machine
// folder and the host identifier point into a temporary folder for the
// object's lifetime, and the previous environment comes back afterwards, so no
// test touches the real account.
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
        for (auto it = m_saved.cbegin(); it != m_saved.cend(); ++it) {
            if (it.value())
                qputenv(it.key().constData(), *it.value());
            else
                qunsetenv(it.key().constData());
        }
    }
    TemporaryPreferences(const TemporaryPreferences &) = delete;
    TemporaryPreferences &operator=(const TemporaryPreferences &) = delete;

    bool isValid() const { return m_dir.isValid(); }
    QString userFolder() const { return m_dir.path() + QStringLiteral("/home/Library/Preferences"); }
    QString local() const { return m_dir.path() + QStringLiteral("/local"); }

private:
    void set(const QByteArray &name, const QString &value)
    {
        m_saved.insert(name, qEnvironmentVariableIsSet(name.constData())
                                 ? std::optional<QByteArray>(qgetenv(name.constData()))
                                 : std::nullopt);
        qputenv(name.constData(), QFile::encodeName(value));
    }

    QTemporaryDir m_dir;
    QHash<QByteArray, std::optional<QByteArray>> m_saved;
};
