#include "TreePicture.h"

#include "model/PListNode.h"

namespace {

QString quoted(const QString &text)
{
    const bool bare = !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
               || (c >= QLatin1Char('0') && c <= QLatin1Char('9'));
    });
    if (bare)
        return text;
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

QString picture(const PListNode &node)
{
    QString text = node.searchReference() ? QStringLiteral(">") : QString();
    if (node.isLeaf())
        return text + quoted(node.stringValue());
    const bool array = node.value().isArray();
    QStringList parts;
    for (const auto &child : node.children())
        parts << (array ? picture(*child) : quoted(child->name()) + QStringLiteral(" = ") + picture(*child));
    if (array)
        return text + QLatin1Char('(') + parts.join(QStringLiteral(", ")) + QLatin1Char(')');
    QString body;
    for (const QString &part : parts)
        body += part + QStringLiteral("; ");
    return text + QLatin1Char('{') + body.trimmed() + QLatin1Char('}');
}

} // namespace

namespace TreePicture {

QString of(const PListNode &node) { return picture(node); }

} // namespace TreePicture
