#include "PreferencesService.h"

#include "FolderLookup.h"
#include "PreferenceDomainFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QSet>

#include <dirent.h>

namespace {

const QString kGlobalFileName = QStringLiteral(".GlobalPreferences");
const QString kPlistSuffix = QStringLiteral(".plist");

// The global domain goes by three names: the platform's constant (compared by
// its text here, where CF compared pointers), the Foundation name, and the file name.
QString fileNameForDomain(const QString &domain)
{
    if (domain == QLatin1String("kCFPreferencesAnyApplication") || domain == QLatin1String("NSGlobalDomain")
        || domain == kGlobalFileName)
        return kGlobalFileName;
    if (domain == QLatin1String("kCFPreferencesCurrentApplication")) {
        // The platform falls back to the process name when there is no bundle identifier.
        const QString name = QCoreApplication::applicationName();
        return name.isEmpty() ? QStringLiteral("UnknownApplication") : name;
    }
    return domain;
}

QString folderFor(PreferencesUser user, PreferencesHost host)
{
    switch (user) {
    case PreferencesUser::Current:
        return host == PreferencesHost::Current ? FolderLookup::userPreferencesPath() + QStringLiteral("/ByHost")
                                                : FolderLookup::userPreferencesPath();
    case PreferencesUser::Any:
        return host == PreferencesHost::Current ? FolderLookup::localPreferencesPath()
                                                : FolderLookup::localPreferencesPath() + QStringLiteral("/Network");
    }
    return {};
}

bool isHexDigits(QStringView text)
{
    for (QChar c : text) {
        if (!((c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F')))
            return false;
    }
    return true;
}

// A per-host file's identifier: the Ethernet address of older systems (12 hex
// digits) or a hardware UUID (8-4-4-4-12). Neither holds a dot.
bool isHostIdentifier(QStringView id)
{
    if (id.size() == 12)
        return isHexDigits(id);
    if (id.size() != 36)
        return false;
    for (qsizetype dash : {8, 13, 18, 23}) {
        if (id.at(dash) != u'-')
            return false;
    }
    return isHexDigits(id.mid(0, 8)) && isHexDigits(id.mid(9, 4)) && isHexDigits(id.mid(14, 4))
        && isHexDigits(id.mid(19, 4)) && isHexDigits(id.mid(24));
}

// The names in folder in directory order, leaving out "." "..", sub-folders and
// anything that does not end in suffix. The d_type hint saves a stat per entry.
QStringList listFolder(const QString &folder, const QString &suffix)
{
    QStringList names;
    DIR *dir = ::opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir)) {
        if (entry->d_type == DT_DIR)
            continue;
        const QString name = QFile::decodeName(entry->d_name);
        if (name.endsWith(suffix) && name != QLatin1String(".") && name != QLatin1String(".."))
            names.append(name);
    }
    ::closedir(dir);
    return names;
}

QString mostFrequentHostIdentifier(const QString &byHostFolder)
{
    QHash<QString, int> counts;
    for (const QString &name : listFolder(byHostFolder, kPlistSuffix)) {
        const QStringView stem = QStringView(name).chopped(kPlistSuffix.size());
        const qsizetype dot = stem.lastIndexOf(u'.');
        if (dot >= 0 && isHostIdentifier(stem.mid(dot + 1)))
            ++counts[stem.mid(dot + 1).toString()];
    }
    QString best;
    int bestCount = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        // Ties go to the smaller text, so the choice does not depend on hash order.
        if (it.value() > bestCount || (it.value() == bestCount && it.key() < best)) {
            best = it.key();
            bestCount = it.value();
        }
    }
    return best;
}

// /etc/machine-id holds 32 hex digits; per-host files want the platform's
// upper-case 8-4-4-4-12 form of a UUID.
QString machineIdentifier()
{
    QFile file(QStringLiteral("/etc/machine-id"));
    const QString id = file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.read(64)).trimmed() : QString();
    if (id.size() != 32 || !isHexDigits(id))
        return QStringLiteral("UnknownHostID"); // what the platform names a host whose UUID it cannot get
    const QString upper = id.toUpper();
    return upper.mid(0, 8) + QLatin1Char('-') + upper.mid(8, 4) + QLatin1Char('-') + upper.mid(12, 4)
        + QLatin1Char('-') + upper.mid(16, 4) + QLatin1Char('-') + upper.mid(20);
}

