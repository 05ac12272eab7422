#include "DeleteSheet.h"

#include "ui_DeleteSheet.h"

#include <QPushButton>

DeleteSheet::DeleteSheet(const QString &question, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::DeleteSheet>())
{
    m_ui->setupUi(this);
    m_ui->deleteString->setText(question);
    QPushButton *confirm = m_ui->buttons->addButton(tr("Delete"), QDialogButtonBox::AcceptRole);
    confirm->setDefault(true);
    connect(m_ui->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_ui->doNotAskAgain, &QCheckBox::toggled, this,
            [this](bool checked) { emit askAgainChanged(!checked); });
}

DeleteSheet::~DeleteSheet() = default;

QString DeleteSheet::question() const { return m_ui->deleteString->text(); }
