#pragma once

#include <QtGlobal>

#include <cmath>
#include <limits>

// Reals read as 64-bit integers. The language leaves a conversion outside the
// target's range undefined; these truncate towards zero as the platform's
// number class does and saturate at the target's limits, and NaN reads as 0,
// so every real has an answer.
namespace NumberConversion {

inline qint64 saturatedInt64(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= 0x1p63)
        return std::numeric_limits<qint64>::max();
    if (value <= -0x1p63)
        return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(value);
}

inline quint64 saturatedUInt64(double value)
{
    if (!(value > -1.0)) // NaN too
        return 0;
    if (value >= 0x1p64)
        return std::numeric_limits<quint64>::max();
    return static_cast<quint64>(value);
}

} // namespace NumberConversion
