// The crash log: which report a log offers and when, the mail that sends it,
// and a process that really crashes with the handler installed.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "crash/CrashHandler.h"
#include "crash/CrashLog.h"
#include "domains/SettingsKeys.h"
#include "platform/DateMath.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <csignal>
#include <cstdint>

#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

void writeLog(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

double modifiedSinceReference(const QString &path)
{
    return DateMath::secondsSinceReferenceDate(QFileInfo(path).lastModified().toMSecsSinceEpoch());
}

} // namespace

class CrashLogTest : public QObject {
    Q_OBJECT
private slots:
    void newestReport_data();
    void newestReport();
    void offeredOncePerChange_data();
    void offeredOncePerChange();
    void mailto();
    void crashingProcessLeavesAReport();
};

void CrashLogTest::newestReport_data()
{
    QTest::addColumn<QString>("log");
    QTest::addColumn<QString>("report");
    QTest::newRow("three reports: the last, separator included")
        << u"**********\none\n**********\ntwo\n**********\nthree\n"_s << u"**********\nthree\n"_s;
    QTest::newRow("no separator: all") << u"just text\n"_s << u"just text\n"_s;
    QTest::newRow("a longer run of stars starts at its last ten") << u"x***********y"_s << u"**********y"_s;
    QTest::newRow("empty") << QString() << QString();
}

void CrashLogTest::newestReport()
{
    QFETCH(QString, log);
    QFETCH(QString, report);
    QCOMPARE(CrashLog::newestReport(log), report);
}

void CrashLogTest::offeredOncePerChange_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<double>("seenBeforeChange"); // seconds the remembered date lies before the log's
    QTest::addColumn<bool>("offered");
    QTest::newRow("no log") << false << 10.0 << false;
    QTest::newRow("unchanged date") << true << 0.0 << false;
    QTest::newRow("remembered date later") << true << -10.0 << false;
    QTest::newRow("changed since") << true << 10.0 << true;
}

void CrashLogTest::offeredOncePerChange()
{
    QFETCH(bool, exists);
    QFETCH(double, seenBeforeChange);
    QFETCH(bool, offered);
    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    const QString path = sandbox.home() + u"/crash.log"_s;
    writeLog(path, "old\n**********\nnew");
    const double modified = modifiedSinceReference(path);
    if (!exists)
        QFile::remove(path);
    defaults.setObject(PropertyList::date(modified - seenBeforeChange), SettingsKeys::VXLastCrashLogDate);

    const std::optional<QString> report = CrashLog::checkCrashLog(defaults, path);
    QCOMPARE(report.has_value(), offered);
    if (!offered)
        return;
    QCOMPARE(*report, u"**********\nnew"_s);
    // Seen now, whether the dialog then sends or cancels: not offered again.
    QCOMPARE(defaults.objectForKey(SettingsKeys::VXLastCrashLogDate)->toDate(), modified);
    QVERIFY(!CrashLog::checkCrashLog(defaults, path));
    // An emptied log is a change too, offered with an empty report.
    writeLog(path, QByteArray());
    defaults.setObject(PropertyList::date(0), SettingsKeys::VXLastCrashLogDate);
    QCOMPARE(CrashLog::checkCrashLog(defaults, path), std::optional<QString>(QString()));
}

void CrashLogTest::mailto()
{
    const QUrl url = CrashLog::mailtoUrl(u"Hi & bye=1"_s, u"**********\n\u00e4 50%"_s);
    QCOMPARE(url.toString(QUrl::FullyEncoded),
             u"mailto:orvane-crash@orvane.org?subject=Orvane%20Crash%20Report&body="
             u"Hi%20%26%20bye%3D1%0A%0A%0A%2A%2A%2A%2A%2A%2A%2A%2A%2A%2A%0A%C3%A4%2050%25"_s);
}

void CrashLogTest::crashingProcessLeavesAReport()
{
    DomainSandbox sandbox;
    const QString path = sandbox.home() + u"/Library/Logs/CrashReporter/Orvane.crash.log"_s;
    // The folders do not exist yet: installing makes them.
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        if (!CrashHandler::install(path, u"9.8.7"_s))
            _exit(3);
        // A real fault, at an address that is not null so that the
        // sanitizers' null checks leave it to the hardware.
        volatile std::uintptr_t address = 16;
        *reinterpret_cast<volatile int *>(address) = 1;
        _exit(4);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY2(WIFSIGNALED(status), qPrintable(u"exit status %1"_s.arg(WEXITSTATUS(status))));
    QCOMPARE(WTERMSIG(status), SIGSEGV);

    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    defaults.setObject(PropertyList::date(0), SettingsKeys::VXLastCrashLogDate);
    const std::optional<QString> report = CrashLog::checkCrashLog(defaults, path);
    QVERIFY(report);
    QVERIFY2(report->startsWith(u"**********\nDate: 20"_s), qPrintable(*report));
    QVERIFY2(report->contains(u"\nVersion: 9.8.7\nSignal: SIGSEGV (11)\nBacktrace:\n"_s), qPrintable(*report));
    // backtrace_symbols_fd writes one line per frame: at least the handler's and the test's.
    QVERIFY2(report->count(u'\n') > 6, qPrintable(*report));
}

ORVANE_TEST(CrashLogTest)
#include "CrashLogTest.moc"
