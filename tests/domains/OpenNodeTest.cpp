// The domain browser's tree: which files a preferences folder lists as, the
// browser's top level, the names it shows, sizes, and the search copy.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/openDomain.h"
#include "domains/openNode.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Every listed item as a path relative to base, folders with a trailing slash,
// sorted: the listing order is the file system's and not ours to predict.
void flatten(const FileArray &items, const QString &base, QStringList &out)
{
    for (const FileArrayItem &item : items) {
        const QString relative = item.path.mid(base.size() + 1);
        out << (item.isFolder ? relative + u'/' : relative);
        flatten(item.children, base, out);
    }
}

// Makes each entry under base: "dir/" a folder, "link->target" a symbolic
// link, anything else a small file.
void makeEntries(const QString &base, const QStringList &entries)
{
    for (const QString &entry : entries) {
        if (entry.endsWith(u'/')) {
            QDir().mkpath(base + u'/' + entry);
        } else if (entry.contains(u"->"_s)) {
            const QStringList parts = entry.split(u"->"_s);
            QDir().mkpath(QFileInfo(base + u'/' + parts.at(0)).path());
            QFile::link(parts.at(1), base + u'/' + parts.at(0));
        } else {
            QDir().mkpath(QFileInfo(base + u'/' + entry).path());
            QFile file(base + u'/' + entry);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("<plist><dict/></plist>");
        }
    }
}

// "name(child,child)" with last path components: a compact picture of a tree.
QString picture(const openNode &node)
{
    QString text = node.name().section(u'/', -1);
    if (!node.isGroup())
        return text;
    QStringList children;
    for (const openNodePtr &child : node.children())
        children << picture(*child);
    return text + u'(' + children.join(u',') + u')';
}

// Every node of a search result must stand for a node of the full tree with
// the same path.
bool referencesAreRight(const openNode &copy)
{
    if (!copy.searchReference() || copy.searchReference()->name() != copy.name())
        return false;
    for (const openNodePtr &child : copy.children()) {
        if (child->nodeParent() != &copy || !referencesAreRight(*child))
            return false;
    }
    return true;
}

FileArray sampleTree(const QString &machine)
{
    return {
        FileArrayItem::folder(machine, {FileArrayItem::file(machine + u"/com.apple.a.plist"_s),
                                        FileArrayItem::folder(machine + u"/sub"_s,
                                                              {FileArrayItem::file(machine + u"/sub/com.apple.b.plist"_s)})}),
        FileArrayItem::file(u"/u/NSRegistrationDomain.plist"_s),
        FileArrayItem::file(u"/u/com.foo.plist"_s),
        FileArrayItem::folder(u"/u/ByHost"_s, {FileArrayItem::file(u"/u/ByHost/com.apple.c.ID.plist"_s)}),
    };
}

} // namespace

class OpenNodeTest : public QObject {
    Q_OBJECT
private slots:
    void listing_data();
    void listing();
    void unreadableFileIsSkipped();
    void browserTopLevel();
    void displayName_data();
    void displayName();
    void getSize_data();
    void getSize();
    void query_data();
    void query();
    void removingAFoundDomainRemovesItFromTheFullTree();
    void childEditing();
};

void OpenNodeTest::listing_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QStringList>("listed");
    QTest::newRow("plain domain file") << QStringList{u"a.plist"_s} << QStringList{u"a.plist"_s};
    QTest::newRow("upper-case extension is no domain") << QStringList{u"Foo.PLIST"_s} << QStringList{};
    QTest::newRow("hidden global file is listed") << QStringList{u".GlobalPreferences.plist"_s}
                                                  << QStringList{u".GlobalPreferences.plist"_s};
    QTest::newRow("a file named .plist has no extension") << QStringList{u".plist"_s} << QStringList{};
    QTest::newRow("other files are skipped") << QStringList{u"notes.txt"_s, u"a.plist.bak"_s} << QStringList{};
    QTest::newRow("ByHost with only non-plists dropped") << QStringList{u"ByHost/readme.txt"_s} << QStringList{};
    QTest::newRow("ByHost with a per-host domain kept")
        << QStringList{u"ByHost/com.x.ID.plist"_s, u"ByHost/x.txt"_s}
        << QStringList{u"ByHost/"_s, u"ByHost/com.x.ID.plist"_s};
    QTest::newRow("empty sub-folder dropped") << QStringList{u"empty/"_s} << QStringList{};
    QTest::newRow("no plist at any depth drops every level") << QStringList{u"a/b/c/x.txt"_s, u"a/b/d/"_s}
                                                             << QStringList{};
    QTest::newRow("deep plist keeps the folders above it")
        << QStringList{u"a/b/c.plist"_s, u"a/empty/"_s} << QStringList{u"a/"_s, u"a/b/"_s, u"a/b/c.plist"_s};
    QTest::newRow("dangling link is unreadable") << QStringList{u"gone.plist->/nonexistent/x.plist"_s}
                                                 << QStringList{};
    QTest::newRow("readable folder named x.plist is listed as a file") << QStringList{u"x.plist/y.plist"_s}
                                                                       << QStringList{u"x.plist"_s};
    QTest::newRow("link back up the tree is not followed round")
        << QStringList{u"sub/a.plist"_s, u"sub/loop->.."_s} << QStringList{u"sub/"_s, u"sub/a.plist"_s};
}

