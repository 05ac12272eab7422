// The domain browser's core without a window: deleting domains and undoing
// it on a throw-away account, the refusals, search, reload, opening, and
// `defaults write` lines dropped or pasted.
#include "DomainSandbox.h"
#include "FakeBrowserScreen.h"
#include "TestRegistry.h"

#include "domains/DomainOutlineModel.h"
#include "domains/PathText.h"
#include "domains/SettingsKeys.h"
#include "domains/openDomain.h"
#include "import/DefaultsTextParser.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// A sandboxed account with four user domains and a folder, and the browser's
// core over it on a fake screen. The temporary folder is the sandbox's too,
// so the placeholder file of one test meets no other.
class Browser {
public:
    Browser()
    {
        QDir().mkpath(sandbox.home() + u"/tmp"_s);
        qputenv("TMPDIR", QFile::encodeName(sandbox.home() + u"/tmp"_s));
        for (const QString &name : {u"a.plist"_s, u"b.plist"_s, u"c.plist"_s, u".GlobalPreferences.plist"_s,
                                    u"ByHost/h.plist"_s})
            sandbox.write(sandbox.userFolder() + u'/' + name, u"bytes of "_s.toUtf8() + name.toUtf8() + '\0');
        QFile::setPermissions(path(u"b.plist"_s), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        sandbox.write(path(u"ro.plist"_s), "r");
        QFile::setPermissions(path(u"ro.plist"_s), QFileDevice::ReadOwner);
        defaults.setBool(false, SettingsKeys::VXWarnOnDomainDelete);
        app = std::make_unique<openDomain>(openDomain::Services{defaults, center});
        app->setScreen(&screen);
        tester = std::make_unique<QAbstractItemModelTester>(app->model());
    }
    ~Browser() { qunsetenv("TMPDIR"); }

    QString path(const QString &name) const { return sandbox.userFolder() + u'/' + name; }
    openNodePtr node(const QString &name) const
    {
        for (const openNodePtr &top : app->treeData()->children()) {
            if (top->name() == path(name))
                return top;
            for (const openNodePtr &inner : top->children()) {
                if (inner->name() == path(name))
                    return inner;
            }
        }
        return nullptr;
    }
    void select(const QStringList &names)
    {
        QList<openNodePtr> nodes;
        for (const QString &name : names)
            nodes.append(node(name));
        app->selectNodes(nodes, false);
    }
    // The top level's names in order: what undo must put back exactly.
    QStringList topLevel() const
    {
        QStringList names;
        for (const openNodePtr &top : app->treeData()->children())
            names.append(top->name());
        return names;
    }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    FakeBrowserScreen screen;
    std::unique_ptr<openDomain> app;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Every file and folder of the account with its bytes: what a refused drop
// must leave as it was.
QMap<QString, QByteArray> everything(const QString &home)
{
    QMap<QString, QByteArray> found;
    QDirIterator entries(home, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        found.insert(path, contents(path));
    }
    return found;
}

// Owner, group and others; the "user" bits say what this process may do.
QFileDevice::Permissions mode(const QString &path)
{
    return QFile::permissions(path) & QFileDevice::Permissions(0x7077);
}

} // namespace

class OpenDomainTest : public QObject {
    Q_OBJECT
private slots:
    void deleteAndUndo_data();
    void deleteAndUndo();
    void warnBoxWritesTheSetting();
    void deleteKey();
    void searchRoundTrip();
    void reloadFindsTheSelectionByPath();
    void undoAfterReload();
    void opening();
    void placeholderFile();
    void defaultsText_data();
    void defaultsText();
    void dropOpensTheDomainFile_data();
    void dropOpensTheDomainFile();
};

void OpenDomainTest::deleteAndUndo_data()
{
    QTest::addColumn<QStringList>("chosen");
    QTest::addColumn<bool>("warn");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("deleted");
    QTest::addColumn<QString>("question");
    QTest::addColumn<int>("beeps");
    QTest::addColumn<QString>("selectedAfter");

    const int yes = BrowserScreen::DeleteConfirmed;
    const int no = BrowserScreen::DeleteCanceled;
    const QString one = u"Do you really wish to delete b.plist?"_s;
    const QString many = u"Do you really wish to delete these items?"_s;
    // Top level: machine folder, registration domain, then the user's folder
    // listing; selections land on outline rows, counted from the top.
    QTest::newRow("one, no question") << QStringList{u"b.plist"_s} << false << 0 << QStringList{u"b.plist"_s}
                                      << QString() << 0 << u"row above"_s;
    QTest::newRow("one, confirmed") << QStringList{u"b.plist"_s} << true << yes << QStringList{u"b.plist"_s} << one
                                    << 0 << u"row above"_s;
    QTest::newRow("one, cancelled") << QStringList{u"b.plist"_s} << true << no << QStringList() << one << 0
                                    << u"b.plist"_s;
    QTest::newRow("global domain refused") << QStringList{u".GlobalPreferences.plist"_s} << false << 0
                                           << QStringList() << QString() << 1 << u".GlobalPreferences.plist"_s;
    QTest::newRow("read-only file refused") << QStringList{u"ro.plist"_s} << false << 0 << QStringList()
                                            << QString() << 1 << u"ro.plist"_s;
    QTest::newRow("folder refused") << QStringList{u"ByHost"_s} << false << 0 << QStringList() << QString() << 1
                                    << u"ByHost"_s;
    QTest::newRow("several, confirmed") << QStringList{u"a.plist"_s, u"c.plist"_s} << true << yes
                                        << QStringList{u"a.plist"_s, u"c.plist"_s} << many << 0 << u"index - 1"_s;
    QTest::newRow("several, refusals skipped")
        << QStringList{u"a.plist"_s, u".GlobalPreferences.plist"_s, u"ByHost"_s, u"c.plist"_s} << false << 0
        << QStringList{u"a.plist"_s, u"c.plist"_s} << QString() << 2 << u"index - 1"_s;
}

void OpenDomainTest::deleteAndUndo()
{
    QFETCH(QStringList, chosen);
    QFETCH(bool, warn);
    QFETCH(int, answer);
    QFETCH(QStringList, deleted);
    QFETCH(QString, question);
    QFETCH(int, beeps);
    QFETCH(QString, selectedAfter);

    if (chosen == QStringList{u"ro.plist"_s} && geteuid() == 0)
        QSKIP("root may write any file");
    Browser browser;
    openDomain &app = *browser.app;
    browser.defaults.setBool(warn, SettingsKeys::VXWarnOnDomainDelete);
    browser.center.post(SettingsNotifications::VXDomainWarningChangedNotification);
    browser.screen.answer = answer;
    const QStringList before = browser.topLevel();
    QHash<QString, QByteArray> bytes;
    for (const QString &name : deleted)
        bytes.insert(name, contents(browser.path(name)));
    const auto bPermissions = QFile::permissions(browser.path(u"b.plist"_s));

    // After one delete, the row above it; after several, the row at the last
    // one's index among its siblings when it went, minus one.
    QString expectedSelection = selectedAfter;
    if (selectedAfter == u"row above"_s)
        expectedSelection = app.nodeAtRow(app.rowForNode(browser.node(deleted.first()).get()) - 1)->name();
    browser.select(chosen);
    app.deleteSelections();

    QCOMPARE(browser.screen.question, question);
    QCOMPARE(browser.screen.beeps, beeps);
    QStringList expectedTop = before;
    for (const QString &name : deleted) {
        QVERIFY(!QFile::exists(browser.path(name)));
        expectedTop.removeOne(browser.path(name));
    }
    QCOMPARE(browser.topLevel(), expectedTop);
    if (selectedAfter == u"index - 1"_s) {
        // The folder lists in readdir's order: the last deleted is the lowest row.
        qsizetype lowest = 0;
        for (const QString &name : deleted)
            lowest = std::max(lowest, before.indexOf(browser.path(name)));
        const qsizetype lastIndex = lowest - (deleted.size() - 1);
        expectedSelection = expectedTop.at(std::max<qsizetype>(lastIndex - 1, 0));
    }
    if (!expectedSelection.startsWith(u'/'))
        expectedSelection = browser.path(expectedSelection);
    QCOMPARE(app.selectedPaths(), QStringList{expectedSelection});
    if (deleted.isEmpty()) {
        QVERIFY(!app.undoManager().canUndo());
        return;
    }
    QCOMPARE(app.undoManager().undoActionName(), u"Delete Domain"_s);

    app.undoManager().undo();
    QCOMPARE(browser.topLevel(), before);
    for (const QString &name : deleted)
        QCOMPARE(contents(browser.path(name)), bytes.value(name));
    QCOMPARE(QFile::permissions(browser.path(u"b.plist"_s)), bPermissions);
    // A group's restored domains join the selection; one domain is selected alone.
    const QStringList selectedNow = app.selectedPaths();
    QCOMPARE(selectedNow.size(), deleted.size() == 1 ? 1 : deleted.size() + 1);
    for (const QString &name : deleted)
        QVERIFY(selectedNow.contains(browser.path(name)));

    app.undoManager().redo();
    QCOMPARE(browser.topLevel(), expectedTop);
    for (const QString &name : deleted)
        QVERIFY(!QFile::exists(browser.path(name)));
}

void OpenDomainTest::warnBoxWritesTheSetting()
{
    Browser browser;
    openDomain other(openDomain::Services{browser.defaults, browser.center});
    QObject listener;
    QObject *poster = nullptr;
    browser.center.addObserver(&listener,
                               SettingsNotifications::VXDomainWarningChangedNotification,
                               [&poster](const Notification &notice) { poster = notice.object; });
    browser.app->domainWarnClicked(false);
    QCOMPARE(poster, browser.app.get());
    QVERIFY(other.warnsOnDelete());
    // Written through at once: a fresh store reads it from the disk.
    PreferencesService fresh;
    NotificationCenter center;
    QVERIFY(UserDefaults(fresh, center).boolForKey(SettingsKeys::VXWarnOnDomainDelete));
    browser.app->domainWarnClicked(true);
    QVERIFY(!other.warnsOnDelete() && !browser.app->warnsOnDelete());
}

void OpenDomainTest::deleteKey()
{
    Browser browser;
    openDomain &app = *browser.app;
    browser.select({u"a.plist"_s});
    QVERIFY(app.shouldHandleKeyDown({u'x', false}));
    QVERIFY(app.shouldHandleKeyDown({0x7F, true}));
    app.searchDomains(u"a"_s);
    app.selectNodes(app.treeData()->children().mid(0, 1), false);
    QVERIFY(!app.validateCommand(openDomain::Command::Delete));
    QVERIFY(app.shouldHandleKeyDown({0x7F, false}));
    QVERIFY(QFile::exists(browser.path(u"a.plist"_s)));
    app.searchDomains(QString());
    browser.select({u"a.plist"_s});
    QVERIFY(app.validateCommand(openDomain::Command::Delete));
    QVERIFY(!app.shouldHandleKeyDown({0x7F, false}));
    QVERIFY(!QFile::exists(browser.path(u"a.plist"_s)));
}

void OpenDomainTest::searchRoundTrip()
{
    Browser browser;
    openDomain &app = *browser.app;
    app.searchDomains(u"h"_s);
    QVERIFY(app.isSearchShown());
    QCOMPARE(browser.screen.expandAlls, 1);
    // The result: the ByHost folder holding h, and nothing else.
    const openNodePtr folder = app.treeData()->childAtIndex(0);
    QCOMPARE(app.treeData()->numberOfChildren(), 1);
    QCOMPARE(folder->numberOfChildren(), 1);
    app.selectNodes({folder->childAtIndex(0)}, false);

    app.searchDomains(QString());
    QCOMPARE(app.treeData(), app.cachedTreeData());
    const openNodePtr real = browser.node(u"ByHost/h.plist"_s);
    QCOMPARE(app.selectedNodes(), QList<openNodePtr>{real});
    QVERIFY(browser.screen.isItemExpanded(real->nodeParent()));
    QCOMPARE(browser.screen.scrolledTo, real.get());
}

void OpenDomainTest::reloadFindsTheSelectionByPath()
{
    Browser browser;
    openDomain &app = *browser.app;
    browser.select({u"a.plist"_s, u"c.plist"_s});
    browser.sandbox.write(browser.path(u"new.plist"_s), "x");
    app.refresh();
    QVERIFY(browser.node(u"new.plist"_s));
    QCOMPARE(app.selectedPaths().size(), 2);
    QCOMPARE(app.selectedNodes().first(), browser.node(u"a.plist"_s));
    QCOMPARE(browser.screen.forwards, 1);
    // A search stays applied over the new tree.
    app.searchDomains(u"new"_s);
    browser.sandbox.write(browser.path(u"newer.plist"_s), "x");
    app.refresh();
    QCOMPARE(app.treeData()->numberOfChildren(), 2);
    QVERIFY(app.isSearchShown());
}

void OpenDomainTest::undoAfterReload()
{
    Browser browser;
    openDomain &app = *browser.app;
    browser.select({u"a.plist"_s, u"c.plist"_s});
    app.deleteSelections();
    app.refresh();
    app.undoManager().undo();
    QVERIFY(browser.node(u"a.plist"_s) && browser.node(u"c.plist"_s));
    // Redone on the rebuilt tree: its nodes for the paths go.
    app.undoManager().redo();
    QVERIFY(!browser.node(u"a.plist"_s) && !browser.node(u"c.plist"_s));
    QVERIFY(!QFile::exists(browser.path(u"a.plist"_s)));
}

void OpenDomainTest::opening()
{
    Browser browser;
    openDomain &app = *browser.app;
    QSignalSpy opened(&app, &openDomain::openRequested);
    const openNodePtr registration = app.treeData()->childAtIndex(1);
    QVERIFY(registration->loadSpecial());
    app.selectNodes({browser.node(u"a.plist"_s), registration, browser.node(u"ByHost"_s)}, false);
    app.openQuicklyInNewWindow();
    // Outline order; the first opens in a new window, the others join it;
    // a folder among several is left alone.
    QCOMPARE(opened.size(), 2);
    QCOMPARE(opened.at(0), (QVariantList{registration->name(), true, true}));
    QCOMPARE(opened.at(1), (QVariantList{browser.path(u"a.plist"_s), false, false}));
    const openNodePtr folder = browser.node(u"ByHost"_s);
    app.selectNodes({folder}, false);
    app.openQuickly();
    QVERIFY(browser.screen.isItemExpanded(folder.get()));
    app.openQuickly();
    QVERIFY(!browser.screen.isItemExpanded(folder.get()));
    QCOMPARE(opened.size(), 2);
    QVERIFY(!app.validateCommand(openDomain::Command::OpenInNewWindow));
    browser.defaults.setBool(true, SettingsKeys::VXDocumentsUseTabs);
    QVERIFY(app.validateCommand(openDomain::Command::OpenInNewWindow));
}

void OpenDomainTest::placeholderFile()
{
    Browser browser;
    const QString path = openDomain::placeholderPath();
    QVERIFY(path.startsWith(browser.sandbox.home()));
    QCOMPARE(mode(path), QFileDevice::ReadOwner);
    QCOMPARE(QFileInfo(path).size(), 0);
    QVERIFY(browser.app->applicationShouldTerminate());
    QVERIFY(!QFile::exists(path));
}

// A drop wants the command at the very start; a paste finds it anywhere,
// and whatever makes no entry leaves every file alone.
void OpenDomainTest::defaultsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("dropTaken");
    QTest::addColumn<QString>("pasteOpens");

