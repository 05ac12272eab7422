#pragma once

#include "platform/PropertyList.h"

#include <QString>

// The value classes: the tag each node keeps, and the class pop-up's item tags.
enum ValueClass : int {
    StringClass = 0,
    DataClass = 1,
    IntegerClass = 2,
    FloatClass = 3,
    BooleanClass = 4,
    DateClass = 5,
    ArrayClass = 6,
    DictionaryClass = 7,
    NoClass = -1, // a leaf whose value is of no known class
};

// How every view of a property list names classes and shows values that have
// no text of their own: the node tree's outline, the viewer and the
// command-line tool all take them from here, so they never drift apart.
namespace ValueClasses {

// "String" … "Dictionary"; empty for any other tag.
QString title(int tag);
// The class a value belongs to; NoClass for a keyed archiver's UID. Inline:
// a large file's tree asks it for every leaf it builds.
inline ValueClass of(const PropertyList &value)
{
    switch (value.type()) {
    case PropertyList::Type::String:
        return StringClass;
    case PropertyList::Type::Data:
        return DataClass;
    case PropertyList::Type::Integer:
        return IntegerClass;
    case PropertyList::Type::Real:
        return FloatClass;
    case PropertyList::Type::Boolean:
        return BooleanClass;
    case PropertyList::Type::Date:
        return DateClass;
    case PropertyList::Type::Array:
        return ArrayClass;
    case PropertyList::Type::Dictionary:
        return DictionaryClass;
    case PropertyList::Type::Uid:
        break;
    }
    return NoClass;
}
// The title shown beside a value: its class's, or "UID" for a UID.
QString titleOf(const PropertyList &value);

// The fixed texts, translated once and shared by every node that shows them
// instead of allocated per node (a large file has millions of nodes).
struct Texts {
    QString dictionary; // "a dictionary"
    QString array;      // "an array"
    QString dataItem;   // "(Data Item)": data is not shown byte by byte
    QString yes;        // "true"
    QString no;         // "false"
    QString item;       // "Item", as array elements and counts are labelled
    QString items;      // "Items"
};
const Texts &texts();

// "Item N": an array element is labelled by its one-based position.
QString itemLabel(qsizetype position);

} // namespace ValueClasses
