#pragma once

#include "platform/ReadResult.h"

#include <QString>

// A read's warnings as one line, for comparing them in one assertion: each
// kind with its place, in order, such as
// "DuplicateKey at line 1, column 39, byte 38; More". A warning without a
// message shows as "(silent)", which no expectation should hold.
namespace WarningsPicture {

QString of(const QList<ReadWarning> &warnings);

} // namespace WarningsPicture
