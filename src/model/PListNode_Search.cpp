// Tree search: the filtered copy and lookups by equality.
#include "PListNode.h"

#include "VXAdditions.h"

namespace {

// The name of every document's root, which always answers a filtered tree.
constexpr QStringView kRootName = u"OVRoot";

// The query as the filter uses it: read once, not once per node. A query
// starting with "!" also leaves out the leaves whose value matches the query
// without that mark, even when their name would match.
struct FilterQuery {
    explicit FilterQuery(const QString &query)
        : pattern(query)
        , negated(query.startsWith(u'!'))
        , unmarked(negated ? query.sliced(1) : QString())
    {
    }

    VXAdditions::SearchPattern pattern;
    bool negated;
    VXAdditions::SearchPattern unmarked;
};

} // namespace

PListNodePtr PListNode::queryWithString(const QString &query) const
{
    // A local class shares this function's access to the nodes' fields, so the
    // walk reads names and value texts in place. It runs on every keystroke over
    // every node; a string copied, or a group made, per node visited would cost
    // more than the matching itself, so a copy is made only once something in
    // it has matched.
    class Filter {
    public:
        explicit Filter(const QString &query) : m_query(query) {}

        PListNodePtr visit(const PListNode &node) const
        {
            if (!node.m_isLeaf)
                return group(node);
            return leafMatches(node) ? leafCopy(node) : nullptr;
        }

    private:
        static bool parentIsArray(const PListNode &node) { return node.m_parent && node.m_parent->isArray(); }

        // What a leaf's value is searched by: a string's text, a number's
        // description (a boolean's is 1 or 0, not the true or false shown).
        // Dates, data and values of no class are not searched. Numbers show
        // their description, so the display text serves without formatting.
        static bool valueText(const PListNode &real, QStringView *text)
        {
            switch (real.m_objectValue.type()) {
            case PropertyList::Type::String:
            case PropertyList::Type::Integer:
            case PropertyList::Type::Real:
                *text = real.m_displayValue;
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

        bool leafMatches(const PListNode &node) const
        {
            const PListNode &real = *node.target();
            QStringView text;
            const bool searchable = valueText(real, &text);
            if (searchable && m_query.pattern.matches(text))
                return true;
            // "!abc" drops a leaf whose value holds abc, whatever its name.
            if (searchable && m_query.negated && m_query.unmarked.matches(text))
                return false;
            // Array elements are labelled by position, so their names are not searched.
            return !parentIsArray(node) && m_query.pattern.matches(real.m_name);
        }

        // A fresh leaf as initWithName makes it from the leaf's name and value.
        // A string's display text is the string, and a number's or a date's is
        // its description, which the real leaf already holds (whatever its
        // class tag says): taking that spares formatting the value again for
        // every hit.
        static PListNodePtr leafCopy(const PListNode &node)
        {
            const PListNode &real = *node.target();
            PListNodePtr copy;
            const auto sharingText = [&](ValueClass tag) {
                copy = initWithName(real.m_name, PropertyList());
                copy->m_objectValue = real.m_objectValue;
                copy->m_displayValue = real.m_displayValue;
                copy->m_menuValue = tag;
            };
            switch (real.m_objectValue.type()) {
            case PropertyList::Type::String:
                sharingText(StringClass);
                break;
            case PropertyList::Type::Integer:
                sharingText(IntegerClass);
                break;
            case PropertyList::Type::Real:
                sharingText(FloatClass);
                break;
            case PropertyList::Type::Date:
                sharingText(DateClass);
                break;
            case PropertyList::Type::Boolean:
            case PropertyList::Type::Data:
            case PropertyList::Type::Array:
            case PropertyList::Type::Dictionary:
            case PropertyList::Type::Uid:
                copy = initWithName(real.m_name, real.m_objectValue);
                break;
            }
            copy->m_searchReference = const_cast<PListNode *>(&node);
            return copy;
        }

        static PListNodePtr emptyGroupLike(const PListNode &node)
        {
            PListNodePtr copy = node.isArray() ? initFromArray(PropertyArray(), node.name())
                                               : initFromDictionary(PropertyDictionary(), node.name());
            copy->m_searchReference = const_cast<PListNode *>(&node);
            return copy;
        }

        // Linked directly rather than with insertChild: that would pass the new
        // parent's editability through the child's search reference into the
        // real subtree, and refresh every item of an array on each insertion.
        // Nobody observes a copy that is still being built.
        static void append(PListNode &group, const PListNodePtr &child, const PListNodePtr &reference)
        {
            group.m_children.append(child);
            child->m_parent = &group;
            child->m_searchReference = reference.get();
        }

        PListNodePtr group(const PListNode &node) const
        {
            PListNodePtr copy;
            for (const PListNodePtr &child : node.m_children) {
                // A matching leaf is copied afresh from the child's own name and value.
                const PListNodePtr found = child->m_isLeaf ? (leafMatches(*child) ? leafCopy(*child) : nullptr)
                                                           : group(*child);
                if (!found)
                    continue;
                if (!copy)
                    copy = emptyGroupLike(node);
                append(*copy, found, child);
            }
            if (copy)
                return copy;
            const QString &name = node.target()->m_name;
            // A group whose own name matches is shown, without its contents.
            if (!parentIsArray(node) && m_query.pattern.matches(name))
                return emptyGroupLike(node);
            // The outline always needs a root, even when nothing matched.
            if (name == kRootName)
                return initFromDictionary(PropertyDictionary(), QStringLiteral("Search Root"));
            return nullptr;
        }

        FilterQuery m_query;
    };

    return Filter(query).visit(*this);
}

PListNode *PListNode::recursiveSearchForChild(const PListNode &node) const
{
    // Depth first, each child before anything inside it.
    for (const PListNodePtr &child : m_children) {
        if (child->isEqualToNode(node))
            return child.get();
        if (PListNode *found = child->recursiveSearchForChild(node))
            return found;
    }
    return nullptr;
}
