#include "UserDefaults.h"

#include "NotificationCenter.h"
#include "NumberConversion.h"
#include "PreferencesService.h"
#include "StringReadings.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcDefaults, "orvane.platform")

constexpr PreferencesUser kUser = PreferencesUser::Current;
constexpr PreferencesHost kHost = PreferencesHost::Any;

} // namespace

UserDefaults::UserDefaults(PreferencesService &service, NotificationCenter &center,
                           const QString &applicationDomain)
    : m_service(service)
    , m_center(center)
    , m_applicationDomain(applicationDomain)
{
}

UserDefaults &UserDefaults::standardUserDefaults()
{
    static UserDefaults defaults(PreferencesService::shared(), NotificationCenter::defaultCenter());
    return defaults;
}

void UserDefaults::postDidChange()
{
    m_center.post(kDidChangeNotification);
}

void UserDefaults::registerDefaults(const PropertyDictionary &defaults)
{
    bool changed = false;
    for (qsizetype i = 0; i < defaults.size(); ++i) {
        const PropertyList *old = m_registered.find(defaults.keyAt(i));
        if (old && old->isIdenticalTo(defaults.valueAt(i)))
            continue;
        m_registered.insert(defaults.keyAt(i), defaults.valueAt(i));
        changed = true;
    }
    if (changed)
        postDidChange();
}

std::optional<PropertyList> UserDefaults::objectForKey(const QString &key) const
{
    if (std::optional<PropertyList> value = m_service.copyValue(key, m_applicationDomain, kUser, kHost))
        return value;
    if (std::optional<PropertyList> value = m_service.copyValue(key, kGlobalDomain, kUser, kHost))
        return value;
    if (const PropertyList *value = m_registered.find(key))
        return *value;
    return std::nullopt;
}

bool UserDefaults::boolForKey(const QString &key) const
{
    const std::optional<PropertyList> value = objectForKey(key);
    if (!value)
        return false;
    switch (value->type()) {
    case PropertyList::Type::Boolean:
        return value->toBool();
    case PropertyList::Type::Integer:
        return value->toUnsignedInteger() != 0;
    case PropertyList::Type::Real:
        return value->toReal() != 0.0;
    case PropertyList::Type::String:
        return StringReadings::boolValue(value->toString());
    case PropertyList::Type::Data:
    case PropertyList::Type::Date:
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
    case PropertyList::Type::Uid:
        return false;
    }
    return false;
}

qint64 UserDefaults::integerForKey(const QString &key) const
{
    const std::optional<PropertyList> value = objectForKey(key);
    if (!value)
        return 0;
    switch (value->type()) {
    case PropertyList::Type::Boolean:
        return value->toBool() ? 1 : 0;
    case PropertyList::Type::Integer:
        return value->toInteger();
    case PropertyList::Type::Real:
        return NumberConversion::saturatedInt64(value->toReal());
    case PropertyList::Type::String:
        return StringReadings::intValue(value->toString());
    case PropertyList::Type::Data:
    case PropertyList::Type::Date:
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
    case PropertyList::Type::Uid:
        return 0;
    }
    return 0;
}

double UserDefaults::doubleForKey(const QString &key) const
{
    const std::optional<PropertyList> value = objectForKey(key);
    if (!value)
        return 0;
    if (value->isNumber())
        return value->toReal();
    if (value->isString())
        return StringReadings::doubleValue(value->toString());
    return 0;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const std::optional<PropertyList> value = objectForKey(key);
    return value && value->isString() ? value->toString() : QString();
}

void UserDefaults::setObject(const PropertyList &value, const QString &key)
{
    const std::optional<PropertyList> old = m_service.copyValue(key, m_applicationDomain, kUser, kHost);
    if (old && old->isIdenticalTo(value))
        return;
    m_service.setValue(key, value, m_applicationDomain, kUser, kHost);
    postDidChange();
}

void UserDefaults::setBool(bool value, const QString &key)
{
    setObject(PropertyList::boolean(value), key);
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    if (!m_service.copyValue(key, m_applicationDomain, kUser, kHost))
        return;
    m_service.setValue(key, std::nullopt, m_applicationDomain, kUser, kHost);
    postDidChange();
}

PropertyDictionary UserDefaults::volatileDomainForName(const QString &name) const
{
    return name == kRegistrationDomain ? m_registered : PropertyDictionary();
}

std::optional<PropertyDictionary> UserDefaults::persistentDomainForName(const QString &name) const
{
    return m_service.copyDomain(name, kUser, kHost);
}

void UserDefaults::setPersistentDomain(const PropertyDictionary &domain, const QString &name)
{
    if (name == kRegistrationDomain || name == QLatin1String("NSArgumentDomain")) {
        // The platform raises an exception here: these domains are volatile.
        qCWarning(lcDefaults, "setPersistentDomain: %s is not a persistent domain", qUtf8Printable(name));
        return;
    }
    const std::optional<PropertyDictionary> old = m_service.copyDomain(name, kUser, kHost);
    QStringList removed;
    if (old) {
        for (const QString &key : old->keys()) {
            if (!domain.contains(key))
                removed.append(key);
        }
    }
    m_service.setMultiple(domain, removed, name, kUser, kHost);
    if (!(old.value_or(PropertyDictionary()) == domain) || !removed.isEmpty())
        postDidChange();
}

void UserDefaults::removePersistentDomainForName(const QString &name)
{
    const std::optional<QStringList> keys = m_service.copyKeyList(name, kUser, kHost);
    if (!keys)
        return;
    m_service.setMultiple({}, *keys, name, kUser, kHost);
    postDidChange();
}

bool UserDefaults::synchronize()
{
    return m_service.appSynchronize(m_applicationDomain);
}
