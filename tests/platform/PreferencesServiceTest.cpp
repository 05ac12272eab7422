// The preferences service over real files: which file a domain is, what stays
// pending until a synchronise, and what a synchronise may and may not do to a file.
#include "Corpus.h"
#include "TemporaryPreferences.h"
#include "TestRegistry.h"

#include "platform/FolderLookup.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTest>

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString kHostId = TemporaryPreferences::kHostId;
constexpr auto kUser = PreferencesUser::Current;
constexpr auto kAny = PreferencesHost::Any;

void writeFile(const QString &path, const QByteArray &bytes, int mode = 0600)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    file.write(bytes);
    file.close();
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode_t(mode)), 0);
}

struct stat statOf(const QString &path)
{
    struct stat info {};
    ::stat(QFile::encodeName(path).constData(), &info);
    return info;
}

PropertyDictionary dictionaryIn(const QString &path)
{
    const ReadResult<PropertyListFile> read = PropertyListSerialization::readFile(path);
    return read ? read.value.value.toDictionary() : PropertyDictionary();
}

QByteArray binaryDomain(const PropertyDictionary &dictionary)
{
    return PropertyListSerialization::write(PropertyList(dictionary), PropertyListFormat::Binary);
}

PropertyList integer(qint64 value)
{
    return PropertyList::integerFromFile(value);
}

} // namespace

class PreferencesServiceTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void pathForDomain_data();
    void pathForDomain();
    void hostIdentifierFromByHostFolder_data();
    void hostIdentifierFromByHostFolder();
    void pendingUntilSynchronize_data();
    void pendingUntilSynchronize();
    void twoInstancesKeepEachOthersKeys();
    void onlyRealChangesWrite_data();
    void onlyRealChangesWrite();
    void emptiedDomainRemovesItsFile();
    void formatAndPermissionsKept_data();
    void formatAndPermissionsKept();
    void unusableFileIsNeverOverwritten_data();
    void unusableFileIsNeverOverwritten();
    void failedWriteLeavesOldFile();
    void writerKilledBeforeRename();
    void unchangedFileIsNotReread_data();
    void unchangedFileIsNotReread();
    void applicationList();
    void folderLookup_data();
    void folderLookup();

private:
    QString prefs() const { return m_account->userFolder(); }
    QString local() const { return m_account->local(); }

    std::unique_ptr<TemporaryPreferences> m_account;
};

ORVANE_TEST(PreferencesServiceTest)

void PreferencesServiceTest::init()
{
    m_account = std::make_unique<TemporaryPreferences>();
    QVERIFY(m_account->isValid());
}

void PreferencesServiceTest::cleanup()
{
    m_account.reset();
}

// Every (user, host) pair, the global domain's names, path domains. "~" is the
// user folder, "@" the machine folder.
void PreferencesServiceTest::pathForDomain_data()
{
    QTest::addColumn<QString>("domain");
    QTest::addColumn<PreferencesUser>("user");
    QTest::addColumn<PreferencesHost>("host");
    QTest::addColumn<QString>("expected");
    const auto C = PreferencesUser::Current, A = PreferencesUser::Any;
    const auto cur = PreferencesHost::Current, any = PreferencesHost::Any;
    QTest::newRow("user, any host") << u"com.x"_s << C << any << u"~/com.x.plist"_s;
    QTest::newRow("user, this host is ByHost with id") << u"com.x"_s << C << cur << u"~/ByHost/com.x.%1.plist"_s;
    QTest::newRow("machine, this host has no id") << u"com.x"_s << A << cur << u"@/com.x.plist"_s;
    QTest::newRow("machine, any host is Network") << u"com.x"_s << A << any << u"@/Network/com.x.plist"_s;
    QTest::newRow("NSGlobalDomain") << u"NSGlobalDomain"_s << C << any << u"~/.GlobalPreferences.plist"_s;
    QTest::newRow("CF any-application constant")
        << u"kCFPreferencesAnyApplication"_s << C << any << u"~/.GlobalPreferences.plist"_s;
    QTest::newRow("global per host") << u"NSGlobalDomain"_s << C << cur << u"~/ByHost/.GlobalPreferences.%1.plist"_s;
    QTest::newRow("absolute path ignores the folder") << u"/tmp/x/test"_s << C << any << u"/tmp/x/test.plist"_s;
    QTest::newRow("absolute path per host") << u"/tmp/x/test"_s << C << cur << u"/tmp/x/test.%1.plist"_s;
    QTest::newRow("relative path stays inside") << u"a/b"_s << C << any << u"~/a/b.plist"_s;
    QTest::newRow("name with .plist gets another") << u"a.plist"_s << C << any << u"~/a.plist.plist"_s;
}

