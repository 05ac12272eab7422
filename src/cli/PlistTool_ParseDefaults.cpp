// orvane-plist parse-defaults: shows what a drop of `defaults write` text would
// make, one record per command, so setup scripts can be checked before they
// are dropped onto the editor.
#include "PlistTool.h"

#include "import/DefaultsTextParser.h"
#include "model/ValueClass.h"

#include <climits>

using namespace Qt::StringLiterals;

namespace {

// Domains and keys may hold blanks, quotes and (in --whole mode) newlines; the
// quoted form keeps every record on its first line and unambiguous.
QString quoted(const QString &text)
{
    QString out;
    out.reserve(text.size() + 2);
    out += u'"';
    for (const QChar unit : text) {
        switch (unit.unicode()) {
        case u'"':
            out += u"\\\""_s;
            break;
        case u'\\':
            out += u"\\\\"_s;
            break;
        case u'\n':
            out += u"\\n"_s;
            break;
        case u'\r':
            out += u"\\r"_s;
            break;
        case u'\t':
            out += u"\\t"_s;
            break;
        default:
            if (unit.unicode() < 0x20)
                out += u"\\u%1"_s.arg(uint(unit.unicode()), 4, 16, QChar(u'0'));
            else
                out += unit;
        }
    }
    out += u'"';
    return out;
}

// Further lines of a multi-line description go under their record, indented,
// so every record starts at the left margin with its number.
QString indentedDescription(const PropertyList &value)
{
    QString text = value.description();
    text.replace(u'\n', u"\n    "_s);
    return text;
}

// One record: "N: entry DOMAIN KEY CLASS VALUE", "N: no result" or "N: error: …".
QString record(int number, const ReadResult<std::optional<DefaultsEntry>> &result, bool wholeText)
{
    const QString start = QString::number(number) + u": "_s;
    if (!result) {
        // A line on its own is always line 1 of its text; the column is what helps.
        return start + u"error: "_s
            + (wholeText ? result.errorText() : u"%1 (column %2)"_s.arg(result.message).arg(result.position.column));
    }
    if (!result.value)
        return start + u"no result"_s;
    const DefaultsEntry &entry = *result.value;
    const PropertyList &value = entry.dictionary.valueAt(0);
    return start + u"entry "_s + quoted(entry.domain) + u' ' + quoted(entry.dictionary.keyAt(0)) + u' '
        + ValueClasses::titleOf(value) + u' ' + indentedDescription(value);
}

bool isSkipped(const QString &line)
{
    const QString trimmed = line.trimmed();
    return trimmed.isEmpty() || trimmed.startsWith(u'#');
}

} // namespace

int PlistTool::parseDefaults(const QStringList &arguments)
{
    bool wholeText = false;
    QString path;
    for (const QString &argument : arguments) {
        if (argument == u"--whole")
            wholeText = true;
        else if (argument.startsWith(u"--"))
            return usage(u"parse-defaults does not know the option '%1'"_s.arg(argument));
        else if (!path.isEmpty())
            return usage(u"parse-defaults reads one file"_s);
        else
            path = argument;
    }

    QString text;
    if (!readTextInput(path, &text))
        return 1;

    if (wholeText) {
        m_out << record(1, DefaultsTextParser::dictionaryFromDefaultsString(text), true) << '\n';
        return 0;
    }
    const QStringList lines = text.split(u'\n');
    for (qsizetype index = 0; index < lines.size(); ++index) {
        QString line = lines.at(index);
        if (line.endsWith(u'\r'))
            line.chop(1); // a script saved with CRLF line ends
        if (isSkipped(line))
            continue;
        m_out << record(int(qMin<qsizetype>(index + 1, INT_MAX)), DefaultsTextParser::dictionaryFromDefaultsString(line),
                        false)
              << '\n';
    }
    return 0;
}
