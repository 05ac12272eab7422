// Ordering, equality, copies, the archive and the debug text of the node tree.
#include "PListNode.h"

#include "ParallelSplit.h"

#include <QLoggingCategory>
#include <QScopeGuard>

#include <algorithm>
#include <cstring>
#include <vector>

Q_DECLARE_LOGGING_CATEGORY(lcModel)

namespace {

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// The code point at text[*i], folded for a caseless comparison; advances *i
// past it. ASCII, which nearly every key is, takes the short way.
char32_t foldedAt(QStringView text, qsizetype *i)
{
    const char16_t c = text[*i].unicode();
    ++*i;
    if (c < 0x80)
        return c >= u'A' && c <= u'Z' ? char32_t(c + (u'a' - u'A')) : char32_t(c);
    if (QChar::isHighSurrogate(c) && *i < text.size() && QChar::isLowSurrogate(text[*i].unicode())) {
        const char32_t codePoint = QChar::surrogateToUcs4(c, text[*i].unicode());
        ++*i;
        return QChar::toCaseFolded(codePoint);
    }
    return QChar::toCaseFolded(char32_t(c));
}

// Compares the digit runs that start at a[*i] and b[*j] by their values and
// advances both past them. Values are compared as digit strings, so runs of any
// length work and leading zeros do not count: "007" ties with "7".
int compareDigitRuns(QStringView a, qsizetype *i, QStringView b, qsizetype *j)
{
    auto significantRun = [](QStringView text, qsizetype *at) {
        while (*at < text.size() && text[*at] == u'0')
            ++*at;
        const qsizetype start = *at;
        while (*at < text.size() && isDigit(text[*at].unicode()))
            ++*at;
        return text.sliced(start, *at - start);
    };
    const QStringView left = significantRun(a, i);
    const QStringView right = significantRun(b, j);
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    for (qsizetype k = 0; k < left.size(); ++k) {
        if (left[k] != right[k])
            return left[k] < right[k] ? -1 : 1;
    }
    return 0;
}

// How many leading units of two names may be passed over before comparing:
// those before the first difference, less any digit run or surrogate pair that
// the difference falls into, since those compare as a whole. Names in one
// dictionary often share a long lead ("NSWindow Frame …"), so this looks at
// four units at a time.
qsizetype identicalLead(QStringView a, QStringView b)
{
    const qsizetype length = std::min(a.size(), b.size());
    const char16_t *left = a.utf16();
    const char16_t *right = b.utf16();
    qsizetype i = 0;
    for (; i + 4 <= length; i += 4) {
        quint64 x = 0;
        quint64 y = 0;
        std::memcpy(&x, left + i, sizeof x);
        std::memcpy(&y, right + i, sizeof y);
        if (x != y)
            break;
    }
    while (i < length && left[i] == right[i])
        ++i;
    while (i > 0 && (isDigit(left[i - 1]) || QChar::isHighSurrogate(left[i - 1])))
        --i;
    return i;
}

// A caseless comparison in which digit runs compare by numeric value, so
// "Item 9" sorts before "Item 10" and "abc" ties with "ABC". Written by hand
// rather than through a collator so the order never depends on the process
// locale, and so that sorting a large tree allocates nothing per comparison.
int naturalCompare(QStringView a, QStringView b)
{
    qsizetype i = identicalLead(a, b);
    qsizetype j = i;
    while (i < a.size() && j < b.size()) {
        const char16_t x = a[i].unicode();
        const char16_t y = b[j].unicode();
        if (isDigit(x) && isDigit(y)) {
            if (const int order = compareDigitRuns(a, &i, b, &j))
                return order;
            continue;
        }
        // Equal units are equal folded too, except halves of a surrogate pair,
        // which only fold as a whole.
        if (x == y && !QChar::isSurrogate(x)) {
            ++i;
            ++j;
            continue;
        }
        const char32_t fx = foldedAt(a, &i);
        const char32_t fy = foldedAt(b, &j);
        if (fx != fy)
            return fx < fy ? -1 : 1;
    }
    if (i < a.size())
        return 1;
    return j < b.size() ? -1 : 0;
}

// One child while its parent sorts: the leading part of its name packed into
// two words (see packPrefix) and where the child was. The entries sit side by
// side in one small buffer, so most comparisons touch neither the nodes nor
// their names.
struct SortEntry {
    quint64 prefix[2];
    qsizetype position;
};

constexpr int kPrefixUnits = 8;
// How many children ahead a sort asks for nodes while gathering their names:
// about as many as fit in the time one fetch from memory takes.
constexpr qsizetype kFetchAhead = 8;
// The largest child count whose sort buffers stay allocated for the next sort.
constexpr qsizetype kKeptBuffer = 1 << 16;

// Appends the digit run at name[*k] to a prefix: a marker, the number of
// significant digits, then the digits four to a unit, so runs order by value.
// The marker is '0': against any other character a run sorts as its first digit
// would, and no other character lies among the digits. Answers false when
// nothing can be said after the run.
bool packDigitRun(QStringView name, qsizetype *k, char16_t *units, int *count)
{
    units[(*count)++] = u'0';
    while (*k < name.size() && name[*k] == u'0')
        ++*k;
    const qsizetype start = *k;
    while (*k < name.size() && isDigit(name[*k].unicode()))
        ++*k;
    const qsizetype length = *k - start;
    if (*count == kPrefixUnits)
        return false;
    if (length >= 0xffff) {
        units[(*count)++] = 0xffff;
        return false;
    }
    units[(*count)++] = char16_t(length);
    for (qsizetype d = 0; d < length && *count < kPrefixUnits; d += 4) {
        unsigned digits = 0;
        for (qsizetype n = d; n < d + 4; ++n)
            digits = digits << 4 | (n < length ? unsigned(name[start + n].unicode() - u'0') : 0u);
        units[(*count)++] = char16_t(digits);
    }
    return true;
}

// Packs the leading part of a name, folded, so that whenever two prefixes
// differ they order as naturalCompare orders the names; prefixes that tie say
// nothing and the full comparison decides. An ended name leaves zeros, which
// sort first as a shorter name does. Packing stops at a character that folds
// beyond 16 bits, leaving 0xffff, which sorts after every other character and
// ties only with another such stop.
void packPrefix(QStringView name, quint64 prefix[2])
{
    char16_t units[kPrefixUnits] = {};
    int count = 0;
    qsizetype k = 0;
    while (k < name.size() && count < kPrefixUnits) {
        const char16_t c = name[k].unicode();
        if (c < 0x80 && !isDigit(c)) {
            units[count++] = c >= u'A' && c <= u'Z' ? char16_t(c + (u'a' - u'A')) : c;
            ++k;
        } else if (isDigit(c)) {
            if (!packDigitRun(name, &k, units, &count))
                break;
        } else {
            const char32_t folded = foldedAt(name, &k);
            units[count++] = folded >= 0xffff ? char16_t(0xffff) : char16_t(folded);
            if (folded >= 0xffff)
                break;
        }
    }
    auto word = [&units](int first) {
        return quint64(units[first]) << 48 | quint64(units[first + 1]) << 32 | quint64(units[first + 2]) << 16
               | quint64(units[first + 3]);
    };
    prefix[0] = word(0);
    prefix[1] = word(4);
}

// The tag an archive carries, or no class when it is not one this build knows:
// the archive comes from the pasteboard and may have been written by anyone.
qint8 tagFromArchive(const PropertyList &menuValue)
{
    if (!menuValue.isInteger() || menuValue.isUnsignedInteger())
        return NoClass;
    const qint64 tag = menuValue.toInteger();
    return tag >= StringClass && tag <= DictionaryClass ? static_cast<qint8>(tag) : qint8(NoClass);
}

} // namespace

