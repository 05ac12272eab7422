// The preferences service over real files: which file a domain is, what stays
// pending until a synchronise, and what a synchronise may and may not do to a file.
#include "Corpus.h"
#include "TemporaryPreferences.h"
#include "TestRegistry.h"

#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
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

int modeOf(const QString &path)
{
    return int(statOf(path).st_mode & 07777);
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
    void init() { QVERIFY(m_account.emplace().isValid()); }
    void cleanup() { m_account.reset(); }
    void pathForDomain_data();
    void pathForDomain();
    void hostIdentifierFromByHostFolder_data();
    void hostIdentifierFromByHostFolder();
    void whatSynchronizeWrites_data();
    void whatSynchronizeWrites();
    void twoInstancesKeepEachOthersKeys();
    void onlyRealChangesWrite_data();
    void onlyRealChangesWrite();
    void unusableFileIsNeverOverwritten_data();
    void unusableFileIsNeverOverwritten();
    void writeCutShortLeavesOldFile_data();
    void writeCutShortLeavesOldFile();
    void unchangedFileIsNotReread_data();
    void unchangedFileIsNotReread();
    void applicationList();

private:
    QString prefs() const { return m_account->userFolder(); }
    QString local() const { return m_account->local(); }

    std::optional<TemporaryPreferences> m_account;
};

ORVANE_TEST(PreferencesServiceTest)

// "~" is the user folder, "@" the machine folder, "%1" the host id.
void PreferencesServiceTest::pathForDomain_data()
{
    QTest::addColumn<QString>("domain");
    QTest::addColumn<PreferencesUser>("user");
    QTest::addColumn<PreferencesHost>("host");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &domain, PreferencesUser user, PreferencesHost host,
                        const QString &expected) { QTest::newRow(name) << domain << user << host << expected; };
    const auto C = PreferencesUser::Current, A = PreferencesUser::Any;
    const auto cur = PreferencesHost::Current, any = PreferencesHost::Any;
    row("user, any host", u"com.x"_s, C, any, u"~/com.x.plist"_s);
    row("user, this host is ByHost with id", u"com.x"_s, C, cur, u"~/ByHost/com.x.%1.plist"_s);
    row("machine, this host has no id", u"com.x"_s, A, cur, u"@/com.x.plist"_s);
    row("machine, any host is Network", u"com.x"_s, A, any, u"@/Network/com.x.plist"_s);
    row("NSGlobalDomain", u"NSGlobalDomain"_s, C, any, u"~/.GlobalPreferences.plist"_s);
    row("CF any-application constant", u"kCFPreferencesAnyApplication"_s, C, any, u"~/.GlobalPreferences.plist"_s);
    row("global per host", u"NSGlobalDomain"_s, C, cur, u"~/ByHost/.GlobalPreferences.%1.plist"_s);
    row("absolute path ignores the folder", u"/tmp/x/test"_s, C, any, u"/tmp/x/test.plist"_s);
    row("absolute path per host", u"/tmp/x/test"_s, C, cur, u"/tmp/x/test.%1.plist"_s);
    row("relative path stays inside", u"a/b"_s, C, any, u"~/a/b.plist"_s);
    row("name with .plist gets another", u"a.plist"_s, C, any, u"~/a.plist.plist"_s);
}

void PreferencesServiceTest::pathForDomain()
{
    QFETCH(QString, domain);
    QFETCH(PreferencesUser, user);
    QFETCH(PreferencesHost, host);
    QFETCH(QString, expected);
    expected.replace(u"%1"_s, kHostId).replace(u'~', prefs()).replace(u'@', local());
    QCOMPARE(PreferencesService().pathForDomain(domain, user, host), expected);
}

