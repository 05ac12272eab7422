#pragma once

#include <QString>

#include <optional>

// The platform string class's readings of leading numbers and its date parser.
// Users type values into the editor and paste them in defaults text; these
// decide what the typed text means, exactly as the platform did.
namespace StringReadings {

// Leading decimal integer after whitespace and one optional sign; 0 when there
// are no digits; clamps to the 32-bit range.
int intValue(const QString &text);
// The longest leading run of [0-9+-.Ee] read as a C-locale double; 0 when it
// holds no number; overflow gives infinity.
double doubleValue(const QString &text);
float floatValue(const QString &text);
// The platform's boolValue: Y, y, T, t or 1-9 after whitespace and an optional sign with zeros.
bool boolValue(const QString &text);
// "YYYY-MM-DD HH:MM:SS ±HHMM", strictly; seconds since 2001-01-01 UTC, or nothing.
std::optional<double> dateWithString(const QString &text);

} // namespace StringReadings
