// The domain browser's tree: which files a preferences folder lists as, the
// browser's top level, the names it shows, sizes, and the search copy.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/openDomain.h"
#include "domains/openNode.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>

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
// the same path, shown the same way.
bool referencesAreRight(const openNode &copy)
{
    if (!copy.searchReference() || copy.searchReference()->name() != copy.name()
        || copy.searchReference()->displayName() != copy.displayName())
        return false;
    for (const openNodePtr &child : copy.children()) {
        if (child->nodeParent() != &copy || !referencesAreRight(*child))
            return false;
    }
    return true;
}

const QString kMachine = u"/machine"_s;

FileArray sampleTree()
{
    const QString &machine = kMachine;
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
    void browserTopLevel();
    void displayName_data();
    void displayName();
    void getSize_data();
    void getSize();
    void query_data();
    void query();
    void removingAFoundDomainRemovesItFromTheFullTree();
};

void OpenNodeTest::listing_data()
{
    // Entries separated by blanks, as makeEntries() takes them.
    QTest::addColumn<QString>("entries");
    QTest::addColumn<QString>("listed");
    QTest::newRow("upper-case extension is no domain") << u"Foo.PLIST"_s << u""_s;
    QTest::newRow("hidden global file is listed") << u".GlobalPreferences.plist notes.txt"_s
                                                  << u".GlobalPreferences.plist"_s;
    QTest::newRow("a file named .plist has no extension") << u".plist"_s << u""_s;
    QTest::newRow("ByHost with only non-plists dropped") << u"ByHost/readme.txt"_s << u""_s;
    QTest::newRow("ByHost with a per-host domain kept") << u"ByHost/com.x.ID.plist ByHost/x.txt"_s
                                                        << u"ByHost/ ByHost/com.x.ID.plist"_s;
    QTest::newRow("empty sub-folders dropped at every level") << u"empty/ a/b/c/x.txt a/b/d/"_s << u""_s;
    QTest::newRow("deep plist keeps the folders above it") << u"a/b/c.plist a/empty/"_s << u"a/ a/b/ a/b/c.plist"_s;
    QTest::newRow("dangling link is unreadable") << u"gone.plist->/nonexistent/x.plist"_s << u""_s;
    QTest::newRow("readable folder named x.plist is listed as a file") << u"x.plist/y.plist"_s << u"x.plist"_s;
    QTest::newRow("link back up the tree is not followed round") << u"sub/a.plist sub/loop->.."_s
                                                                 << u"sub/ sub/a.plist"_s;
}

void OpenNodeTest::listing()
{
    QFETCH(QString, entries);
    QFETCH(QString, listed);
    DomainSandbox sandbox;
    makeEntries(sandbox.userFolder(), entries.split(u' ', Qt::SkipEmptyParts));
    QStringList found;
    flatten(openDomain::returnFileArrayFromPath(sandbox.userFolder()), sandbox.userFolder(), found);
    found.sort();
    QCOMPARE(found.join(u' '), listed);
}

void OpenNodeTest::browserTopLevel()
{
    DomainSandbox sandbox;
    makeEntries(sandbox.userFolder(), {u"com.foo.plist"_s, u"ByHost/com.foo.ID.plist"_s});
    makeEntries(sandbox.machineFolder(), {u"com.apple.loginwindow.plist"_s});
    const openNodePtr root = openDomain::fullDomainTree();
    QCOMPARE(root->name(), u"Root"_s);
    QCOMPARE(root->numberOfChildren(), 4);
    // The machine folder comes first, the registration domain (marked *) second,
    // though it has no file; the user's own entries follow, spliced in, in the
    // file system's order.
    QStringList top;
    for (int i = 0; i < 4; ++i)
        top << picture(*root->childAtIndex(i)) + (root->childAtIndex(i)->loadSpecial() ? u"*"_s : u""_s);
    std::sort(top.begin() + 2, top.end());
    QCOMPARE(top.join(u' '), u"machine(com.apple.loginwindow.plist) NSRegistrationDomain.plist* "
                             u"ByHost(com.foo.ID.plist) com.foo.plist"_s);
    QCOMPARE(root->childAtIndex(0)->displayName(), u"System Preferences"_s);
    QCOMPARE(root->childAtIndex(1)->name(), sandbox.userFolder() + u"/NSRegistrationDomain.plist"_s);
}

void OpenNodeTest::displayName_data()
{
    // Each name is a folder of a tree built with /m as the machine's folder.
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("one extension goes") << u"/u/a.b.c.plist"_s << u"a.b.c"_s;
    QTest::newRow("global domain") << u"/u/.GlobalPreferences.plist"_s << u"NSGlobalDomain"_s;
    QTest::newRow("per-host global keeps its host") << u"/u/ByHost/.GlobalPreferences.0A1B.plist"_s
                                                    << u"NSGlobalDomain.0A1B"_s;
    QTest::newRow("global stem inside a name") << u"/u/x.GlobalPreferences.plist"_s << u"xNSGlobalDomain"_s;
    QTest::newRow("machine folder") << u"/m"_s << u"System Preferences"_s;
    QTest::newRow("a folder inside the machine folder") << u"/m/sub"_s << u"sub"_s;
}

void OpenNodeTest::displayName()
{
    QFETCH(QString, name);
    QFETCH(QString, shown);
    const openNodePtr root = openNode::treeFromFileArray({FileArrayItem::folder(name, {})}, u"/m"_s);
    QCOMPARE(root->childAtIndex(0)->displayName(), shown);
}

void OpenNodeTest::getSize_data()
{
    QTest::addColumn<quint32>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("1023 is still bytes") << 1023u << u"1023 bytes"_s;
    QTest::newRow("1024 is one KB") << 1024u << u"1.00 KB"_s;
    QTest::newRow("exactly 1 MB stays KB: the test is strict") << 1048576u << u"1024.00 KB"_s;
    QTest::newRow("one byte past 1 MB") << 1048577u << u"1.00 MB"_s;
    QTest::newRow("single precision: 1 GB + 1 rounds down, still MB") << 1073741825u << u"1024.00 MB"_s;
    QTest::newRow("first float above 1 GB is GB") << 1073741952u << u"1.00 GB"_s;
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
    QTest::newRow("empty query matches nothing") << u""_s << u"Root()"_s;
    QTest::newRow("folder name alone keeps no folder") << u"ByHost"_s << u"Root()"_s;
    QTest::newRow("exact match") << u"#com.foo"_s << u"Root(com.foo.plist)"_s;
    QTest::newRow("negated") << u"!apple"_s << u"Root(NSRegistrationDomain.plist,com.foo.plist)"_s;
    QTest::newRow("machine folder's shown name is not searched") << u"System"_s << u"Root()"_s;
}

void OpenNodeTest::query()
{
    QFETCH(QString, query);
    QFETCH(QString, result);
    const openNodePtr root = openNode::treeFromFileArray(sampleTree(), kMachine);
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
    const openNodePtr root = openNode::treeFromFileArray(sampleTree(), kMachine);
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

ORVANE_TEST(OpenNodeTest)
#include "OpenNodeTest.moc"
