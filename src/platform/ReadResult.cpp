#include "ReadResult.h"

#include <QStringList>

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
