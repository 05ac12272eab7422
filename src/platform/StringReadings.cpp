#include "StringReadings.h"

#include "DateMath.h"
#include "NumberText.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

// The platform's whitespace for number readings: every control unit and the
// blank, DEL through NO-BREAK SPACE, the typographic spaces up to ZERO WIDTH
// SPACE, and the ideographic space. It is wider than QChar::isSpace (it takes
// all C0 and C1 controls), so a value pasted with a stray control still reads.
bool isPlatformWhitespace(char16_t unit)
{
    return unit < 0x21 || (unit >= 0x7F && unit <= 0xA0) || (unit >= 0x2000 && unit <= 0x200B)
        || unit == 0x3000;
}

qsizetype skipWhitespace(const QString &text, qsizetype index)
{
    while (index < text.size() && isPlatformWhitespace(text.at(index).unicode()))
        ++index;
    return index;
}

bool isAsciiDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

// Everything strtod might take from the platform's point of view: digits,
// signs, points and exponent marks. Letters never get in, so "inf", "nan" and
// hex input read as 0, just as on the platform.
std::string numberRun(const QString &text)
{
    std::string run;
    for (qsizetype index = skipWhitespace(text, 0); index < text.size(); ++index) {
        const char16_t unit = text.at(index).unicode();
        const bool accepted = isAsciiDigit(unit) || unit == u'+' || unit == u'-' || unit == u'.'
            || unit == u'E' || unit == u'e';
        if (!accepted)
            break;
        run.push_back(static_cast<char>(unit));
    }
    return run;
}

// Reads exactly N ASCII digits at index; -1 when any of them is not a digit.
int fixedDigits(const QString &text, qsizetype index, int count)
{
    int value = 0;
    for (int digit = 0; digit < count; ++digit) {
        const char16_t unit = text.at(index + digit).unicode();
        if (!isAsciiDigit(unit))
            return -1;
        value = value * 10 + (unit - u'0');
    }
    return value;
}

struct DateFields {
    int year, month, day, hour, minute, second;
    int offsetSign, offsetHours, offsetMinutes;
};

// Splits "YYYY-MM-DD HH:MM:SS ±HHMM" into its numbers; nothing when any
// separator or digit is not exactly where the format puts it.
std::optional<DateFields> splitDate(const QString &text)
{
    static constexpr qsizetype kLength = 25;
    if (text.size() != kLength)
        return std::nullopt;
    const auto separatorAt = [&text](qsizetype index, char16_t expected) {
        return text.at(index).unicode() == expected;
    };
    if (!separatorAt(4, u'-') || !separatorAt(7, u'-') || !separatorAt(10, u' ') || !separatorAt(13, u':')
        || !separatorAt(16, u':') || !separatorAt(19, u' '))
        return std::nullopt;
    const char16_t sign = text.at(20).unicode();
    if (sign != u'+' && sign != u'-')
        return std::nullopt;
    DateFields fields{fixedDigits(text, 0, 4), fixedDigits(text, 5, 2), fixedDigits(text, 8, 2),
                      fixedDigits(text, 11, 2), fixedDigits(text, 14, 2), fixedDigits(text, 17, 2),
                      sign == u'-' ? -1 : 1, fixedDigits(text, 21, 2), fixedDigits(text, 23, 2)};
    for (int value : {fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second,
                      fields.offsetHours, fields.offsetMinutes}) {
        if (value < 0)
            return std::nullopt;
    }
    return fields;
}

bool fieldsInRange(const DateFields &fields)
{
    return fields.month >= 1 && fields.month <= 12 && fields.day >= 1
        && fields.day <= DateMath::daysInMonth(fields.year, fields.month) && fields.hour < 24
        && fields.minute < 60 && fields.second < 60 && fields.offsetMinutes < 60;
}

} // namespace

namespace StringReadings {

int intValue(const QString &text)
{
    qsizetype index = skipWhitespace(text, 0);
    bool negative = false;
    if (index < text.size() && (text.at(index) == u'+' || text.at(index) == u'-')) {
        negative = text.at(index) == u'-';
        ++index;
    }
    // Accumulate the magnitude in 64 bits and stop growing it once it is past
    // the 32-bit range; the rest of the digits are still read and dropped.
    static constexpr std::int64_t kLimit = std::int64_t(INT_MAX) + 1;
    std::int64_t magnitude = 0;
    for (; index < text.size() && isAsciiDigit(text.at(index).unicode()); ++index) {
        if (magnitude <= kLimit)
            magnitude = magnitude * 10 + (text.at(index).unicode() - u'0');
    }
    if (negative)
        return magnitude >= kLimit ? INT_MIN : static_cast<int>(-magnitude);
    return magnitude > INT_MAX ? INT_MAX : static_cast<int>(magnitude);
}

double doubleValue(const QString &text)
{
    const std::string run = numberRun(text);
    if (run.empty())
        return 0.0;
    // strtod_l stops at the first character that does not continue a number
    // ("3-4" reads 3, "1e" reads 1), answers 0 when it accepts nothing, and
    // ±HUGE_VAL (infinity) on overflow: the platform's results exactly.
    return NumberText::strtodC(run.c_str(), nullptr);
}

float floatValue(const QString &text)
{
    const double value = doubleValue(text);
    // The platform narrows its double. Doubles at or past the point where
    // rounding to float leaves FLT_MAX become infinity; say so explicitly, as
    // converting an out-of-range double is not defined by the language.
    static constexpr double kFloatOverflow = 0x1.ffffffp127;
    if (std::isfinite(value) && std::fabs(value) >= kFloatOverflow)
        return value > 0 ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

bool boolValue(const QString &text)
{
    qsizetype index = skipWhitespace(text, 0);
    if (index < text.size() && (text.at(index) == u'+' || text.at(index) == u'-'))
        ++index;
    while (index < text.size() && text.at(index) == u'0')
        ++index;
    if (index >= text.size())
        return false;
    const char16_t unit = text.at(index).unicode();
    return unit == u'Y' || unit == u'y' || unit == u'T' || unit == u't' || (unit >= u'1' && unit <= u'9');
}

std::optional<double> dateWithString(const QString &text)
{
    const std::optional<DateFields> fields = splitDate(text);
    if (!fields || !fieldsInRange(*fields))
        return std::nullopt;
    using DateMath::daysFromCivil, DateMath::kReferenceDay, DateMath::kSecondsPerDay;
    const std::int64_t days = daysFromCivil(fields->year, fields->month, fields->day) - kReferenceDay;
    const std::int64_t wallSeconds =
        days * kSecondsPerDay + fields->hour * 3600 + fields->minute * 60 + fields->second;
    const std::int64_t offsetSeconds = fields->offsetSign * (fields->offsetHours * 3600 + fields->offsetMinutes * 60);
    return static_cast<double>(wallSeconds - offsetSeconds);
}

} // namespace StringReadings
