#pragma once

#include <QFrame>

#include <functional>

class QHBoxLayout;
class QLabel;
class QToolButton;

// A strip above the outline that tells the user something without stopping
// them: a text, an optional "Details" toggle that shows more lines, and
// buttons that act and close the notice. Hidden until shown with a text.
class NoticeBar : public QFrame {
    Q_OBJECT
public:
    explicit NoticeBar(QWidget *parent = nullptr);

    // Replaces what the bar says and shows it; details empty hides the toggle.
    void showNotice(const QString &text, const QString &details = {});
    // A button that runs action and closes the notice.
    void addButton(const QString &title, std::function<void()> action);
    QString text() const;
    QString details() const;

private:
    QLabel *m_text;
    QLabel *m_details;
    QToolButton *m_detailsToggle;
    QHBoxLayout *m_buttons;
};
