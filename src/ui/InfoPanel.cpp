#include "InfoPanel.h"

#include "domains/FileInformation.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

namespace {

QPointer<InfoPanel> &sharedPointer()
{
    static QPointer<InfoPanel> panel;
    return panel;
}

QLabel *named(const QString &objectName, const QString &text)
{
    auto *label = new QLabel(text);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel *value(const QString &objectName, const QString &text)
{
    QLabel *label = named(objectName, text);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

InfoPanel::InfoPanel(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("infoWindow"));
    auto *content = new QWidget;
    m_sections = new QVBoxLayout(content);
    auto *scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
    resize(420, 300);
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);
}

InfoPanel *InfoPanel::getInfoForFiles(const QStringList &paths)
{
    QPointer<InfoPanel> &panel = sharedPointer();
    if (!panel) {
        panel = new InfoPanel;
        panel->setAttribute(Qt::WA_DeleteOnClose);
    }
    panel->showFiles(paths);
    panel->show();
    panel->raise();
    panel->activateWindow();
    return panel;
}

bool InfoPanel::getPrefInfoIfOpen(const QStringList &paths)
{
    InfoPanel *panel = sharedPointer();
    if (!panel || !panel->isVisible())
        return false;
    panel->showFiles(paths);
    return true;
}

InfoPanel *InfoPanel::sharedPanel() { return sharedPointer(); }

void InfoPanel::showFiles(const QStringList &paths)
{
    m_paths = paths;
    clearSections();
    for (const QString &path : paths.mid(0, kMaxSections))
        m_sections->addWidget(section(FileInformation::of(path)));
    if (paths.size() > kMaxSections)
        m_sections->addWidget(named(QStringLiteral("moreItems"), tr("and %n more item(s)", nullptr,
                                                                     int(paths.size() - kMaxSections))));
    if (paths.isEmpty())
        m_sections->addWidget(named(QStringLiteral("noItems"), tr("Nothing is selected.")));
    m_sections->addStretch(1);
    setWindowTitle(paths.size() == 1 ? tr("%1 Info").arg(QFileInfo(paths.first()).fileName())
                                     : tr("Info on %n item(s)", nullptr, int(paths.size())));
}

void InfoPanel::clearSections()
{
    while (QLayoutItem *item = m_sections->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

QWidget *InfoPanel::section(const FileInformation &information)
{
    auto *box = new QWidget;
    auto *form = new QFormLayout(box);
    auto *icon = new QLabel;
    icon->setObjectName(QStringLiteral("appImageView"));
    icon->setPixmap(QFileIconProvider().icon(QFileInfo(information.path)).pixmap(32));
    QLabel *path = value(QStringLiteral("pathField"), information.path);
    path->setWordWrap(true);
    // The path is what people copy from here, so the keyboard can reach it.
    path->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    form->addRow(icon, path);
    if (!information.exists) {
        form->addRow(named(QStringLiteral("missing"), tr("This file is not there any more.")));
        return box;
    }
    const auto row = [form](const char *label, const QString &labelText, const char *field,
                            const QString &text) {
        form->addRow(named(QString::fromLatin1(label), labelText), value(QString::fromLatin1(field), text));
    };
    row("creationLabel", tr("Created:"), "creationDate", information.creationDate);
    row("modifiedLabel", tr("Modified:"), "modifiedDate", information.modificationDate);
    row("accessLabel", tr("Last opened:"), "accessDate", information.accessDate);
    row("diskLabel", tr("Size:"), "diskSize", information.size);
    row("ownerGroupLabel", tr("Owner, group:"), "ownerGroup",
        information.owner + QStringLiteral(", ") + information.group);
    row("plistPermissionsLabel", tr("Permissions:"), "plistPermissions", information.permissions);
    return box;
}
