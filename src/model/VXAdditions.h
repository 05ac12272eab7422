#pragma once

#include <QByteArray>
#include <QChar>
#include <QString>
#include <QStringView>

#include <optional>

// A colour as the application stores it in preferences: calibrated RGB with
// alpha, each component nominally 0…1. The core links only QtCore, so this is
// a plain value; converting to and from QColor is the GUI library's job.
struct CalibratedColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const CalibratedColor &other) const = default;
};

// The application's own string and colour helpers. These are the product's
// definitions (not the platform's NSString readings in StringReadings): its
// preference values, path handling and the search field's query language.
namespace VXAdditions {

// True for exactly "YES", "yes", "TRUE" or "true" (as translated), or when the
// leading integer is positive; so "Yes" and "True" are false and "2" is true.
bool boolValue(const QString &text);
// Whether text starts with prefix, case-sensitively; false for an empty prefix.
bool beginsWithString(const QString &text, const QString &prefix);
// What follows the first occurrence of base in text, one more unit dropped when
// removeSlash is set; nothing when base is empty, absent or not shorter than text.
std::optional<QString> subPathFromBase(const QString &text, const QString &base, bool removeSlash);
// The search field's match: plain text ignoring case; "#" makes it exact, "!"
// negates, "#!" or "!#" do both. An empty query matches nothing.
bool containsString(const QString &text, const QString &query);

// Which characters a text holds, one bit per kind: each ASCII letter (case
// folded; the Kelvin sign and the long s count as k and s, as the search folds
// them), each digit, and one bit for everything else. A text whose signature
// lacks a bit of a query's signature cannot contain the query, so the filter
// can pass over it without reading it. Nodes keep the signature of their texts.
namespace TextSignature {
constexpr int kBits = 37;
constexpr quint64 kEverything = (quint64(1) << kBits) - 1;
quint64 of(QStringView text);
// What any number's description may hold: digits, sign, point, "e", "inf", "nan".
quint64 ofNumbers();
} // namespace TextSignature

// A search-field query read once, for matching it against many texts: the
// filter tests every name and value of a tree on each keystroke, so the marks
// are read here and nothing is allocated per text. matches(text) is exactly
// containsString(text, query).
class SearchPattern {
public:
    explicit SearchPattern(const QString &query);
    bool matches(QStringView text) const { return !m_matchesNothing && contains(text) != m_negated; }
    // Whether the text looked for could lie in a number's description (digits,
    // sign, point, exponent, inf, nan). When it cannot, matches() answers a
    // number's text as it answers an empty one, so the filter need not make it.
    bool mayOccurInNumberText() const;
    // The signature every text that contains the text looked for has; 0 (which
    // every text has) when that cannot be told from the characters alone.
    quint64 signature() const { return m_signature; }

    // What a text unit must be to start a match, each repeated for eight units
    // at once: (unit | mask) equals first, or the unit is alternate (a unit
    // beyond ASCII that folds to first).
    struct FirstUnit {
        alignas(16) char16_t first[8] = {};
        alignas(16) char16_t mask[8] = {};
        alignas(16) char16_t alternate[8] = {};
    };

private:
    bool contains(QStringView text) const;

    QString m_needle; // lower case when m_folded
    bool m_matchesNothing = true;
    bool m_negated = false;
    // A case-insensitive search of an ASCII needle folds the text unit by unit
    // here; any other case-insensitive search is left to Qt.
    bool m_folded = false;
    bool m_unicodeFallback = false;
    FirstUnit m_firstUnit;
    quint64 m_signature = 0;
};

// The last UTF-16 unit; text must not be empty.
QChar lastCharacter(const QString &text);
// The bytes as UTF-8 text; nothing when they are not valid UTF-8.
std::optional<QString> stringWithData(const QByteArray &bytes);
// "r g b a", each "%f" in the C locale.
QString stringFromColor(const CalibratedColor &color);
// The reverse of stringFromColor; opaque black unless there are exactly four
// blank-separated parts.
CalibratedColor colorFromString(const QString &text);

} // namespace VXAdditions
