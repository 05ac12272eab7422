// orvane-plist filter / set: what a document window shows for a search text,
// and one entry edited as the window edits it, for scripts.
#include "PlistTool.h"

#include "CommandLineScreen.h"
#include "document/plistDocument.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <memory>

namespace {

// The class pop-up's items a user may choose for a leaf.
int tagNamed(const QString &name)
{
    const QStringList names{QStringLiteral("String"), QStringLiteral("Data"), QStringLiteral("Integer"),
                            QStringLiteral("Float"), QStringLiteral("Boolean"), QStringLiteral("Date")};
    const int tag = int(names.indexOf(name));
    return tag == DataClass ? -1 : tag;
}

// The entry at a path of keys from the top level; an array element by its
// 1-based position.
PListNode *entryAt(const plistDocument &document, const QStringList &keys)
{
    PListNode *node = document.treeData().get();
    for (const QString &key : keys) {
        bool number = false;
        const int position = key.toInt(&number);
        const PListNodePtr child = node->isArray() ? (number ? node->childAtIndex(position - 1) : nullptr)
                                                   : node->childWithName(key);
        if (!child)
            return nullptr;
        node = child.get();
    }
    return node;
}

} // namespace

std::unique_ptr<plistDocument> PlistTool::makeDocument()
{
    return std::make_unique<plistDocument>(
        plistDocument::Services{{PreferencesService::shared(), UserDefaults::standardUserDefaults()},
                                NotificationCenter::defaultCenter()});
}

std::unique_ptr<plistDocument> PlistTool::openDocument(const QString &path, QString *error)
{
    auto document = makeDocument();
    if (!document->readFromFile(path, error))
        return nullptr;
    return document;
}

int PlistTool::filter(const QStringList &arguments)
{
    if (arguments.size() != 2)
        return usage(QStringLiteral("filter takes a file and a search text"));
    QString error;
    const auto document = openDocument(arguments.at(0), &error);
    if (!document)
        return fail(error);
    document->searchDocument(arguments.at(1));
    m_out << document->shownValue().description() << '\n';
    return 0;
}

int PlistTool::set(const QStringList &arguments)
{
    QStringList keys;
    QString className;
    std::optional<QString> text;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if ((argument == u"--class" || argument == u"--value") && i + 1 < arguments.size()) {
            (argument == u"--class" ? className : text.emplace()) = arguments.at(++i);
            continue;
        }
        keys << argument;
    }
    if (arguments.isEmpty() || keys.isEmpty() || (className.isEmpty() && !text))
        return usage(QStringLiteral("set takes a file, the keys of an entry and --class or --value"));
    const int tag = className.isEmpty() ? -1 : tagNamed(className);
    if (!className.isEmpty() && tag < 0)
        return usage(QStringLiteral("a class is one of String, Integer, Float, Boolean or Date"));

    const QString &path = arguments.first();
    QString error;
    const auto document = openDocument(path, &error);
    if (!document)
        return fail(error);
    CommandLineScreen screen;
    document->setScreen(&screen);
    PListNode *entry = entryAt(*document, keys);
    if (!entry)
        return fail(QStringLiteral("%1 has no entry %2").arg(path, keys.join(u' ')));
    if (!document->canEditPlist())
        return fail(QStringLiteral("%1 cannot be written").arg(path));
    if (tag >= 0) {
        document->selectNodes({document->sharedNode(entry)}, false);
        document->menuAction(tag);
        if (screen.beeps > 0)
            return fail(QStringLiteral("the entry cannot be changed to the class %1").arg(className));
    }
    if (text) {
        if (!entry->canEditValue())
            return fail(QStringLiteral("the value of this entry cannot be edited in place"));
        document->setObjectValue(entry, DocumentScreen::ValueColumn, *text);
    }
    if (document->needsFormatChangeToSave())
        return fail(QStringLiteral("%1 is old-style text, which cannot be written; convert it first").arg(path));
    if (document->isDocumentEdited() && !document->saveDocument(&error))
        return fail(error);
    m_out << entry->displayMenu() << ' ' << entry->value().description() << '\n';
    return 0;
}

int PlistTool::fail(const QString &message)
{
    m_err << "orvane-plist: " << message << '\n';
    return 1;
}
