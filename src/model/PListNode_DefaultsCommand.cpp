// The `defaults write` command line that sets a node's entry, for the pasteboard
// beside the other forms of the entry. Text only: nothing here runs it.
#include "PListNode.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

QString tr(const char *text) { return QCoreApplication::translate("PListNode", text); }

// The characters a word may hold and still be written bare on a shell line.
// The double quote is among them, but escaping puts a backslash before every
// one, so a word that held a quote ends up quoted all the same.
bool isPlain(QChar character)
{
    const char16_t c = character.unicode();
    if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9'))
        return true;
    switch (c) {
    case u'.': case u'+': case u'-': case u'_': case u'/': case u'"': case u',': case u'@': case u':':
    case u'=': case u'$': case u'%': case u'^': case u'[': case u']': case u'{': case u'}':
        return true;
    default:
        return false;
    }
}

bool needsQuotes(const QString &word) { return !std::all_of(word.cbegin(), word.cend(), isPlain); }

// Every double quote gets a backslash; nothing else is escaped (a backslash or
// an apostrophe of the word is left for the surrounding quotes to carry).
QString escaped(const QString &word)
{
    QString out;
    out.reserve(word.size() + 4);
    for (const QChar c : word) {
        if (c == u'"')
            out += QLatin1Char('\\');
        out += c;
    }
    return out;
}

// Escaped, then inside double quotes when anything outside the plain set is left.
QString shellWord(const QString &word)
{
    const QString text = escaped(word);
    return needsQuotes(text) ? u'"' + text + u'"' : text;
}

// The whole-entry renderer takes every integer code for -int; an array element
// or dictionary entry takes only i, s and q, and anything else that is not a
// real (l, I, S, L, Q integers, booleans) becomes -bool. The asymmetry is the
// application's, kept so pasted commands read as they always have.
enum class NumberRule { WholeEntry, Element };

QString numberFlag(char typeCode, NumberRule rule)
{
    switch (typeCode) {
    case 'i': case 's': case 'q':
        return QStringLiteral("-int ");
    case 'l': case 'I': case 'S': case 'L': case 'Q':
        return rule == NumberRule::WholeEntry ? QStringLiteral("-int ") : QStringLiteral("-bool ");
    case 'd': case 'f':
        return QStringLiteral("-float ");
    default:
        return QStringLiteral("-bool ");
    }
}

// The data's description without its angle brackets and the blanks between
// groups of four bytes: plain lower-case hexadecimal.
QString hexText(const PropertyList &data)
{
    QString text = data.description();
    text = text.mid(1, text.size() - 2);
    text.remove(QLatin1Char(' '));
    return text;
}

// The typed value of a leaf; nothing for containers (the callers deal with
// them) and for values that have no flag (a keyed archiver's UID).
QString scalarText(const PListNode &node, NumberRule rule)
{
    const PropertyList value = node.value();
    switch (value.type()) {
    case PropertyList::Type::String: {
        const QString text = escaped(value.toString());
        return needsQuotes(text) ? QStringLiteral("-string \"") + text + u'"' : QStringLiteral("-string ") + text;
    }
    case PropertyList::Type::Data:
        return QStringLiteral("-data ") + hexText(value);
    case PropertyList::Type::Integer:
    case PropertyList::Type::Real:
    case PropertyList::Type::Boolean:
        // The text the outline shows ("true", "3"), not a fresh formatting.
        return numberFlag(value.typeCode(), rule) + node.displayValue();
    case PropertyList::Type::Date:
        return QStringLiteral("-date \"") + value.description() + u'"';
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
    case PropertyList::Type::Uid:
        break;
    }
    return QString();
}

// One element of an array or the value of one dictionary entry. A container
// there is nesting the command line cannot express.
QString elementText(const PListNode &node, bool *canExpress)
{
    if (node.value().isContainer()) {
        if (canExpress)
            *canExpress = false;
        return QString();
    }
    return scalarText(node, NumberRule::Element);
}

// NSString's path rules: the last component ignores trailing slashes, and a
// name whose only dot leads it (".GlobalPreferences") has no extension.
QString withoutTrailingSlashes(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == u'/')
        --end;
    return path.left(end);
}

QString deletingExtension(const QString &path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    const qsizetype componentStart = trimmed.lastIndexOf(u'/') + 1;
    const qsizetype dot = trimmed.lastIndexOf(u'.');
    return dot > componentStart ? trimmed.left(dot) : trimmed;
}

QString lastComponent(const QString &path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    return trimmed == QLatin1String("/") ? trimmed : trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

QString abbreviatingWithTilde(const QString &path)
{
    const QString home = QDir::homePath();
    if (home.isEmpty() || home == QLatin1String("/"))
        return path;
    if (path == home)
        return QStringLiteral("~");
    if (path.startsWith(home) && path.at(home.size()) == u'/')
        return u'~' + path.mid(home.size());
    return path;
}

QString domainFor(const QString &path, bool fullPath)
{
    if (fullPath)
        return deletingExtension(abbreviatingWithTilde(path));
    const QString domain = deletingExtension(lastComponent(path));
    return domain == QLatin1String(".GlobalPreferences") ? QStringLiteral("NSGlobalDomain") : domain;
}

} // namespace

std::pair<QString, PropertyDictionary> PListNode::returnStringWithPath(const QString &path, bool returnFullPath) const
{
    const QString key = name();
    std::pair<QString, PropertyDictionary> answer{QString(), PropertyDictionary{{key, initialValue()}}};
    if (!QFileInfo::exists(path))
        return answer;

    QString &command = answer.first;
    command = QStringLiteral("defaults write ") + shellWord(domainFor(path, returnFullPath)) + u' ' + shellWord(key) + u' ';
    const PropertyList marker = value();
    if (!marker.isContainer()) {
        command += scalarText(*this, NumberRule::WholeEntry);
        return answer;
    }

    const bool isArrayValue = marker.isArray();
    bool canExpress = true;
    QString items;
    for (const PListNodePtr &child : m_children) {
        items += (isArrayValue ? child->returnArrayDefaults(&canExpress) : child->returnDictDefaults(&canExpress)) + u' ';
        if (!canExpress) {
            command = tr("Sorry, defaults can't handle the nested dictionaries / arrays found in the key \"%1\"")
                          .arg(key);
            return answer;
        }
    }
    command += (isArrayValue ? QStringLiteral("-array ") : QStringLiteral("-dict ")) + items + u' ';
    return answer;
}

QString PListNode::returnArrayDefaults(bool *canExpress) const { return elementText(*this, canExpress); }

QString PListNode::returnDictDefaults(bool *canExpress) const
{
    return shellWord(name()) + u' ' + elementText(*this, canExpress);
}