// ---- ordering -----------------------------------------------------------------

int PListNode::compare(const PListNode &other) const
{
    return naturalCompare(name(), other.name());
}

void PListNode::sortChildren()
{
    // An array's order is its data.
    if (isArray() || m_children.size() < 2)
        return;
    // Reused from one sort to the next, so a whole tree sorts without allocating per node.
    thread_local std::vector<QStringView> names;
    thread_local std::vector<SortEntry> entries;
    thread_local std::vector<PListNodePtr> sorted;
    thread_local std::vector<quint64> marks;
    // Names an array element took from its value, made once per sort.
    thread_local std::vector<QString> madeNames;
    const qsizetype count = m_children.size();
    // Buffers grown for a huge dictionary are not kept for the rest of the run.
    const auto release = qScopeGuard([count] {
        if (count > kKeptBuffer) {
            names = {};
            entries = {};
            sorted = {};
            marks = {};
            madeNames = {};
        }
    });
    names.resize(count);
    madeNames.clear();
    // The nodes and their names lie all over the heap, and fetching them is most
    // of a sort's time: ask for them a few children ahead.
    const PListNodePtr *child = m_children.constData();
    for (qsizetype i = 0; i < count; ++i) {
        if (i + kFetchAhead < count) {
            const PListNode *ahead = child[i + kFetchAhead].get();
            __builtin_prefetch(&ahead->m_name);
            __builtin_prefetch(&ahead->m_searchReference);
        }
        const PListNode *node = child[i]->target();
        if (node->m_nameIsDescription) {
            madeNames.push_back(node->ownName());
            names[i] = madeNames.back();
        } else {
            names[i] = node->m_name;
        }
        __builtin_prefetch(names[i].utf16());
    }
    const QStringView *name = names.data();
    // Files written by the platform often list their keys in this very order already.
    if (std::is_sorted(name, name + count, [](QStringView a, QStringView b) { return naturalCompare(a, b) < 0; }))
        return;
    entries.resize(count);
    for (qsizetype i = 0; i < count; ++i) {
        entries[i].position = i;
        packPrefix(name[i], entries[i].prefix);
    }
    std::sort(entries.begin(), entries.end(), [name](const SortEntry &a, const SortEntry &b) {
        if (a.prefix[0] != b.prefix[0])
            return a.prefix[0] < b.prefix[0];
        if (a.prefix[1] != b.prefix[1])
            return a.prefix[1] < b.prefix[1];
        if (const int order = naturalCompare(name[a.position], name[b.position]))
            return order < 0;
        // Names that tie ("a" and "A") keep the order they came in.
        return a.position < b.position;
    });
    sorted.clear();
    marks.clear();
    PListNodePtr *places = m_children.data();
    quint64 *placeMarks = m_children.marks();
    for (const SortEntry &entry : entries) {
        sorted.push_back(std::move(places[entry.position]));
        marks.push_back(placeMarks[entry.position]);
    }
    std::move(sorted.begin(), sorted.end(), places);
    std::copy(marks.begin(), marks.end(), placeMarks);
    sorted.clear();
}

