#include "document/PrintSyntaxColoring.h"

#include "document/plistDocument.h"
#include "platform/PropertyListSerialization.h"

#include <QLatin1StringView>

#include <array>
#include <functional>
#include <vector>

namespace PrintSyntaxColoring {

namespace {

// The element names the property-list format uses.
constexpr std::array<QLatin1StringView, 11> kElementNames{
    QLatin1StringView("plist"),  QLatin1StringView("dict"),    QLatin1StringView("key"),
    QLatin1StringView("string"), QLatin1StringView("integer"), QLatin1StringView("array"),
    QLatin1StringView("real"),   QLatin1StringView("true"),    QLatin1StringView("false"),
    QLatin1StringView("date"),   QLatin1StringView("data")};

// A text scanner that passes over the characters it is told to skip before
// each scan, and counts as at its end when only such characters are left.
class Scanner {
public:
    Scanner(const QString &text, std::function<bool(QChar)> skipped)
        : m_text(text), m_skipped(std::move(skipped))
    {
    }

    // Moves to the next stop character, or to the end when there is none.
    void scanUpTo(QChar stop)
    {
        while (location < m_text.size() && m_skipped(m_text.at(location)))
            ++location;
        const qsizetype found = m_text.indexOf(stop, location);
        location = found < 0 ? m_text.size() : found;
    }

    bool isAtEnd() const
    {
        for (qsizetype i = location; i < m_text.size(); ++i) {
            if (!m_skipped(m_text.at(i)))
                return false;
        }
        return true;
    }

    qsizetype location = 0;

private:
    const QString &m_text;
    std::function<bool(QChar)> m_skipped;
};

// One colour per UTF-16 unit (0 for none), so that a later pass simply
// overwrites an earlier one.
class Canvas {
public:
    explicit Canvas(qsizetype size) : m_units(static_cast<size_t>(size), 0) {}

    // A range reaching past the text is cut at its end: a "<" that ends the
    // text would otherwise colour the unit after it.
    void paint(qsizetype position, qsizetype length, SyntaxColor color)
    {
        const qsizetype size = qsizetype(m_units.size());
        const qsizetype end = qBound(qsizetype(0), position + length, size);
        for (qsizetype i = qBound(qsizetype(0), position, size); i < end; ++i)
            m_units[static_cast<size_t>(i)] = static_cast<unsigned char>(int(color) + 1);
    }

