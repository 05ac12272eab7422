#include "NumberText.h"

#include <charconv>
#include <cstdlib>
#include <locale.h>
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

double strtodC(const char *text, char **end)
{
    // Made once; QCoreApplication adopts the user's locale for the whole process,
    // under which a plain strtod would read "1.5" as 1.
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return strtod_l(text, end, cLocale);
}

bool isBeyondDouble(QStringView text, double read)
{
    if (!std::isinf(read) && read != 0.0)
        return false;
    bool nonZeroDigit = false;
    for (const QChar c : text) {
        const char16_t unit = c.unicode();
        if (unit == u'e' || unit == u'E')
            break; // the exponent's digits say nothing about the mantissa
        if ((unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z'))
            return false;
        nonZeroDigit = nonZeroDigit || (unit >= u'1' && unit <= u'9');
    }
    return std::isinf(read) || nonZeroDigit;
}

int digitValue(char16_t unit, int base)
{
    int value = -1;
    if (unit >= u'0' && unit <= u'9')
        value = unit - u'0';
    else if (unit >= u'a' && unit <= u'f')
        value = unit - u'a' + 10;
    else if (unit >= u'A' && unit <= u'F')
        value = unit - u'A' + 10;
    return value < base ? value : -1;
}

} // namespace NumberText
