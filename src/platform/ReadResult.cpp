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
