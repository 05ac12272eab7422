#include "ReadResult.h"

#include <QStringList>

#include <utility>

QString SourcePosition::toString() const
{
    QStringList parts;
    if (line > 0)
        parts << QStringLiteral("line %1, column %2").arg(line).arg(column);
    if (object >= 0)
        parts << QStringLiteral("object %1").arg(object);
    if (offset >= 0)
        parts << QStringLiteral("byte %1").arg(offset);
    return parts.join(QStringLiteral(", "));
}

QString quotedForMessage(QStringView text)
{
    constexpr qsizetype kShown = 40;
    QString out(1, u'"');
    for (const QChar c : text.first(qMin(text.size(), kShown))) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    if (text.size() > kShown)
        out += QChar(0x2026); // an ellipsis
    return out + u'"';
}

void ReadWarnings::add(ReadWarning::Kind kind, SourcePosition where, QString message)
{
    if (wantsMore())
        m_list.append({kind, where, std::move(message)});
    else
        ++m_omitted;
}

QList<ReadWarning> ReadWarnings::take()
{
    if (m_omitted > 0)
        m_list.append({ReadWarning::Kind::More, SourcePosition(),
                       QStringLiteral("%1 more warnings are not listed").arg(m_omitted)});
    m_omitted = 0;
    return std::exchange(m_list, {});
}
