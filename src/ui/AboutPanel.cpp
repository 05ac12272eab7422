#include "AboutPanel.h"

#include "OrvaneVersion.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

AboutPanel::AboutPanel(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("aboutWindow"));
    setWindowTitle(tr("About Orvane"));
    auto *name = new QLabel(QStringLiteral("Orvane"));
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    name->setFont(big);
    auto *version = new QLabel(tr("Version %1").arg(QString::fromLatin1(OrvaneVersion::kVersion)));
    version->setObjectName(QStringLiteral("version"));
    auto *what = new QLabel(tr("An editor for Mac OS X preference domains and property-list files."));
    what->setWordWrap(true);
    auto *copyright = new QLabel(tr("Copyright © 2026 The Orvane developers.\nMIT License."));
    copyright->setObjectName(QStringLiteral("license"));
    for (QLabel *label : {name, version, what, copyright})
        label->setAlignment(Qt::AlignHCenter);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *license = buttons->addButton(tr("&License…"), QDialogButtonBox::HelpRole);
    license->setObjectName(QStringLiteral("licenseButton"));
    connect(license, &QPushButton::clicked, this, &AboutPanel::showLicense);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    auto *layout = new QVBoxLayout(this);
    for (QWidget *widget : std::initializer_list<QWidget *>{name, version, what, copyright, buttons})
        layout->addWidget(widget);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

AboutPanel *AboutPanel::showAbout(QWidget *parent)
{
    auto *panel = parent ? parent->window()->findChild<AboutPanel *>() : nullptr;
    if (!panel) {
        panel = new AboutPanel(parent ? parent->window() : nullptr);
        panel->setAttribute(Qt::WA_DeleteOnClose);
    }
    panel->show();
    panel->raise();
    panel->activateWindow();
    return panel;
}

QString AboutPanel::licenseText()
{
    QFile file(QStringLiteral(":/orvane/LICENSE"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void AboutPanel::showLicense()
{
    auto *dialog = new QDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("licenseWindow"));
    dialog->setWindowTitle(tr("Orvane License"));
    auto *text = new QPlainTextEdit(licenseText());
    text->setReadOnly(true);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    // Wide enough for the licence's lines, as the file breaks them.
    text->setMinimumSize(text->fontMetrics().horizontalAdvance(QString(80, u'M')) + 40, 380);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto *layout = new QVBoxLayout(dialog);
    layout->addWidget(text);
    layout->addWidget(buttons);
    dialog->open();
}
