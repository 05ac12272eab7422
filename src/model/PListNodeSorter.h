#pragma once

#include <QStringView>

#include <vector>

class PListNode;

// Puts a dictionary's children in the order of their names: caseless, digit
// runs by value ("Item 9" before "Item 10"), names that tie keeping the order
// they came in. The order never depends on the process locale, and a whole
// tree sorts without allocating per node: each thread keeps one sorter whose
// buffers serve one group after another.
class PListNodeSorter {
public:
    // Below, equal, above: -1, 0, 1. "abc" ties "ABC", "007" ties "7".
    static int compareNames(QStringView a, QStringView b);
    // Sorts group's children unless it is an array, whose order is its data;
    // answers whether any child moved. Each mark moves with its child.
    static bool sort(PListNode &group);

    PListNodeSorter(const PListNodeSorter &) = delete;
    PListNodeSorter &operator=(const PListNodeSorter &) = delete;

private:
    // One child while its parent sorts: the leading part of its name packed
    // into two words and where the child was. The entries sit side by side in
    // one small buffer, so most comparisons touch neither the nodes nor their
    // names.
    struct Entry {
        quint64 prefix[2];
        qsizetype position;
    };

    PListNodeSorter() = default;
    static PListNodeSorter &forThisThread();
    bool sortChildren(PListNode &group);
    void gatherNames(const PListNode &group);
    bool namesInOrder() const;
    void orderEntries();
    void releaseAfterHugeGroup();

    std::vector<QStringView> m_names;
    // Names an array element took from its value, made once per sort.
    std::vector<QString> m_madeNames;
    std::vector<Entry> m_entries;
    std::vector<qsizetype> m_order;
};
