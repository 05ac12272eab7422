#include "Sheet.h"

#include <QPushButton>
#include <QTextDocument>

namespace Sheet {

QMessageBox *ask(QWidget *window, QMessageBox::Icon icon, const QString &text, const QString &informative,
                 const QList<Button> &buttons, std::function<void(int button)> done)
{
    auto *box = new QMessageBox(icon, QString(), text, QMessageBox::NoButton, window);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(informative.isEmpty() ? QString() : Qt::convertFromPlainText(informative));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
    QList<QAbstractButton *> made;
    for (const Button &button : buttons) {
        QPushButton *pushButton = box->addButton(button.title, button.role);
        if (!box->defaultButton() && button.role == QMessageBox::AcceptRole)
            box->setDefaultButton(pushButton);
        if (!box->escapeButton() && button.role == QMessageBox::RejectRole)
            box->setEscapeButton(pushButton);
        made.append(pushButton);
    }
    QObject::connect(box, &QMessageBox::finished, box, [box, made, done = std::move(done)] {
        if (done)
            done(int(made.indexOf(box->clickedButton())));
    });
    box->open();
    return box;
}

QMessageBox *tell(QWidget *window, QMessageBox::Icon icon, const QString &text, const QString &informative)
{
    return ask(window, icon, text, informative, {{QMessageBox::tr("OK"), QMessageBox::AcceptRole}}, {});
}

} // namespace Sheet
