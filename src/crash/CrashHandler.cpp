#include "CrashHandler.h"

#include "platform/DateMath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Everything the handler reads is fixed before a signal can come.
constexpr std::size_t kPathSize = 4096;
constexpr std::size_t kVersionSize = 64;
constexpr int kMaxFrames = 64;
std::array<char, kPathSize> g_logPath{};
std::array<char, kVersionSize> g_version{};
std::array<char, 64 * 1024> g_alternateStack{}; // a stack overflow still gets its report

struct SignalName {
    int number;
    const char *name;
};
constexpr std::array<SignalName, 5> kSignals{{
    {SIGSEGV, "SIGSEGV"},
    {SIGBUS, "SIGBUS"},
    {SIGFPE, "SIGFPE"},
    {SIGILL, "SIGILL"},
    {SIGABRT, "SIGABRT"},
}};

void put(int fd, const char *text)
{
    std::size_t left = std::strlen(text);
    while (left > 0) {
        const ssize_t written = ::write(fd, text, left);
        if (written <= 0)
            return;
        text += written;
        left -= static_cast<std::size_t>(written);
    }
}

// Writes value with at least width digits; snprintf is not safe here.
void putNumber(int fd, long long value, int width)
{
    char digits[24];
    int at = static_cast<int>(sizeof digits) - 1;
    digits[at] = '\0';
    const bool negative = value < 0;
    const auto magnitude = static_cast<unsigned long long>(value);
    unsigned long long rest = negative ? 0ULL - magnitude : magnitude;
    do {
        digits[--at] = static_cast<char>('0' + rest % 10);
        rest /= 10;
        --width;
    } while ((rest > 0 || width > 0) && at > 1);
    if (negative)
        digits[--at] = '-';
    put(fd, digits + at);
}

// "2024-03-01 12:00:00 UTC": local time would need the time-zone files.
void putDate(int fd)
{
    const long long now = static_cast<long long>(::time(nullptr));
    constexpr long long kDay = DateMath::kSecondsPerDay;
    const long long days = now >= 0 ? now / kDay : (now - kDay + 1) / kDay;
    const long long seconds = now - days * kDay;
    const DateMath::CivilDate date = DateMath::civilFromDays(days);
    putNumber(fd, date.year, 4);
    put(fd, "-");
    putNumber(fd, date.month, 2);
    put(fd, "-");
    putNumber(fd, date.day, 2);
    put(fd, " ");
    putNumber(fd, seconds / 3600, 2);
    put(fd, ":");
    putNumber(fd, seconds / 60 % 60, 2);
    put(fd, ":");
    putNumber(fd, seconds % 60, 2);
    put(fd, " UTC");
}

const char *nameOf(int signal)
{
    for (const SignalName &known : kSignals) {
        if (known.number == signal)
            return known.name;
    }
    return "unknown signal";
}

void writeReport(int signal)
{
    const int fd = ::open(g_logPath.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    put(fd, "**********\nDate: ");
    putDate(fd);
    put(fd, "\nVersion: ");
    put(fd, g_version.data());
    put(fd, "\nSignal: ");
    put(fd, nameOf(signal));
    put(fd, " (");
    putNumber(fd, signal, 1);
    put(fd, ")\nBacktrace:\n");
    void *frames[kMaxFrames];
    const int count = ::backtrace(frames, kMaxFrames);
    ::backtrace_symbols_fd(frames, count, fd);
    put(fd, "\n");
    ::close(fd);
}

void handle(int signal)
{
    const int savedErrno = errno;
    writeReport(signal);
    errno = savedErrno;
    // The default action, raised again once this handler returns: the
    // process ends by the same signal, with its core dump where there is one.
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

void copyInto(char *buffer, std::size_t size, const QByteArray &text)
{
    const std::size_t length = std::min(size - 1, static_cast<std::size_t>(text.size()));
    std::memcpy(buffer, text.constData(), length);
    buffer[length] = '\0';
}

} // namespace

namespace CrashHandler {

bool install(const QString &logPath, const QString &version)
{
    const QByteArray path = QFile::encodeName(logPath);
    if (static_cast<std::size_t>(path.size()) >= kPathSize
        || !QDir().mkpath(QFileInfo(logPath).absolutePath()))
        return false;
    copyInto(g_logPath.data(), kPathSize, path);
    copyInto(g_version.data(), kVersionSize, version.toUtf8());

    // glibc loads the unwinder on the first call, which allocates: not in the handler.
    void *frame[1];
    ::backtrace(frame, 1);

    stack_t stack{};
    stack.ss_sp = g_alternateStack.data();
    stack.ss_size = g_alternateStack.size();
    ::sigaltstack(&stack, nullptr);

    struct sigaction action{};
    action.sa_handler = handle;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_ONSTACK | SA_RESETHAND;
    for (const SignalName &known : kSignals)
        ::sigaction(known.number, &action, nullptr);
    return true;
}

} // namespace CrashHandler
