#include "XmlValueText.h"
#include "DateMath.h"
#include "NumberText.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

bool isSpace(QChar c)
{
    const char16_t u = c.unicode();
    return u == u' ' || u == u'\t' || u == u'\n' || u == u'\r';
}

QStringView trimmedSpace(QStringView text)
{
    qsizetype start = 0, end = text.size();
    while (start < end && isSpace(text[start]))
        ++start;
    while (end > start && isSpace(text[end - 1]))
        --end;
    return text.sliced(start, end - start);
}

void report(XmlValueText::Problem *problem, XmlValueText::Problem what)
{
    if (problem)
        *problem = what;
}

// True when text is a decimal floating-point number as strtod reads it, without
// its hexadecimal and "nan(…)" forms, which the platform's scanner does not take.
bool isDecimalReal(QStringView text)
{
    qsizetype at = 0;
    auto digits = [&] {
        const qsizetype start = at;
        while (at < text.size() && text[at] >= u'0' && text[at] <= u'9')
            ++at;
        return at - start;
    };
    if (at < text.size() && (text[at] == u'+' || text[at] == u'-'))
        ++at;
    qsizetype mantissa = digits();
    if (at < text.size() && text[at] == u'.') {
        ++at;
        mantissa += digits();
    }
    if (mantissa == 0)
        return false;
    if (at < text.size() && (text[at] == u'e' || text[at] == u'E')) {
        ++at;
        if (at < text.size() && (text[at] == u'+' || text[at] == u'-'))
            ++at;
        if (digits() == 0)
            return false;
    }
    return at == text.size();
}


using DateMath::daysFromCivil;
using DateMath::kReferenceDay;
using DateMath::kSecondsPerDay;
// Beyond this many years the day count would no longer fit comfortably; no real
// file comes near it, and the writer clamps to stay inside.
constexpr qint64 kMaxYear = 1000000000;
constexpr double kMaxSeconds = 3.0e16; // about 950 million years

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

// Reads exactly two digits at text[at] that must lie in [low, high].
bool twoDigits(QStringView text, qsizetype at, int low, int high, int &value)
{
    if (at + 2 > text.size() || !isDigit(text[at]) || !isDigit(text[at + 1]))
        return false;
    value = (text[at].unicode() - u'0') * 10 + (text[at + 1].unicode() - u'0');
    return value >= low && value <= high;
}

void appendPadded(QByteArray &out, qint64 value, int width)
{
    const QByteArray digits = QByteArray::number(value);
    out.append(qMax<qsizetype>(0, width - digits.size()), '0');
    out.append(digits);
}

} // namespace

std::optional<PropertyList> XmlValueText::integer(QStringView content, Problem *problem)
{
    const QStringView text = trimmedSpace(content);
    qsizetype at = 0;
    bool negative = false;
    if (at < text.size() && (text[at] == u'+' || text[at] == u'-')) {
        negative = text[at++] == u'-';
        while (at < text.size() && isSpace(text[at]))
            ++at;
    }
    int base = 10;
    if (text.size() - at >= 2 && text[at] == u'0' && (text[at + 1] == u'x' || text[at + 1] == u'X')) {
        base = 16;
        at += 2;
    }
    if (at == text.size()) {
        report(problem, Problem::Malformed);
        return std::nullopt;
    }
    quint64 magnitude = 0;
    bool overflow = false;
    for (; at < text.size(); ++at) {
        const int digit = NumberText::digitValue(text[at].unicode(), base);
        if (digit < 0) {
            report(problem, Problem::Malformed);
            return std::nullopt;
        }
        if (magnitude > (std::numeric_limits<quint64>::max() - quint64(digit)) / quint64(base))
            overflow = true;
        else
            magnitude = magnitude * quint64(base) + quint64(digit);
    }
    constexpr quint64 kNegativeLimit = quint64(1) << 63;
    if (overflow || (negative && magnitude > kNegativeLimit)) {
        report(problem, Problem::OutOfRange);
        return std::nullopt;
    }
    if (negative) // -2^63 has no positive counterpart; the unsigned wrap gives it exactly
        return PropertyList::integerFromFile(static_cast<qint64>(0 - magnitude));
    if (magnitude > quint64(std::numeric_limits<qint64>::max())) // the platform keeps these in 128 bits
        return PropertyList::unsignedInteger(magnitude, 'Q');
    // integerFromFile makes 0 (however many zeros were written) and -1…12 'i', as the platform's cache does.
    return PropertyList::integerFromFile(static_cast<qint64>(magnitude));
}

