#pragma once

#include <QMessageBox>

#include <functional>

// A question or a message shown as a sheet: a message box that blocks only
// its own window, opened without a nested event loop, whose answer arrives
// through a callback. Texts are plain (a file name is never read as markup).
namespace Sheet {

struct Button {
    QString title;
    QMessageBox::ButtonRole role;
};

// done gets the position of the chosen button in buttons; Escape chooses the
// first button of the reject role.
QMessageBox *ask(QWidget *window, QMessageBox::Icon icon, const QString &text, const QString &informative,
                 const QList<Button> &buttons, std::function<void(int button)> done);
// A message with an OK button.
QMessageBox *tell(QWidget *window, QMessageBox::Icon icon, const QString &text, const QString &informative);

} // namespace Sheet
