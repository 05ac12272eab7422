#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class CrashReportDialog;
}

// Offers to send the newest crash report: the report as it will be sent
// (read-only), a field for the user's note, Send and Cancel. It only asks;
// preparing the mail is the caller's, on sendRequested. Escape and the
// window's close button count as Cancel.
class CrashReportDialog : public QDialog {
    Q_OBJECT
public:
    explicit CrashReportDialog(const QString &report, QWidget *parent = nullptr);
    ~CrashReportDialog() override;

    QString crashReportString() const;

signals:
    void sendRequested(const QString &note);
    void cancelled();

public slots:
    void done(int result) override;

private:
    std::unique_ptr<Ui::CrashReportDialog> m_ui;
};