// Parsed with an explicit C locale: the process may use a decimal comma.
std::optional<double> XmlValueText::real(QStringView content)
{
    const QStringView text = trimmedSpace(content);
    auto is = [&](const char *word) { return text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0; };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    if (is("nan"))
        return std::numeric_limits<double>::quiet_NaN();
    if (is("inf") || is("+inf") || is("infinity") || is("+infinity"))
        return kInfinity;
    if (is("-inf") || is("-infinity"))
        return -kInfinity;
    if (!isDecimalReal(text))
        return std::nullopt;
    const QByteArray ascii = text.toLatin1(); // isDecimalReal let only ASCII through
    // Out of range gives ±infinity or ±0, as strtod's callers on the platform get.
    return NumberText::strtodC(ascii.constData(), nullptr);
}

// Standard base64 with every other character skipped, as the platform reads
// <data>: line breaks, indentation and stray characters alike. '=' fills its
// place in a group of four and shortens that group's output.
QByteArray XmlValueText::data(QStringView text, qsizetype *firstStray)
{
    if (firstStray)
        *firstStray = -1;
    QByteArray out;
    out.reserve(text.size() / 4 * 3 + 3);
    quint32 bits = 0;
    int symbols = 0, padding = 0;
    auto flush = [&] {
        bits <<= 6 * (4 - symbols);
        const int bytes = qMax(0, symbols - 1 - padding);
        for (int i = 0; i < bytes; ++i)
            out.append(static_cast<char>(bits >> (16 - 8 * i)));
        bits = 0, symbols = 0, padding = 0;
    };
    for (const QChar &c : text) {
        const char16_t u = c.unicode();
        quint32 value = 0;
        if (u >= u'A' && u <= u'Z')
            value = u - u'A';
        else if (u >= u'a' && u <= u'z')
            value = u - u'a' + 26;
        else if (u >= u'0' && u <= u'9')
            value = u - u'0' + 52;
        else if (u == u'+')
            value = 62;
        else if (u == u'/')
            value = 63;
        else if (u == u'=')
            ++padding;
        else {
            if (firstStray && *firstStray < 0 && !isSpace(c))
                *firstStray = &c - text.data();
            continue;
        }
        bits = (bits << 6) | value;
        if (++symbols == 4)
            flush();
    }
    if (symbols > 0)
        flush();
    return out;
}

std::optional<double> XmlValueText::date(QStringView content)
{
    const QStringView text = trimmedSpace(content);
    qsizetype at = 0;
    const bool negative = !text.isEmpty() && text[0] == u'-';
    if (negative)
        ++at;
    const qsizetype yearStart = at;
    qint64 year = 0;
    for (; at < text.size() && isDigit(text[at]); ++at) {
        year = year * 10 + (text[at].unicode() - u'0');
        if (year > kMaxYear)
            return std::nullopt;
    }
    if (at == yearStart)
        return std::nullopt;
    int month = 0, day = 0, hour = 0, minute = 0, second = 0;
    // The fixed tail after the year: "-MM-DDTHH:MM:SSZ", 16 characters.
    if (text.size() - at != 16 || text[at] != u'-' || text[at + 3] != u'-' || text[at + 6] != u'T'
        || text[at + 9] != u':' || text[at + 12] != u':' || text[at + 15] != u'Z')
        return std::nullopt;
    if (!twoDigits(text, at + 1, 1, 12, month) || !twoDigits(text, at + 4, 1, 31, day)
        || !twoDigits(text, at + 7, 0, 23, hour) || !twoDigits(text, at + 10, 0, 59, minute)
        || !twoDigits(text, at + 13, 0, 59, second))
        return std::nullopt;
    // Day 31 of a short month is day 1 of the next one plus the excess, as calendar arithmetic gives.
    const qint64 days = daysFromCivil(negative ? -year : year, month, 1) + (day - 1) - kReferenceDay;
    return static_cast<double>(days * kSecondsPerDay + hour * 3600 + minute * 60 + second);
}

QByteArray XmlValueText::dateText(double secondsSinceReferenceDate)
{
    double seconds = std::isfinite(secondsSinceReferenceDate) ? std::floor(secondsSinceReferenceDate) : 0.0;
    seconds = qBound(-kMaxSeconds, seconds, kMaxSeconds);
    const qint64 total = static_cast<qint64>(seconds);
    qint64 days = total / kSecondsPerDay;
    qint64 secondOfDay = total % kSecondsPerDay;
    if (secondOfDay < 0) {
        secondOfDay += kSecondsPerDay;
        --days;
    }
    const DateMath::CivilDate date = DateMath::civilFromDays(days + kReferenceDay);
    QByteArray out;
    out.reserve(20);
    if (date.year < 0)
        out.append('-');
    appendPadded(out, date.year < 0 ? -date.year : date.year, 4);
    out.append('-');
    appendPadded(out, date.month, 2);
    out.append('-');
    appendPadded(out, date.day, 2);
    out.append('T');
    appendPadded(out, secondOfDay / 3600, 2);
    out.append(':');
    appendPadded(out, secondOfDay / 60 % 60, 2);
    out.append(':');
    appendPadded(out, secondOfDay % 60, 2);
    out.append('Z');
    return out;
}
