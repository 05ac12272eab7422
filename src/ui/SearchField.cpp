#include "SearchField.h"

#include <QAction>
#include <QKeyEvent>
#include <QStyle>

SearchField::SearchField(QWidget *parent)
    : QLineEdit(parent)
    , m_clear(new QAction(style()->standardIcon(QStyle::SP_LineEditClearButton), tr("Clear"), this))
{
    setPlaceholderText(tr("Search"));
    setClearButtonEnabled(false); // our own button, which cancels rather than edits
    addAction(m_clear, QLineEdit::TrailingPosition);
    m_clear->setVisible(false);
    m_pause.setSingleShot(true);
    m_pause.setInterval(kTypingPauseMs);
    connect(&m_pause, &QTimer::timeout, this, &SearchField::search);
    connect(m_clear, &QAction::triggered, this, &SearchField::cancel);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_clear->setVisible(!text.isEmpty()); });
    connect(this, &QLineEdit::textEdited, this, &SearchField::textEdited);
}

void SearchField::textEdited(const QString &)
{
    if (waitsForPause())
        m_pause.start();
    else
        search();
}

void SearchField::search()
{
    m_pause.stop();
    QElapsedTimer took;
    took.start();
    emit searchRequested(text());
    m_lastSearchMs = took.elapsed();
}

void SearchField::cancel()
{
    m_pause.stop();
    clear();
    QElapsedTimer took;
    took.start();
    emit searchCanceled();
    m_lastSearchMs = took.elapsed();
}

void SearchField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cancel();
        return;
    }
    QLineEdit::keyPressEvent(event);
}
