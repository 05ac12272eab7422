#include "PListNodeFilter.h"

#include "ParallelSplit.h"

#include <algorithm>

// The walk's small steps are defined inline, as they were when the filter was
// one function: they run for every node visited, and a call per step costs
// more than most steps do.

namespace {

// The name of every document's root, which always answers a filtered tree.
constexpr QStringView kRootName = u"OVRoot";

// How many visited children ahead the filter asks for nodes, and for their texts.
constexpr size_t kNodesAhead = 16;
constexpr size_t kTextsAhead = 8;

// The places of one group's children that must be visited, on one stack per
// thread so that no walk allocates per group. Fetching ahead counts in these
// places: the ones passed over cost nothing.
std::vector<qsizetype> &placesToVisit()
{
    thread_local std::vector<qsizetype> stack;
    return stack;
}

} // namespace

PListNodeFilter::Query::Query(const QString &query)
    : pattern(query)
    , negated(query.startsWith(u'!'))
    , unmarked(negated ? query.sliced(1) : QString())
    , numbersMayMatch(pattern.mayOccurInNumberText() || (negated && unmarked.mayOccurInNumberText()))
    , emptyMatches(pattern.matches(QStringView()))
{
}

inline bool PListNodeFilter::Query::mayContain(quint64 signature) const
{
    const quint64 needed = pattern.signature();
    const quint64 unmarkedNeeded = unmarked.signature();
    return (signature & needed) == needed || (negated && (signature & unmarkedNeeded) == unmarkedNeeded);
}

PListNodeFilter::Places::Places(const PListNode &group)
    : children(group.m_children.constData())
    , marks(group.m_children.marks())
    , count(group.m_children.size())
    , inArray(group.isArray())
{
}

PListNodeFilter::PListNodeFilter(const QString &query) : m_query(query) {}

PListNodePtr PListNodeFilter::visit(const PListNode &node) const
{
    if (!node.m_isLeaf)
        return top(node);
    return leafMatches(node) ? leafCopy(node) : nullptr;
}

// ---- matching -----------------------------------------------------------------

inline bool PListNodeFilter::parentIsArray(const PListNode &node)
{
    return node.m_parent && node.m_parent->isArray();
}

// What a leaf's value is searched by: a string's text, a number's description
// (a boolean's is 1 or 0, not the true or false shown). Dates, data and values
// of no class are not searched. A number's text is made only when the query
// could be found in it: a query holding a letter no number shows gets the same
// answer from an empty text.
inline bool PListNodeFilter::valueText(const PListNode &real, QStringView *text, QString *made) const
{
    switch (real.m_objectValue.type()) {
    case PropertyList::Type::String:
        *text = real.m_objectValue.stringRef();
        return true;
    case PropertyList::Type::Integer:
    case PropertyList::Type::Real:
        if (m_query.numbersMayMatch) {
            *made = real.m_objectValue.description();
            *text = *made;
        }
        return true;
    case PropertyList::Type::Boolean:
        *text = real.m_objectValue.toBool() ? QStringView(u"1") : QStringView(u"0");
        return true;
    case PropertyList::Type::Data:
    case PropertyList::Type::Date:
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
    case PropertyList::Type::Uid:
        break;
    }
    return false;
}

inline bool PListNodeFilter::nameMatches(const PListNode &real) const
{
    if (real.m_nameIsDescription)
        return m_query.pattern.matches(real.ownName());
    return m_query.pattern.matches(real.m_name);
}

inline bool PListNodeFilter::leafMatches(const PListNode &node) const
{
    const PListNode &real = *node.target();
    const bool readTexts =
        m_query.mayContain(real.signature()) || (real.m_nameIsDescription && !parentIsArray(node));
    // Most leaves end here, their first bytes read and nothing else: texts
    // that hold nothing looked for answer as empty ones do.
    if (!readTexts && !m_query.emptyMatches)
        return false;
    QStringView text;
    QString made;
    const bool searchable = readTexts ? valueText(real, &text, &made) : valueIsSearched(real);
    if (searchable && m_query.pattern.matches(text))
        return true;
    // "!abc" drops a leaf whose value holds abc, whatever its name.
    if (searchable && m_query.negated && m_query.unmarked.matches(text))
        return false;
    // Array elements are labelled by position, so their names are not searched.
    if (parentIsArray(node))
        return false;
    return readTexts ? nameMatches(real) : m_query.pattern.matches(QStringView());
}

