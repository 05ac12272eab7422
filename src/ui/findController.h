#pragma once

#include <QWidget>

class FindOutlineModel;
class NotificationCenter;
class PreferencesService;
class QAction;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTreeView;
class UserDefaults;
class VXDocumentController;
class findNode;

// The find window: searches every preference domain of the current user for
// the term in its search field and shows the hits as a tree (domain, then the
// keys down to each hit). Any selected row opens the domain at the top of its
// branch as a document. One window serves the application; it keeps its frame
// in the settings and announces its closing with VXFindPanelDidCloseNotification.
class findController : public QWidget {
    Q_OBJECT
public:
    findController(VXDocumentController &documents, PreferencesService &service, UserDefaults &defaults,
                   NotificationCenter &center, QWidget *parent = nullptr);
    ~findController() override;

    // Shows the window at its remembered frame, in front, with the search
    // field ready for a term.
    void bringFindToFront();
    // Runs one search for the search field's term and shows it.
    void find();
    void openQuickly();
    void openQuicklyInNewWindow();
    void getPrefInfo();

    QLineEdit *searchField() const { return m_searchField; }
    QLabel *searchResultsText() const { return m_searchResultsText; }
    QTreeView *outlineView() const { return m_findOV; }
    FindOutlineModel *model() const { return m_model; }
    QPushButton *findButton() const { return m_findButton; }
    QAction *openAction() const { return m_open; }
    QAction *openInNewWindowAction() const { return m_openInNewWindow; }
    QAction *getInfoAction() const { return m_getInfo; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void createActions();
    void layOut();
    void validateActions();
    void showContextMenu(const QPoint &at);
    void applyAppearance();
    QList<const findNode *> selectedNodes() const;
    QString preferencesFolder() const;
    void restoreFrame();
    void saveFrame();

    VXDocumentController &m_documents;
    PreferencesService &m_service;
    UserDefaults &m_defaults;
    NotificationCenter &m_center;
    FindOutlineModel *m_model;
    QLineEdit *m_searchField;
    QPushButton *m_findButton;
    QLabel *m_searchResultsText;
    QProgressBar *m_spinner;
    QTreeView *m_findOV;
    QAction *m_open = nullptr;
    QAction *m_openInNewWindow = nullptr;
    QAction *m_getInfo = nullptr;
    bool m_frameRestored = false;
};
