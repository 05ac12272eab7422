#pragma once

#include "model/VXAdditions.h"
#include "platform/PropertyList.h"

#include <QDateTime>
#include <QList>
#include <QString>

class NotificationCenter;
class QObject;
class UserDefaults;

// The system colours and fonts the registered defaults are made of. The GUI
// fills them from the palette and the system fonts; fallback() is what the core
// uses without a GUI (the command-line tool, tests): the classic light list
// look with black text.
struct AppearanceDefaults {
    CalibratedColor alternatingRowLight{1.0, 1.0, 1.0, 1.0};      // first row colour: white
    CalibratedColor alternatingRowDark{0.929, 0.953, 0.996, 1.0}; // second: a pale blue stripe
    CalibratedColor text{0.0, 0.0, 0.0, 1.0};                      // black
    CalibratedColor disabledControlText{0.5, 0.5, 0.5, 1.0};       // mid grey
    CalibratedColor secondarySelectedControl{0.83, 0.83, 0.83, 1.0}; // light grey
    CalibratedColor controlLightHighlight{1.0, 1.0, 1.0, 1.0};     // white
    QString userFontName = QStringLiteral("Sans Serif");
    double userFontSize = 10.0;
    QString boldSystemFontName = QStringLiteral("Sans Serif"); // the tab bar draws it bold, at 11 points

    static AppearanceDefaults fallback() { return {}; }
};

// The application's own settings: their registered defaults, the move of an
// earlier release's settings, and the writes the preferences window makes.
// Each writer stores its key first and then posts the key's notification with
// the given object, so an observer that reads the key sees the new value.
class ApplicationSettings {
public:
    // Where an earlier release kept its settings.
    static inline const QString kEarlierReleaseDomain = QStringLiteral("org.orvane.PrefEdit");
    static constexpr double kTabTextFontSize = 11.0;
    static constexpr double kCrashLogLookBackSeconds = 604800.0; // seven days

    enum class ListColorWell { Light, Dark, Unreadable, Text };
    enum class TabColorWell { ActiveText, ActiveBackground, Background, DisabledText, Overflow };

    ApplicationSettings(UserDefaults &defaults, NotificationCenter &center);

    // The defaults in the order they are registered, with their value types.
    static PropertyDictionary registeredDefaults(const AppearanceDefaults &appearance, const QDateTime &now);
    static void registerDefaults(UserDefaults &defaults, const AppearanceDefaults &appearance, const QDateTime &now);
    // Copies the earlier release's settings that exist to their new keys (window
    // frames under their own names), removes that domain and synchronises.
    // False when there was nothing to move.
    static bool transferPreferences(UserDefaults &defaults);

    // The preferences window's check boxes.
    void setWarnOnDocumentDelete(bool on, QObject *sender);
    void setWarnOnDomainDelete(bool on, QObject *sender);
    void setWarnOnDuplicateKeys(bool on, QObject *sender);
    void setUseCustomColors(bool on, QObject *sender);
    void setTabsUseCustomColors(bool on, QObject *sender);
    void setDocumentsUseTabs(bool on, QObject *sender);
    void setKeepODQWindowVisible(bool on, QObject *sender);
    // The colour wells.
    void setListColor(ListColorWell well, const CalibratedColor &color, QObject *sender);
    void setTabColor(TabColorWell well, const CalibratedColor &color, QObject *sender);
    // The reset buttons: the user's colours go, the registered ones apply
    // again. Answer the colours now in force, in well order, for the wells.
    QList<CalibratedColor> resetListColors(QObject *sender);
    QList<CalibratedColor> resetTabColors(QObject *sender);
    // A font chosen in the font panel for the list or the tab bar.
    void setListFont(const QString &name, double size, QObject *sender);
    void setTabFont(const QString &name, double size, QObject *sender);
    // The page buttons: remembered, announced to nobody.
    void setLastSelectedTab(int tag);
    // The preferences window closed.
    void preferencesWindowClosed(QObject *sender);
    // The font panel changed its font (forwarded with no object).
    void fontPanelChangedFont();

    static QString keyFor(ListColorWell well);
    static QString keyFor(TabColorWell well);

private:
    void writeAndPost(const QString &key, const PropertyList &value, const QString &notification, QObject *sender);
    QList<CalibratedColor> resetColors(const QStringList &keys, const QString &notification, QObject *sender);

    UserDefaults &m_defaults;
    NotificationCenter &m_center;
};
