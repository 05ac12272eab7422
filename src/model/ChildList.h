#pragma once

#include <QtGlobal>

#include <memory>
#include <utility>

class PListNode;

// The children of a group, in order, and beside each child a mark: what the
// search filter may find in that child (PListNode::filterMark). Keeping the
// marks packed next to each other lets the filter pass over most leaves of a
// large tree without fetching them. Both live in one allocation, so a group
// holds one pointer and a leaf holds nothing.
class ChildList {
public:
    using Pointer = std::shared_ptr<PListNode>;

    ChildList() = default;
    ChildList(const ChildList &) = delete;
    ChildList &operator=(const ChildList &) = delete;
    ChildList(ChildList &&other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    ChildList &operator=(ChildList &&other) noexcept;
    ~ChildList() { clear(nullptr); }

    qsizetype size() const { return m_block ? m_block->size : 0; }
    bool isEmpty() const { return size() == 0; }
    const Pointer &at(qsizetype i) const { return items()[i]; }
    const Pointer &first() const { return items()[0]; }
    const Pointer &last() const { return items()[size() - 1]; }
    const Pointer *constData() const { return items(); }
    const Pointer *begin() const { return items(); }
    const Pointer *end() const { return items() + size(); }
    const quint64 *marks() const { return m_block ? marksOf(m_block) : nullptr; }
    // The start of the storage, for asking for it ahead of a walk.
    const void *storage() const { return m_block; }

    void reserve(qsizetype capacity);
    void insert(qsizetype i, Pointer child, quint64 mark);
    void append(Pointer child, quint64 mark) { insert(size(), std::move(child), mark); }
    void removeAt(qsizetype i);
    // Lets go of every child. Children that live on (held by undo records or
    // the pasteboard) lose their parent link when it is owner, the group that
    // holds this list, so no link outlives its parent. Inline for the empty
    // list: every leaf of a tree being released comes here.
    void clear(const PListNode *owner)
    {
        if (m_block)
            release(owner);
    }

    // Gives every place that holds child this mark (a node may sit in a list twice).
    void setMarkOf(const PListNode *child, quint64 mark);
    // Adds bits to the marks of child's places; whether any mark grew.
    bool addToMarkOf(const PListNode *child, quint64 bits);
    // All marks together.
    quint64 unitedMarks() const;
    void setMarkAt(qsizetype i, quint64 mark) { marksOf(m_block)[i] = mark; }

    // Puts the child that was at order[k] into place k, its mark with it, for
    // every place k; order must be a permutation of the places, and is used up.
    void reorder(qsizetype *order);

    // For filling many places at once; the caller sets their marks.
    void resizeWithEmptyPlaces(qsizetype count);
    Pointer *data() { return items(); }
    quint64 *marks() { return m_block ? marksOf(m_block) : nullptr; }

private:
    struct Block {
        qsizetype size;
        qsizetype capacity;
        // Followed by capacity marks, then capacity pointers: the marks
        // come first, where a walk that asks for the block finds them.
    };

    static quint64 *marksOf(Block *block) { return reinterpret_cast<quint64 *>(block + 1); }
    static Pointer *itemsOf(Block *block) { return reinterpret_cast<Pointer *>(marksOf(block) + block->capacity); }
    const Pointer *items() const { return m_block ? itemsOf(m_block) : nullptr; }
    Pointer *items() { return m_block ? itemsOf(m_block) : nullptr; }
    void grow(qsizetype capacity);
    void release(const PListNode *owner);

    Block *m_block = nullptr;
};
