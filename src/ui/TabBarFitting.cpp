#include "TabBarFitting.h"

#include <algorithm>

namespace {

// Where an index lands when the document list does QList::move(from, to).
int movedIndex(int index, int from, int to)
{
    if (index == from)
        return to;
    if (from < to && index > from && index <= to)
        return index - 1;
    if (to < from && index >= to && index < from)
        return index + 1;
    return index;
}

} // namespace

QList<int> TabBarFitting::visibleIndexes() const
{
    QList<int> indexes;
    for (const Tab &tab : m_state.tabItemViews)
        indexes << tab.index;
    return indexes;
}

QList<int> TabBarFitting::hiddenIndexes() const
{
    QList<int> tags;
    for (const OverflowItem &item : m_state.popUpMenu)
        tags << item.tag;
    return tags;
}

QString TabBarFitting::titleOf(int index) const
{
    if (const int position = visiblePosition(index); position >= 0)
        return m_state.tabItemViews.at(position).title;
    if (const int position = menuPosition(index); position >= 0)
        return m_state.popUpMenu.at(position).title;
    return {};
}

bool TabBarFitting::tabViewsShouldResize(bool countOneMore)
{
    const float available = room();
    int tabs = numberOfTabs() + (countOneMore ? 1 : 0);
    float width = m_state.currentTabWidth;
    const auto total = [&width, &tabs] { return (width + 1.0f) * static_cast<float>(tabs); };
    float needed = total();
    // While zooming the width is fitted to every document, hidden ones too.
    if (m_state.didZoom && m_state.hasPopUp) {
        tabs += static_cast<int>(m_state.popUpMenu.size()) - 1;
        needed = total();
    }
    if (needed > available) {
        if (m_state.hasPopUp && !m_state.didZoom) {
            --tabs;
            needed = total();
        }
        while (needed > available && width >= m_state.minTabWidth) {
            width -= 0.1f;
            needed = total();
        }
        width = std::max(width, m_state.minTabWidth);
    } else if (available > needed) {
        while (m_state.maxTabWidth >= width) {
            width += 0.1f;
            needed = total();
            if (needed >= available)
                break;
        }
        width = std::min(width - 0.1f, m_state.maxTabWidth);
        if (available < total())
            return false;
    } else {
        return false;
    }
    if (width == m_state.currentTabWidth)
        return false;
    m_state.currentTabWidth = width;
    return true;
}

void TabBarFitting::relayout()
{
    float x = 1.0f;
    for (Tab &tab : m_state.tabItemViews) {
        tab.width = m_state.currentTabWidth;
        tab.x = x;
        x += m_state.currentTabWidth;
    }
}

void TabBarFitting::windowDidResize(float barWidth, bool inLiveResize)
{
    m_state.barWidth = barWidth;
    if (!inLiveResize)
        windowDidZoom();
    m_state.didZoom = true;
    if (tabViewsShouldResize(m_state.hasPopUp))
        relayout();
    m_state.didZoom = false;
    const float right = rightEdge();
    if (right > room())
        hideLastTab();
    else if (room() > right + 1.0f + m_state.currentTabWidth && m_state.hasPopUp &&
             !m_state.popUpMenu.isEmpty())
        showFirstHiddenTab();
}

void TabBarFitting::windowDidZoom()
{
    m_state.didZoom = true;
    tabViewsShouldResize(m_state.hasPopUp);
    m_state.didZoom = false;
    relayout();
    while (rightEdge() > room() && hideLastTab()) {
    }
    while (m_state.hasPopUp && room() > rightEdge() + 1.0f + m_state.currentTabWidth) {
        showFirstHiddenTab();
        relayout();
    }
}

void TabBarFitting::removeTabView(int index)
{
    const float available = room();
    if (const int position = visiblePosition(index); position >= 0)
        m_state.tabItemViews.removeAt(position);
    else if (const int item = menuPosition(index); item >= 0)
        m_state.popUpMenu.removeAt(item);
    else
        return;
    menuChanged();
    renumber([index](int i) { return i == index ? -1 : i > index ? i - 1 : i; });
    tabViewsShouldResize(m_state.hasPopUp);
    // The removed tab's place closes up even when the width stays.
    relayout();
    if (m_state.hasPopUp && available > rightEdge() + m_state.currentTabWidth)
        showFirstHiddenTab();
}

void TabBarFitting::createNewTabWithTitle(const QString &title, int index)
{
    renumber([index](int i) { return i >= index ? i + 1 : i; });
    // Once tabs are hidden, the bar is full: a new one joins the menu's end,
    // where the newest documents are, until the window shows it.
    if (m_state.hasPopUp) {
        m_state.popUpMenu.append({title, index});
        return;
    }
    tabViewsShouldResize(true);
    m_state.tabItemViews.append({index, title, 0.0f, m_state.currentTabWidth});
    relayout();
    if (rightEdge() > room())
        hideLastTab();
}