void PreferencesServiceTest::pathForDomain()
{
    QFETCH(QString, domain);
    QFETCH(PreferencesUser, user);
    QFETCH(PreferencesHost, host);
    QFETCH(QString, expected);
    expected.replace(u"%1"_s, kHostId);
    if (expected.startsWith(u'~'))
        expected = prefs() + expected.mid(1);
    if (expected.startsWith(u'@'))
        expected = local() + expected.mid(1);
    QCOMPARE(PreferencesService().pathForDomain(domain, user, host), expected);
}

// Without ORVANE_HOST_UUID the id most used by existing per-host files wins.
void PreferencesServiceTest::hostIdentifierFromByHostFolder_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("expected"); // empty: /etc/machine-id as a UUID
    const QString u1 = u"11111111-2222-3333-4444-555555555555"_s, u2 = u"AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE"_s;
    QTest::newRow("most frequent UUID") << QStringList{u"a.%1.plist"_s.arg(u2), u"a.%1.plist"_s.arg(u1),
                                                       u"b.%1.plist"_s.arg(u1)} << u1;
    QTest::newRow("old Ethernet form") << QStringList{u"com.apple.screensaver.000d93a1b2c3.plist"_s}
                                       << u"000d93a1b2c3"_s;
    QTest::newRow("tie goes to smaller text") << QStringList{u"a.%1.plist"_s.arg(u2), u"b.%1.plist"_s.arg(u1)} << u1;
    QTest::newRow("not an id, not .plist") << QStringList{u"a.notanid.plist"_s, u"b.%1.txt"_s.arg(u1),
                                                          u"c.0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8FZ.plist"_s}
                                           << QString();
}

void PreferencesServiceTest::hostIdentifierFromByHostFolder()
{
    QFETCH(QStringList, files);
    QFETCH(QString, expected);
    qunsetenv("ORVANE_HOST_UUID");
    QDir().mkpath(prefs() + u"/ByHost"_s);
    for (const QString &name : files)
        writeFile(prefs() + u"/ByHost/"_s + name, {});
    if (expected.isEmpty()) {
        const QByteArray machine = Corpus::readAll(u"/etc/machine-id"_s).trimmed().toUpper();
        if (machine.size() != 32)
            QSKIP("this machine has no /etc/machine-id");
        expected = QString::fromLatin1(machine.left(8) + '-' + machine.mid(8, 4) + '-' + machine.mid(12, 4) + '-'
                                       + machine.mid(16, 4) + '-' + machine.mid(20));
    }
    QCOMPARE(PreferencesService().hostIdentifier(), expected);
}

// A set is seen at once by the instance that made it, by nobody else, and
// reaches a new binary 0600 file (in folders made 0700) only on synchronise.
void PreferencesServiceTest::pendingUntilSynchronize_data()
{
    QTest::addColumn<PreferencesUser>("user");
    QTest::addColumn<PreferencesHost>("host");
    QTest::addColumn<int>("fileMode");
    QTest::addColumn<int>("folderMode");
    QTest::newRow("user domain") << kUser << kAny << 0600 << 0700;
    QTest::newRow("per-host domain makes ByHost") << kUser << PreferencesHost::Current << 0600 << 0700;
    QTest::newRow("machine domain is world readable") << PreferencesUser::Any << PreferencesHost::Current << 0644
                                                      << 0755;
}