mode_t defaultFileMode(PreferencesUser user)
{
    return user == PreferencesUser::Any ? 0644 : 0600;
}

mode_t defaultFolderMode(PreferencesUser user)
{
    return user == PreferencesUser::Any ? 0755 : 0700;
}

QString folderOfFile(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

} // namespace

// One domain as this instance knows it: the file's content as last read or
// written, with this instance's pending sets and removals applied on top.
struct DomainState {
    QString name; // the file name form: ".GlobalPreferences" for the global domain
    PreferencesUser user = PreferencesUser::Current;
    PreferencesHost host = PreferencesHost::Any;
    bool loaded = false;
    PropertyDictionary values;
    PreferenceDomainFile::Stamp stamp; // of the file the values came from
    QStringList pendingKeys;           // set or removed since the last write, in order
    QSet<QString> pending;

    void markPending(const QString &key)
    {
        if (!pending.contains(key)) {
            pending.insert(key);
            pendingKeys.append(key);
        }
    }
};

struct PreferencesService::Private {
    QHash<QString, DomainState> domains; // by file path
    QStringList touched;                 // file paths in the order they were first used
    QString lastError;

    // The host identifier found by listing the ByHost folder, kept while the
    // folder is unchanged: per-host paths are asked for often.
    struct HostCache {
        QString folder;
        PreferenceDomainFile::Stamp folderStamp;
        QString identifier;
    } hostCache;

    DomainState &domain(const QString &path, const QString &name, PreferencesUser user, PreferencesHost host);
    DomainState &loaded(const QString &path, const QString &name, PreferencesUser user, PreferencesHost host);
    // The same, found by the domain's name, as every copy and set asks for it.
    DomainState &loadedDomain(const PreferencesService &service, const QString &domain, PreferencesUser user,
                              PreferencesHost host)
    {
        return loaded(service.pathForDomain(domain, user, host), fileNameForDomain(domain), user, host);
    }
    bool write(const QString &path, DomainState &state);
    bool writeLocked(PreferenceDomainFile &file, DomainState &state, QString *reason);
    void fail(const QString &path, const QString &reason);
    bool synchronize(const QString &path);
};

DomainState &PreferencesService::Private::domain(const QString &path, const QString &name, PreferencesUser user,
                                                 PreferencesHost host)
{
    auto it = domains.find(path);
    if (it == domains.end()) {
        it = domains.insert(path, DomainState{});
        it->name = name;
        it->user = user;
        it->host = host;
        touched.append(path);
    }
    return *it;
}

DomainState &PreferencesService::Private::loaded(const QString &path, const QString &name, PreferencesUser user,
                                                 PreferencesHost host)
{
    DomainState &state = domain(path, name, user, host);
    if (!state.loaded) {
        // A file that cannot be used counts as holding no keys, as on the platform;
        // a write is refused later, so the file is not lost.
        PreferenceDomainFile::Content content = PreferenceDomainFile(path).read();
        state.values = std::move(content.dictionary);
        state.stamp = content.stamp;
        state.loaded = true;
    }
    return state;
}

void PreferencesService::Private::fail(const QString &path, const QString &reason)
{
    const QString message = QStringLiteral("The preferences file %1 was not saved: %2").arg(path, reason);
    lastError = lastError.isEmpty() ? message : lastError + QLatin1Char('\n') + message;
}

bool PreferencesService::Private::write(const QString &path, DomainState &state)
{
    bool setsAnything = false;
    for (const QString &key : std::as_const(state.pendingKeys))
        setsAnything = setsAnything || state.values.contains(key);
    const QString folder = folderOfFile(path);
    QString reason;
    if (!PreferenceDomainFile::stamp(folder).exists) {
        if (!setsAnything) { // only removals, and there is not even a folder: nothing to remove
            state.pendingKeys.clear();
            state.pending.clear();
            return true;
        }
        if (!PreferenceDomainFile::makeFolder(folder, defaultFolderMode(state.user), &reason)) {
            fail(path, reason);
            return false;
        }
    }
    PreferenceDomainFile file(path);
    if (!file.lock(defaultFileMode(state.user), &reason) || !writeLocked(file, state, &reason)) {
        fail(path, reason);
        return false;
    }
    return true;
}

