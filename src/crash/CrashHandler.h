#pragma once

#include <QString>

// Writes a report to the crash log when the process dies of SIGSEGV, SIGBUS,
// SIGFPE, SIGILL or SIGABRT: a line "**********", the date, the version, the
// signal's name and a backtrace, appended with async-signal-safe calls only.
// The signal then takes its default course, so the process dies as it would
// have without the handler.
namespace CrashHandler {

// Prepares everything the handler needs (folders, the log's path, the first
// call of backtrace(), which may allocate) and installs it. main() calls this
// before anything else. False when the log's folder cannot be made; the
// handler is then not installed.
bool install(const QString &logPath, const QString &version);

} // namespace CrashHandler
