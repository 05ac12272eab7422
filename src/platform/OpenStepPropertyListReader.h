#pragma once

#include "PropertyList.h"
#include "ReadResult.h"

#include <QByteArrayView>

// Reads old-style OpenStep text (format 1) property lists from untrusted bytes:
// Xcode project files, .strings files, GNUstep defaults and resources. The bytes
// are decoded first (UTF-8, or UTF-16/UTF-32 picked by a byte-order mark or by
// NULs in the first bytes), then parsed. Every scalar is a string, except the
// GNUstep typed forms <*I…> <*R…> <*B…> <*D…> and data. Failures carry the line
// and column (1-based, in UTF-16 units) and the byte offset where they were found.
class OpenStepPropertyListReader {
public:
    // True when the first significant character (after whitespace and comments)
    // can start an old-style value. The format has no magic, so this only rules
    // out text that certainly is something else.
    static bool sniff(QByteArrayView bytes);
    // Empty or comment-only text is an empty dictionary. Text that starts with
    // a string and goes on is read as a strings file (dictionary entries
    // without braces). Bytes starting with "bplist" are refused (BadHeader):
    // they are a damaged binary file, not text.
    static ReadResult<PropertyList> read(const QByteArray &bytes);
};
