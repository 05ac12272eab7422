#include "VXAdditions.h"

#include "platform/StringReadings.h"

#include <QCoreApplication>
#include <QStringDecoder>
#include <QStringList>

#include <algorithm>
#include <charconv>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// One search: the needle, whether it must be absent, and how letters compare.
struct SearchQuery {
    QString needle;
    bool negated = false;
    Qt::CaseSensitivity sensitivity = Qt::CaseInsensitive;
};

// Reads the marks at the front of a non-empty query. A mark alone, or the two
// marks alone, is not a mark but the text to look for, so a user can still
// search for "#" or "!".
SearchQuery parseQuery(const QString &query)
{
    const QChar first = query.front();
    const bool firstIsMark = first == u'#' || first == u'!';
    if (!firstIsMark || query.size() == 1)
        return {query, false, Qt::CaseInsensitive};
    const QChar second = query.at(1);
    const bool bothMarks = (first == u'#' && second == u'!') || (first == u'!' && second == u'#');
    if (bothMarks)
        return query.size() == 2 ? SearchQuery{query, false, Qt::CaseInsensitive}
                                 : SearchQuery{query.sliced(2), true, Qt::CaseSensitive};
    if (first == u'#')
        return {query.sliced(1), false, Qt::CaseSensitive};
    return {query.sliced(1), true, Qt::CaseInsensitive};
}

// Qt folds case unit by unit. Among the units beyond ASCII exactly two fold into
// it, KELVIN SIGN to k and LATIN SMALL LETTER LONG S to s; every other one (a
// surrogate included) folds to something beyond ASCII, so against an ASCII
// needle it can only answer "no match".
constexpr char16_t kKelvinSign = 0x212A;
constexpr char16_t kLongS = 0x017F;
constexpr char16_t kFoldsBeyondAscii = 0xFFFF;

char16_t foldToAscii(char16_t unit)
{
    if (unit < 0x80)
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
    if (unit == kKelvinSign)
        return u'k';
    if (unit == kLongS)
        return u's';
    return kFoldsBeyondAscii;
}

using FirstUnit = VXAdditions::SearchPattern::FirstUnit;

bool canStartMatch(char16_t unit, const FirstUnit &firstUnit)
{
    return static_cast<char16_t>(unit | firstUnit.mask[0]) == firstUnit.first[0] || unit == firstUnit.alternate[0];
}

#ifdef __SSE2__
__m128i loadEight(const char16_t *units) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(units)); }

// Eight units at a time: the byte mask (two bits per unit) of the units that
// can start a match.
unsigned firstUnitLanes(__m128i block, __m128i first, __m128i mask, __m128i alternate)
{
    const __m128i hits = _mm_or_si128(_mm_cmpeq_epi16(_mm_or_si128(block, mask), first),
                                      _mm_cmpeq_epi16(block, alternate));
    return static_cast<unsigned>(_mm_movemask_epi8(hits));
}

// Four units into the low half; the lanes of the upper half are not looked at.
__m128i loadFour(const char16_t *units) { return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(units)); }
#endif

// Most texts hold no unit that can start a match, and telling that takes a few
// instructions per eight units.
bool mayStartMatch(QStringView text, const FirstUnit &firstUnit)
{
    const char16_t *units = text.utf16();
#ifdef __SSE2__
    if (text.size() >= 4) {
        const __m128i first = loadEight(firstUnit.first);
        const __m128i mask = loadEight(firstUnit.mask);
        const __m128i alternate = loadEight(firstUnit.alternate);
        if (text.size() < 8) {
            // Two blocks of four, overlapping unless there are exactly eight.
            const __m128i halves = _mm_unpacklo_epi64(loadFour(units), loadFour(units + text.size() - 4));
            return firstUnitLanes(halves, first, mask, alternate) != 0;
        }
        // The last block may overlap the one before it.
        const char16_t *lastBlock = units + text.size() - 8;
        for (const char16_t *block = units; block < lastBlock; block += 8) {
            if (firstUnitLanes(loadEight(block), first, mask, alternate) != 0)
                return true;
        }
        return firstUnitLanes(loadEight(lastBlock), first, mask, alternate) != 0;
    }
#endif
    return std::any_of(units, units + text.size(), [&](char16_t unit) { return canStartMatch(unit, firstUnit); });
}

// The needle at text, whose first unit is already known to match.
bool matchesAt(const char16_t *text, QStringView needle, bool folded)
{
    const char16_t *units = needle.utf16();
    if (!folded)
        return std::equal(units + 1, units + needle.size(), text + 1);
    for (qsizetype i = 1; i < needle.size(); ++i) {
        if (foldToAscii(text[i]) != units[i])
            return false;
    }
    return true;
}

// The searches proper are kept out of line, so that the common path through
// SearchPattern::contains (no unit that can start a match) stays short.
Q_NEVER_INLINE bool find(QStringView text, qsizetype last, QStringView needle, bool folded, const FirstUnit &firstUnit)
{
    const char16_t *units = text.utf16();
    for (qsizetype position = 0; position <= last; ++position) {
        if (canStartMatch(units[position], firstUnit) && matchesAt(units + position, needle, folded))
            return true;
    }
    return false;
}

Q_NEVER_INLINE bool containsFolded(QStringView text, QStringView needle)
{
    return text.contains(needle, Qt::CaseInsensitive);
}

// printf's "%f" without the process locale: to_chars with a precision gives
// exactly what printf prints, always with a decimal point.
QString fixedSix(double value)
{
    char buffer[400]; // the largest double has 309 integer digits
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 6);
    if (result.ec != std::errc())
        return QStringLiteral("0.000000");
    return QString::fromLatin1(buffer, result.ptr - buffer);
}

