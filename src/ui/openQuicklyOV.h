#pragma once

#include <QTreeView>

class NotificationCenter;
class UserDefaults;
class openDomain;

// The browser's outline over the application object's tree and selection.
// Return and a double click open the selection; Delete and Backspace go to
// the application object first (a domain delete), and reach the view only
// when it passes them on. Rows are striped and set in the list colours and
// font of the settings, following their notifications. A `defaults write`
// line dropped anywhere on it applies to its domain.
class openQuicklyOV : public QTreeView {
    Q_OBJECT
public:
    openQuicklyOV(openDomain &application, UserDefaults &defaults, NotificationCenter &center,
                  QWidget *parent = nullptr);

    QModelIndex indexOf(const class openNode *node) const;

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void applyAppearance();

    openDomain &m_application;
    UserDefaults &m_defaults;
};