// Without ORVANE_HOST_UUID the id most used by existing per-host files wins.
void PreferencesServiceTest::hostIdentifierFromByHostFolder_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("expected");
    const QString u1 = u"11111111-2222-3333-4444-555555555555"_s, u2 = u"AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE"_s;
    const QString almost = u"0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8FZ"_s;
    QTest::newRow("most frequent UUID") << QStringList{u"a.%1.plist"_s.arg(u2), u"a.%1.plist"_s.arg(u1),
                                                       u"b.%1.plist"_s.arg(u1)} << u1;
    QTest::newRow("tie goes to smaller text") << QStringList{u"a.%1.plist"_s.arg(u2), u"b.%1.plist"_s.arg(u1)} << u1;
    QTest::newRow("old Ethernet form") << QStringList{u"com.apple.screensaver.000d93a1b2c3.plist"_s}
                                       << u"000d93a1b2c3"_s;
    // Each impostor appears twice, so counting it would beat the one real id.
    QTest::newRow("non-ids and non-.plist names not counted")
        << QStringList{u"a.%1.plist"_s.arg(u1), u"a.notanid.plist"_s, u"b.notanid.plist"_s,
                       u"a.%1.txt"_s.arg(u2), u"b.%1.txt"_s.arg(u2), u"a.%1.plist"_s.arg(almost),
                       u"b.%1.plist"_s.arg(almost)}
        << u1;
}

void PreferencesServiceTest::hostIdentifierFromByHostFolder()
{
    QFETCH(QStringList, files);
    QFETCH(QString, expected);
    qunsetenv("ORVANE_HOST_UUID");
    for (const QString &name : files)
        writeFile(prefs() + u"/ByHost/"_s + name, {});
    QCOMPARE(PreferencesService().hostIdentifier(), expected);
}

// A set is seen at once by the instance that made it and by nobody else until
// it is synchronised. A new file is binary and private (machine files world
// readable) in folders made to match; an existing file keeps its mode and its
// format, except old-style text, which cannot be written and becomes XML.
void PreferencesServiceTest::whatSynchronizeWrites_data()
{
    QTest::addColumn<PreferencesUser>("user");
    QTest::addColumn<PreferencesHost>("host");
    QTest::addColumn<QString>("corpusFile"); // empty: no file yet
    QTest::addColumn<int>("fileMode");
    QTest::addColumn<int>("folderMode"); // 0: folder was already there
    QTest::addColumn<PropertyListFormat>("format");
    const auto row = [](const char *name, PreferencesUser user, PreferencesHost host, const QString &corpusFile,
                        int fileMode, int folderMode, PropertyListFormat format) {
        QTest::newRow(name) << user << host << corpusFile << fileMode << folderMode << format;
    };
    const auto binary = PropertyListFormat::Binary, xml = PropertyListFormat::Xml;
    row("new user domain", kUser, kAny, {}, 0600, 0700, binary);
    row("new per-host domain makes ByHost", kUser, PreferencesHost::Current, {}, 0600, 0700, binary);
    row("new machine domain is world readable", PreferencesUser::Any, PreferencesHost::Current, {}, 0644, 0755,
        binary);
    row("binary stays, group readable", kUser, kAny, u"plists/binary/com.apple.dock.plist"_s, 0640, 0, binary);
    row("XML stays, world readable", kUser, kAny, u"plists/xml/com.apple.atrun.plist"_s, 0644, 0, xml);
    row("old-style becomes XML", kUser, kAny, u"plists/openstep/gnustep-Locale.canonical.plist"_s, 0664, 0, xml);
}

