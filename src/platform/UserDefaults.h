#pragma once

#include "platform/PropertyList.h"

#include <QString>

#include <optional>

class NotificationCenter;
class PreferencesService;

// The application's user defaults: its own persistent domain in the preferences
// service (current user, any host), then NSGlobalDomain, then the volatile
// registration domain, first match wins. Registered defaults are never written.
// The service and the centre that hears of changes are given at construction,
// so tests and tools can hand in their own.
class UserDefaults {
public:
    static inline const QString kBundleIdentifier = QStringLiteral("org.orvane.Orvane");
    static inline const QString kRegistrationDomain = QStringLiteral("NSRegistrationDomain");
    static inline const QString kGlobalDomain = QStringLiteral("NSGlobalDomain");
    // Posted to the centre with no object whenever a value changes.
    static inline const QString kDidChangeNotification = QStringLiteral("NSUserDefaultsDidChangeNotification");

    UserDefaults(PreferencesService &service, NotificationCenter &center,
                 const QString &applicationDomain = kBundleIdentifier);

    // The process's instance over PreferencesService::shared(), posting to
    // NotificationCenter::defaultCenter().
    static UserDefaults &standardUserDefaults();

    // Merged into the registration domain: keys already there are overwritten.
    void registerDefaults(const PropertyDictionary &defaults);

    std::optional<PropertyList> objectForKey(const QString &key) const;
    bool boolForKey(const QString &key) const;       // strings read with the platform's boolValue
    qint64 integerForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    QString stringForKey(const QString &key) const;  // empty when absent or not a string

    void setObject(const PropertyList &value, const QString &key);
    void setBool(bool value, const QString &key);
    void removeObjectForKey(const QString &key);

    // NSRegistrationDomain gives exactly the registered defaults; any other
    // name an empty dictionary.
    PropertyDictionary volatileDomainForName(const QString &name) const;
    // A copy of the domain (current user, any host), or none when it has no keys.
    std::optional<PropertyDictionary> persistentDomainForName(const QString &name) const;
    void setPersistentDomain(const PropertyDictionary &domain, const QString &name);
    // Empties the domain; the next synchronise removes its file.
    void removePersistentDomainForName(const QString &name);

    bool synchronize();

    QString applicationDomain() const { return m_applicationDomain; }

private:
    void postDidChange();

    PreferencesService &m_service;
    NotificationCenter &m_center;
    QString m_applicationDomain;
    PropertyDictionary m_registered;
};