void OpenNodeTest::listing()
{
    QFETCH(QStringList, entries);
    QFETCH(QStringList, listed);
    DomainSandbox sandbox;
    makeEntries(sandbox.userFolder(), entries);
    QStringList found;
    flatten(openDomain::returnFileArrayFromPath(sandbox.userFolder()), sandbox.userFolder(), found);
    found.sort();
    listed.sort();
    QCOMPARE(found, listed);
}

void OpenNodeTest::unreadableFileIsSkipped()
{
    if (geteuid() == 0)
        QSKIP("running as root: every file is readable");
    DomainSandbox sandbox;
    const QString path = sandbox.write(sandbox.userFolder() + u"/locked.plist"_s, "x");
    QFile::setPermissions(path, QFileDevice::Permissions());
    QVERIFY(openDomain::returnFileArrayFromPath(sandbox.userFolder()).isEmpty());
}

void OpenNodeTest::browserTopLevel()
{
    DomainSandbox sandbox;
    makeEntries(sandbox.userFolder(), {u"com.foo.plist"_s, u"ByHost/com.foo.ID.plist"_s});
    makeEntries(sandbox.machineFolder(), {u"com.apple.loginwindow.plist"_s});
    openDomain application;
    application.buildTree();
    const openNodePtr root = application.treeData();
    QCOMPARE(root, application.cachedTreeData());
    QCOMPARE(root->name(), u"Root"_s);
    QVERIFY(root->isGroup());
    QCOMPARE(root->numberOfChildren(), 4);
    // The machine folder comes first, the registration domain second, whether
    // or not its file exists; the user's own entries follow, spliced in.
    QCOMPARE(picture(*root->childAtIndex(0)), u"machine(com.apple.loginwindow.plist)"_s);
    QCOMPARE(root->childAtIndex(0)->displayName(), u"System Preferences"_s);
    const openNodePtr registration = root->childAtIndex(1);
    QCOMPARE(registration->name(), sandbox.userFolder() + u"/NSRegistrationDomain.plist"_s);
    QVERIFY(registration->loadSpecial());
    QVERIFY(!QFile::exists(registration->name()));
    QStringList rest{picture(*root->childAtIndex(2)), picture(*root->childAtIndex(3))};
    rest.sort();
    QCOMPARE(rest, (QStringList{u"ByHost(com.foo.ID.plist)"_s, u"com.foo.plist"_s}));
    QVERIFY(!root->childAtIndex(2)->loadSpecial() && !root->childAtIndex(3)->loadSpecial());
}

void OpenNodeTest::displayName_data()
{
    // $U stands for the user's folder, $M for the machine's.
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("one extension goes") << u"$U/a.b.c.plist"_s << u"a.b.c"_s;
    QTest::newRow("global domain") << u"$U/.GlobalPreferences.plist"_s << u"NSGlobalDomain"_s;
    QTest::newRow("per-host global keeps its host") << u"$U/ByHost/.GlobalPreferences.0A1B.plist"_s
                                                    << u"NSGlobalDomain.0A1B"_s;
    QTest::newRow("global stem inside a name") << u"$U/x.GlobalPreferences.plist"_s << u"xNSGlobalDomain"_s;
    QTest::newRow("per-host domain keeps its host") << u"$U/ByHost/com.x.1234.plist"_s << u"com.x.1234"_s;
    QTest::newRow("machine folder") << u"$M"_s << u"System Preferences"_s;
    QTest::newRow("a folder inside the machine folder") << u"$M/sub"_s << u"sub"_s;
    QTest::newRow("registration domain") << u"$U/NSRegistrationDomain.plist"_s << u"NSRegistrationDomain"_s;
    QTest::newRow("root") << u"Root"_s << u"Root"_s;
}

void OpenNodeTest::displayName()
{
    QFETCH(QString, name);
    QFETCH(QString, shown);
    DomainSandbox sandbox;
    name.replace(u"$U"_s, sandbox.userFolder()).replace(u"$M"_s, sandbox.machineFolder());
    QCOMPARE(openNode::initWithItem(name)->displayName(), shown);
}

void OpenNodeTest::getSize_data()
{
    QTest::addColumn<quint32>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0u << u"0 bytes"_s;
    QTest::newRow("1023 is still bytes") << 1023u << u"1023 bytes"_s;
    QTest::newRow("1024 is one KB") << 1024u << u"1.00 KB"_s;
    QTest::newRow("fractional KB") << 1536u << u"1.50 KB"_s;
    QTest::newRow("exactly 1 MB stays KB: the test is strict") << 1048576u << u"1024.00 KB"_s;
    QTest::newRow("one byte past 1 MB") << 1048577u << u"1.00 MB"_s;
    QTest::newRow("exactly 1 GB stays MB") << 1073741824u << u"1024.00 MB"_s;
    QTest::newRow("single precision: 1 GB + 1 rounds down, still MB") << 1073741825u << u"1024.00 MB"_s;
    QTest::newRow("first float above 1 GB is GB") << 1073741952u << u"1.00 GB"_s;
    QTest::newRow("largest count") << 4294967295u << u"4.00 GB"_s;
}