    QTest::newRow("command") << u"defaults write com.t k v"_s << true << u"com.t.plist"_s;
    QTest::newRow("text before it") << u"see defaults write com.t k v"_s << false << u"see.plist"_s;
    QTest::newRow("blank before it") << u" defaults write com.t k v"_s << false << QString();
    QTest::newRow("other case") << u"Defaults write com.t k v"_s << false << QString();
    QTest::newRow("no entry") << u"defaults write com.t k -float 1"_s << false << QString();
    QTest::newRow("key without end") << u"defaults write com.t k"_s << false << QString();
    QTest::newRow("unclosed quote") << u"defaults write \"com.t k -int 1"_s << false << QString();
    QTest::newRow("no text") << QString() << false << QString();
}

void OpenDomainTest::defaultsText()
{
    QFETCH(QString, text);
    QFETCH(bool, dropTaken);
    QFETCH(QString, pasteOpens);

    Browser browser;
    openDomain &app = *browser.app;
    QSignalSpy applied(&app, &openDomain::applyDefaultsRequested);
    QCOMPARE(openDomain::willAccept(text), dropTaken);
    QVERIFY(!app.validateCommand(openDomain::Command::Paste));
    app.setPasteboardText([text] { return text; });
    QCOMPARE(app.validateCommand(openDomain::Command::Paste), dropTaken);

    const QMap<QString, QByteArray> before = everything(browser.sandbox.home());
    app.paste(text);
    QCOMPARE(browser.screen.beeps, pasteOpens.isEmpty() ? 1 : 0);
    QCOMPARE(applied.size(), pasteOpens.isEmpty() ? 0 : 1);
    if (pasteOpens.isEmpty())
        QCOMPARE(everything(browser.sandbox.home()), before);
    else
        QCOMPARE(applied.at(0).at(0).toString(), browser.path(pasteOpens));
}