void PreferencesServiceTest::pendingUntilSynchronize()
{
    QFETCH(PreferencesUser, user);
    QFETCH(PreferencesHost, host);
    QFETCH(int, fileMode);
    QFETCH(int, folderMode);
    PreferencesService writer;
    const QString path = writer.pathForDomain(u"com.x"_s, user, host);
    writer.setValue(u"k"_s, PropertyList(u"v"_s), u"com.x"_s, user, host);
    QCOMPARE(writer.copyValue(u"k"_s, u"com.x"_s, user, host), PropertyList(u"v"_s));
    QVERIFY(!QFile::exists(path));
    QVERIFY(!PreferencesService().copyKeyList(u"com.x"_s, user, host));
    QVERIFY2(writer.synchronize(u"com.x"_s, user, host), qPrintable(writer.lastError()));
    QCOMPARE(PreferencesService().copyKeyList(u"com.x"_s, user, host), QStringList{u"k"_s});
    QVERIFY(Corpus::readAll(path).startsWith("bplist00"));
    QCOMPARE(int(statOf(path).st_mode & 07777), fileMode);
    QCOMPARE(int(statOf(QFileInfo(path).absolutePath()).st_mode & 07777), folderMode);
}

// Two processes writing different keys of one domain both keep theirs; the same
// key goes to the last writer; a removal by one does not undo the other's set.
void PreferencesServiceTest::twoInstancesKeepEachOthersKeys()
{
    const QString path = prefs() + u"/com.x.plist"_s;
    writeFile(path, binaryDomain({{u"shared"_s, integer(0)}, {u"old"_s, integer(1)}}));
    PreferencesService first, second;
    QVERIFY(first.copyKeyList(u"com.x"_s, kUser, kAny));
    QVERIFY(second.copyKeyList(u"com.x"_s, kUser, kAny));
    first.setValue(u"a"_s, integer(1), u"com.x"_s, kUser, kAny);
    first.setValue(u"shared"_s, integer(1), u"com.x"_s, kUser, kAny);
    second.setValue(u"b"_s, integer(2), u"com.x"_s, kUser, kAny);
    second.setValue(u"shared"_s, integer(2), u"com.x"_s, kUser, kAny);
    second.setValue(u"old"_s, std::nullopt, u"com.x"_s, kUser, kAny);
    QVERIFY(first.synchronize(u"com.x"_s, kUser, kAny));
    QVERIFY(second.synchronize(u"com.x"_s, kUser, kAny));
    const PropertyDictionary expected{{u"shared"_s, integer(2)}, {u"a"_s, integer(1)}, {u"b"_s, integer(2)}};
    QCOMPARE(dictionaryIn(path), expected);
    QCOMPARE(second.copyDomain(u"com.x"_s, kUser, kAny), expected); // the cache holds what was written
    QVERIFY(first.synchronize(u"com.x"_s, kUser, kAny));           // nothing pending: picks up the other's write
    QCOMPARE(first.copyDomain(u"com.x"_s, kUser, kAny), expected);
}

// A write replaces the file (new inode); a set identical in value and type, or
// removing an absent key, leaves the domain clean and the file alone.
void PreferencesServiceTest::onlyRealChangesWrite_data()
{
    QTest::addColumn<PropertyList>("stored");
    QTest::addColumn<std::optional<PropertyList>>("set"); // none: remove
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("writes");
    const auto row = [](const char *name, const PropertyList &stored, std::optional<PropertyList> set,
                        const QString &key, bool writes) { QTest::newRow(name) << stored << set << key << writes; };
    row("integer 1 to real 1.0 is a change", integer(1), PropertyList::real(1.0), u"k"_s, true);
    row("boolean true to integer 1 is a change", PropertyList::boolean(true), integer(1), u"k"_s, true);
    row("real 1.0 to integer 1 is a change", PropertyList::real(1.0), integer(1), u"k"_s, true);
    row("float to double of same value", PropertyList::real(0.5), PropertyList::real(0.5, 'f'), u"k"_s, true);
    row("same integer is no change", integer(7), integer(7), u"k"_s, false);
    row("same string is no change", PropertyList(u"a"_s), PropertyList(u"a"_s), u"k"_s, false);
    row("removing a present key", integer(7), std::nullopt, u"k"_s, true);
    row("removing an absent key is no change", integer(7), std::nullopt, u"absent"_s, false);
    row("new key", integer(7), integer(7), u"new"_s, true);
}

