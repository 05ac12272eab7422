#include "prefController.h"

#include "domains/SettingsKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/ColorWell.h"

#include "ui_prefs.h"

#include <QCloseEvent>
#include <QFontDialog>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>

namespace {

using ListWell = ApplicationSettings::ListColorWell;
using TabWell = ApplicationSettings::TabColorWell;

QPointer<prefController> &sharedPointer()
{
    static QPointer<prefController> window;
    return window;
}

// The notices after which the window reads the settings again: every one that
// announces a setting it shows.
const QStringList &shownSettingsNotifications()
{
    using namespace SettingsNotifications;
    static const QStringList names{
        VXDocumentWarningChangedNotification,     VXDomainWarningChangedNotification,
        VXWarnOnDuplicateKeysChangedNotification, VXUseCustomColorsChangedNotification,
        VXColorsChangedNotification,              VXTextFontChangedNotification,
        VXTabsUseCustomColorsChangedNotification, VXTabColorsChangedNotification,
        VXTabTextFontChangedNotification,         VXDocumentsUseTabsChangedNotification,
        VXKeepODQWindowVisibleChangedNotification};
    return names;
}

QString withoutMnemonic(QString text)
{
    text.remove(u'&');
    if (text.endsWith(u':'))
        text.chop(1);
    return text;
}

} // namespace

prefController::prefController(UserDefaults &defaults, NotificationCenter &center, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::prefs>())
    , m_defaults(defaults)
    , m_center(center)
    , m_settings(defaults, center)
{
    m_ui->setupUi(this);
    setObjectName(QStringLiteral("preferences"));
    const QList<QLabel *> labels = listWellLabels() + tabWellLabels();
    const QList<ColorWell *> wells = listWells() + tabWells();
    for (qsizetype i = 0; i < wells.size(); ++i)
        wells[i]->setAccessibleName(withoutMnemonic(labels[i]->text()));
    loadFromSettings();
    const qint64 page = m_defaults.integerForKey(SettingsKeys::VXLastSelectedTab);
    m_ui->pages->setCurrentIndex(page == ColorsPage ? ColorsPage : OptionsPage);
    connectControls();
    connectWells();
    observeSettings();
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QWidget::close);
}

prefController::~prefController() = default;

