#pragma once

#include <QString>
#include <QUrl>

#include <optional>

class UserDefaults;

// The crash log the crash handler appends to, and what the next start makes
// of it: whether a report is offered, which report, and the mail that sends it.
namespace CrashLog {

inline const QString kSeparator = QStringLiteral("**********");
// Where reports go; chosen by the project, as nobody else receives them.
inline const QString kSupportAddress = QStringLiteral("orvane-crash@orvane.org");
inline const QString kSubject = QStringLiteral("Orvane Crash Report");

// "~/Library/Logs/CrashReporter/Orvane.crash.log" under $HOME.
QString logPath();

// The newest report of the log at path when the log changed since it was last
// looked at, else none. The log's date is remembered (VXLastCrashLogDate) as
// soon as it is offered, so sending and cancelling both mark it seen. An empty
// or unreadable log is still offered, with an empty report.
std::optional<QString> checkCrashLog(UserDefaults &defaults, const QString &path = logPath());

// From the last separator on, the separator included; the whole log when it
// has none.
QString newestReport(const QString &log);

// The mail of "Send": the note, two blank lines, the report.
QUrl mailtoUrl(const QString &note, const QString &report);

} // namespace CrashLog
