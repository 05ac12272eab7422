#pragma once

#include <QtGlobal>

// Calendar arithmetic on the proleptic Gregorian calendar in UTC, shared by the
// readers and writers of dates. The platform counts time in seconds from its
// reference date, 2001-01-01 00:00:00 UTC, rather than from the Unix epoch.
namespace DateMath {

constexpr qint64 kSecondsPerDay = 86400;

struct CivilDate {
    qint64 year;
    int month; // 1-12
    int day;   // 1-31
};

constexpr bool isLeapYear(qint64 year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

constexpr int daysInMonth(qint64 year, int month)
{
    constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

// Days from 1970-01-01 to a date (Howard Hinnant's algorithm): years counted
// from March, so the leap day falls at the end of the year, in 400-year eras of
// 146097 days. A day past the month's end runs on into the next month.
constexpr qint64 daysFromCivil(qint64 year, int month, int day)
{
    year -= month <= 2 ? 1 : 0;
    const qint64 era = (year >= 0 ? year : year - 399) / 400;
    const qint64 yearOfEra = year - era * 400;
    const qint64 dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const qint64 dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// The date a day count from 1970-01-01 falls on: the inverse of daysFromCivil.
constexpr CivilDate civilFromDays(qint64 days)
{
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const qint64 dayOfEra = days - era * 146097;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

// The reference date as a day count and in Unix seconds.
constexpr qint64 kReferenceDay = daysFromCivil(2001, 1, 1);
constexpr qint64 kReferenceDateUnixSeconds = kReferenceDay * kSecondsPerDay;
static_assert(kReferenceDateUnixSeconds == 978307200);

// Seconds since the reference date of a moment given in milliseconds since
// the Unix epoch (as QDateTime counts).
constexpr double secondsSinceReferenceDate(qint64 unixMilliseconds)
{
    return static_cast<double>(unixMilliseconds) / 1000.0 - static_cast<double>(kReferenceDateUnixSeconds);
}

} // namespace DateMath
