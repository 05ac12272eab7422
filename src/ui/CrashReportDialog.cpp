#include "CrashReportDialog.h"

#include "ui_CrashReportDialog.h"

#include <QFontDatabase>
#include <QPushButton>

CrashReportDialog::CrashReportDialog(const QString &report, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::CrashReportDialog>())
{
    m_ui->setupUi(this);
    m_ui->crashReport->setPlainText(report);
    m_ui->crashReport->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    QPushButton *send = m_ui->buttons->addButton(tr("&Send…"), QDialogButtonBox::AcceptRole);
    send->setObjectName(QStringLiteral("sendButton"));
    send->setDefault(true);
    connect(m_ui->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    // The note is where the user starts typing.
    m_ui->crashInput->setFocus();
}

CrashReportDialog::~CrashReportDialog() = default;

QString CrashReportDialog::crashReportString() const { return m_ui->crashReport->toPlainText(); }

void CrashReportDialog::done(int result)
{
    QDialog::done(result);
    if (result == Accepted)
        emit sendRequested(m_ui->crashInput->toPlainText());
    else
        emit cancelled();
}