void PreferencesServiceTest::whatSynchronizeWrites()
{
    QFETCH(PreferencesUser, user);
    QFETCH(PreferencesHost, host);
    QFETCH(QString, corpusFile);
    QFETCH(int, fileMode);
    QFETCH(int, folderMode);
    QFETCH(PropertyListFormat, format);
    PreferencesService writer;
    const QString path = writer.pathForDomain(u"com.x"_s, user, host);
    if (!corpusFile.isEmpty()) {
        ORVANE_REQUIRE_CORPUS();
        writeFile(path, Corpus::readAll(Corpus::root() + u'/' + corpusFile), fileMode);
    }
    const QByteArray oldBytes = Corpus::readAll(path);
    PropertyDictionary wanted = writer.copyDomain(u"com.x"_s, user, host).value_or(PropertyDictionary());
    writer.setValue(u"k"_s, PropertyList(u"v"_s), u"com.x"_s, user, host);
    wanted.insert(u"k"_s, PropertyList(u"v"_s));
    QCOMPARE(writer.copyValue(u"k"_s, u"com.x"_s, user, host), PropertyList(u"v"_s));
    QCOMPARE(PreferencesService().copyValue(u"k"_s, u"com.x"_s, user, host), std::nullopt);
    QCOMPARE(Corpus::readAll(path), oldBytes);
    QVERIFY2(writer.synchronize(u"com.x"_s, user, host), qPrintable(writer.lastError()));
    const ReadResult<PropertyListFile> after = PropertyListSerialization::readFile(path);
    QVERIFY(after);
    QCOMPARE(after.value.format, format);
    QCOMPARE(after.value.value.toDictionary(), wanted);
    QCOMPARE(modeOf(path), fileMode);
    if (folderMode)
        QCOMPARE(modeOf(QFileInfo(path).absolutePath()), folderMode);
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
    const PropertyDictionary secondSets{{u"b"_s, integer(2)}, {u"shared"_s, integer(2)}};
    second.setMultiple(secondSets, {u"old"_s}, u"com.x"_s, kUser, kAny);
    QVERIFY(first.synchronize(u"com.x"_s, kUser, kAny));
    QVERIFY(second.synchronize(u"com.x"_s, kUser, kAny));
    const PropertyDictionary expected{{u"shared"_s, integer(2)}, {u"a"_s, integer(1)}, {u"b"_s, integer(2)}};
    QCOMPARE(dictionaryIn(path), expected);
    QCOMPARE(second.copyDomain(u"com.x"_s, kUser, kAny), expected); // the cache holds what was written
    QVERIFY(first.synchronize(u"com.x"_s, kUser, kAny));           // nothing pending: picks up the other's write
    QCOMPARE(first.copyDomain(u"com.x"_s, kUser, kAny), expected);
}

// A write replaces the file (new inode); a set identical in value and type, or
// removing an absent key, leaves the domain clean and the file alone. Sets go in
// before removals, and a domain left empty loses its file.
void PreferencesServiceTest::onlyRealChangesWrite_data()
{
    QTest::addColumn<PropertyList>("stored"); // beside other = 0
    QTest::addColumn<PropertyDictionary>("set");
    QTest::addColumn<QStringList>("remove");
    QTest::addColumn<bool>("writes");
    const auto row = [](const char *name, const PropertyList &stored, const PropertyDictionary &set,
                        const QStringList &remove, bool writes) {
        QTest::newRow(name) << stored << set << remove << writes;
    };
    const PropertyList seven = integer(7);
    row("integer 1 to real 1.0 is a change", integer(1), {{u"k"_s, PropertyList::real(1.0)}}, {}, true);
    row("boolean true to integer 1 is a change", PropertyList::boolean(true), {{u"k"_s, integer(1)}}, {}, true);
    row("float to double of same value", PropertyList::real(0.5), {{u"k"_s, PropertyList::real(0.5, 'f')}}, {},
        true);
    row("same integer is no change", seven, {{u"k"_s, seven}}, {}, false);
    row("new key", seven, {{u"new"_s, seven}}, {}, true);
    row("removing a present key", seven, {}, {u"k"_s}, true);
    row("removing an absent key is no change", seven, {}, {u"absent"_s}, false);
    row("set then removed in one call: emptied, file removed", seven, {{u"new"_s, seven}},
        {u"k"_s, u"other"_s, u"new"_s}, true);
}

void PreferencesServiceTest::onlyRealChangesWrite()
{
    QFETCH(PropertyList, stored);
    QFETCH(PropertyDictionary, set);
    QFETCH(QStringList, remove);
    QFETCH(bool, writes);
    const QString path = prefs() + u"/com.x.plist"_s;
    PropertyDictionary expected{{u"k"_s, stored}, {u"other"_s, integer(0)}};
    writeFile(path, binaryDomain(expected));
    const ino_t before = statOf(path).st_ino;
    PreferencesService service;
    service.setMultiple(set, remove, u"com.x"_s, kUser, kAny);
    for (qsizetype i = 0; i < set.size(); ++i)
        expected.insert(set.keyAt(i), set.valueAt(i));
    for (const QString &key : remove)
        expected.remove(key);
    QCOMPARE(service.copyKeyList(u"com.x"_s, kUser, kAny).has_value(), !expected.isEmpty());
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(QFile::exists(path), !expected.isEmpty());
    QCOMPARE(QFile::exists(path) && statOf(path).st_ino != before, writes && !expected.isEmpty());
    QVERIFY(PropertyList(dictionaryIn(path)).isIdenticalTo(PropertyList(expected)));
}

