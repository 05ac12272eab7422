#pragma once

#include "domains/ApplicationSettings.h"

#include <QWidget>

#include <memory>

class ColorWell;
class QCheckBox;
class QFontDialog;
class QLabel;
class UserDefaults;

namespace Ui {
class prefs;
}

// The preferences window: Options (warnings, windows) and Colors (the list's
// and the tab bar's colours and fonts). Every control writes its
// setting at once and announces it; the window follows changes made elsewhere
// (a sheet's "do not ask again" box, a reset) by reading the settings again
// whenever one is announced by somebody else.
//
// One window serves the whole application: showPreferences() makes it on
// first use and brings it forward. It is freed when closed, and remembers
// its page in the settings.
class prefController : public QWidget {
    Q_OBJECT
public:
    enum Page { OptionsPage = 0, ColorsPage = 1 };

    prefController(UserDefaults &defaults, NotificationCenter &center, QWidget *parent = nullptr);
    ~prefController() override;

    // The application's one preferences window, shown and brought forward.
    static prefController *showPreferences(UserDefaults &defaults, NotificationCenter &center);
    // The open preferences window, if there is one.
    static prefController *sharedWindow();

    // The shared font panel, while a font button has it open.
    QFontDialog *fontPanel() const { return m_fontPanel; }
    // The text a font label shows: "Family, 12pt."
    static QString fontDescription(const QString &family, double pointSize);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void connectControls();
    void connectWells();
    void observeSettings();
    // Fills every control from the settings, without announcing anything.
    void loadFromSettings();
    void enableListWells(bool on);
    void enableTabWells(bool on);
    void showFontPanel(bool listFont);
    // The font panel's choice, announced as the font panel's.
    void chooseFont();
    QList<ColorWell *> listWells() const;
    QList<ColorWell *> tabWells() const;
    QList<QLabel *> listWellLabels() const;
    QList<QLabel *> tabWellLabels() const;

    std::unique_ptr<Ui::prefs> m_ui;
    UserDefaults &m_defaults;
    NotificationCenter &m_center;
    ApplicationSettings m_settings;
    QFontDialog *m_fontPanel = nullptr;
    bool m_isListFont = true;
};
