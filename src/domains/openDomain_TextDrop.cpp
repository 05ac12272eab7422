// A `defaults write` line dropped on the browser or pasted into it: the
// domain comes from the text alone, its file is found or made, and the
// window opens that file with the entry added.
#include "openDomain.h"

#include "domains/DefaultsDomainFile.h"
#include "import/DefaultsTextParser.h"

namespace {

const QString kCommandPrefix = QStringLiteral("defaults write ");

// A parse error counts as no entry: the drop or paste is then dropped whole,
// and nothing is written.
std::optional<DefaultsEntry> entryFrom(const QString &text)
{
    auto parsed = DefaultsTextParser::dictionaryFromDefaultsString(text);
    return parsed ? std::move(parsed.value) : std::nullopt;
}

} // namespace

bool openDomain::willAccept(const QString &text)
{
    // The parser finds the command anywhere; a drop wants it first, so that
    // a paragraph that merely quotes the command is not taken.
    return text.startsWith(kCommandPrefix) && entryFrom(text).has_value();
}

bool openDomain::acceptDrop(const QString &text)
{
    const std::optional<DefaultsEntry> entry = entryFrom(text);
    return entry && openDomainWithNewValue(entry->domain, entry->dictionary);
}

void openDomain::paste(const QString &text)
{
    const std::optional<DefaultsEntry> entry = entryFrom(text);
    if (!entry) {
        beep();
        return;
    }
    openDomainWithNewValue(entry->domain, entry->dictionary);
}

bool openDomain::openDomainWithNewValue(const QString &domain, const PropertyDictionary &entry)
{
    const DefaultsDomainFile::Location file = DefaultsDomainFile::findOrCreate(domain);
    if (!file.found()) {
        beep();
        return false;
    }
    if (file.status == DefaultsDomainFile::Status::Created)
        reloadTree();
    // Whether the document could be opened is the window's to know; the
    // entry counts as handed over either way.
    emit applyDefaultsRequested(file.path, entry);
    return true;
}