void TabBarFitting::moveTab(int from, int to)
{
    if (from == to || from < 0 || to < 0 || from >= count() || to >= count())
        return;
    const int fromPosition = visiblePosition(from);
    const int toPosition = visiblePosition(to);
    if (fromPosition >= 0 && toPosition >= 0) {
        m_state.tabItemViews.move(fromPosition, toPosition);
        relayout();
    }
    renumber([from, to](int i) { return movedIndex(i, from, to); });
}

void TabBarFitting::setSelectedDocument(int index)
{
    m_state.selectedDocument = index;
    const int item = menuPosition(index);
    if (item < 0)
        return;
    if (m_state.tabItemViews.isEmpty()) {
        m_state.popUpMenu.move(item, 0);
        showFirstHiddenTab();
        return;
    }
    Tab &last = m_state.tabItemViews.last();
    OverflowItem &chosen = m_state.popUpMenu[item];
    std::swap(last.index, chosen.tag);
    std::swap(last.title, chosen.title);
}

void TabBarFitting::updateTabName(int index, const QString &title)
{
    if (const int position = visiblePosition(index); position >= 0)
        m_state.tabItemViews[position].title = title;
    else if (const int item = menuPosition(index); item >= 0)
        m_state.popUpMenu[item].title = title;
}

void TabBarFitting::arrangeAround(int selected)
{
    const int shown = numberOfTabs();
    const int total = count();
    if (shown == 0)
        return;
    // The first tab marks where the run starts: the operations add, hide and
    // swap tabs at the right end only.
    int first = m_state.tabItemViews.first().index;
    if (selected >= 0 && selected < total)
        first = std::clamp(first, selected - shown + 1, selected);
    first = std::clamp(first, 0, total - shown);
    QList<QString> titles(total);
    bool inOrder = true;
    for (int i = 0; i < shown; ++i) {
        const Tab &tab = m_state.tabItemViews.at(i);
        titles[tab.index] = tab.title;
        inOrder = inOrder && tab.index == first + i;
    }
    for (const OverflowItem &item : m_state.popUpMenu)
        titles[item.tag] = item.title;
    if (inOrder && std::is_sorted(m_state.popUpMenu.cbegin(), m_state.popUpMenu.cend(),
                                  [](const OverflowItem &a, const OverflowItem &b) { return a.tag < b.tag; }))
        return;
    m_state.tabItemViews.clear();
    m_state.popUpMenu.clear();
    for (int index = 0; index < total; ++index) {
        if (index >= first && index < first + shown)
            m_state.tabItemViews.append({index, titles.at(index), 0.0f, m_state.currentTabWidth});
        else
            m_state.popUpMenu.append({titles.at(index), index});
    }
    relayout();
}

float TabBarFitting::rightEdge() const
{
    if (m_state.tabItemViews.isEmpty())
        return 0.0f;
    const Tab &last = m_state.tabItemViews.last();
    return last.x + last.width;
}

int TabBarFitting::visiblePosition(int index) const
{
    for (int i = 0; i < numberOfTabs(); ++i)
        if (m_state.tabItemViews.at(i).index == index)
            return i;
    return -1;
}

int TabBarFitting::menuPosition(int index) const
{
    for (int i = 0; i < m_state.popUpMenu.size(); ++i)
        if (m_state.popUpMenu.at(i).tag == index)
            return i;
    return -1;
}

bool TabBarFitting::hideLastTab()
{
    if (numberOfTabs() < 2)
        return false;
    qsizetype victim = m_state.tabItemViews.size() - 1;
    if (m_state.tabItemViews.at(victim).index == m_state.selectedDocument) {
        --victim;
        m_state.tabItemViews.last().x = m_state.tabItemViews.at(victim).x;
    }
    const Tab gone = m_state.tabItemViews.takeAt(victim);
    m_state.popUpMenu.prepend({gone.title, gone.index});
    menuChanged();
    return true;
}

void TabBarFitting::showFirstHiddenTab()
{
    const OverflowItem item = m_state.popUpMenu.takeFirst();
    m_state.tabItemViews.append({item.tag, item.title, rightEdge() + 1.0f, m_state.currentTabWidth});
    menuChanged();
}

void TabBarFitting::menuChanged()
{
    m_state.hasPopUp = !m_state.popUpMenu.isEmpty();
}

void TabBarFitting::renumber(const std::function<int(int)> &map)
{
    for (Tab &tab : m_state.tabItemViews)
        tab.index = map(tab.index);
    for (OverflowItem &item : m_state.popUpMenu)
        item.tag = map(item.tag);
    if (m_state.selectedDocument >= 0)
        m_state.selectedDocument = map(m_state.selectedDocument);
}
