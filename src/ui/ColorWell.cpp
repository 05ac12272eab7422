#include "ColorWell.h"

#include <QColorDialog>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

ColorWell::ColorWell(QWidget *parent) : QPushButton(parent)
{
    setMinimumWidth(64);
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &ColorWell::openDialog);
}

void ColorWell::setColor(const QColor &color)
{
    m_color = color;
    // Screen readers and tooltips get the colour as text, since the swatch says nothing to them.
    const QString name = color.name(color.alpha() < 255 ? QColor::HexArgb : QColor::HexRgb);
    setAccessibleDescription(name);
    setToolTip(accessibleName().isEmpty() ? name : accessibleName() + QStringLiteral(" (") + name + u')');
    if (m_dialog)
        m_dialog->setCurrentColor(color);
    update();
}

void ColorWell::openDialog()
{
    if (!m_dialog) {
        m_dialog = new QColorDialog(m_color, this);
        m_dialog->setOption(QColorDialog::ShowAlphaChannel);
        m_dialog->setAttribute(Qt::WA_DeleteOnClose);
        const QString title = accessibleName();
        if (!title.isEmpty())
            m_dialog->setWindowTitle(title);
        connect(m_dialog, &QColorDialog::colorSelected, this, [this](const QColor &chosen) {
            if (!chosen.isValid() || chosen == m_color)
                return;
            setColor(chosen);
            emit colorChosen(chosen);
        });
        // The keyboard goes back to the well's window, where the user was.
        connect(m_dialog, &QDialog::finished, this, [this] {
            window()->activateWindow();
            setFocus(Qt::OtherFocusReason);
        });
    }
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void ColorWell::paintEvent(QPaintEvent *event)
{
    QPushButton::paintEvent(event);
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRect swatch =
        style()->subElementRect(QStyle::SE_PushButtonContents, &option, this).adjusted(3, 3, -3, -3);
    QPainter painter(this);
    // A disabled well still shows its colour, faded, so the user sees what the custom colours would be.
    painter.setOpacity(isEnabled() ? 1.0 : 0.4);
    painter.fillRect(swatch, m_color);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
}

void ColorWell::changeEvent(QEvent *event)
{
    // A well that may not be used any more takes its dialog with it.
    if (event->type() == QEvent::EnabledChange && !isEnabled() && m_dialog)
        m_dialog->close();
    QPushButton::changeEvent(event);
}

QColorDialog *ColorWell::colorDialog() const { return m_dialog; }