void PreferencesServiceTest::onlyRealChangesWrite()
{
    QFETCH(PropertyList, stored);
    QFETCH(std::optional<PropertyList>, set);
    QFETCH(QString, key);
    QFETCH(bool, writes);
    const QString path = prefs() + u"/com.x.plist"_s;
    writeFile(path, binaryDomain({{u"k"_s, stored}, {u"other"_s, integer(0)}}));
    const ino_t before = statOf(path).st_ino;
    PreferencesService service;
    service.setValue(key, set, u"com.x"_s, kUser, kAny);
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(statOf(path).st_ino != before, writes);
    const PropertyDictionary onDisk = dictionaryIn(path);
    if (set)
        QVERIFY(onDisk.find(key) && onDisk.find(key)->isIdenticalTo(*set));
    else
        QVERIFY(!onDisk.contains(key));
}

void PreferencesServiceTest::emptiedDomainRemovesItsFile()
{
    const QString path = prefs() + u"/com.x.plist"_s;
    writeFile(path, binaryDomain({{u"a"_s, integer(1)}, {u"b"_s, integer(2)}}));
    PreferencesService service;
    service.setMultiple({{u"c"_s, integer(3)}}, {u"a"_s, u"b"_s, u"c"_s}, u"com.x"_s, kUser, kAny);
    QVERIFY(QFile::exists(path));
    QVERIFY(!service.copyKeyList(u"com.x"_s, kUser, kAny)); // set then removed in one call: removed
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QVERIFY(!QFile::exists(path));
    QVERIFY(!PreferencesService().copyDomain(u"com.x"_s, kUser, kAny));
}

// binary stays binary, XML stays XML, old-style text becomes XML, and the mode
// the user gave the file stays.
void PreferencesServiceTest::formatAndPermissionsKept_data()
{
    QTest::addColumn<QString>("corpusFile");
    QTest::addColumn<int>("mode");
    QTest::addColumn<PropertyListFormat>("expected");
    QTest::newRow("binary, group readable") << u"plists/binary/com.apple.dock.plist"_s << 0640
                                            << PropertyListFormat::Binary;
    QTest::newRow("XML, world readable") << u"plists/xml/com.apple.atrun.plist"_s << 0644 << PropertyListFormat::Xml;
    QTest::newRow("old-style becomes XML") << u"plists/openstep/gnustep-Locale.canonical.plist"_s << 0664
                                           << PropertyListFormat::Xml;
}

void PreferencesServiceTest::formatAndPermissionsKept()
{
    ORVANE_REQUIRE_CORPUS();
    QFETCH(QString, corpusFile);
    QFETCH(int, mode);
    QFETCH(PropertyListFormat, expected);
    const QString path = prefs() + u"/com.x.plist"_s;
    writeFile(path, Corpus::readAll(Corpus::root() + u'/' + corpusFile), mode);
    PreferencesService service;
    const std::optional<PropertyDictionary> before = service.copyDomain(u"com.x"_s, kUser, kAny);
    QVERIFY(before);
    service.setValue(u"orvane.added"_s, PropertyList(u"x"_s), u"com.x"_s, kUser, kAny);
    QVERIFY2(service.synchronize(u"com.x"_s, kUser, kAny), qPrintable(service.lastError()));
    const ReadResult<PropertyListFile> after = PropertyListSerialization::readFile(path);
    QVERIFY(after);
    QCOMPARE(after.value.format, expected);
    QCOMPARE(int(statOf(path).st_mode & 07777), mode);
    PropertyDictionary wanted = *before;
    wanted.insert(u"orvane.added"_s, PropertyList(u"x"_s));
    QCOMPARE(after.value.value.toDictionary(), wanted);
}

// A file that cannot be used reads as no keys, but a synchronise must not
// replace it: it fails naming the file and the reason, and keeps the change.
void PreferencesServiceTest::unusableFileIsNeverOverwritten_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("broken XML") << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>a</key>") << u"not a property list"_s;
    QTest::newRow("truncated binary") << QByteArray("bplist00\xd1\x01\x02") << u"not a property list"_s;
    QTest::newRow("top level is an array") << QByteArray("(1, 2)") << u"not a dictionary"_s;
}

