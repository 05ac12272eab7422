#pragma once

#include "platform/PropertyList.h"

#include <QByteArray>

// The large preferences file the tree and document benchmarks open: 2150
// domains of about 850 nodes each, 94 MB as XML, 1.8 million nodes, made
// from a fixed seed so every run sees the same file.
namespace GeneratedPreferences {

// The term about 1 % of leaves hold, in a key or (for array elements, which
// are found only by value) in their text, and one found nowhere. The filter
// passes over whole groups whose texts lack a letter of the query, so a third
// term, found nowhere but made of letters found everywhere, shows the walk
// that cannot pass over anything for its letters alone.
constexpr auto kRareTerm = "quasar";
constexpr auto kAbsentTerm = "zqxj";
constexpr auto kCommonLettersTerm = "ownerdoc";

PropertyDictionary value();
// The value written as an XML property list, as the file on disk holds it.
QByteArray xml();

} // namespace GeneratedPreferences
