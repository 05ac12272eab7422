#include "ApplicationSettings.h"

#include "domains/SettingsKeys.h"
#include "platform/DateMath.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"

#include <array>
#include <utility>

namespace {

using namespace SettingsKeys;
using namespace SettingsNotifications;

PropertyList colorValue(const CalibratedColor &color)
{
    return PropertyList(VXAdditions::stringFromColor(color));
}

// The earlier release's keys and where they go now. Its window frames keep
// their names: the window code looks them up by the window's name.
const std::array<std::pair<QString, QString>, 13> &transferredKeys()
{
    static const std::array<std::pair<QString, QString>, 13> keys{{
        {QStringLiteral("Warn before PLIST Delete?"), VXWarnOnDocumentDelete},
        {QStringLiteral("Warn before Domain Delete?"), VXWarnOnDomainDelete},
        {QStringLiteral("plist window uses tabs"), VXDocumentsUseTabs},
        {QStringLiteral("tabs use custom colors"), VXTabsUseCustomColors},
        {QStringLiteral("light cell color"), VXLightColor},
        {QStringLiteral("dark cell color"), VXDarkColor},
        {QStringLiteral("disabled cell color"), VXDisabledColor},
        {QStringLiteral("text cell color"), VXTextColor},
        {QStringLiteral("NSWindow Frame domain"), QStringLiteral("NSWindow Frame domain")},
        {QStringLiteral("NSWindow Frame findPanel"), QStringLiteral("NSWindow Frame findPanel")},
        {QStringLiteral("NSWindow Frame getinfo"), QStringLiteral("NSWindow Frame getinfo")},
        {QStringLiteral("NSWindow Frame plistWindow"), QStringLiteral("NSWindow Frame plistWindow")},
        {QStringLiteral("NSWindow Frame prefs"), QStringLiteral("NSWindow Frame prefs")},
    }};
    return keys;
}

} // namespace

ApplicationSettings::ApplicationSettings(UserDefaults &defaults, NotificationCenter &center)
    : m_defaults(defaults), m_center(center)
{
}

PropertyDictionary ApplicationSettings::registeredDefaults(const AppearanceDefaults &appearance, const QDateTime &now)
{
    const double nowSinceReference = DateMath::secondsSinceReferenceDate(now.toMSecsSinceEpoch());
    const PropertyList yes = PropertyList::boolean(true);
    const PropertyList no = PropertyList::boolean(false);
    PropertyDictionary defaults;
    defaults.reserve(22);
    defaults.insert(VXWarnOnDocumentDelete, yes);
    defaults.insert(VXWarnOnDomainDelete, yes);
    defaults.insert(VXWarnOnDuplicateKeys, yes);
    defaults.insert(VXDocumentsUseTabs, yes);
    defaults.insert(VXTabsUseCustomColors, no);
    defaults.insert(VXLightColor, colorValue(appearance.alternatingRowLight));
    defaults.insert(VXDarkColor, colorValue(appearance.alternatingRowDark));
    defaults.insert(VXDisabledColor, colorValue(appearance.disabledControlText));
    defaults.insert(VXTextColor, colorValue(appearance.text));
    // A week back, so a crash log written in the last week counts as new at
    // the first start.
    defaults.insert(VXLastCrashLogDate, PropertyList::date(nowSinceReference - kCrashLogLookBackSeconds));
    defaults.insert(VXUseCustomColors, no);
    defaults.insert(VXTextFont, PropertyList(appearance.userFontName));
    defaults.insert(VXTextFontSize, PropertyList::real(appearance.userFontSize, 'f'));
    defaults.insert(VXTabTextFont, PropertyList(appearance.boldSystemFontName));
    defaults.insert(VXTabTextFontSize, PropertyList::real(kTabTextFontSize, 'f'));
    defaults.insert(VXTabActiveTextColor, colorValue(appearance.text));
    defaults.insert(VXTabBackgroundColor, colorValue(appearance.secondarySelectedControl));
    defaults.insert(VXTabDisabledTextColor, colorValue(appearance.disabledControlText));
    defaults.insert(VXTabActiveBackgroundColor, colorValue(appearance.controlLightHighlight));
    defaults.insert(VXTabOverflowChevronColor, colorValue(appearance.disabledControlText));
    defaults.insert(VXKeepODQWindowVisible, no);
    defaults.insert(VXLastSelectedTab, PropertyList::integer(0, 'i'));
    return defaults;
}

void ApplicationSettings::registerDefaults(UserDefaults &defaults, const AppearanceDefaults &appearance,
                                           const QDateTime &now)
{
    defaults.registerDefaults(registeredDefaults(appearance, now));
}

bool ApplicationSettings::transferPreferences(UserDefaults &defaults)
{
    const auto earlier = defaults.persistentDomainForName(kEarlierReleaseDomain);
    if (!earlier)
        return false;
    for (const auto &[oldKey, newKey] : transferredKeys()) {
        if (const PropertyList *value = earlier->find(oldKey))
            defaults.setObject(*value, newKey);
    }
    defaults.removePersistentDomainForName(kEarlierReleaseDomain);
    defaults.synchronize();
    return true;
}

void ApplicationSettings::writeAndPost(const QString &key, const PropertyList &value, const QString &notification,
                                       QObject *sender)
{
    m_defaults.setObject(value, key);
    m_center.post(notification, sender);
}

