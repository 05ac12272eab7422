#pragma once

#include <QList>
#include <QString>

#include <functional>

// How the tabs of a shared document window share the bar: one common width,
// shrunk and grown in steps of 0.1 point between 85 and 160, and the tabs that
// do not fit even at 85 kept in an overflow menu. Indexes are positions in the
// window's document list; a visible tab and a menu item (its tag) name their
// document the same way. All arithmetic is in float, as the width steps
// accumulate: a different precision would fit a different width.
//
// Two habits of the original arithmetic are kept on purpose because users see
// them: a tab is counted as its width plus one point but laid out at its
// width, and a hidden tab comes back after a removal with one point less room
// than after a resize.
class TabBarFitting {
public:
    struct Tab {
        int index = 0;
        QString title;
        float x = 0.0f;
        float width = 0.0f;
        bool operator==(const Tab &) const = default;
    };
    struct OverflowItem {
        QString title;
        int tag = 0;
        bool operator==(const OverflowItem &) const = default;
    };
    // Everything the fitting decides from; public so that a window can be
    // rebuilt, and a test can start, from a known arrangement.
    struct State {
        float barWidth = 0.0f;
        QList<Tab> tabItemViews;       // visible, left to right
        QList<OverflowItem> popUpMenu; // hidden, in the menu's order
        bool hasPopUp = false;
        bool didZoom = false;
        float minTabWidth = 85.0f;
        float maxTabWidth = 160.0f;
        float currentTabWidth = 160.0f;
        int selectedDocument = -1;
    };
    // The strip at the right end kept free for the overflow chevron.
    static constexpr float kChevronRoom = 16.0f;

    TabBarFitting() = default;
    explicit TabBarFitting(State state) : m_state(std::move(state)) {}

    const State &state() const { return m_state; }
    const QList<Tab> &tabItemViews() const { return m_state.tabItemViews; }
    const QList<OverflowItem> &popUpMenu() const { return m_state.popUpMenu; }
    bool hasPopUp() const { return m_state.hasPopUp; }
    float currentTabWidth() const { return m_state.currentTabWidth; }
    int numberOfTabs() const { return static_cast<int>(m_state.tabItemViews.size()); }
    int count() const { return numberOfTabs() + static_cast<int>(m_state.popUpMenu.size()); }
    int selectedDocument() const { return m_state.selectedDocument; }
    QList<int> visibleIndexes() const;
    QList<int> hiddenIndexes() const;
    // The title of a document's tab or menu item; empty for an unknown index.
    QString titleOf(int index) const;

    // Fits the common width to the bar, counting one tab more than is shown
    // when countOneMore. True when the width changed.
    bool tabViewsShouldResize(bool countOneMore);
    // Places the visible tabs side by side at the common width.
    void relayout();
    // The bar is barWidth wide now. A live drag moves at most one tab into or
    // out of the menu per call; any other resize fits fully first.
    void windowDidResize(float barWidth, bool inLiveResize);
    // A maximise, or a resize that is not a drag, arrives as one step: the
    // width is fitted to every tab, then as many tabs go into or come out of
    // the menu as needed, and the visible tabs close up.
    void windowDidZoom();
    // The document at index left the list: its tab or item goes, later
    // indexes move down one, and a hidden tab may come back into the room.
    void removeTabView(int index);
    // A document was put into the list at index (usually its end).
    void createNewTabWithTitle(const QString &title, int index);
    // The document list did QList::move(from, to); a tab dragged onto the
    // place of another visible tab takes that place in the bar.
    void moveTab(int from, int to);
    // The window shows this document; a hidden one swaps places with the
    // last visible tab, so the shown document always has a visible tab.
    void setSelectedDocument(int index);
    void updateTabName(int index, const QString &title);
    // The operations above work on the ends of the strip and the menu and so
    // leave tabs out of document order; a window applies this after each of
    // them. The visible tabs become a run of consecutive indexes, as many as
    // are shown now, that holds selected (-1: none) and is slid from where the
    // strip starts as little as that needs; the menu holds the rest by index.
    void arrangeAround(int selected);

private:
    float room() const { return m_state.barWidth - kChevronRoom; }
    float rightEdge() const;
    int visiblePosition(int index) const;
    int menuPosition(int index) const;
    // The last visible tab goes to the top of the menu (the tab before it
    // when the last is the one shown); never the only visible tab.
    bool hideLastTab();
    // The first menu item comes back at the right end, one point beyond the last tab.
    void showFirstHiddenTab();
    void menuChanged();
    void renumber(const std::function<int(int)> &map);

    State m_state;
};
