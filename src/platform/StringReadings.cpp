#include "StringReadings.h"

namespace StringReadings {

int intValue(const QString &) { return 0; }
double doubleValue(const QString &) { return 0; }
float floatValue(const QString &) { return 0; }
bool boolValue(const QString &) { return false; }
std::optional<double> dateWithString(const QString &) { return std::nullopt; }

} // namespace StringReadings
