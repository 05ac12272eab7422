#include "WarningsPicture.h"

#include <QStringList>

namespace {

QString kindName(ReadWarning::Kind kind)
{
    switch (kind) {
    case ReadWarning::Kind::DuplicateKey:
        return QStringLiteral("DuplicateKey");
    case ReadWarning::Kind::OutOfRange:
        return QStringLiteral("OutOfRange");
    case ReadWarning::Kind::Adjusted:
        return QStringLiteral("Adjusted");
    case ReadWarning::Kind::Dropped:
        return QStringLiteral("Dropped");
    case ReadWarning::Kind::Reinterpreted:
        return QStringLiteral("Reinterpreted");
    case ReadWarning::Kind::More:
        return QStringLiteral("More");
    }
    return QStringLiteral("?");
}

} // namespace

QString WarningsPicture::of(const QList<ReadWarning> &warnings)
{
    QStringList parts;
    for (const ReadWarning &warning : warnings) {
        QString part = kindName(warning.kind);
        if (warning.position.isKnown())
            part += QStringLiteral(" at ") + warning.position.toString();
        if (warning.message.isEmpty())
            part += QStringLiteral(" (silent)");
        parts << part;
    }
    return parts.join(QStringLiteral("; "));
}
