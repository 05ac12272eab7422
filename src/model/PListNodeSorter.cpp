#include "PListNodeSorter.h"

#include "PListNode.h"

#include <QScopeGuard>

#include <algorithm>
#include <cstring>

namespace {

constexpr int kPrefixUnits = 8;
// How many children ahead a sort asks for nodes while gathering their names:
// about as many as fit in the time one fetch from memory takes.
constexpr qsizetype kFetchAhead = 8;
// The largest child count whose sort buffers stay allocated for the next sort.
constexpr qsizetype kKeptBuffer = 1 << 16;

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

} // namespace

int PListNodeSorter::compareNames(QStringView a, QStringView b) { return naturalCompare(a, b); }

PListNodeSorter &PListNodeSorter::forThisThread()
{
    thread_local PListNodeSorter sorter;
    return sorter;
}

bool PListNodeSorter::sort(PListNode &group)
{
    if (group.isArray() || group.m_children.size() < 2)
        return false;
    return forThisThread().sortChildren(group);
}

bool PListNodeSorter::sortChildren(PListNode &group)
{
    const auto release = qScopeGuard([this] { releaseAfterHugeGroup(); });
    gatherNames(group);
    // Files written by the platform often list their keys in this very order already.
    if (namesInOrder())
        return false;
    orderEntries();
    m_order.resize(m_entries.size());
    for (size_t k = 0; k < m_entries.size(); ++k)
        m_order[k] = m_entries[k].position;
    group.m_children.reorder(m_order.data());
    return true;
}

void PListNodeSorter::gatherNames(const PListNode &group)
{
    const qsizetype count = group.m_children.size();
    m_names.resize(static_cast<size_t>(count));
    m_madeNames.clear();
    // The nodes and their names lie all over the heap, and fetching them is
    // most of a sort's time: ask for them a few children ahead.
    const PListNodePtr *child = group.m_children.constData();
    for (qsizetype i = 0; i < count; ++i) {
        if (i + kFetchAhead < count) {
            const PListNode *ahead = child[i + kFetchAhead].get();
            __builtin_prefetch(&ahead->m_name);
            __builtin_prefetch(&ahead->m_searchReference);
        }
        const PListNode *node = child[i]->target();
        if (node->m_nameIsDescription) {
            // A moved QString keeps its text where it was, so the view stays good.
            m_madeNames.push_back(node->ownName());
            m_names[static_cast<size_t>(i)] = m_madeNames.back();
        } else {
            m_names[static_cast<size_t>(i)] = node->m_name;
        }
        __builtin_prefetch(m_names[static_cast<size_t>(i)].utf16());
    }
}

bool PListNodeSorter::namesInOrder() const
{
    return std::is_sorted(m_names.cbegin(), m_names.cend(),
                          [](QStringView a, QStringView b) { return naturalCompare(a, b) < 0; });
}

void PListNodeSorter::orderEntries()
{
    const size_t count = m_names.size();
    m_entries.resize(count);
    for (size_t i = 0; i < count; ++i) {
        m_entries[i].position = static_cast<qsizetype>(i);
        packPrefix(m_names[i], m_entries[i].prefix);
    }
    const QStringView *name = m_names.data();
    std::sort(m_entries.begin(), m_entries.end(), [name](const Entry &a, const Entry &b) {
        if (a.prefix[0] != b.prefix[0])
            return a.prefix[0] < b.prefix[0];
        if (a.prefix[1] != b.prefix[1])
            return a.prefix[1] < b.prefix[1];
        if (const int order = naturalCompare(name[a.position], name[b.position]))
            return order < 0;
        // Names that tie ("a" and "A") keep the order they came in.
        return a.position < b.position;
    });
}

// Buffers grown for a huge dictionary are not kept for the rest of the run.
void PListNodeSorter::releaseAfterHugeGroup()
{
    if (m_names.size() > size_t(kKeptBuffer)) {
        m_names = {};
        m_madeNames = {};
        m_entries = {};
        m_order = {};
    }
}
