#include "DefaultsScalarNotes.h"

#include "platform/NumberText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// "<quoted text> <what>; it is read as <read>"
ReadWarning readAs(ReadWarning::Kind kind, const QString &text, const QString &what, const QString &read)
{
    return {kind, SourcePosition(), u"%1 %2; it is read as %3"_s.arg(quotedForMessage(text), what, read)};
}

} // namespace

namespace DefaultsScalarNotes {

std::optional<ReadWarning> integer(const QString &text, int read)
{
    const QString number = text.trimmed();
    const bool negative = number.startsWith(u'-');
    const QStringView digits = QStringView(number).sliced(negative || number.startsWith(u'+') ? 1 : 0);
    bool whole = !digits.isEmpty();
    qint64 magnitude = 0;
    for (const QChar digit : digits) {
        whole = whole && digit.unicode() >= u'0' && digit.unicode() <= u'9';
        if (!whole)
            break;
        magnitude = qMin(magnitude * 10 + (digit.unicode() - u'0'), qint64(1) << 40); // past 32 bits is enough
    }
    const QString readText = QString::number(read);
    if (!whole)
        return readAs(ReadWarning::Kind::Adjusted, text, u"is not a whole integer"_s, readText);
    if ((negative ? -magnitude : magnitude) != read)
        return readAs(ReadWarning::Kind::OutOfRange, text, u"lies beyond the 32-bit range"_s, readText);
    return std::nullopt;
}

std::optional<ReadWarning> real(const QString &text, double read)
{
    const QString number = text.trimmed();
    const QByteArray ascii = number.toLatin1();
    // The reading takes only these characters, so "inf" or "0x1p3" read as 0.
    const bool numeric = std::all_of(ascii.cbegin(), ascii.cend(), [](char c) {
        return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
    });
    char *end = nullptr;
    NumberText::strtodC(ascii.constData(), &end);
    const QString readText = NumberText::formatGeneral(read, 17);
    if (ascii.isEmpty() || !numeric || end != ascii.constData() + ascii.size())
        return readAs(ReadWarning::Kind::Adjusted, text, u"is not a number as a whole"_s, readText);
    if (NumberText::isBeyondDouble(number, read))
        return readAs(ReadWarning::Kind::OutOfRange, text, u"lies beyond the range of a double"_s, readText);
    return std::nullopt;
}

std::optional<ReadWarning> boolean(const QString &text, QStringView booleanText, bool read)
{
    const bool isTrue = text == u"true" || text == u"yes";
    if ((isTrue || text == u"false" || text == u"no") && isTrue == read)
        return std::nullopt;
    const QString value = read ? u"true"_s : u"false"_s;
    if (booleanText == text) // in the command, or a list item the same as the text after it
        return readAs(ReadWarning::Kind::Adjusted, text, u"is not true, yes, false or no"_s, value);
    const QString why = u"is judged by the text after it, as booleans in lists are"_s;
    return readAs(ReadWarning::Kind::Adjusted, text, why, value);
}

} // namespace DefaultsScalarNotes
