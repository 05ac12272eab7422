#include "PreferenceDomainFile.h"

#include <QFile>
#include <QList>

#include <cerrno>
#include <cstring>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString systemError(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

PreferenceDomainFile::Stamp stampOf(const struct stat &info)
{
    PreferenceDomainFile::Stamp s;
    s.exists = true;
    s.size = qint64(info.st_size);
    s.modifiedSeconds = qint64(info.st_mtim.tv_sec);
    s.modifiedNanoseconds = qint64(info.st_mtim.tv_nsec);
    s.inode = quint64(info.st_ino);
    s.device = quint64(info.st_dev);
    return s;
}

// What follows a temporary file's "." and the file's name: a marker that no
// file of a user's own is likely to carry, so that the clean-up below never
// takes one for a dead writer's, and the letters and digits mkostemp puts in
// place of the X.
constexpr char kTemporaryMarker[] = ".orvane-";
constexpr char kTemporarySuffix[] = ".orvane-XXXXXX";
constexpr qsizetype kRandomLength = 6;

bool isTemporaryName(const char *name, const QByteArray &prefix)
{
    if (std::strncmp(name, prefix.constData(), size_t(prefix.size())) != 0
        || std::strlen(name) != size_t(prefix.size() + kRandomLength))
        return false;
    for (const char *c = name + prefix.size(); *c; ++c) {
        if (!((*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') || (*c >= '0' && *c <= '9')))
            return false;
    }
    return true;
}

// Reads the whole file from fd, starting from the size fstat gave; a file that
// grows meanwhile is read to its end, one that shrinks is cut where it ends.
bool readAll(int fd, qint64 expected, QByteArray *bytes, int *error)
{
    bytes->resize(qsizetype(expected) + 1); // one spare byte reveals growth without a second call
    qsizetype filled = 0;
    for (;;) {
        if (filled == bytes->size())
            bytes->resize(bytes->size() + qMax<qsizetype>(4096, bytes->size() / 2));
        const ssize_t got = ::read(fd, bytes->data() + filled, size_t(bytes->size() - filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            *error = errno;
            return false;
        }
        if (got == 0)
            break;
        filled += got;
    }
    bytes->resize(filled);
    return true;
}

bool writeAll(int fd, const QByteArray &bytes, int *error)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0) {
            *error = errno;
            return false;
        }
        done += put;
    }
    return true;
}

// After a rename the new directory entry is only durable once the folder is
// flushed too; a failure here loses nothing that is not already on disk.
void syncFolder(const QString &folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
}

PreferenceDomainFile::Content unreadable(PreferenceDomainFile::Content content, const QString &problem)
{
    content.state = PreferenceDomainFile::State::Unreadable;
    content.problem = problem;
    return content;
}

PreferenceDomainFile::Content parse(PreferenceDomainFile::Content content, const QByteArray &bytes)
{
    if (bytes.isEmpty()) { // a file truncated to nothing holds no keys and nothing to lose
        content.state = PreferenceDomainFile::State::Ok;
        return content;
    }
    ReadResult<PropertyListFile> parsed = PropertyListSerialization::read(bytes);
    if (!parsed)
        return unreadable(std::move(content), QStringLiteral("it is not a property list: %1").arg(parsed.errorText()));
    if (!parsed.value.value.isDictionary())
        return unreadable(std::move(content), QStringLiteral("its top level is not a dictionary"));
    content.state = PreferenceDomainFile::State::Ok;
    content.format = parsed.value.format;
    content.dictionary = parsed.value.value.dictionaryRef();
    return content;
}

} // namespace

PreferenceDomainFile::PreferenceDomainFile(QString path)
    : m_path(std::move(path))
{
}

PreferenceDomainFile::~PreferenceDomainFile()
{
    unlock();
}

PreferenceDomainFile::Stamp PreferenceDomainFile::stamp(const QString &path)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    return stampOf(info);
}

PreferenceDomainFile::Content PreferenceDomainFile::read() const
{
    Content content;
    const int fd = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        const int error = errno;
        if (error == ENOENT || error == ENOTDIR)
            return content;
        content.stamp = stamp(m_path);
        return unreadable(std::move(content), QStringLiteral("it cannot be opened: %1").arg(systemError(error)));
    }
    struct stat info;
    const int statError = ::fstat(fd, &info) != 0 ? errno : S_ISDIR(info.st_mode) ? EISDIR : 0;
    if (statError != 0) {
        const int error = statError;
        ::close(fd);
        return unreadable(std::move(content), QStringLiteral("it cannot be read: %1").arg(systemError(error)));
    }
    content.stamp = stampOf(info);
    content.mode = info.st_mode & 07777;
    QByteArray bytes;
    int error = 0;
    const bool ok = readAll(fd, qint64(info.st_size), &bytes, &error);
    ::close(fd);
    if (!ok)
        return unreadable(std::move(content), QStringLiteral("it cannot be read: %1").arg(systemError(error)));
    return parse(std::move(content), bytes);
}