void PreferencesServiceTest::unusableFileIsNeverOverwritten()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    const QString path = prefs() + u"/com.x.plist"_s;
    writeFile(path, bytes);
    PreferencesService service;
    QVERIFY(!service.copyKeyList(u"com.x"_s, kUser, kAny));
    service.setValue(u"k"_s, integer(1), u"com.x"_s, kUser, kAny);
    QVERIFY(!service.synchronize(u"com.x"_s, kUser, kAny));
    QVERIFY2(service.lastError().contains(path) && service.lastError().contains(reason),
             qPrintable(service.lastError()));
    QCOMPARE(Corpus::readAll(path), bytes);
    // Once the file is repaired the kept change goes in on top of it.
    writeFile(path, binaryDomain({{u"repaired"_s, integer(2)}}));
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(dictionaryIn(path), (PropertyDictionary{{u"repaired"_s, integer(2)}, {u"k"_s, integer(1)}}));
}

// The disk fills up while the temporary file is written (a file size limit
// makes write() fail for real, even for root): the old file stays whole, no
// temporary file is left, and the change stays pending.
void PreferencesServiceTest::failedWriteLeavesOldFile()
{
    const QString path = prefs() + u"/com.x.plist"_s;
    const QByteArray old = binaryDomain({{u"a"_s, integer(1)}});
    writeFile(path, old);
    PreferencesService service;
    service.setValue(u"big"_s, PropertyList(QByteArray(4096, 'x')), u"com.x"_s, kUser, kAny);
    {
        rlimit saved {};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &saved), 0);
        const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        const auto restore = qScopeGuard([&] {
            ::setrlimit(RLIMIT_FSIZE, &saved);
            std::signal(SIGXFSZ, previousHandler);
        });
        rlimit small = saved;
        small.rlim_cur = 1024;
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
        QVERIFY(!service.synchronize(u"com.x"_s, kUser, kAny));
    }
    QVERIFY2(service.lastError().contains(path), qPrintable(service.lastError()));
    QCOMPARE(Corpus::readAll(path), old);
    QCOMPARE(QDir(prefs()).entryList(QDir::Files | QDir::Hidden), (QStringList{u"com.x.plist"_s, u"com.x.plist.lock"_s}));
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(dictionaryIn(path).size(), 2);
}

// A writer killed while writing its temporary file (the file size limit sends
// SIGXFSZ, whose default action ends the process) leaves the old file whole and
// a stray temporary file that nobody takes for a domain.
void PreferencesServiceTest::writerKilledBeforeRename()
{
    const QString path = prefs() + u"/com.x.plist"_s;
    const QByteArray old = binaryDomain({{u"a"_s, integer(1)}});
    writeFile(path, old);
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit noCore{0, 0}, small{1024, 1024};
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::setrlimit(RLIMIT_FSIZE, &small);
        std::signal(SIGXFSZ, SIG_DFL);
        PreferencesService writer;
        writer.setValue(u"big"_s, PropertyList(QByteArray(4096, 'x')), u"com.x"_s, kUser, kAny);
        writer.synchronize(u"com.x"_s, kUser, kAny);
        ::_exit(0); // not reached when the limit works
    }
    QVERIFY(child > 0);
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
    QCOMPARE(Corpus::readAll(path), old);
    QCOMPARE(QDir(prefs()).entryList({u".com.x.plist.*"_s}, QDir::Files | QDir::Hidden).size(), 1);
    PreferencesService service;
    QCOMPARE(service.copyApplicationList(kUser, kAny), QStringList{u"com.x"_s});
    QCOMPARE(service.copyValue(u"a"_s, u"com.x"_s, kUser, kAny), integer(1));
    service.setValue(u"b"_s, integer(2), u"com.x"_s, kUser, kAny);
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(dictionaryIn(path), (PropertyDictionary{{u"a"_s, integer(1)}, {u"b"_s, integer(2)}}));
}

// A synchronise with nothing pending decides by one stat whether to forget what
// it read: a rewrite that keeps size, modification time and inode goes unseen
// (proving no re-read happened); any of them changing is seen.
void PreferencesServiceTest::unchangedFileIsNotReread_data()
{
    QTest::addColumn<bool>("keepTime");
    QTest::addColumn<bool>("replaceInode");
    QTest::addColumn<qint64>("expected");
    QTest::newRow("same size, time and inode: cache kept") << true << false << qint64(1);
    QTest::newRow("modification time changed: re-read") << false << false << qint64(2);
    QTest::newRow("replaced by rename: re-read") << true << true << qint64(2);
}

