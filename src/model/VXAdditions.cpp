#include "VXAdditions.h"

#include "platform/StringReadings.h"

#include <QCoreApplication>
#include <QStringDecoder>
#include <QStringList>

#include <charconv>

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
        return {query, false, query.size() == 1 ? Qt::CaseSensitive : Qt::CaseInsensitive};
    const QChar second = query.at(1);
    const bool bothMarks = (first == u'#' && second == u'!') || (first == u'!' && second == u'#');
    if (bothMarks)
        return query.size() == 2 ? SearchQuery{query, false, Qt::CaseInsensitive}
                                 : SearchQuery{query.sliced(2), true, Qt::CaseSensitive};
    if (first == u'#')
        return {query.sliced(1), false, Qt::CaseSensitive};
    return {query.sliced(1), true, Qt::CaseInsensitive};
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

} // namespace

namespace VXAdditions {

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

bool containsString(const QString &text, const QString &query)
{
    if (query.isEmpty())
        return false;
    const SearchQuery search = parseQuery(query);
    return text.contains(search.needle, search.sensitivity) != search.negated;
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
