#pragma once

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>

class QAction;

// The toolbar's filter field. It asks for a search as the user types: at
// once while searches are quick, after a pause in typing once the last one
// was slow, so that typing into a huge document stays fluid. Its clear button
// and Escape cancel the search.
class SearchField : public QLineEdit {
    Q_OBJECT
public:
    // A search slower than this makes the field wait for a pause in typing.
    static constexpr qint64 kSlowSearchMs = 40;
    static constexpr int kTypingPauseMs = 250;

    explicit SearchField(QWidget *parent = nullptr);

    // Whether the next keystroke waits for a pause (the last search was slow).
    bool waitsForPause() const { return m_lastSearchMs > kSlowSearchMs; }

signals:
    // Connected directly: the time the receivers take is what is measured.
    void searchRequested(const QString &text);
    void searchCanceled();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void textEdited(const QString &text);
    void search();
    void cancel();

    QTimer m_pause;
    QAction *m_clear;
    qint64 m_lastSearchMs = 0;
};
