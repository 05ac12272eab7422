#include "VXTabItemView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

constexpr int kMargin = 6;

QColor withAlpha(QColor color, float alpha)
{
    color.setAlphaF(color.alphaF() * alpha);
    return color;
}

} // namespace

VXTabItemView::VXTabItemView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setAttribute(Qt::WA_Hover);
}

void VXTabItemView::setTitle(const QString &title)
{
    if (title != m_title) {
        m_title = title;
        update();
    }
}

void VXTabItemView::setModified(bool modified)
{
    if (modified != m_modified) {
        m_modified = modified;
        update();
    }
}

void VXTabItemView::setActiveTab(bool active)
{
    if (active != m_active) {
        m_active = active;
        update();
    }
}

void VXTabItemView::setColors(const TabColors &colors)
{
    m_colors = colors;
    update();
}

void VXTabItemView::resizeWidth(float width, float x)
{
    const int left = static_cast<int>(std::lround(x));
    const int right = static_cast<int>(std::lround(x + width));
    setGeometry(left, 0, right - left, height());
}

QRect VXTabItemView::closeBoxRect() const
{
    const int side = qBound(8, height() - 2 * kMargin, 14);
    return {kMargin, (height() - side) / 2, side, side};
}

void VXTabItemView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink = m_active ? m_colors.activeText : m_colors.disabledText;
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, 0.5);
    QPainterPath shape;
    shape.addRoundedRect(frame.adjusted(0, 0, 0, 4), 4, 4); // rounded at the top only
    painter.fillPath(shape, m_active ? m_colors.activeBackground : m_colors.background);
    painter.setPen(QPen(withAlpha(m_colors.disabledText, 0.5f), 1));
    painter.drawPath(shape);
    paintCloseBox(painter, ink);
    const QRect box = closeBoxRect();
    // Centred in the tab while the title fits beside the close box, else
    // using all the room to its right.
    const int titleWidth = fontMetrics().horizontalAdvance(m_title);
    const int inset = box.right() + kMargin / 2;
    const QRect text = titleWidth <= width() - 2 * inset ? rect().adjusted(inset, 0, -inset, 0)
                                                         : rect().adjusted(inset, 0, -kMargin / 2, 0);
    painter.setFont(font());
    painter.setPen(ink);
    painter.drawText(text, Qt::AlignCenter, fontMetrics().elidedText(m_title, Qt::ElideMiddle, text.width()));
}

void VXTabItemView::paintCloseBox(QPainter &painter, const QColor &ink) const
{
    const QRectF box = closeBoxRect();
    if (m_modified && !m_hovered) {
        const qreal radius = box.width() / 4.0;
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawEllipse(box.center(), radius, radius);
        return;
    }
    if (m_overCloseBox) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(withAlpha(ink, m_closePressed ? 0.35f : 0.2f));
        painter.drawRoundedRect(box, 3, 3);
    }
    const qreal inset = box.width() * 0.3;
    painter.setPen(QPen(ink, 1.4, Qt::SolidLine, Qt::RoundCap));
    const QRectF cross = box.adjusted(inset, inset, -inset, -inset);
    painter.drawLine(cross.topLeft(), cross.bottomRight());
    painter.drawLine(cross.topRight(), cross.bottomLeft());
}

void VXTabItemView::setOverCloseBox(bool over)
{
    if (over != m_overCloseBox) {
        m_overCloseBox = over;
        update();
    }
}

void VXTabItemView::enterEvent(QEnterEvent *event)
{
    m_hovered = true;
    setOverCloseBox(closeBoxRect().contains(event->position().toPoint()));
    update();
}

void VXTabItemView::leaveEvent(QEvent *)
{
    m_hovered = false;
    m_closePressed = false;
    setOverCloseBox(false);
    update();
}

void VXTabItemView::mouseMoveEvent(QMouseEvent *event)
{
    setOverCloseBox(closeBoxRect().contains(event->position().toPoint()));
    if (!m_closePressed)
        event->ignore();
}

void VXTabItemView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && closeBoxRect().contains(event->position().toPoint())) {
        m_closePressed = true;
        update();
        return;
    }
    event->ignore();
}

void VXTabItemView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_closePressed) {
        event->ignore();
        return;
    }
    m_closePressed = false;
    update();
    if (event->button() == Qt::LeftButton && closeBoxRect().contains(event->position().toPoint()))
        emit closeClicked(m_index);
}
