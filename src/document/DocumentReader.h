#pragma once

#include "document/DocumentContent.h"
#include "domains/CFReadWriteMethods.h"
#include "platform/ReadResult.h"

#include <optional>

// Reads what a document opens on a path in two steps, so that a large file
// is parsed and built into its tree away from the GUI thread while the
// preferences service, which serves the GUI thread only, is asked there.
namespace DocumentReader {

// Step one, on the thread that owns the store: the registration domain's
// registered values, or the domain's keys (synchronised first); none for a
// plain file and for a domain the service knows nothing of.
std::optional<PropertyDictionary> storedContent(const QString &path, CFReadWriteMethods::Store store);

// Step two, on any thread: the tree of what the store gave, or else of the
// file, which must hold a dictionary or an array. A failure says why.
ReadResult<DocumentContent> buildContent(const QString &path, std::optional<PropertyDictionary> stored);

// The content a value makes: its tree built and sorted.
DocumentContent contentOf(const PropertyList &value, bool loadedByUserDefaults, bool canEditPlist);

// Both steps on the calling thread.
ReadResult<DocumentContent> read(const QString &path, CFReadWriteMethods::Store store);

} // namespace DocumentReader