void OpenDomainTest::dropOpensTheDomainFile_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("prepare");
    QTest::addColumn<QString>("opens"); // from the home folder; none when refused
    QTest::addColumn<bool>("created");

    const QString prefs = u"Library/Preferences/"_s;
    QTest::newRow("new domain") << u"defaults write com.example.new k -int 1"_s << QString()
                                << prefs + u"com.example.new.plist"_s << true;
    QTest::newRow("existing domain") << u"defaults write a k v"_s << QString() << prefs + u"a.plist"_s << false;
    QTest::newRow("global domain") << u"defaults write NSGlobalDomain k -int 1"_s << QString()
                                   << prefs + u".GlobalPreferences.plist"_s << false;
    QTest::newRow("global domain, no preferences folder yet")
        << u"defaults write NSGlobalDomain k -int 1"_s << u"no folder"_s << prefs + u".GlobalPreferences.plist"_s
        << true;
    QTest::newRow("registration domain") << u"defaults write NSRegistrationDomain k v"_s << QString() << QString()
                                         << false;
    QTest::newRow("file by path") << u"defaults write ~/Desktop/test k v"_s << u"Desktop/test.plist"_s
                                  << u"Desktop/test.plist"_s << false;
    // The fallback puts the whole path below the preferences folder, in
    // folders that do not exist.
    QTest::newRow("missing file by path") << u"defaults write ~/Desktop/none k v"_s << u"Desktop/test.plist"_s
                                          << QString() << false;
}