void PListNode::recursiveSortChildren()
{
    sortChildren();
    // Sorting one subtree never touches another, so large trees sort in halves.
    const PListNodePtr *children = m_children.constData();
    ParallelSplit::run(
        m_children.size(), [&](qsizetype i) { return 1 + children[i]->m_children.size(); },
        [&](qsizetype first, qsizetype last) {
            for (qsizetype i = first; i < last; ++i) {
                if (!children[i]->m_children.isEmpty())
                    children[i]->recursiveSortChildren();
            }
        });
}

void PListNode::fixupNames()
{
    if (m_searchReference)
        return;
    if (!isArray()) {
        qCWarning(lcModel, "Attempt to fix the names of a non-array type.");
        return;
    }
    // Each child's position is found by identity, so a node that sits in the
    // array twice is named after its first place; walking backwards gives it
    // that name last without a search per child. The children's marks are
    // made once at the end rather than looked up in this list per rename:
    // one of the few places that set marks without changed().
    for (qsizetype i = m_children.size() - 1; i >= 0; --i) {
        PListNode &child = *m_children.at(i);
        if (child.m_searchReference || child.m_parent != this) {
            child.setName(ValueClasses::itemLabel(i + 1));
            continue;
        }
        child.forgetNameFromValue();
        child.m_name = ValueClasses::itemLabel(i + 1);
        child.refreshOwnSignature();
        child.notify(NodeRefresh::Name);
    }
    remakeChildMarks();
    changed({});
}

// ---- ancestry -----------------------------------------------------------------

bool PListNode::isDescendantOfNode(const PListNode *node) const
{
    for (const PListNode *ancestor = this; ancestor; ancestor = ancestor->m_parent) {
        if (ancestor == node)
            return true;
    }
    return false;
}

bool PListNode::isDescendantOfNodeInArray(const QList<PListNodePtr> &nodes) const
{
    return std::any_of(nodes.cbegin(), nodes.cend(),
                       [this](const PListNodePtr &node) { return isDescendantOfNode(node.get()); });
}

// ---- equality -----------------------------------------------------------------

bool PListNode::isEqualToNode(const PListNode &other) const
{
    // name() and value() without their copies: this runs for every child a
    // removal or lookup compares.
    auto valueOf = [](const PListNode &node) -> const PropertyList & {
        return node.m_isLeaf ? node.target()->m_objectValue : node.groupValue();
    };
    const PListNode &mine = *target();
    const PListNode &theirs = *other.target();
    const bool sameName = mine.m_nameIsDescription || theirs.m_nameIsDescription ? mine.ownName() == theirs.ownName()
                                                                                 : mine.m_name == theirs.m_name;
    if (!sameName || !(valueOf(*this) == valueOf(other)))
        return false;
    // Only this node's children are walked: a node without children equals an
    // otherwise equal node that has some. Callers rely on this one-sided test.
    if (m_children.isEmpty())
        return true;
    if (m_children.size() != other.m_children.size())
        return false;
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        if (!m_children.at(i)->isEqualToNode(*other.m_children.at(i)))
            return false;
    }
    return true;
}

// ---- copies -------------------------------------------------------------------