// Whether a group with no hits inside is shown for its name. Array elements
// are not searched by name, and their names are made only when they could be.
inline bool PListNodeFilter::groupShownByName(const PListNode &node) const
{
    const PListNode &real = *node.target();
    if (!real.m_nameIsDescription && !m_query.mayContain(real.signature()))
        return m_query.emptyMatches && !parentIsArray(node);
    return !parentIsArray(node) && nameMatches(real);
}

inline bool PListNodeFilter::isDocumentRoot(const PListNode &real)
{
    static const quint64 rootSignature = VXAdditions::TextSignature::of(kRootName);
    return !real.m_nameIsDescription && (real.signature() & rootSignature) == rootSignature
        && real.m_name == kRootName;
}

inline bool PListNodeFilter::valueIsSearched(const PListNode &real)
{
    return real.m_objectValue.isString() || real.m_objectValue.isNumber();
}

// Whether a child must be looked at, told from its mark in the list alone:
// most leaves, and groups holding nothing that could match, are passed over
// without being fetched at all. An array element's name is not searched, so
// only elsewhere must a name still to be made be read.
inline bool PListNodeFilter::mustVisit(quint64 mark, bool inArray) const
{
    if (m_query.emptyMatches || (mark & PListNode::kNameUnreadBelow))
        return true;
    if ((mark & PListNode::kNameUnread) && !inArray)
        return true;
    return m_query.mayContain(mark);
}

// ---- the walk -------------------------------------------------------------------

inline std::vector<PListNodeFilter::Hit> &PListNodeFilter::hits()
{
    thread_local std::vector<Hit> stack;
    return stack;
}

// The node the search starts from: a large tree is searched in two halves
// side by side, and the hits put together in order.
PListNodePtr PListNodeFilter::top(const PListNode &node) const
{
    const Places places(node);
    const PListNodePtr *children = places.children;
    const qsizetype count = places.count;
    std::vector<PListNodePtr> found(static_cast<size_t>(count));
    ParallelSplit::run(
        count, [&](qsizetype i) { return 1 + children[i]->m_children.size(); },
        [&](qsizetype first, qsizetype last) {
            std::vector<Hit> &halfHits = hits();
            const size_t base = halfHits.size();
            walk(places, first, last);
            for (size_t h = base; h < halfHits.size(); ++h)
                found[static_cast<size_t>(halfHits[h].child - children)] = std::move(halfHits[h].copy);
            halfHits.resize(base);
        });
    std::vector<Hit> &stack = hits();
    const size_t mark = stack.size();
    for (qsizetype i = 0; i < count; ++i) {
        if (found[static_cast<size_t>(i)])
            stack.push_back({std::move(found[static_cast<size_t>(i)]), children + i});
    }
    return finish(node, stack.size() > mark ? copyHolding(node, stack, mark) : nullptr);
}

PListNodePtr PListNodeFilter::group(const PListNode &node) const
{
    std::vector<Hit> &stack = hits();
    const size_t mark = stack.size();
    const Places places(node);
    walk(places, 0, places.count);
    return finish(node, stack.size() > mark ? copyHolding(node, stack, mark) : nullptr);
}

inline PListNodePtr PListNodeFilter::visitChild(const PListNodePtr &child) const
{
    // A matching leaf is copied afresh from the child's own name and value.
    if (child->m_isLeaf)
        return leafMatches(*child) ? leafCopy(*child) : nullptr;
    return group(*child);
}