void OpenDomainTest::dropOpensTheDomainFile()
{
    QFETCH(QString, text);
    QFETCH(QString, prepare);
    QFETCH(QString, opens);
    QFETCH(bool, created);

    Browser browser;
    openDomain &app = *browser.app;
    const QString home = browser.sandbox.home() + u'/';
    if (prepare == u"no folder"_s)
        QVERIFY(QDir(browser.sandbox.userFolder()).removeRecursively());
    else if (!prepare.isEmpty())
        browser.sandbox.write(prepare, "exists");
    const openNodePtr registration = app.treeData()->childAtIndex(1);
    app.selectNodes({registration}, false);
    QSignalSpy applied(&app, &openDomain::applyDefaultsRequested);
    const QMap<QString, QByteArray> before = everything(browser.sandbox.home());

    QVERIFY(openDomain::willAccept(text));
    QCOMPARE(app.acceptDrop(text), !opens.isEmpty());
    QCOMPARE(browser.screen.beeps, opens.isEmpty() ? 1 : 0);
    if (opens.isEmpty()) {
        QCOMPARE(applied.size(), 0);
        QCOMPARE(everything(browser.sandbox.home()), before);
        return;
    }
    QCOMPARE(applied.size(), 1);
    QCOMPARE(applied.at(0).at(0).toString(), home + opens);
    const auto entry = DefaultsTextParser::dictionaryFromDefaultsString(text).value;
    QCOMPARE(applied.at(0).at(1).value<PropertyDictionary>(), entry->dictionary);
    if (!created) {
        QCOMPARE(everything(browser.sandbox.home()), before);
        return;
    }
    const auto file = PropertyListSerialization::readFile(home + opens);
    QVERIFY(file.ok());
    QCOMPARE(file.value.format, PropertyListFormat::Xml);
    QCOMPARE(file.value.value, PropertyList(PropertyDictionary()));
    const auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    QCOMPARE(mode(home + opens), ownerOnly);
    if (prepare == u"no folder"_s)
        QCOMPARE(mode(browser.sandbox.userFolder()), ownerOnly | QFileDevice::ExeOwner);
    // Listed at once, with the selection found again in the new tree.
    QVERIFY(browser.node(PathText::lastPathComponent(opens)));
    QCOMPARE(app.selectedPaths(), QStringList{registration->name()});
}

ORVANE_TEST(OpenDomainTest)
#include "OpenDomainTest.moc"