void OpenNodeTest::getSize()
{
    QFETCH(quint32, bytes);
    QFETCH(QString, text);
    QCOMPARE(openDomain::getSize(bytes), text);
}

void OpenNodeTest::query_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("result");
    QTest::newRow("nested folders kept on the way to hits")
        << u"apple"_s << u"Root(machine(com.apple.a.plist,sub(com.apple.b.plist)),ByHost(com.apple.c.ID.plist))"_s;
    QTest::newRow("ignores case") << u"FOO"_s << u"Root(com.foo.plist)"_s;
    QTest::newRow("matches the display name, not the extension") << u"plist"_s << u"Root()"_s;
    QTest::newRow("no hit still gives the root") << u"zzz"_s << u"Root()"_s;
    QTest::newRow("empty query matches nothing") << u""_s << u"Root()"_s;
    QTest::newRow("folder name alone keeps no folder") << u"ByHost"_s << u"Root()"_s;
    QTest::newRow("deep hit only") << u"b"_s << u"Root(machine(sub(com.apple.b.plist)))"_s;
    QTest::newRow("exact match") << u"#com.foo"_s << u"Root(com.foo.plist)"_s;
    QTest::newRow("negated") << u"!apple"_s << u"Root(NSRegistrationDomain.plist,com.foo.plist)"_s;
    QTest::newRow("machine folder's shown name is not searched") << u"System"_s << u"Root()"_s;
}

void OpenNodeTest::query()
{
    QFETCH(QString, query);
    QFETCH(QString, result);
    DomainSandbox sandbox;
    const openNodePtr root = openNode::treeFromFileArray(sampleTree(sandbox.machineFolder()));
    const QString before = picture(*root);
    const openNodePtr found = root->queryWithString(query);
    QVERIFY(found);
    QCOMPARE(picture(*found), result);
    QCOMPARE(found->searchReference(), root.get());
    QVERIFY(referencesAreRight(*found));
    QCOMPARE(picture(*root), before);
}

void OpenNodeTest::removingAFoundDomainRemovesItFromTheFullTree()
{
    DomainSandbox sandbox;
    const openNodePtr root = openNode::treeFromFileArray(sampleTree(sandbox.machineFolder()));
    const openNodePtr found = root->queryWithString(u"apple"_s);
    // machine/sub/com.apple.b in the result
    const openNodePtr hit = found->childAtIndex(0)->childAtIndex(1)->childAtIndex(0);
    QCOMPARE(hit->name().section(u'/', -1), u"com.apple.b.plist"_s);
    hit->removeFromParent();
    QCOMPARE(hit->nodeParent(), nullptr);
    QCOMPARE(picture(*found), u"Root(machine(com.apple.a.plist,sub()),ByHost(com.apple.c.ID.plist))"_s);
    QCOMPARE(picture(*root),
             u"Root(machine(com.apple.a.plist,sub()),NSRegistrationDomain.plist,com.foo.plist,ByHost(com.apple.c.ID.plist))"_s);
    // A whole folder of the result goes from the full tree too.
    found->childAtIndex(1)->removeFromParent();
    QCOMPARE(picture(*root), u"Root(machine(com.apple.a.plist,sub()),NSRegistrationDomain.plist,com.foo.plist)"_s);
}

void OpenNodeTest::childEditing()
{
    const openNodePtr root = openNode::treeFromFileArray({FileArrayItem::file(u"/p/a.plist"_s)});
    const openNodePtr stranger = openNode::initWithItem(u"/p/b.plist"_s);
    const openNodePtr a = root->childAtIndex(0);
    root->removeChild(stranger.get());
    QCOMPARE(picture(*root), u"Root(a.plist)"_s);
    QVERIFY(!root->insertChild(stranger, 2));  // past the end
    QVERIFY(!root->insertChild(stranger, -1));
    QVERIFY(!root->insertChild(a, 0));         // already a child
    QCOMPARE(stranger->nodeParent(), nullptr);
    QVERIFY(root->insertChild(stranger, 0));
    QCOMPARE(stranger->nodeParent(), root.get());
    QCOMPARE(picture(*root), u"Root(b.plist,a.plist)"_s);
    // removeChild leaves the child's parent field; removeFromParent clears it.
    root->removeChild(a.get());
    QCOMPARE(a->nodeParent(), root.get());
    QCOMPARE(root->indexOfChild(a.get()), -1);
    stranger->removeFromParent();
    QCOMPARE(stranger->nodeParent(), nullptr);
    QCOMPARE(root->numberOfChildren(), 0);
    QCOMPARE(root->childAtIndex(0), nullptr);
}

ORVANE_TEST(OpenNodeTest)
#include "OpenNodeTest.moc"