// The bit of one UTF-16 unit in a text's signature.
quint64 signatureBit(char16_t unit)
{
    constexpr int kOther = VXAdditions::TextSignature::kBits - 1;
    const char16_t folded = foldToAscii(unit);
    if (folded >= u'a' && folded <= u'z')
        return quint64(1) << (folded - u'a');
    if (folded >= u'0' && folded <= u'9')
        return quint64(1) << (26 + (folded - u'0'));
    return quint64(1) << kOther;
}

} // namespace

namespace VXAdditions {

quint64 TextSignature::of(QStringView text)
{
    quint64 signature = 0;
    for (const QChar unit : text) {
        signature |= signatureBit(unit.unicode());
        if (signature == kEverything)
            break;
    }
    return signature;
}

quint64 TextSignature::ofNumbers() { return of(u"0123456789+-.einfa"); }

bool boolValue(const QString &text)
{
    // The words are tested in the product's order and compared exactly, so
    // "Yes" and "True" are not among them.
    static const char *const words[] = {QT_TRANSLATE_NOOP("VXAdditions", "YES"),
                                        QT_TRANSLATE_NOOP("VXAdditions", "yes"),
                                        QT_TRANSLATE_NOOP("VXAdditions", "TRUE"),
                                        QT_TRANSLATE_NOOP("VXAdditions", "true")};
    for (const char *word : words) {
        if (text == QCoreApplication::translate("VXAdditions", word))
            return true;
    }
    return StringReadings::intValue(text) > 0;
}

bool beginsWithString(const QString &text, const QString &prefix)
{
    if (prefix.isEmpty())
        return false;
    return text.startsWith(prefix, Qt::CaseSensitive);
}

std::optional<QString> subPathFromBase(const QString &text, const QString &base, bool removeSlash)
{
    if (base.isEmpty() || text.size() <= base.size())
        return std::nullopt;
    const qsizetype found = text.indexOf(base, 0, Qt::CaseSensitive);
    if (found < 0)
        return std::nullopt;
    const qsizetype start = found + base.size() + (removeSlash ? 1 : 0);
    if (start >= text.size())
        return QStringLiteral("");
    return text.sliced(start);
}

bool containsString(const QString &text, const QString &query) { return SearchPattern(query).matches(text); }

SearchPattern::SearchPattern(const QString &query)
{
    if (query.isEmpty())
        return;
    const SearchQuery search = parseQuery(query);
    m_matchesNothing = false;
    m_negated = search.negated;
    m_needle = search.needle;
    if (search.sensitivity == Qt::CaseInsensitive) {
        const bool ascii = std::all_of(m_needle.cbegin(), m_needle.cend(), [](QChar c) { return c.unicode() < 0x80; });
        m_folded = ascii;
        m_unicodeFallback = !ascii;
        if (ascii)
            m_needle = m_needle.toLower(); // for ASCII the same as folding
    }
    // Only an empty query leaves nothing to look for, and that matches nothing.
    Q_ASSERT(!m_needle.isEmpty());
    const char16_t first = m_needle.front().unicode();
    char16_t mask = 0;
    char16_t alternate = first;
    if (m_folded && first >= u'a' && first <= u'z') {
        mask = 0x20; // sets the lower-case bit, so A and a both start a match
        if (first == u'k')
            alternate = kKelvinSign;
        else if (first == u's')
            alternate = kLongS;
    }
    // Beyond ASCII, a caseless search folds more than the signature knows.
    if (!m_unicodeFallback)
        m_signature = TextSignature::of(m_needle);
    std::fill_n(m_firstUnit.first, 8, first);
    std::fill_n(m_firstUnit.mask, 8, mask);
    std::fill_n(m_firstUnit.alternate, 8, alternate);
}

bool SearchPattern::contains(QStringView text) const
{
    const qsizetype last = text.size() - m_needle.size(); // the last position a match can start at
    if (last < 0)
        return false;
    if (m_unicodeFallback)
        return containsFolded(text, m_needle);
    // This runs for every name and value of a tree on each keystroke; only the
    // texts that hold a possible first unit are searched.
    return mayStartMatch(text, m_firstUnit) && find(text, last, m_needle, m_folded, m_firstUnit);
}

bool SearchPattern::mayOccurInNumberText() const
{
    if (m_matchesNothing)
        return false;
    constexpr QStringView numberUnits = u"0123456789+-.einfaEINFA";
    return std::all_of(m_needle.cbegin(), m_needle.cend(), [&](QChar unit) { return numberUnits.contains(unit); });
}

QChar lastCharacter(const QString &text)
{
    Q_ASSERT(!text.isEmpty());
    return text.back();
}

std::optional<QString> stringWithData(const QByteArray &bytes)
{
    // Stateless, so a sequence cut off at the end counts as an error instead
    // of waiting for more bytes.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

QString stringFromColor(const CalibratedColor &color)
{
    return fixedSix(color.red) + u' ' + fixedSix(color.green) + u' ' + fixedSix(color.blue) + u' '
        + fixedSix(color.alpha);
}

CalibratedColor colorFromString(const QString &text)
{
    // Split at every single blank, keeping empty parts: "1  0 0 1" has five
    // parts and is therefore black, as in the product.
    const QStringList parts = text.split(u' ', Qt::KeepEmptyParts);
    if (parts.size() != 4)
        return CalibratedColor{0, 0, 0, 1};
    return CalibratedColor{StringReadings::floatValue(parts.at(0)), StringReadings::floatValue(parts.at(1)),
                           StringReadings::floatValue(parts.at(2)), StringReadings::floatValue(parts.at(3))};
}

} // namespace VXAdditions
