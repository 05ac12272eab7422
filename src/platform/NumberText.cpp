#include "NumberText.h"

#include <charconv>
#include <cmath>

namespace NumberText {

QString formatGeneral(double value, int precision)
{
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    char buffer[64];
    // to_chars with a precision is specified to produce exactly what printf's %.*g does.
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision);
    return QString::fromLatin1(buffer, result.ptr - buffer);
}

} // namespace NumberText
