#pragma once

#include <QMainWindow>

class QTreeView;

// A window that shows one property-list file, read-only, as a tree with the
// columns Key, Class and Value. The seed of the document window.
class PropertyListWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit PropertyListWindow(QWidget *parent = nullptr);

    // Reads the file into the window. On failure answers false and fills
    // errorText with the reason (what is wrong and where); the window is unchanged.
    bool openFile(const QString &path, QString *errorText);
    QTreeView *treeView() const { return m_view; }

    // Opens each path in a window of its own; a file that cannot be read gets a
    // dialog naming it and the reason. Answers the windows that opened.
    static QList<PropertyListWindow *> openFiles(const QStringList &paths);
    static void showOpenError(QWidget *parent, const QString &path, const QString &reason);

private:
    void createActions();
    void chooseAndOpen();

    QTreeView *m_view;
};