// Under the lock: re-read what other writers left, put this instance's keys on
// top one by one, and write the result (or remove the file when nothing is left).
bool PreferencesService::Private::writeLocked(PreferenceDomainFile &file, DomainState &state, QString *reason)
{
    PreferenceDomainFile::Content content = file.read();
    if (content.state == PreferenceDomainFile::State::Unreadable) {
        *reason = content.problem;
        return false;
    }
    PropertyDictionary merged = std::move(content.dictionary);
    for (const QString &key : std::as_const(state.pendingKeys)) {
        if (const PropertyList *value = state.values.find(key))
            merged.insert(key, *value);
        else
            merged.remove(key);
    }
    PreferenceDomainFile::Stamp written;
    if (merged.isEmpty()) {
        if (!file.remove(reason))
            return false;
    } else {
        const bool exists = content.state == PreferenceDomainFile::State::Ok;
        // A new (or empty) file is binary; old-style text cannot hold every value
        // type, so such a file moves on to XML.
        const PropertyListFormat format =
            content.format == PropertyListFormat::OpenStep ? PropertyListFormat::Xml : content.format;
        const QByteArray bytes = PropertyListSerialization::write(PropertyList(merged), format);
        if (bytes.isEmpty()) {
            const QString problem = PropertyListSerialization::writeProblem(PropertyList(merged));
            *reason = problem.isEmpty() ? QStringLiteral("its content cannot be encoded") : problem;
            return false;
        }
        if (!file.replace(bytes, exists ? content.mode : defaultFileMode(state.user), &written, reason))
            return false;
    }
    state.values = std::move(merged);
    state.stamp = written;
    state.loaded = true;
    state.pendingKeys.clear();
    state.pending.clear();
    return true;
}

bool PreferencesService::Private::synchronize(const QString &path)
{
    auto it = domains.find(path);
    if (it == domains.end())
        return true;
    DomainState &state = *it;
    if (!state.pendingKeys.isEmpty())
        return write(path, state);
    // Nothing to write: keep what was read if the file is as it was, otherwise
    // forget it so the next access sees what others wrote.
    if (state.loaded && !(PreferenceDomainFile::stamp(path) == state.stamp)) {
        state.loaded = false;
        state.values = {};
    }
    return true;
}

PreferencesService::PreferencesService()
    : d(std::make_unique<Private>())
{
}

PreferencesService::~PreferencesService() = default;

PreferencesService &PreferencesService::shared()
{
    static PreferencesService service;
    return service;
}

QString PreferencesService::lastError() const
{
    return d->lastError;
}

QString PreferencesService::hostIdentifier() const
{
    const QString fromEnvironment = qEnvironmentVariable("ORVANE_HOST_UUID");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QString folder = folderFor(PreferencesUser::Current, PreferencesHost::Current);
    const PreferenceDomainFile::Stamp folderStamp = PreferenceDomainFile::stamp(folder);
    Private::HostCache &cache = d->hostCache;
    if (cache.identifier.isEmpty() || cache.folder != folder || !(cache.folderStamp == folderStamp)) {
        QString found = mostFrequentHostIdentifier(folder);
        cache = {folder, folderStamp, found.isEmpty() ? machineIdentifier() : found};
    }
    return cache.identifier;
}

QString PreferencesService::pathForDomain(const QString &domain, PreferencesUser user, PreferencesHost host) const
{
    const QString name = fileNameForDomain(domain);
    const bool byHost = user == PreferencesUser::Current && host == PreferencesHost::Current;
    const QString fileName = byHost ? name + QLatin1Char('.') + hostIdentifier() + kPlistSuffix : name + kPlistSuffix;
    // As with a URL relative to a base, an absolute name ignores the folder.
    if (name.startsWith(QLatin1Char('/')))
        return fileName;
    return folderFor(user, host) + QLatin1Char('/') + fileName;
}