// A file that cannot be used reads as no keys, but a synchronise must not
// replace it: it fails naming the file and the reason, and keeps the change.
void PreferencesServiceTest::unusableFileIsNeverOverwritten_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("broken XML") << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>a</key>") << u"not a property list"_s;
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

// A child process writes a large domain while a file size limit makes write()
// fail part-way (even for root). With SIGXFSZ ignored the synchronise fails
// naming the file and cleans up. Otherwise the signal stops the writer right
// there, lock held and temporary file half written, and it is killed. Each kill,
// at a different point of the write, leaves a stray temporary file that nobody
// takes for a domain, and the next writer, killed or not, removes it (and only
// it) once it holds the lock. Either way the old file stays whole and the next
// writer builds on it.
void PreferencesServiceTest::writeCutShortLeavesOldFile_data()
{
    QTest::addColumn<QList<int>>("cuts"); // bytes written before the limit
    QTest::addColumn<bool>("killed");
    QTest::newRow("write fails: error, nothing left behind") << QList<int>{1024} << false;
    QTest::newRow("writer killed at three points of its write") << QList<int>{4096, 300000, 900000} << true;
}

void PreferencesServiceTest::writeCutShortLeavesOldFile()
{
    QFETCH(QList<int>, cuts);
    QFETCH(bool, killed);
    constexpr int kReportedError = 3;
    const QString path = prefs() + u"/com.x.plist"_s;
    const QByteArray old = binaryDomain({{u"a"_s, integer(1)}});
    writeFile(path, old);
    for (const int cut : cuts) {
        const pid_t child = ::fork();
        if (child == 0) {
            const rlimit noCore{0, 0}, limit{rlim_t(cut), rlim_t(cut)};
            ::setrlimit(RLIMIT_CORE, &noCore);
            ::setrlimit(RLIMIT_FSIZE, &limit);
            struct sigaction stop {};
            stop.sa_handler = [](int) { ::raise(SIGSTOP); };
            if (!killed)
                stop.sa_handler = SIG_IGN;
            ::sigaction(SIGXFSZ, &stop, nullptr);
            PreferencesService writer;
            writer.setValue(u"big"_s, PropertyList(QByteArray(1 << 20, 'x')), u"com.x"_s, kUser, kAny);
            const bool reported =
                !writer.synchronize(u"com.x"_s, kUser, kAny) && writer.lastError().contains(path);
            ::_exit(reported ? kReportedError : 0);
        }
        QVERIFY(child > 0);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, WUNTRACED), child);
        if (killed) {
            QVERIFY(WIFSTOPPED(status));
            QCOMPARE(::kill(child, SIGKILL), 0);
            QCOMPARE(::waitpid(child, &status, 0), child);
            QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
        } else {
            QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == kReportedError);
        }
    }
    QCOMPARE(Corpus::readAll(path), old);
    const auto files = [this](const QString &pattern) {
        return QDir(prefs()).entryList({pattern}, QDir::Files | QDir::Hidden, QDir::Name);
    };
    QCOMPARE(files(u".com.x.plist.*"_s).size(), killed ? 1 : 0);
    // Look-alikes that are not this domain's temporary files.
    writeFile(prefs() + u"/.com.x.plist.backup"_s, {});
    writeFile(prefs() + u"/.com.y.plist.orvane-AbC123"_s, {});
    PreferencesService service;
    QCOMPARE(service.copyApplicationList(kUser, kAny), QStringList{u"com.x"_s});
    service.setValue(u"b"_s, integer(2), u"com.x"_s, kUser, kAny);
    QVERIFY(service.synchronize(u"com.x"_s, kUser, kAny));
    QCOMPARE(dictionaryIn(path), (PropertyDictionary{{u"a"_s, integer(1)}, {u"b"_s, integer(2)}}));
    const QStringList clean{u".com.x.plist.backup"_s, u".com.y.plist.orvane-AbC123"_s, u"com.x.plist"_s,
                            u"com.x.plist.lock"_s};
    QCOMPARE(files(u"*"_s), clean);
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
    const QString target = replaceInode ? path + u".new"_s : path;
    writeFile(target, next);
    if (replaceInode)
        QCOMPARE(::rename(QFile::encodeName(target).constData(), QFile::encodeName(path).constData()), 0);
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

#include "PreferencesServiceTest.moc"
