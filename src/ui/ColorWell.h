#pragma once

#include <QColor>
#include <QPointer>
#include <QPushButton>

class QColorDialog;

// A button that shows a colour and, pressed, offers the colour dialog to
// change it. The dialog stays open (not modal) beside the window, so the user
// can try colours and watch the lists follow; each colour picked there is
// announced by colorChosen. setColor changes the shown colour only.
class ColorWell : public QPushButton {
    Q_OBJECT
public:
    explicit ColorWell(QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    void setColor(const QColor &color);
    // The dialog the well has open, if any.
    QColorDialog *colorDialog() const;

signals:
    void colorChosen(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void openDialog();

    QColor m_color;
    QPointer<QColorDialog> m_dialog;
};
