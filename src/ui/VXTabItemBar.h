#pragma once

#include "TabBarFitting.h"
#include "VXTabItemView.h"

#include <QFont>
#include <QList>
#include <QPointer>
#include <QWidget>

class NotificationCenter;
class QMenu;
class UserDefaults;

// The tab strip of a document window that holds several documents. Every tab
// has the same width, fitted to the bar whenever it is resized or a tab comes
// or goes. The tabs shown are consecutive documents in list order around the
// selected one; those before and after them are kept, in order, in a menu
// behind the chevron at the right end. Indexes are positions in the window's document list. The bar
// decides nothing for the window: a click asks for a tab (tabSelected), the
// close box or a middle click asks to close one (tabCloseRequested), and the
// window answers with setSelectedDocument or removeTabView. A drag reorders
// live, one neighbour at a time, and tells each step (tabMoved).
class VXTabItemBar : public QWidget {
    Q_OBJECT
public:
    VXTabItemBar(UserDefaults &defaults, NotificationCenter &center, QWidget *parent = nullptr);

    void createNewTabWithTitle(const QString &title, int index); // a document appended to the list
    void removeTabView(int index); // its document left the list; later indexes move down one
    void updateTabName(int index, const QString &title);
    void setTabToolTip(int index, const QString &toolTip);
    void setTabModified(int index, bool modified);
    void setSelectedDocument(int index); // the active tab; a hidden one comes out of the menu
    int selectedDocument() const;
    // As the user's drag does, for the keyboard; the window that calls it has
    // moved its own list, so no tabMoved follows.
    void moveTab(int from, int to);
    int count() const;                 // visible and hidden
    int numberOfTabs() const;          // visible
    QList<int> visibleIndexes() const; // left to right
    QList<int> hiddenIndexes() const;  // the overflow menu's order
    float currentTabWidth() const;
    QMenu *popUpMenu() const; // nullptr when nothing is hidden
    // The visible tab of a document, nullptr when it is hidden.
    VXTabItemView *tabView(int index) const;
    QRect chevronRect() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void tabSelected(int index);       // a click, or a choice from the overflow menu
    void tabCloseRequested(int index); // the close box or a middle click
    void tabMoved(int from, int to);   // after a drag; the bar has renumbered already

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    struct Document {
        QString toolTip;
        bool modified = false;
    };
    // Colours and font from the settings, and the height that follows the font.
    void applyAppearance();
    // The tab views and the menu after a change of the fitting, the tabs
    // first put back in document order around the selected one.
    void sync();
    void syncMenu();
    int slotAt(const QPoint &position) const;
    void dragTo(int x);

    UserDefaults &m_defaults;
    TabBarFitting m_fitting;
    QList<Document> m_documents;
    QList<VXTabItemView *> m_views; // one per visible tab, left to right
    QPointer<QMenu> m_menu;
    TabColors m_colors;
    QFont m_font;
    int m_tabHeight = 0;
    // A press on a tab that may become a drag.
    int m_dragSlot = -1;
    int m_pressX = 0;
    int m_grabOffset = 0;
    bool m_dragging = false;
};