std::optional<QStringList> PreferencesService::copyApplicationList(PreferencesUser user, PreferencesHost host)
{
    const QString folder = folderFor(user, host);
    if (folder.isEmpty())
        return std::nullopt;
    // The folder of per-host files holds "<domain>.<HOSTID>.plist"; everywhere
    // else a domain's file is "<domain>.plist" (the machine folder's per-host
    // files carry no identifier, so the suffix follows the file mapping).
    const bool byHost = user == PreferencesUser::Current && host == PreferencesHost::Current;
    const QString suffix = byHost ? QLatin1Char('.') + hostIdentifier() + kPlistSuffix : kPlistSuffix;
    QStringList names;
    for (const QString &fileName : listFolder(folder, suffix))
        names.append(fileName.chopped(suffix.size()));
    // Domains with changes not yet written: one that holds keys is listed, one
    // whose keys were all removed is not, whatever the disk says.
    for (const QString &path : std::as_const(d->touched)) {
        const DomainState &state = *d->domains.constFind(path);
        if (state.pendingKeys.isEmpty() || state.user != user || state.host != host
            || state.name.contains(QLatin1Char('/')))
            continue;
        if (state.values.isEmpty())
            names.removeAll(state.name);
        else if (!names.contains(state.name))
            names.append(state.name);
    }
    return names;
}

std::optional<QStringList> PreferencesService::copyKeyList(const QString &domain, PreferencesUser user,
                                                           PreferencesHost host)
{
    const DomainState &state = d->loadedDomain(*this, domain, user, host);
    if (state.values.isEmpty())
        return std::nullopt;
    return state.values.keys();
}

PropertyDictionary PreferencesService::copyMultiple(const QStringList &keys, const QString &domain,
                                                    PreferencesUser user, PreferencesHost host)
{
    const DomainState &state = d->loadedDomain(*this, domain, user, host);
    // Asking for exactly the list copyKeyList handed out (the same shared list,
    // so every key is there, in order) is asking for the whole domain: answer
    // it without rebuilding a large dictionary key by key.
    if (keys.size() == state.values.size() && keys.constData() == state.values.keys().constData())
        return state.values;
    PropertyDictionary found;
    for (const QString &key : keys) {
        if (const PropertyList *value = state.values.find(key))
            found.insert(key, *value);
    }
    return found;
}

std::optional<PropertyDictionary> PreferencesService::copyDomain(const QString &domain, PreferencesUser user,
                                                                 PreferencesHost host)
{
    const DomainState &state = d->loadedDomain(*this, domain, user, host);
    if (state.values.isEmpty())
        return std::nullopt;
    return state.values;
}

std::optional<PropertyList> PreferencesService::copyValue(const QString &key, const QString &domain,
                                                          PreferencesUser user, PreferencesHost host)
{
    const DomainState &state = d->loadedDomain(*this, domain, user, host);
    if (const PropertyList *value = state.values.find(key))
        return *value;
    return std::nullopt;
}

void PreferencesService::setMultiple(const PropertyDictionary &keysToSet, const QStringList &keysToRemove,
                                     const QString &domain, PreferencesUser user, PreferencesHost host)
{
    DomainState &state = d->loadedDomain(*this, domain, user, host);
    for (qsizetype i = 0; i < keysToSet.size(); ++i) {
        const QString &key = keysToSet.keyAt(i);
        const PropertyList &value = keysToSet.valueAt(i);
        // Unlike the platform, integer 1 and real 1.0 differ here: the type is
        // part of what the user set.
        const PropertyList *old = state.values.find(key);
        if (old && old->isIdenticalTo(value))
            continue;
        state.values.insert(key, value);
        state.markPending(key);
    }
    for (const QString &key : keysToRemove) {
        if (state.values.remove(key))
            state.markPending(key);
    }
}

void PreferencesService::setValue(const QString &key, const std::optional<PropertyList> &value,
                                  const QString &domain, PreferencesUser user, PreferencesHost host)
{
    if (value)
        setMultiple(PropertyDictionary{{key, *value}}, {}, domain, user, host);
    else
        setMultiple({}, QStringList{key}, domain, user, host);
}

bool PreferencesService::synchronize(const QString &domain, PreferencesUser user, PreferencesHost host)
{
    d->lastError.clear();
    return d->synchronize(pathForDomain(domain, user, host));
}

bool PreferencesService::appSynchronize(const QString &domain)
{
    Q_UNUSED(domain); // as on the platform, every domain of the process is synchronised
    d->lastError.clear();
    bool ok = true;
    for (const QString &path : QStringList(d->touched))
        ok = d->synchronize(path) && ok;
    return ok;
}