    QList<ColorRun> runs() const
    {
        QList<ColorRun> answer;
        for (size_t i = 0; i < m_units.size();) {
            size_t end = i + 1;
            while (end < m_units.size() && m_units[end] == m_units[i])
                ++end;
            if (m_units[i] != 0)
                answer.append({qsizetype(i), qsizetype(end - i), SyntaxColor(m_units[i] - 1)});
            i = end;
        }
        return answer;
    }

private:
    std::vector<unsigned char> m_units;
};

// Tag contents: what lies between "<" and ">". A "<" with no ">" after it
// colours only the unit that follows it.
void colorTagContents(const QString &text, Canvas &canvas)
{
    Scanner scanner(text, [](QChar unit) { return unit.isSpace(); });
    for (;;) {
        scanner.scanUpTo(u'<');
        if (scanner.isAtEnd())
            return;
        const qsizetype start = scanner.location + 1;
        scanner.scanUpTo(u'>');
        canvas.paint(start, scanner.isAtEnd() ? 1 : scanner.location - start, SyntaxColor::Brown);
    }
}

// Quoted text, quotes included. A quote not closed before the next "<" colours
// up to that "<" (or to the end of a text with no "<" left), and scanning goes
// on from there, so a stray quote in a value cannot colour the tags after it.
void colorQuotedText(const QString &text, Canvas &canvas)
{
    Scanner scanner(text, [](QChar unit) { return unit == u'>'; });
    for (;;) {
        scanner.scanUpTo(u'"');
        if (scanner.isAtEnd())
            return;
        const qsizetype open = scanner.location;
        scanner.location = open + 1;
        qsizetype nextTag = text.indexOf(u'<', open);
        if (nextTag < 0)
            nextTag = text.size();
        scanner.scanUpTo(u'"');
        if (!scanner.isAtEnd() && nextTag >= scanner.location) {
            canvas.paint(open, scanner.location - open + 1, SyntaxColor::Blue);
            scanner.location += 1;
            continue;
        }
        canvas.paint(open, nextTag - open, SyntaxColor::Blue);
        if (scanner.isAtEnd())
            return;
        scanner.location = nextTag;
    }
}

// Element names, ignoring case: after "<" (with the slash of an empty tag),
// after "/" (the slash of a closing tag with it), or anywhere before a "/".
// So "/date" in the value "up/date" is coloured too, and "database" is not.
void colorElementNames(const QString &text, Canvas &canvas)
{
    for (const QLatin1StringView name : kElementNames) {
        const qsizetype length = name.size();
        for (qsizetype at = text.indexOf(name, 0, Qt::CaseInsensitive); at >= 0;
             at = text.indexOf(name, at + 1, Qt::CaseInsensitive)) {
            const QChar before = at > 0 ? text.at(at - 1) : QChar();
            const bool slashAfter = at + length < text.size() && text.at(at + length) == u'/';
            if (before == u'<')
                canvas.paint(at, slashAfter ? length + 1 : length, SyntaxColor::Purple);
            else if (before == u'/')
                canvas.paint(at - 1, length + 1, SyntaxColor::Purple);
            else if (slashAfter)
                canvas.paint(at, length + 1, SyntaxColor::Purple);
        }
    }
}

// Brackets in pairs: each "<" and the first ">" after it. A ">" before any
// "<" and a second "<" before the ">" stay as they were.
void colorBrackets(const QString &text, Canvas &canvas)
{
    for (qsizetype from = 0;;) {
        const qsizetype open = text.indexOf(u'<', from);
        if (open < 0)
            return;
        canvas.paint(open, 1, SyntaxColor::Purple);
        const qsizetype close = text.indexOf(u'>', open + 1);
        if (close < 0)
            return;
        canvas.paint(close, 1, SyntaxColor::Purple);
        from = close + 1;
    }
}

QString cssColor(SyntaxColor color)
{
    const CalibratedColor rgb = calibratedColor(color);
    return QString::asprintf("#%02x%02x%02x", qRound(rgb.red * 255), qRound(rgb.green * 255),
                             qRound(rgb.blue * 255));
}

} // namespace

CalibratedColor calibratedColor(SyntaxColor color)
{
    switch (color) {
    case SyntaxColor::Brown:
        return {0.6, 0.4, 0.2, 1};
    case SyntaxColor::Blue:
        return {0, 0, 1, 1};
    case SyntaxColor::Purple:
        return {0.5, 0, 0.5, 1};
    }
    return {};
}

QString colorName(SyntaxColor color)
{
    switch (color) {
    case SyntaxColor::Brown:
        return QStringLiteral("brown");
    case SyntaxColor::Blue:
        return QStringLiteral("blue");
    case SyntaxColor::Purple:
        return QStringLiteral("purple");
    }
    return QString();
}

QList<ColorRun> colorString(const QString &text)
{
    Canvas canvas(text.size());
    colorTagContents(text, canvas);
    colorQuotedText(text, canvas);
    colorElementNames(text, canvas);
    colorBrackets(text, canvas);
    return canvas.runs();
}

QString printText(const PropertyList &value, QString *error)
{
    const QByteArray bytes = PropertyListSerialization::write(value, PropertyListFormat::Xml);
    if (bytes.isEmpty()) {
        if (error)
            *error = PropertyListSerialization::writeProblem(value);
        return QString();
    }
    const std::optional<QString> text = VXAdditions::stringWithData(bytes);
    if (!text && error)
        *error = QStringLiteral("the XML text is not valid UTF-8");
    return text.value_or(QString());
}

QString printText(const plistDocument &document, QString *error)
{
    return printText(document.cachedTreeData()->initialValue(), error);
}

QString htmlFromColoredText(const QString &text, const QList<ColorRun> &runs, const QString &title)
{
    QString page = QStringLiteral("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>") +
                   title.toHtmlEscaped() + QStringLiteral("</title>\n<style>\npre { font-size: 9pt; }\n");
    for (const SyntaxColor color : {SyntaxColor::Brown, SyntaxColor::Blue, SyntaxColor::Purple})
        page += QStringLiteral(".%1 { color: %2; }\n").arg(colorName(color), cssColor(color));
    page += QStringLiteral("</style>\n</head>\n<body>\n<pre>");
    qsizetype at = 0;
    for (const ColorRun &run : runs) {
        // Runs that overlap or leave the text are cut, so spans never nest.
        const qsizetype start = qBound(at, run.position, text.size());
        const qsizetype end = qBound(start, run.position + run.length, text.size());
        if (start == end)
            continue;
        page += text.mid(at, start - at).toHtmlEscaped();
        page += QStringLiteral("<span class=\"%1\">").arg(colorName(run.color)) +
                text.mid(start, end - start).toHtmlEscaped() + QStringLiteral("</span>");
        at = end;
    }
    page += text.mid(at).toHtmlEscaped() + QStringLiteral("</pre>\n</body>\n</html>\n");
    return page;
}

} // namespace PrintSyntaxColoring
