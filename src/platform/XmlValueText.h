#pragma once

#include "PropertyList.h"

#include <QByteArray>
#include <QStringView>

#include <optional>

// The text inside XML property lists' <integer>, <real>, <date> and <data>,
// read as the platform reads it, and dates written as it writes them. White
// space around a number or a date is allowed. Date arithmetic is proleptic
// Gregorian over any year, because real files hold years 0 and 4001.
class XmlValueText {
public:
    enum class Problem { Malformed, OutOfRange };

    // A sign (white space may follow it), then decimal or 0x hexadecimal digits.
    // Type codes as the platform gives them: 'i' for -1…12 and for all-zero
    // digits, 'Q' from INT64_MAX+1 to UINT64_MAX, 'q' otherwise. Values beyond
    // that range are OutOfRange; anything else not an integer is Malformed.
    static std::optional<PropertyList> integer(QStringView text, Problem *problem = nullptr);

    // A decimal number that fills the whole text, or nan, inf, infinity (signed
    // or not) in any case; read in the C locale. Out-of-range numbers give ±inf or ±0.
    static std::optional<double> real(QStringView text);

    // "[-]Y…Y-MM-DDTHH:MM:SSZ" with any number of year digits (the sign gives
    // years before 0), as seconds since 2001-01-01 00:00:00 UTC; nothing when the
    // text does not match or the year is beyond a billion either way. A day past
    // the end of its month runs on into the next month.
    static std::optional<double> date(QStringView text);

    // "YYYY-MM-DDTHH:MM:SSZ" in UTC, with the seconds floored as the platform
    // truncates them. Years before 0 get a '-', years past 9999 more digits, so
    // that date() reads every output back. Non-finite values write the reference date.
    static QByteArray dateText(double secondsSinceReferenceDate);

    // Standard base64 with every character outside the alphabet skipped;
    // firstStray gets the index of the first one that is not white space, or -1.
    static QByteArray data(QStringView base64, qsizetype *firstStray = nullptr);
};