bool PreferenceDomainFile::lock(mode_t mode, QString *error)
{
    unlock();
    const QByteArray name = QFile::encodeName(lockPath());
    m_lockFd = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, mode);
    if (m_lockFd < 0)
        m_lockFd = ::open(name.constData(), O_RDONLY | O_CLOEXEC); // another user's lock file
    if (m_lockFd < 0) {
        *error = QStringLiteral("the lock file %1 cannot be opened: %2").arg(lockPath(), systemError(errno));
        return false;
    }
    int result;
    do {
        result = ::flock(m_lockFd, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        *error = QStringLiteral("the lock file %1 cannot be locked: %2").arg(lockPath(), systemError(errno));
        unlock();
        return false;
    }
    removeAbandonedTemporaryFiles();
    return true;
}

QString PreferenceDomainFile::folderPath() const
{
    const qsizetype slash = m_path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QStringLiteral(".");
    return slash == 0 ? QStringLiteral("/") : m_path.left(slash);
}

QString PreferenceDomainFile::fileName() const
{
    return m_path.mid(m_path.lastIndexOf(QLatin1Char('/')) + 1);
}

// Every writer of this file makes its temporary file under the lock and renames
// or removes it before letting go, so with the lock held any file named like
// one is a dead writer's. Only the exact form is touched: the marker and the
// suffix mkostemp makes, after this file's own name. Failing to remove one costs nothing.
void PreferenceDomainFile::removeAbandonedTemporaryFiles() const
{
    const QByteArray prefix = QFile::encodeName(QLatin1Char('.') + fileName()) + kTemporaryMarker;
    DIR *dir = ::opendir(QFile::encodeName(folderPath()).constData());
    if (!dir)
        return;
    // Collected first: whether readdir still reports entries removed while it
    // runs is left open by POSIX.
    QList<QByteArray> abandoned;
    while (const dirent *entry = ::readdir(dir)) {
        if (isTemporaryName(entry->d_name, prefix))
            abandoned.append(QByteArray(entry->d_name));
    }
    for (const QByteArray &name : std::as_const(abandoned))
        ::unlinkat(::dirfd(dir), name.constData(), 0);
    ::closedir(dir);
}

void PreferenceDomainFile::unlock()
{
    if (m_lockFd >= 0)
        ::close(m_lockFd); // closing the last descriptor releases the flock
    m_lockFd = -1;
}

bool PreferenceDomainFile::replace(const QByteArray &bytes, mode_t mode, Stamp *written, QString *error) const
{
    const QString folder = folderPath();
    QByteArray temporary = QFile::encodeName(folder + QStringLiteral("/.") + fileName()) + kTemporarySuffix;
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        *error = QStringLiteral("no temporary file can be made in %1: %2").arg(folder, systemError(errno));
        return false;
    }
    int failure = 0;
    const auto step = [&failure](bool ok) {
        if (!ok && failure == 0)
            failure = errno;
        return ok;
    };
    struct stat info;
    // fchmod is not subject to the umask, so the file gets exactly the mode asked for.
    bool ok = writeAll(fd, bytes, &failure) && step(::fchmod(fd, mode) == 0) && step(::fsync(fd) == 0)
        && step(::fstat(fd, &info) == 0);
    ok = step(::close(fd) == 0) && ok;
    ok = ok && step(::rename(temporary.constData(), QFile::encodeName(m_path).constData()) == 0);
    if (!ok) {
        ::unlink(temporary.constData()); // the old file was never touched
        *error = QStringLiteral("it cannot be written: %1").arg(systemError(failure));
        return false;
    }
    syncFolder(folder);
    *written = stampOf(info); // rename keeps the inode, size and modification time
    return true;
}

bool PreferenceDomainFile::remove(QString *error) const
{
    if (::unlink(QFile::encodeName(m_path).constData()) == 0 || errno == ENOENT)
        return true;
    *error = QStringLiteral("it cannot be removed: %1").arg(systemError(errno));
    return false;
}

bool PreferenceDomainFile::makeFolder(const QString &folder, mode_t mode, QString *error)
{
    qsizetype from = 1;
    for (;;) {
        const qsizetype slash = folder.indexOf(QLatin1Char('/'), from);
        const QString part = slash < 0 ? folder : folder.left(slash);
        if (!part.isEmpty() && ::mkdir(QFile::encodeName(part).constData(), mode) != 0 && errno != EEXIST) {
            *error = QStringLiteral("the folder %1 cannot be created: %2").arg(part, systemError(errno));
            return false;
        }
        if (slash < 0)
            return true;
        from = slash + 1;
    }
}
