#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class DuplicateKeySheet;
}

// The question a pasted or dropped key asks when the target already holds it
// with another value: the key, the value there now and the arriving one as
// XML, Replace and Cancel, and "Do not ask again", which turns the warning
// off for this and every later conflict.
class DuplicateKeySheet : public QDialog {
    Q_OBJECT
public:
    DuplicateKeySheet(const QString &key, const QString &oldValue, const QString &newValue,
                      QWidget *parent = nullptr);
    ~DuplicateKeySheet() override;

    QString key() const;
    // Whether the user asked not to be asked again.
    bool stopsWarning() const;

private:
    std::unique_ptr<Ui::DuplicateKeySheet> m_ui;
};
