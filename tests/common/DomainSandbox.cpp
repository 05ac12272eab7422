#include "DomainSandbox.h"

#include "Corpus.h"

#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

DomainSandbox::DomainSandbox()
{
    const std::array<std::pair<const char *, QByteArray>, 3> replacements{{
        {"HOME", QFile::encodeName(home())},
        {"ORVANE_LOCAL_PREFERENCES", QFile::encodeName(machineFolder())},
        {"ORVANE_HOST_UUID", kHostId.toLatin1()},
    }};
    for (std::size_t i = 0; i < replacements.size(); ++i) {
        const char *name = replacements[i].first;
        m_saved[i] = {name, qgetenv(name), qEnvironmentVariableIsSet(name)};
        qputenv(name, replacements[i].second);
    }
    QDir().mkpath(userFolder());
    QDir().mkpath(machineFolder());
}

DomainSandbox::~DomainSandbox()
{
    for (const Saved &saved : m_saved) {
        if (saved.wasSet)
            qputenv(saved.name, saved.value);
        else
            qunsetenv(saved.name);
    }
}

QString DomainSandbox::write(const QString &path, const QByteArray &bytes) const
{
    const QString full = QFileInfo(path).isAbsolute() ? path : home() + QLatin1Char('/') + path;
    QDir().mkpath(QFileInfo(full).path());
    QFile file(full);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QString();
    return full;
}

QString DomainSandbox::writeDictionary(const QString &path, const PropertyDictionary &content) const
{
    return write(path, PropertyListSerialization::write(PropertyList(content), PropertyListFormat::Binary));
}

QString DomainSandbox::copyCorpus(const QString &corpusName, const QString &path) const
{
    return write(path, Corpus::readAll(Corpus::root() + QStringLiteral("/plists/binary/") + corpusName));
}
