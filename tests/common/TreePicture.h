#pragma once

#include <QString>

class PListNode;

// A compact text picture of a node tree, for comparing whole trees in one
// assertion: dictionaries as {name = value; …}, arrays as (value, …), leaves as
// their display text, quoted unless purely alphanumeric. A node with a search
// reference is marked with a leading '>'. Example: {a = 1; b = (x, "y z");}
namespace TreePicture {

QString of(const PListNode &node);

} // namespace TreePicture
