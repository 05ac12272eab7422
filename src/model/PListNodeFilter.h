#pragma once

#include "PListNode.h"
#include "VXAdditions.h"

#include <vector>

// The search filter behind PListNode::queryWithString: a copy of a tree that
// holds only what matches a query, each copied node standing for its real one
// through its search reference.
//
// It runs on every keystroke over every node, so it reads names and value
// texts in place; a string copied, or a group made, per node visited would cost
// more than the matching itself, so a copy is made only once something in it
// has matched. Most nodes are passed over on their mark in their parent's list
// alone (see PListNode::filterMark), without being fetched.
class PListNodeFilter {
public:
    explicit PListNodeFilter(const QString &query);

    // The filtered copy of node and what lies below it, or nullptr when
    // nothing matched (a document root always answers a copy).
    PListNodePtr visit(const PListNode &node) const;

private:
    // The query as the filter uses it: read once, not once per node. A query
    // starting with "!" also leaves out the leaves whose value matches the
    // query without that mark, even when their name would match.
    struct Query {
        explicit Query(const QString &query);
        // Whether a node's texts must be read at all: when they cannot contain
        // what either pattern looks for, they answer as empty texts do.
        bool mayContain(quint64 signature) const;

        VXAdditions::SearchPattern pattern;
        bool negated;
        VXAdditions::SearchPattern unmarked;
        bool numbersMayMatch;
        // Whether a text holding nothing matches: "!abc" does, "abc" does not.
        bool emptyMatches;
    };

    // The children of one group as the walk reads them.
    struct Places {
        explicit Places(const PListNode &group);
        const PListNodePtr *children;
        const quint64 *marks;
        qsizetype count;
        bool inArray;
    };

    // A copy the walk has found and the child it stands for. A group collects
    // its children's copies on a stack above its own place, so its copy is
    // made once and its list of children allocated once, at its final size.
    struct Hit {
        PListNodePtr copy;
        const PListNodePtr *child;
    };

    // ---- matching ----
    bool valueText(const PListNode &real, QStringView *text, QString *made) const;
    bool nameMatches(const PListNode &real) const;
    bool leafMatches(const PListNode &node) const;
    bool groupShownByName(const PListNode &node) const;
    bool mustVisit(quint64 mark, bool inArray) const;
    static bool parentIsArray(const PListNode &node);
    static bool isDocumentRoot(const PListNode &real);
    static bool valueIsSearched(const PListNode &real);

    // ---- the walk ----
    // The copies found on this thread's walks, waiting for their groups.
    static std::vector<Hit> &hits();
    PListNodePtr top(const PListNode &node) const;
    PListNodePtr group(const PListNode &node) const;
    PListNodePtr visitChild(const PListNodePtr &child) const;
    void walk(const Places &places, qsizetype first, qsizetype last) const;
    PListNodePtr finish(const PListNode &node, PListNodePtr copy) const;
    void fetchTexts(const PListNode &node) const;
    static void fetchNode(const Places &places, qsizetype i);

    // ---- the copies ----
    static PListNodePtr leafCopy(const PListNode &node);
    static PListNodePtr emptyGroupLike(const PListNode &node);
    static PListNodePtr copyHolding(const PListNode &node, std::vector<Hit> &stack, size_t mark);
    static void append(PListNode &group, PListNodePtr child, const PListNodePtr &reference);

    Query m_query;
};
