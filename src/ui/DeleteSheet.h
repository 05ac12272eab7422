#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class DeleteSheet;
}

// The confirmation a delete asks for: the document's question, Delete and
// Cancel, and "Do not ask again", which turns the warning setting off at once
// (announced, so every document reads it again).
class DeleteSheet : public QDialog {
    Q_OBJECT
public:
    explicit DeleteSheet(const QString &question, QWidget *parent = nullptr);
    ~DeleteSheet() override;

    QString question() const;

signals:
    // The user asked not to be asked again (or, unchecking, to be asked).
    void askAgainChanged(bool ask);

private:
    std::unique_ptr<Ui::DeleteSheet> m_ui;
};
