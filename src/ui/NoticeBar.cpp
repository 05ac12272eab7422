#include "NoticeBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

NoticeBar::NoticeBar(QWidget *parent)
    : QFrame(parent)
    , m_text(new QLabel(this))
    , m_details(new QLabel(this))
    , m_detailsToggle(new QToolButton(this))
    , m_buttons(new QHBoxLayout)
{
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    // What a file says is shown as it is, never read as markup.
    m_text->setTextFormat(Qt::PlainText);
    m_details->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_details->setWordWrap(true);
    m_details->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_details->hide();
    m_detailsToggle->setText(tr("Details"));
    m_detailsToggle->setCheckable(true);
    m_detailsToggle->hide();
    connect(m_detailsToggle, &QToolButton::toggled, m_details, &QLabel::setVisible);

    auto *row = new QHBoxLayout;
    row->addWidget(m_text, 1);
    row->addWidget(m_detailsToggle);
    row->addLayout(m_buttons);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(8, 4, 8, 4);
    column->addLayout(row);
    column->addWidget(m_details);
    hide();
}

void NoticeBar::showNotice(const QString &text, const QString &details)
{
    m_text->setText(text);
    m_details->setText(details);
    m_detailsToggle->setChecked(false);
    m_detailsToggle->setVisible(!details.isEmpty());
    show();
}

void NoticeBar::addButton(const QString &title, std::function<void()> action)
{
    auto *button = new QPushButton(title, this);
    m_buttons->addWidget(button);
    connect(button, &QPushButton::clicked, this, [this, action = std::move(action)] {
        hide();
        action();
    });
}

QString NoticeBar::text() const { return m_text->text(); }

QString NoticeBar::details() const { return m_details->text(); }
