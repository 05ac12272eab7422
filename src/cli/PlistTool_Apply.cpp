// orvane-plist apply: `defaults write` lines applied to the user's domains the
// way a drop of that text on the domain browser applies them: each domain's
// file opened as a document, the entry merged into it (an existing key
// replaced, dictionaries merged a level down), the document saved.
#include "PlistTool.h"

#include "CommandLineScreen.h"
#include "document/DocumentReader.h"
#include "document/plistDocument.h"
#include "domains/DefaultsDomainFile.h"
#include "import/DefaultsTextParser.h"

#include <QFileInfo>

#include <map>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A document keeps a plain pointer to its screen, so the screen goes last.
struct OpenDomain {
    std::unique_ptr<CommandLineScreen> screen;
    std::unique_ptr<plistDocument> document;
};

// What applying did to the key, told from the tree before and after.
QString outcome(const PListNodePtr &before, const PropertyList &oldValue, const PListNode *after,
                const PropertyList &newValue)
{
    if (!before)
        return u"added"_s;
    if (after && after->initialValue() == oldValue)
        return u"unchanged"_s;
    return oldValue.isDictionary() && newValue.isDictionary() ? u"merged"_s : u"replaced"_s;
}

// The domain's file as a drop finds it. The options of `defaults` that name
// the global domain, and its CoreFoundation name, are taken as NSGlobalDomain:
// a drop would make files of those names, which nothing reads.
DefaultsDomainFile::Location domainFile(const QString &domain, bool dryRun)
{
    const bool global = domain == u"-g"_s || domain == u"-globalDomain"_s || domain == u"kCFPreferencesAnyApplication"_s;
    const QString name = global ? u"NSGlobalDomain"_s : domain;
    return dryRun ? DefaultsDomainFile::find(name) : DefaultsDomainFile::findOrCreate(name);
}

std::unique_ptr<plistDocument> openDomainFile(const DefaultsDomainFile::Location &file, QString *reason)
{
    if (file.status == DefaultsDomainFile::Status::Missing) {
        // A dry run writes nothing: the domain is applied to as the empty one it would be.
        auto document = PlistTool::makeDocument();
        document->adoptContent(file.path, DocumentReader::contentOf(PropertyDictionary(), false, true));
        return document;
    }
    return PlistTool::openDocument(file.path, reason);
}

// One line applied: "DOMAIN KEY: what happened", or empty with the reason.
QString applyLine(const QString &line, bool dryRun, std::map<QString, OpenDomain> &domains, QString *reason)
{
    const auto parsed = DefaultsTextParser::dictionaryFromDefaultsString(line);
    if (!parsed) {
        *reason = u"%1 (column %2)"_s.arg(parsed.message).arg(parsed.position.column);
        return QString();
    }
    if (!parsed.value) {
        *reason = u"not a 'defaults write' command"_s;
        return QString();
    }
    const DefaultsEntry &entry = *parsed.value;
    const DefaultsDomainFile::Location location = domainFile(entry.domain, dryRun);
    if (!location.found() && location.status != DefaultsDomainFile::Status::Missing) {
        *reason = location.error;
        return QString();
    }
    const QString file = location.path;
    auto found = domains.find(file);
    if (found == domains.end()) {
        OpenDomain open;
        open.document = openDomainFile(location, reason);
        if (!open.document)
            return QString();
        open.screen = std::make_unique<CommandLineScreen>();
        // The warning is off for a script: a key there is replaced.
        open.screen->replaceDuplicates = true;
        open.document->setScreen(open.screen.get());
        found = domains.emplace(file, std::move(open)).first;
    }
    plistDocument &document = *found->second.document;
    if (!document.canEditPlist() || !document.cachedTreeData()->value().isDictionary()) {
        *reason = u"%1 cannot be changed"_s.arg(file);
        return QString();
    }
    const QString key = entry.dictionary.keyAt(0);
    const PListNodePtr before = document.cachedTreeData()->childWithName(key);
    const PropertyList oldValue = before ? before->initialValue() : PropertyList();
    document.addNewDefaultsValue(entry.dictionary);
    const PListNodePtr after = document.cachedTreeData()->childWithName(key);
    return u"%1 %2: %3"_s.arg(entry.domain, key,
                              outcome(before, oldValue, after.get(), entry.dictionary.valueAt(0)));
}

} // namespace

int PlistTool::apply(const QStringList &arguments)
{
    bool dryRun = false;
    QString path;
    for (const QString &argument : arguments) {
        if (argument == u"-n")
            dryRun = true;
        else if (argument.startsWith(u'-') && argument != u"-")
            return usage(u"apply does not know the option '%1'"_s.arg(argument));
        else if (!path.isEmpty())
            return usage(u"apply reads one file"_s);
        else
            path = argument;
    }
    QString text;
    if (!readTextInput(path, &text))
        return 1;

    std::map<QString, OpenDomain> domains; // by file path
    int status = 0;
    const QStringList lines = text.split(u'\n');
    for (qsizetype index = 0; index < lines.size(); ++index) {
        QString line = lines.at(index);
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.trimmed().isEmpty() || line.trimmed().startsWith(u'#'))
            continue;
        const QString number = QString::number(index + 1) + u": "_s;
        QString reason;
        const QString applied = applyLine(line, dryRun, domains, &reason);
        if (applied.isEmpty()) {
            m_out << number << "refused: " << reason << '\n';
            status = 1;
        } else {
            m_out << number << applied << '\n';
        }
    }
    if (dryRun)
        return status;
    for (auto &[file, open] : domains) {
        QString error;
        if (open.document->isDocumentEdited() && !open.document->saveDocument(&error)) {
            m_err << file << ": not saved: " << error << '\n';
            status = 1;
        }
    }
    return status;
}
