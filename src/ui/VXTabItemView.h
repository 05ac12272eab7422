#pragma once

#include <QColor>
#include <QWidget>

// The five colours of the tab bar, from the tab colour settings or the desktop.
struct TabColors {
    QColor activeText;
    QColor background;
    QColor disabledText;
    QColor activeBackground;
    QColor overflowChevron;
};

// One tab of the bar: a close box at its left, the document's title elided in
// the middle, drawn in the active or the background colours. While the
// document has unsaved changes a dot stands in the close box's place, until
// the mouse comes over the tab and the close box is wanted. Presses outside
// the close box are left to the bar, which selects and drags.
class VXTabItemView : public QWidget {
    Q_OBJECT
public:
    explicit VXTabItemView(QWidget *parent = nullptr);

    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }
    QString title() const { return m_title; }
    void setTitle(const QString &title);
    bool isModified() const { return m_modified; }
    void setModified(bool modified);
    bool isActiveTab() const { return m_active; }
    void setActiveTab(bool active);
    void setColors(const TabColors &colors);
    // The bar's fitting places tabs in fractional points; the edges are
    // rounded each on its own so that neighbours meet without a gap.
    void resizeWidth(float width, float x);
    QRect closeBoxRect() const;

signals:
    void closeClicked(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void paintCloseBox(QPainter &painter, const QColor &ink) const;
    void setOverCloseBox(bool over);

    int m_index = -1;
    QString m_title;
    bool m_modified = false;
    bool m_active = false;
    bool m_hovered = false;
    bool m_overCloseBox = false;
    bool m_closePressed = false;
    TabColors m_colors;
};
