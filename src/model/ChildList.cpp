#include "ChildList.h"

#include "PListNode.h"
#include "ParallelSplit.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

ChildList &ChildList::operator=(ChildList &&other) noexcept
{
    if (this != &other) {
        clear(nullptr);
        m_block = std::exchange(other.m_block, nullptr);
    }
    return *this;
}

void ChildList::reserve(qsizetype capacity)
{
    if (capacity > (m_block ? m_block->capacity : 0))
        grow(capacity);
}

void ChildList::grow(qsizetype capacity)
{
    const qsizetype count = size();
    const size_t bytes = sizeof(Block) + static_cast<size_t>(capacity) * (sizeof(Pointer) + sizeof(quint64));
    auto *block = static_cast<Block *>(::operator new(bytes));
    block->size = count;
    block->capacity = capacity;
    if (m_block) {
        std::uninitialized_move(itemsOf(m_block), itemsOf(m_block) + count, itemsOf(block));
        std::memcpy(marksOf(block), marksOf(m_block), static_cast<size_t>(count) * sizeof(quint64));
        std::destroy(itemsOf(m_block), itemsOf(m_block) + count);
        ::operator delete(m_block);
    }
    m_block = block;
}

void ChildList::insert(qsizetype i, Pointer child, quint64 mark)
{
    const qsizetype count = size();
    Q_ASSERT(i >= 0 && i <= count);
    if (!m_block || count == m_block->capacity)
        grow(std::max<qsizetype>(4, count * 2));
    Pointer *items = itemsOf(m_block);
    quint64 *marks = marksOf(m_block);
    if (i == count) {
        new (items + count) Pointer(std::move(child));
    } else {
        new (items + count) Pointer(std::move(items[count - 1]));
        std::move_backward(items + i, items + count - 1, items + count);
        items[i] = std::move(child);
        std::memmove(marks + i + 1, marks + i, static_cast<size_t>(count - i) * sizeof(quint64));
    }
    marks[i] = mark;
    ++m_block->size;
}

void ChildList::removeAt(qsizetype i)
{
    const qsizetype count = size();
    Q_ASSERT(i >= 0 && i < count);
    Pointer *items = itemsOf(m_block);
    quint64 *marks = marksOf(m_block);
    std::move(items + i + 1, items + count, items + i);
    std::destroy_at(items + count - 1);
    std::memmove(marks + i, marks + i + 1, static_cast<size_t>(count - i - 1) * sizeof(quint64));
    --m_block->size;
}

void ChildList::release(const PListNode *owner)
{
    // Detached first: releasing a child may reach back into this list.
    Block *block = std::exchange(m_block, nullptr);
    Pointer *items = itemsOf(block);
    // Closing a large document releases millions of nodes; its subtrees
    // share nothing but reference-counted texts, so they are released in
    // two halves side by side. Only a child held elsewhere too (by undo,
    // the pasteboard, or another place) lives on with a link to clear; the
    // rest go with theirs, and are not written to first. A node held in
    // both halves has its link read from both sides, hence the atomic
    // access, which costs a plain load and store.
    const auto release = [items, owner](qsizetype first, qsizetype last) {
        for (qsizetype i = first; i < last; ++i) {
            if (owner && items[i].use_count() > 1) {
                std::atomic_ref<PListNode *> link(items[i]->m_parent);
                if (link.load(std::memory_order_relaxed) == owner)
                    link.store(nullptr, std::memory_order_relaxed);
            }
            std::destroy_at(items + i);
        }
    };
    const auto weightOf = [items](qsizetype i) { return 1 + (items[i] ? items[i]->children().size() : 0); };
    ParallelSplit::run(block->size, weightOf, release);
    ::operator delete(block);
}

void ChildList::setMarkOf(const PListNode *child, quint64 mark)
{
    if (!m_block)
        return;
    const qsizetype count = size();
    const Pointer *items = itemsOf(m_block);
    for (qsizetype i = 0; i < count; ++i) {
        if (items[i].get() == child)
            marksOf(m_block)[i] = mark;
    }
}

bool ChildList::addToMarkOf(const PListNode *child, quint64 bits)
{
    if (!m_block)
        return false;
    bool grew = false;
    const Pointer *items = itemsOf(m_block);
    quint64 *marks = marksOf(m_block);
    for (qsizetype i = 0; i < m_block->size; ++i) {
        if (items[i].get() == child && (marks[i] | bits) != marks[i]) {
            marks[i] |= bits;
            grew = true;
        }
    }
    return grew;
}

quint64 ChildList::unitedMarks() const
{
    quint64 united = 0;
    for (qsizetype i = 0; i < size(); ++i)
        united |= marksOf(m_block)[i];
    return united;
}

void ChildList::reorder(qsizetype *order)
{
    // Cycle by cycle, in place: each place is filled from the one its child
    // comes from, which is then free for its own. A finished place is marked
    // by order[k] == k.
    Pointer *items = this->items();
    quint64 *marks = this->marks();
    for (qsizetype start = 0; start < size(); ++start) {
        if (order[start] == start)
            continue;
        Pointer held = std::move(items[start]);
        const quint64 heldMark = marks[start];
        qsizetype k = start;
        while (order[k] != start) {
            const qsizetype from = order[k];
            items[k] = std::move(items[from]);
            marks[k] = marks[from];
            order[k] = k;
            k = from;
        }
        items[k] = std::move(held);
        marks[k] = heldMark;
        order[k] = k;
    }
}

void ChildList::resizeWithEmptyPlaces(qsizetype count)
{
    Q_ASSERT(count >= size());
    reserve(count);
    if (!m_block)
        return;
    std::uninitialized_value_construct(itemsOf(m_block) + m_block->size, itemsOf(m_block) + count);
    std::fill(marksOf(m_block) + m_block->size, marksOf(m_block) + count, ~quint64(0));
    m_block->size = count;
}