PListNodePtr PListNode::copy() const { return copyWith(target()->m_canEdit); }

// Every node of the copy takes canEdit, as a child inserted under the copy
// would take its parent's editability.
PListNodePtr PListNode::copyWith(bool canEdit) const
{
    const PListNode &real = *target();
    PListNodePtr node = make();
    // A name still kept as the element's value stays so in the copy; a
    // filtered entry has no name of its own and gives its real entry's.
    if (m_searchReference) {
        node->m_name = real.ownName();
    } else {
        node->m_name = m_name;
        node->m_nameIsDescription = m_nameIsDescription;
    }
    node->m_isLeaf = m_isLeaf;
    // A filtered group holds its own class marker, a leaf its real value.
    node->m_objectValue = m_isLeaf ? real.m_objectValue : m_objectValue;
    node->m_menuValue = real.m_menuValue;
    node->m_canEditValue = real.m_canEditValue;
    node->m_valueIsBool = real.m_valueIsBool;
    node->m_describesValue = real.m_describesValue;
    node->m_loadedByUserDefaults = real.m_loadedByUserDefaults;
    node->m_canEdit = canEdit;
    node->refreshOwnSignature();
    // Built as the tree is: each copied child is linked and marked directly,
    // since nobody observes the new copy and no group above it holds a mark.
    node->m_children.reserve(m_children.size());
    for (const PListNodePtr &child : m_children) {
        PListNodePtr copied = child->copyWith(canEdit);
        copied->m_parent = node.get();
        const quint64 mark = copied->filterMark();
        node->m_children.append(std::move(copied), mark);
    }
    return node;
}

// ---- archive ------------------------------------------------------------------

ArchivedNode PListNode::encodeWithCoder() const
{
    ArchivedNode archived;
    archived.children.reserve(m_children.size());
    for (const PListNodePtr &child : m_children)
        archived.children.append(child->encodeWithCoder());
    archived.name = name();
    archived.isLeaf = m_isLeaf;
    archived.menuValue = PropertyList::integer(m_menuValue, 'i');
    archived.objectValue = m_isLeaf ? m_objectValue : groupValue();
    archived.canEditValue = m_canEditValue;
    archived.displayValue = ownDisplayText();
    archived.valueIsBool = m_valueIsBool;
    return archived;
}

PListNodePtr PListNode::initWithCoder(const ArchivedNode &archived)
{
    PListNodePtr node = make();
    node->m_children.reserve(archived.children.size());
    for (const ArchivedNode &item : archived.children) {
        PListNodePtr child = initWithCoder(item);
        // Every decoded node is not editable already, which is all that
        // setNodeParent would pass down; linking directly keeps this linear.
        child->m_parent = node.get();
        const quint64 mark = child->filterMark();
        node->m_children.append(std::move(child), mark);
    }
    node->m_name = archived.name;
    node->m_isLeaf = archived.isLeaf;
    node->m_menuValue = tagFromArchive(archived.menuValue);
    node->m_objectValue = archived.objectValue;
    node->m_canEditValue = archived.canEditValue;
    node->m_valueIsBool = archived.valueIsBool;
    // The display text follows from the value; only whether data shows as
    // "(Data Item)" or as its bytes is taken from the archive.
    node->m_describesValue = archived.displayValue != node->ownDisplayText();
    node->refreshOwnSignature();
    // Not archived, so it comes out false: the node becomes editable only when
    // it is given an editable parent.
    node->m_canEdit = false;
    return node;
}

// ---- debug text ---------------------------------------------------------------

QString PListNode::description() const
{
    // The children array as the platform prints an array of objects: one per
    // line, indented once, their own (multi-line) text left as it is.
    QString children = QStringLiteral("(\n");
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        children += QStringLiteral("    ") + m_children.at(i)->description();
        children += i + 1 < m_children.size() ? QStringLiteral(",\n") : QStringLiteral("\n");
    }
    children += QLatin1Char(')');
    // "%x" of a pointer prints its low 32 bits.
    const quint32 address = static_cast<quint32>(reinterpret_cast<quintptr>(this));
    const int tag = menu();
    return QStringLiteral("<%1 0x%2> { contents = (\n\tname=%3\n\tvalue=%4\n\tmenuValue=%5\n\tnodeChildren=%6\n\t%7\n"
                          "\tnodeParent=%8\n\t)\n}")
        .arg(QStringLiteral("PListNode"), QString::number(address, 16), name(), value().description(),
             tag == NoClass ? QStringLiteral("(null)") : QString::number(tag),
             QString::number(numberOfChildren()), children,
             m_parent ? m_parent->name() : QStringLiteral("No Parent"));
}
