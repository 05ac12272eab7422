#include "DomainSandbox.h"

#include "Corpus.h"

#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

DomainSandbox::DomainSandbox()
    : m_oldHome(qgetenv("HOME")), m_oldLocal(qgetenv("ORVANE_LOCAL_PREFERENCES")),
      m_oldHost(qgetenv("ORVANE_HOST_UUID")), m_hadLocal(qEnvironmentVariableIsSet("ORVANE_LOCAL_PREFERENCES")),
      m_hadHost(qEnvironmentVariableIsSet("ORVANE_HOST_UUID"))
{
    QDir().mkpath(userFolder());
    QDir().mkpath(machineFolder());
    qputenv("HOME", QFile::encodeName(home()));
    qputenv("ORVANE_LOCAL_PREFERENCES", QFile::encodeName(machineFolder()));
    qputenv("ORVANE_HOST_UUID", kHostId.toLatin1());
}

DomainSandbox::~DomainSandbox()
{
    qputenv("HOME", m_oldHome);
    if (m_hadLocal)
        qputenv("ORVANE_LOCAL_PREFERENCES", m_oldLocal);
    else
        qunsetenv("ORVANE_LOCAL_PREFERENCES");
    if (m_hadHost)
        qputenv("ORVANE_HOST_UUID", m_oldHost);
    else
        qunsetenv("ORVANE_HOST_UUID");
}

QString DomainSandbox::absolute(const QString &path) const
{
    return QFileInfo(path).isAbsolute() ? path : home() + QLatin1Char('/') + path;
}

QString DomainSandbox::write(const QString &path, const QByteArray &bytes) const
{
    const QString full = absolute(path);
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
