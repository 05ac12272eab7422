#include "CrashLog.h"

#include "domains/SettingsKeys.h"
#include "platform/DateMath.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace CrashLog {

QString logPath()
{
    return QDir::homePath() + QStringLiteral("/Library/Logs/CrashReporter/Orvane.crash.log");
}

std::optional<QString> checkCrashLog(UserDefaults &defaults, const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return std::nullopt;
    const double modified = DateMath::secondsSinceReferenceDate(info.lastModified().toMSecsSinceEpoch());
    const std::optional<PropertyList> seen = defaults.objectForKey(SettingsKeys::VXLastCrashLogDate);
    if (seen && seen->isDate() && modified - seen->toDate() <= 0)
        return std::nullopt;
    defaults.setObject(PropertyList::date(modified), SettingsKeys::VXLastCrashLogDate);
    defaults.synchronize();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return newestReport(QString::fromUtf8(file.readAll()));
}

QString newestReport(const QString &log)
{
    const qsizetype last = log.lastIndexOf(kSeparator);
    return log.mid(std::max<qsizetype>(last, 0));
}

QUrl mailtoUrl(const QString &note, const QString &report)
{
    const QString body = QStringLiteral("%1\n\n\n%2").arg(note, report);
    // Everything but the unreserved characters is escaped, "&" and "=" too,
    // so nothing in the report can end the body early.
    const QByteArray query =
        "subject=" + QUrl::toPercentEncoding(kSubject) + "&body=" + QUrl::toPercentEncoding(body);
    return QUrl(QStringLiteral("mailto:") + kSupportAddress + QLatin1Char('?') + QString::fromLatin1(query),
                QUrl::StrictMode);
}

} // namespace CrashLog
