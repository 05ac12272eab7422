#pragma once

#include <QString>

// The application's own settings keys, in its user-defaults domain. Other
// windows read them; the preferences window and a few buttons write them.
namespace SettingsKeys {

inline const QString VXWarnOnDocumentDelete = QStringLiteral("VXWarnOnDocumentDelete");
inline const QString VXWarnOnDomainDelete = QStringLiteral("VXWarnOnDomainDelete");
inline const QString VXWarnOnDuplicateKeys = QStringLiteral("VXWarnOnDuplicateKeys");
inline const QString VXDocumentsUseTabs = QStringLiteral("VXDocumentsUseTabs");
inline const QString VXTabsUseCustomColors = QStringLiteral("VXTabsUseCustomColors");
inline const QString VXLightColor = QStringLiteral("VXLightColor");
inline const QString VXDarkColor = QStringLiteral("VXDarkColor");
inline const QString VXDisabledColor = QStringLiteral("VXDisabledColor");
inline const QString VXTextColor = QStringLiteral("VXTextColor");
inline const QString VXLastCrashLogDate = QStringLiteral("VXLastCrashLogDate");
inline const QString VXUseCustomColors = QStringLiteral("VXUseCustomColors");
inline const QString VXTextFont = QStringLiteral("VXTextFont");
inline const QString VXTextFontSize = QStringLiteral("VXTextFontSize");
inline const QString VXTabTextFont = QStringLiteral("VXTabTextFont");
inline const QString VXTabTextFontSize = QStringLiteral("VXTabTextFontSize");
inline const QString VXTabActiveTextColor = QStringLiteral("VXTabActiveTextColor");
inline const QString VXTabBackgroundColor = QStringLiteral("VXTabBackgroundColor");
inline const QString VXTabDisabledTextColor = QStringLiteral("VXTabDisabledTextColor");
inline const QString VXTabActiveBackgroundColor = QStringLiteral("VXTabActiveBackgroundColor");
inline const QString VXTabOverflowChevronColor = QStringLiteral("VXTabOverflowChevronColor");
inline const QString VXKeepODQWindowVisible = QStringLiteral("VXKeepODQWindowVisible");
inline const QString VXLastSelectedTab = QStringLiteral("VXLastSelectedTab");

} // namespace SettingsKeys

// The notices that announce a change of settings. None carries values: an
// observer reads the key again.
namespace SettingsNotifications {

inline const QString VXDocumentWarningChangedNotification = QStringLiteral("VXDocumentWarningChangedNotification");
inline const QString VXDomainWarningChangedNotification = QStringLiteral("VXDomainWarningChangedNotification");
inline const QString VXWarnOnDuplicateKeysChangedNotification =
    QStringLiteral("VXWarnOnDuplicateKeysChangedNotification");
inline const QString VXUseCustomColorsChangedNotification = QStringLiteral("VXUseCustomColorsChangedNotification");
inline const QString VXColorsChangedNotification = QStringLiteral("VXColorsChangedNotification");
inline const QString VXTextFontChangedNotification = QStringLiteral("VXTextFontChangedNotification");
inline const QString VXTabsUseCustomColorsChangedNotification =
    QStringLiteral("VXTabsUseCustomColorsChangedNotification");
inline const QString VXTabColorsChangedNotification = QStringLiteral("VXTabColorsChangedNotification");
inline const QString VXTabTextFontChangedNotification = QStringLiteral("VXTabTextFontChangedNotification");
inline const QString VXDocumentsUseTabsChangedNotification = QStringLiteral("VXDocumentsUseTabsChangedNotification");
inline const QString VXKeepODQWindowVisibleChangedNotification =
    QStringLiteral("VXKeepODQWindowVisibleChangedNotification");
inline const QString VXFontPanelDidChangeFontNotification = QStringLiteral("VXFontPanelDidChangeFontNotification");
// Spelled without the "e" of "Preference" since the first release, and kept:
// the name is what observers match, not what it should have been.
inline const QString VXPreferencWindowClosedNotification = QStringLiteral("VXPreferencWindowClosedNotification");
inline const QString VXFindPanelDidCloseNotification = QStringLiteral("VXFindPanelDidCloseNotification");

} // namespace SettingsNotifications