// Pushes the copy of each child in [first, last) with a hit onto this
// thread's stack of hits.
void PListNodeFilter::walk(const Places &places, qsizetype first, qsizetype last) const
{
    std::vector<qsizetype> &visits = placesToVisit();
    const size_t base = visits.size();
    for (qsizetype i = first; i < last; ++i) {
        if (mustVisit(places.marks[i], places.inArray))
            visits.push_back(i);
    }
    const size_t end = visits.size();
    for (size_t k = base; k < std::min(base + kNodesAhead, end); ++k)
        fetchNode(places, visits[k]);
    for (size_t k = base; k < end; ++k) {
        if (k + kNodesAhead < end)
            fetchNode(places, visits[k + kNodesAhead]);
        if (k + kTextsAhead < end)
            fetchTexts(*places.children[visits[k + kTextsAhead]]);
        const qsizetype i = visits[k];
        if (PListNodePtr copy = visitChild(places.children[i]))
            hits().push_back({std::move(copy), places.children + i});
    }
    visits.resize(base);
}

// What a group gives when none of its children did.
inline PListNodePtr PListNodeFilter::finish(const PListNode &node, PListNodePtr copy) const
{
    if (copy)
        return copy;
    // A group whose own name matches is shown, without its contents.
    if (groupShownByName(node))
        return emptyGroupLike(node);
    // The outline always needs a root, even when nothing matched.
    if (isDocumentRoot(*node.target()))
        return PListNode::initFromDictionary(PropertyDictionary(), QStringLiteral("Search Root"));
    return nullptr;
}

// The walk is bound by fetching nodes and their texts from all over the heap,
// not by matching, so it asks for them some children ahead: the node first,
// and its texts once the node itself has arrived.
inline void PListNodeFilter::fetchTexts(const PListNode &node) const
{
    // A group's list of children starts with their marks.
    if (!node.m_isLeaf) {
        if (const char *storage = static_cast<const char *>(node.m_children.storage())) {
            __builtin_prefetch(storage);
            __builtin_prefetch(storage + 64);
        }
        return;
    }
    if (!m_query.mayContain(node.signature()))
        return;
    __builtin_prefetch(node.m_name.constData());
    if (node.m_objectValue.isString())
        __builtin_prefetch(node.m_objectValue.stringRef().constData());
}

// Asks for child i, which is to be visited: a group (all of whose mark is
// set) up to its list of children, a leaf its first bytes.
inline void PListNodeFilter::fetchNode(const Places &places, qsizetype i)
{
    const PListNode *node = places.children[i].get();
    __builtin_prefetch(node);
    if (places.marks[i] & PListNode::kGroup)
        __builtin_prefetch(&node->m_children);
}

// ---- the copies -----------------------------------------------------------------

// A fresh leaf of the leaf's value. A copy answers with its real node's name
// (through its search reference), so it holds none of its own: copying the
// name would fetch, and dropping the copy on the next keystroke fetch again,
// the name's text for every node shown.
inline PListNodePtr PListNodeFilter::leafCopy(const PListNode &node)
{
    PListNodePtr copy = PListNode::leafWithoutSignature(node.target()->m_objectValue);
    copy->m_searchReference = const_cast<PListNode *>(&node);
    return copy;
}

inline PListNodePtr PListNodeFilter::emptyGroupLike(const PListNode &node)
{
    PListNodePtr copy = PListNode::emptyGroup(node.isArray());
    copy->m_searchReference = const_cast<PListNode *>(&node);
    return copy;
}

PListNodePtr PListNodeFilter::copyHolding(const PListNode &node, std::vector<Hit> &stack, size_t mark)
{
    PListNodePtr copy = emptyGroupLike(node);
    copy->m_children.reserve(static_cast<qsizetype>(stack.size() - mark));
    for (size_t h = mark; h < stack.size(); ++h)
        append(*copy, std::move(stack[h].copy), *stack[h].child);
    stack.resize(mark);
    return copy;
}

// Linked and marked directly rather than with insertChild, as a tree is
// built: that would pass the new parent's editability through the child's
// search reference into the real subtree, refresh every item of an array on
// each insertion, and walk up per child. Nobody observes a copy that is still
// being built.
inline void PListNodeFilter::append(PListNode &group, PListNodePtr child, const PListNodePtr &reference)
{
    child->m_parent = &group;
    child->m_searchReference = reference.get();
    const quint64 mark = child->filterMark();
    group.m_children.append(std::move(child), mark);
}
