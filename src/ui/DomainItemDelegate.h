#pragma once

#include <QStyledItemDelegate>

class UserDefaults;

// Draws the browser's rows in their presentation: a domain whose file cannot
// be written in the disabled colour, the others in the text colour (the
// user's colours when custom colours are on, the desktop's otherwise); a
// selected row as the keyboard's only while the outline has it, else in
// standard text on the pale highlight. The settings are read at each paint,
// so a change shows with the next repaint the model asks for.
class DomainItemDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    DomainItemDelegate(const UserDefaults &defaults, QObject *parent = nullptr);

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    QColor textColour(bool disabled, const QPalette &palette) const;

    const UserDefaults &m_defaults;
};