prefController *prefController::showPreferences(UserDefaults &defaults, NotificationCenter &center)
{
    QPointer<prefController> &window = sharedPointer();
    if (!window) {
        window = new prefController(defaults, center);
        window->setAttribute(Qt::WA_DeleteOnClose);
    }
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

prefController *prefController::sharedWindow() { return sharedPointer(); }

QString prefController::fontDescription(const QString &family, double pointSize)
{
    return tr("%1, %2pt.").arg(family).arg(pointSize, 0, 'f', 0);
}

void prefController::connectControls()
{
    const auto box = [this](QCheckBox *check, void (ApplicationSettings::*write)(bool, QObject *)) {
        connect(check, &QCheckBox::toggled, this, [this, write](bool on) { (m_settings.*write)(on, this); });
    };
    box(m_ui->documentWarnBox, &ApplicationSettings::setWarnOnDocumentDelete);
    box(m_ui->domainWarnBox, &ApplicationSettings::setWarnOnDomainDelete);
    box(m_ui->duplicateWarnBox, &ApplicationSettings::setWarnOnDuplicateKeys);
    box(m_ui->docsUseTabs, &ApplicationSettings::setDocumentsUseTabs);
    box(m_ui->keepODQVisible, &ApplicationSettings::setKeepODQWindowVisible);
    box(m_ui->useCustomColors, &ApplicationSettings::setUseCustomColors);
    box(m_ui->useCustomTabColors, &ApplicationSettings::setTabsUseCustomColors);
    connect(m_ui->useCustomColors, &QCheckBox::toggled, this, &prefController::enableListWells);
    connect(m_ui->useCustomTabColors, &QCheckBox::toggled, this, &prefController::enableTabWells);
    connect(m_ui->listFontButton, &QPushButton::clicked, this, [this] { showFontPanel(true); });
    connect(m_ui->tabFontButton, &QPushButton::clicked, this, [this] { showFontPanel(false); });
    connect(m_ui->pages, &QTabWidget::currentChanged, this,
            [this](int page) { m_settings.setLastSelectedTab(page); });
}

void prefController::connectWells()
{
    const QList<ColorWell *> list = listWells();
    for (qsizetype i = 0; i < list.size(); ++i) {
        connect(list[i], &ColorWell::colorChosen, this, [this, i](const QColor &color) {
            m_settings.setListColor(static_cast<ListWell>(i), SystemAppearance::calibratedColor(color), this);
        });
    }
    const QList<ColorWell *> tabs = tabWells();
    for (qsizetype i = 0; i < tabs.size(); ++i) {
        connect(tabs[i], &ColorWell::colorChosen, this, [this, i](const QColor &color) {
            m_settings.setTabColor(static_cast<TabWell>(i), SystemAppearance::calibratedColor(color), this);
        });
    }
    connect(m_ui->resetListColors, &QPushButton::clicked, this, [this] {
        const QList<CalibratedColor> colors = m_settings.resetListColors(this);
        const QList<ColorWell *> wells = listWells();
        for (qsizetype i = 0; i < wells.size() && i < colors.size(); ++i)
            wells[i]->setColor(SystemAppearance::qColor(colors[i]));
    });
    connect(m_ui->resetTabColors, &QPushButton::clicked, this, [this] {
        const QList<CalibratedColor> colors = m_settings.resetTabColors(this);
        const QList<ColorWell *> wells = tabWells();
        for (qsizetype i = 0; i < wells.size() && i < colors.size(); ++i)
            wells[i]->setColor(SystemAppearance::qColor(colors[i]));
    });
}

void prefController::observeSettings()
{
    for (const QString &name : shownSettingsNotifications()) {
        m_center.addObserver(this, name, [this](const Notification &notice) {
            // What this window wrote it shows already; reading again would
            // only undo a half-made choice such as a colour being picked.
            if (notice.object != this)
                loadFromSettings();
        });
    }
    m_center.addObserver(this, SettingsNotifications::VXFontPanelDidChangeFontNotification,
                         [this](const Notification &) { chooseFont(); });
}

void prefController::loadFromSettings()
{
    using namespace SettingsKeys;
    const std::pair<QCheckBox *, QString> boxes[] = {
        {m_ui->documentWarnBox, VXWarnOnDocumentDelete}, {m_ui->domainWarnBox, VXWarnOnDomainDelete},
        {m_ui->duplicateWarnBox, VXWarnOnDuplicateKeys}, {m_ui->docsUseTabs, VXDocumentsUseTabs},
        {m_ui->keepODQVisible, VXKeepODQWindowVisible},  {m_ui->useCustomColors, VXUseCustomColors},
        {m_ui->useCustomTabColors, VXTabsUseCustomColors}};
    for (const auto &[box, key] : boxes) {
        const QSignalBlocker quiet(box);
        box->setChecked(m_defaults.boolForKey(key));
    }
    const QList<ColorWell *> list = listWells();
    for (qsizetype i = 0; i < list.size(); ++i)
        list[i]->setColor(SystemAppearance::qColor(VXAdditions::colorFromString(
            m_defaults.stringForKey(ApplicationSettings::keyFor(static_cast<ListWell>(i))))));
    const QList<ColorWell *> tabs = tabWells();
    for (qsizetype i = 0; i < tabs.size(); ++i)
        tabs[i]->setColor(SystemAppearance::qColor(VXAdditions::colorFromString(
            m_defaults.stringForKey(ApplicationSettings::keyFor(static_cast<TabWell>(i))))));
    enableListWells(m_ui->useCustomColors->isChecked());
    enableTabWells(m_ui->useCustomTabColors->isChecked());
    m_ui->listFontTF->setText(
        fontDescription(m_defaults.stringForKey(VXTextFont), m_defaults.doubleForKey(VXTextFontSize)));
    m_ui->tabFontTF->setText(
        fontDescription(m_defaults.stringForKey(VXTabTextFont), m_defaults.doubleForKey(VXTabTextFontSize)));
}

void prefController::enableListWells(bool on)
{
    for (QWidget *widget : listWells())
        widget->setEnabled(on);
    for (QWidget *widget : listWellLabels())
        widget->setEnabled(on); // a disabled label is drawn in the disabled text colour
}

void prefController::enableTabWells(bool on)
{
    for (QWidget *widget : tabWells())
        widget->setEnabled(on);
    for (QWidget *widget : tabWellLabels())
        widget->setEnabled(on);
}

void prefController::showFontPanel(bool listFont)
{
    m_isListFont = listFont;
    if (!m_fontPanel) {
        m_fontPanel = new QFontDialog(this);
        m_fontPanel->setWindowFlag(Qt::Tool);
        // The panel's choice goes out as the font panel's notice, which this
        // window answers like any other observer.
        connect(m_fontPanel, &QFontDialog::fontSelected, this, [this] { m_settings.fontPanelChangedFont(); });
    }
    using namespace SettingsKeys;
    const QString family = m_defaults.stringForKey(listFont ? VXTextFont : VXTabTextFont);
    const double size = m_defaults.doubleForKey(listFont ? VXTextFontSize : VXTabTextFontSize);
    QFont font(family);
    if (size > 0)
        font.setPointSizeF(size);
    m_fontPanel->setCurrentFont(font);
    m_fontPanel->setWindowTitle(listFont ? tr("Document List Font") : tr("Tab Font"));
    m_fontPanel->show();
    m_fontPanel->raise();
    m_fontPanel->activateWindow();
}

void prefController::chooseFont()
{
    if (!m_fontPanel)
        return;
    const QFont font = m_fontPanel->selectedFont();
    const QString family = font.family();
    const double size = font.pointSizeF();
    if (m_isListFont) {
        m_ui->listFontTF->setText(fontDescription(family, size));
        m_settings.setListFont(family, size, this);
    } else {
        m_ui->tabFontTF->setText(fontDescription(family, size));
        m_settings.setTabFont(family, size, this);
    }
}

void prefController::closeEvent(QCloseEvent *event)
{
    if (m_fontPanel && m_fontPanel->isVisible())
        m_fontPanel->hide();
    m_settings.preferencesWindowClosed(this);
    // What was chosen here is kept even if the application does not end normally.
    m_defaults.synchronize();
    QWidget::closeEvent(event);
}

QList<ColorWell *> prefController::listWells() const
{
    return {m_ui->lightWell, m_ui->darkWell, m_ui->unreadableWell, m_ui->textWell};
}

QList<ColorWell *> prefController::tabWells() const
{
    return {m_ui->tabActiveTextWell, m_ui->tabActiveBackgroundWell, m_ui->tabBackgroundWell,
            m_ui->tabDisabledTextWell, m_ui->tabOverflowWell};
}

QList<QLabel *> prefController::listWellLabels() const
{
    return {m_ui->lightTF, m_ui->darkTF, m_ui->disabledTF, m_ui->textTF};
}

QList<QLabel *> prefController::tabWellLabels() const
{
    return {m_ui->tabActiveTF, m_ui->tabActiveBackTF, m_ui->tabBackTF, m_ui->tabDisabledTF,
            m_ui->tabOverflowTF};
}