void PreferencesServiceTest::unchangedFileIsNotReread()
{
    QFETCH(bool, keepTime);
    QFETCH(bool, replaceInode);
    QFETCH(qint64, expected);
    const QString path = prefs() + u"/com.x.plist"_s;
    writeFile(path, binaryDomain({{u"a"_s, integer(1)}}));
    const struct stat before = statOf(path);
    PreferencesService service;
    QCOMPARE(service.copyValue(u"a"_s, u"com.x"_s, kUser, kAny), integer(1));
    const QByteArray next = binaryDomain({{u"a"_s, integer(2)}});
    QCOMPARE(next.size(), qsizetype(before.st_size));
    if (replaceInode) {
        writeFile(path + u".new"_s, next);
        QCOMPARE(::rename(QFile::encodeName(path + u".new"_s).constData(), QFile::encodeName(path).constData()), 0);
    } else {
        writeFile(path, next);
    }
    timespec times[2] = {before.st_atim, before.st_mtim};
    if (!keepTime)
        times[1].tv_nsec = (times[1].tv_nsec + 1) % 1000000000;
    QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(service.copyValue(u"a"_s, u"com.x"_s, kUser, kAny), integer(expected));
}

// Directory entries ending in the (user, host) suffix, named without it;
// ByHost, other files and other hosts are left out; unsynchronised domains of
// this instance count as they will be.
void PreferencesServiceTest::applicationList()
{
    for (const QString &name : {u"a.plist"_s, u".GlobalPreferences.plist"_s, u"notes.txt"_s, u"b.plist.lock"_s,
                                u"ByHost/h.%1.plist"_s.arg(kHostId), u"ByHost/other.000d93a1b2c3.plist"_s,
                                u"gone.plist"_s})
        writeFile(prefs() + u'/' + name, binaryDomain({{u"k"_s, integer(1)}}));
    QDir().mkpath(prefs() + u"/folder.plist"_s);
    PreferencesService service;
    service.setValue(u"k"_s, std::nullopt, u"gone"_s, kUser, kAny);
    service.setValue(u"k"_s, integer(1), u"new"_s, kUser, kAny);
    std::optional<QStringList> names = service.copyApplicationList(kUser, kAny);
    QVERIFY(names);
    names->sort();
    QCOMPARE(*names, (QStringList{u".GlobalPreferences"_s, u"a"_s, u"new"_s}));
    QCOMPARE(service.copyApplicationList(kUser, PreferencesHost::Current), QStringList{u"h"_s});
    QCOMPARE(service.copyApplicationList(PreferencesUser::Any, kAny), QStringList{}); // no machine folder
}

// Folders are found, never made: none while missing, the path once they exist.
void PreferencesServiceTest::folderLookup_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<qint16>("domain");
    QTest::addColumn<QString>("expected"); // "~" user folder, "@" machine folder; empty: none
    using namespace FolderLookup;
    QTest::newRow("user preferences") << kPreferencesFolderType << kUserDomain << u"~"_s;
    QTest::newRow("machine preferences") << kPreferencesFolderType << kLocalDomain << u"@"_s;
    QTest::newRow("temporary folder is machine-wide only") << kTemporaryFolderType << kUserDomain << QString();
    QTest::newRow("unknown type") << fourCharCode("desk") << kUserDomain << QString();
}

void PreferencesServiceTest::folderLookup()
{
    QFETCH(quint32, type);
    QFETCH(qint16, domain);
    QFETCH(QString, expected);
    QCOMPARE(FolderLookup::folderForType(type, domain), std::nullopt);
    QVERIFY(!QFileInfo::exists(prefs()) && !QFileInfo::exists(local()));
    QDir().mkpath(prefs());
    QDir().mkpath(local());
    expected.replace(u'~', prefs()).replace(u'@', local());
    QCOMPARE(FolderLookup::folderForType(type, domain).value_or(QString()), expected);
}

#include "PreferencesServiceTest.moc"