void ApplicationSettings::setWarnOnDocumentDelete(bool on, QObject *sender)
{
    writeAndPost(VXWarnOnDocumentDelete, PropertyList::boolean(on), VXDocumentWarningChangedNotification, sender);
}

void ApplicationSettings::setWarnOnDomainDelete(bool on, QObject *sender)
{
    writeAndPost(VXWarnOnDomainDelete, PropertyList::boolean(on), VXDomainWarningChangedNotification, sender);
}

void ApplicationSettings::setWarnOnDuplicateKeys(bool on, QObject *sender)
{
    writeAndPost(VXWarnOnDuplicateKeys, PropertyList::boolean(on), VXWarnOnDuplicateKeysChangedNotification, sender);
}

void ApplicationSettings::setUseCustomColors(bool on, QObject *sender)
{
    writeAndPost(VXUseCustomColors, PropertyList::boolean(on), VXUseCustomColorsChangedNotification, sender);
}

void ApplicationSettings::setTabsUseCustomColors(bool on, QObject *sender)
{
    writeAndPost(VXTabsUseCustomColors, PropertyList::boolean(on), VXTabsUseCustomColorsChangedNotification, sender);
}

void ApplicationSettings::setDocumentsUseTabs(bool on, QObject *sender)
{
    writeAndPost(VXDocumentsUseTabs, PropertyList::boolean(on), VXDocumentsUseTabsChangedNotification, sender);
}

void ApplicationSettings::setKeepODQWindowVisible(bool on, QObject *sender)
{
    writeAndPost(VXKeepODQWindowVisible, PropertyList::boolean(on), VXKeepODQWindowVisibleChangedNotification,
                 sender);
}

void ApplicationSettings::setListColor(ListColorWell well, const CalibratedColor &color, QObject *sender)
{
    writeAndPost(keyFor(well), colorValue(color), VXColorsChangedNotification, sender);
}

void ApplicationSettings::setTabColor(TabColorWell well, const CalibratedColor &color, QObject *sender)
{
    writeAndPost(keyFor(well), colorValue(color), VXTabColorsChangedNotification, sender);
}

QList<CalibratedColor> ApplicationSettings::resetColors(const QStringList &keys, const QString &notification,
                                                        QObject *sender)
{
    for (const QString &key : keys)
        m_defaults.removeObjectForKey(key);
    QList<CalibratedColor> inForce;
    for (const QString &key : keys)
        inForce.append(VXAdditions::colorFromString(m_defaults.stringForKey(key)));
    m_center.post(notification, sender);
    return inForce;
}

QList<CalibratedColor> ApplicationSettings::resetListColors(QObject *sender)
{
    return resetColors({keyFor(ListColorWell::Light), keyFor(ListColorWell::Dark), keyFor(ListColorWell::Unreadable),
                        keyFor(ListColorWell::Text)},
                       VXColorsChangedNotification, sender);
}

QList<CalibratedColor> ApplicationSettings::resetTabColors(QObject *sender)
{
    return resetColors({keyFor(TabColorWell::ActiveText), keyFor(TabColorWell::ActiveBackground),
                        keyFor(TabColorWell::Background), keyFor(TabColorWell::DisabledText),
                        keyFor(TabColorWell::Overflow)},
                       VXTabColorsChangedNotification, sender);
}

void ApplicationSettings::setListFont(const QString &name, double size, QObject *sender)
{
    m_defaults.setObject(PropertyList(name), VXTextFont);
    writeAndPost(VXTextFontSize, PropertyList::real(size, 'f'), VXTextFontChangedNotification, sender);
}

void ApplicationSettings::setTabFont(const QString &name, double size, QObject *sender)
{
    m_defaults.setObject(PropertyList(name), VXTabTextFont);
    writeAndPost(VXTabTextFontSize, PropertyList::real(size, 'f'), VXTabTextFontChangedNotification, sender);
}

void ApplicationSettings::setLastSelectedTab(int tag)
{
    m_defaults.setObject(PropertyList::integer(tag, 'i'), VXLastSelectedTab);
}

void ApplicationSettings::preferencesWindowClosed(QObject *sender)
{
    m_center.post(VXPreferencWindowClosedNotification, sender);
}

void ApplicationSettings::fontPanelChangedFont()
{
    m_center.post(VXFontPanelDidChangeFontNotification, nullptr);
}

QString ApplicationSettings::keyFor(ListColorWell well)
{
    switch (well) {
    case ListColorWell::Light:
        return VXLightColor;
    case ListColorWell::Dark:
        return VXDarkColor;
    case ListColorWell::Unreadable:
        return VXDisabledColor;
    case ListColorWell::Text:
        return VXTextColor;
    }
    return QString();
}

QString ApplicationSettings::keyFor(TabColorWell well)
{
    switch (well) {
    case TabColorWell::ActiveText:
        return VXTabActiveTextColor;
    case TabColorWell::ActiveBackground:
        return VXTabActiveBackgroundColor;
    case TabColorWell::Background:
        return VXTabBackgroundColor;
    case TabColorWell::DisabledText:
        return VXTabDisabledTextColor;
    case TabColorWell::Overflow:
        return VXTabOverflowChevronColor;
    }
    return QString();
}
