#include "DuplicateKeySheet.h"

#include "ui_DuplicateKeySheet.h"

#include <QFontDatabase>
#include <QPushButton>

DuplicateKeySheet::DuplicateKeySheet(const QString &key, const QString &oldValue, const QString &newValue,
                                     QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::DuplicateKeySheet>())
{
    m_ui->setupUi(this);
    m_ui->duplicateNodesString->setText(
        tr("“%1” is already there. Replace its value with the arriving one?").arg(key));
    const QFont xml = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (QPlainTextEdit *value : {m_ui->duplicateOldValue, m_ui->duplicateNewValue})
        value->setFont(xml);
    // The XML between the plist tags starts and ends with a line break.
    m_ui->duplicateOldValue->setPlainText(oldValue.trimmed());
    m_ui->duplicateNewValue->setPlainText(newValue.trimmed());
    setProperty("duplicateKey", key);
    QPushButton *replace = m_ui->buttons->addButton(tr("Replace"), QDialogButtonBox::AcceptRole);
    replace->setDefault(true);
    replace->setFocus();
    connect(m_ui->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

DuplicateKeySheet::~DuplicateKeySheet() = default;

QString DuplicateKeySheet::key() const { return property("duplicateKey").toString(); }

bool DuplicateKeySheet::stopsWarning() const { return m_ui->doNotAskAgain->isChecked(); }
