#pragma once

#include "platform/ReadResult.h"

#include <QString>
#include <QStringView>

#include <optional>

// Where the platform's reading of a typed value in `defaults write` text makes
// something else of it than the text says: "-int 3.7" is 3, "-bool YES" is
// false. Each answers the warning (without a place) or nothing when the text
// was taken as written; `read` is what the reading made of it.
namespace DefaultsScalarNotes {

// Anything but white space, a sign and decimal digits, or a number beyond 32 bits.
std::optional<ReadWarning> integer(const QString &text, int read);
// Anything but a decimal number as a whole, or one beyond a double's range.
std::optional<ReadWarning> real(const QString &text, double read);
// Anything but true, yes, false or no, or (in lists, where the text after the
// item decides) a word read as the other value.
std::optional<ReadWarning> boolean(const QString &text, QStringView booleanText, bool read);

} // namespace DefaultsScalarNotes
