// The search filter's copy of a tree (what matches, which groups are kept),
// edits made through that copy, and the lookups by name and by equality.
#include "TestRegistry.h"
#include "TreePicture.h"

#include "model/PListNode.h"
#include "model/VXAdditions.h"
#include "platform/PropertyListSerialization.h"
#include "platform/SequentialArchive.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Array items are renamed "Item N" as the outline labels them, so a query can
// be seen not to find them by name.
void nameArrayItems(PListNode &node)
{
    for (int i = 0; i < node.numberOfChildren(); ++i) {
        const PListNodePtr child = node.childAtIndex(i);
        if (node.isArray())
            child->setName(u"Item %1"_s.arg(i + 1));
        nameArrayItems(*child);
    }
}

// A document tree from old-style text; typed values as <*I12>, <*R0.5>, <*BY>, <*D…>.
PListNodePtr treeFrom(const QString &text)
{
    const auto read = PropertyListSerialization::read(text.toUtf8());
    if (!read || !read.value.value.isDictionary())
        return nullptr;
    PListNodePtr root = PListNode::treeFromDictionary(read.value.value.dictionaryRef());
    nameArrayItems(*root);
    return root;
}

// Every node of the copy stands for a distinct real node with the same name
// and is linked to its own parent in the copy.
bool linkedToRealTree(const PListNode &copy, const PListNode *copyParent)
{
    const PListNode *real = copy.searchReference();
    bool linked = copy.nodeParent() == copyParent && real && real != &copy && real->name() == copy.name();
    for (const PListNodePtr &child : copy.children())
        linked = linked && linkedToRealTree(*child, &copy);
    return linked;
}

} // namespace

class PListNodeSearchTest : public QObject {
    Q_OBJECT

private slots:
    // expected: the copy's picture; only a copy with a hit is the root's own ">" copy.
    void queryWithString_data()
    {
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("expected");
        const QString fonts = u"{VXTextFont = Monaco; fontsize = <*I12>; colour = red;}"_s;
        QTest::newRow("plain-ignores-case") << fonts << u"Font"_s << u">{VXTextFont = >Monaco; fontsize = >12;}"_s;
        QTest::newRow("hash-keeps-case") << fonts << u"#Font"_s << u">{VXTextFont = >Monaco;}"_s;
        QTest::newRow("value-hit-with-other-name") << fonts << u"MONA"_s << u">{VXTextFont = >Monaco;}"_s;
        QTest::newRow("empty-query-finds-nothing") << fonts << QString() << u"{}"_s;
        const QString list = u"{List = (alpha, beta);}"_s;
        QTest::newRow("array-item-found-by-value") << list << u"alpha"_s << u">{List = >(>alpha);}"_s;
        QTest::newRow("array-item-not-found-by-name") << list << u"Item"_s << u"{}"_s;
        const QString colours = u"{Colors = {fg = black; bg = white;}; Other = x;}"_s;
        QTest::newRow("matching-group-kept-empty") << colours << u"col"_s << u">{Colors = >{};}"_s;
        QTest::newRow("group-holds-only-hits") << colours << u"whi"_s << u">{Colors = >{bg = >white;};}"_s;
        QTest::newRow("nested-hits-keep-order") << u"{b = {x = hit1;}; a = hit2; c = ({y = hit3;});}"_s << u"hit"_s
                                                << u">{b = >{x = >hit1;}; a = >hit2; c = >(>{y = >hit3;});}"_s;
        const QString numbers = u"{size = <*I12>; ratio = <*R0.5>; big = <*I12345678901>; flag = <*BY>;}"_s;
        QTest::newRow("real-by-its-text") << numbers << u".5"_s << u">{ratio = >\"0.5\";}"_s;
        QTest::newRow("true-by-1") << numbers << u"1"_s << u">{size = >12; big = >12345678901; flag = >true;}"_s;
        QTest::newRow("boolean-not-by-shown-word") << numbers << u"true"_s << u"{}"_s;
        QTest::newRow("date-never-by-value") << u"{d = <*D2001-01-01 00:00:00 +0000>;}"_s << u":"_s << u"{}"_s;
        const QString blob = u"{blob = <4142>;}"_s;
        QTest::newRow("data-never-by-value") << blob << u"41"_s << u"{}"_s;
        QTest::newRow("data-found-by-name") << blob << u"blo"_s << u">{blob = >\"(Data Item)\";}"_s;
        QTest::newRow("bang-alone-finds-bang") << u"{a = \"wow!\"; b = c;}"_s << u"!"_s << u">{a = >\"wow!\";}"_s;
        QTest::newRow("negation-drops-value-hit") << u"{xyz = abcdef; b = c;}"_s << u"!abc"_s << u">{b = >c;}"_s;
        QTest::newRow("negation-keeps-group-by-name") << u"{g = {k = abc;};}"_s << u"!abc"_s << u">{g = >{};}"_s;
        QTest::newRow("bang-hash-drops-exact-only") << u"{x = ABCd; y = abcd;}"_s << u"!#abc"_s << u">{x = >ABCd;}"_s;
        QTest::newRow("hash-bang-is-not-negated")
            << u"{x = ABC; y = abcdef; abc = abc;}"_s << u"#!abc"_s << u">{x = >ABC; y = >abcdef;}"_s;
        // A number's text is only made when the query could lie in it.
        const QString counts = u"{n = <*I512>; r = <*R-1.5e+300>; m = x;}"_s;
        QTest::newRow("negated-digits-drop-number") << counts << u"!51"_s << u">{r = >\"-1.5e+300\"; m = >x;}"_s;
        QTest::newRow("negated-letters-keep-numbers") << counts << u"!zz"_s << u">{n = >512; r = >\"-1.5e+300\"; m = >x;}"_s;
        QTest::newRow("exponent-found-in-real") << counts << u"E+3"_s << u">{r = >\"-1.5e+300\";}"_s;
    }

    void queryWithString()
    {
        QFETCH(QString, tree);
        QFETCH(QString, query);
        QFETCH(QString, expected);
        const PListNodePtr root = treeFrom(tree);
        QVERIFY(root);
        const QString before = TreePicture::of(*root);
        const PListNodePtr copy = root->queryWithString(query);
        QVERIFY(copy);
        QCOMPARE(TreePicture::of(*copy), expected);
        QCOMPARE(copy->name(), expected.startsWith(u'>') ? u"OVRoot"_s : u"Search Root"_s);
        QCOMPARE(TreePicture::of(*root), before);
    }

    // A tree large enough to be built and searched in parts: the hits come
    // back whole and in the tree's order, under copies of their own groups.
    void largeTreeKeepsOrder()
    {
        PropertyDictionary domains;
        QStringList expected;
        for (int d = 0; d < 400; ++d) {
            PropertyDictionary entries;
            PropertyArray items;
            for (int k = 0; k < 60; ++k) {
                const bool hit = (d * 60 + k) % 97 == 0;
                entries.insert(u"key%1"_s.arg(k), PropertyList(hit ? u"a hit"_s : u"miss"_s));
                items.append(PropertyList(hit ? u"hit %1"_s.arg(k) : u"miss"_s));
                if (hit)
                    expected << u"d%1/key%2"_s.arg(d).arg(k) << u"d%1/items/%2"_s.arg(d).arg(k);
            }
            entries.insert(u"items"_s, items);
            domains.insert(u"d%1"_s.arg(d), entries);
        }
        const PListNodePtr root = PListNode::treeFromDictionary(domains);
        QVERIFY(root->initialValue().isIdenticalTo(PropertyList(domains)));
        const PListNodePtr copy = root->queryWithString(u"HIT"_s);
        QStringList found;
        for (const PListNodePtr &domain : copy->children()) {
            QCOMPARE(domain->nodeParent(), copy.get());
            for (const PListNodePtr &entry : domain->children()) {
                if (entry->isLeaf()) {
                    found << domain->name() + u'/' + entry->name();
                    continue;
                }
                for (const PListNodePtr &item : entry->children())
                    found << domain->name() + u"/items/"_s + item->stringValue().section(u' ', 1);
            }
        }
        QCOMPARE(found, expected);
    }

    // The filter passes over nodes whose texts cannot hold the query, so what it
    // knows of a node's texts must follow every way they change.
    void editsAreFound_data()
    {
        QTest::addColumn<int>("edit");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("found"); // the names of the root's children in the copy
        const QString moved = PropertyList(PropertyDictionary{{u"w"_s, PropertyList(u"v"_s)}}).description();
        QTest::newRow("renamed") << 0 << u"zebra"_s << QStringList{u"zebra"_s};
        QTest::newRow("value set") << 1 << u"quokka"_s << QStringList{u"k"_s};
        QTest::newRow("class changed") << 2 << u"1"_s << QStringList{u"n"_s};
        QTest::newRow("element moved out of its array") << 3 << u"w = v"_s << QStringList{moved};
        QTest::newRow("copy inserted") << 4 << u"plain"_s << QStringList{u"k"_s, u"k"_s};
        QTest::newRow("archived and put back") << 5 << u"plain"_s << QStringList{u"k"_s, u"k"_s};
        // Sorting moves "list" before "n": what the filter knows must move along.
        QTest::newRow("sorted") << 6 << u"v"_s << QStringList{u"list"_s};
        QTest::newRow("given a search reference") << 7 << u"plain"_s << QStringList{u"other"_s, u"k"_s};
        QTest::newRow("several inserted at once") << 8 << u"beta"_s << QStringList{u"b"_s};
        QTest::newRow("one removed before it") << 9 << u"yes"_s << QStringList{u"n"_s};
        // A group is passed over when nothing below it could match, so an edit
        // deep down must reach every group above it.
        QTest::newRow("renamed deep") << 10 << u"zebra"_s << QStringList{u"list"_s};
        QTest::newRow("value set deep") << 11 << u"quokka"_s << QStringList{u"list"_s};
        QTest::newRow("inserted deep") << 12 << u"kiwi"_s << QStringList{u"list"_s};
        QTest::newRow("element moved into a nested dictionary") << 13 << u"w = v"_s << QStringList{u"g"_s};
    }

    void editsAreFound()
    {
        QFETCH(int, edit);
        QFETCH(QString, query);
        QFETCH(QStringList, found);
        const PropertyDictionary record{{u"w"_s, PropertyList(u"v"_s)}};
        const PListNodePtr root = PListNode::treeFromDictionary({{u"k"_s, PropertyList(u"plain"_s)},
                                                                 {u"n"_s, PropertyList(u"yes"_s)},
                                                                 {u"list"_s, PropertyArray{record}},
                                                                 {u"g"_s, PropertyDictionary()}});
        const PListNodePtr leaf = root->childWithName(u"k"_s);
        const PListNodePtr list = root->childWithName(u"list"_s);
        const PListNodePtr deep = list->firstChild()->firstChild();
        switch (edit) {
        case 0:
            leaf->setName(u"zebra"_s);
            break;
        case 1:
            leaf->setValue(u"quokka"_s);
            break;
        case 2:
            QVERIFY(root->childWithName(u"n"_s)->setMenu(BooleanClass));
            break;
        case 3: {
            const PListNodePtr element = list->firstChild();
            list->removeChild(element);
            root->insertChild(element, 0);
            break;
        }
        case 4:
            root->insertChild(leaf->copy(), 0);
            break;
        case 5: {
            SequentialArchiveWriter writer;
            writer.encodeNode(leaf->encodeWithCoder());
            const ReadResult<ArchivedNode> read = SequentialArchiveReader(writer.data()).decodeNode();
            QVERIFY(read);
            root->insertChild(PListNode::initWithCoder(read.value), 0);
            break;
        }
        case 6:
            root->recursiveSortChildren();
            break;
        case 7: {
            const PListNodePtr other = PListNode::initWithName(u"other"_s, PropertyList(u"x"_s));
            root->insertChild(other, 0);
            other->setSearchReference(leaf.get());
            break;
        }
        case 8:
            root->insertChildren({PListNode::initWithName(u"a"_s, PropertyList(u"alpha"_s)),
                                  PListNode::initWithName(u"b"_s, PropertyList(u"beta"_s))},
                                 1);
            break;
        case 9:
            root->removeChild(leaf);
            break;
        case 10:
            deep->setName(u"zebra"_s);
            break;
        case 11:
            deep->setValue(u"quokka"_s);
            break;
        case 12:
            list->firstChild()->insertChild(PListNode::initWithName(u"fig"_s, PropertyList(u"kiwi"_s)), 0);
            break;
        case 13: {
            const PListNodePtr element = list->firstChild();
            list->removeChild(element);
            root->childWithName(u"g"_s)->insertChild(element, 0);
            break;
        }
        }
        QStringList names;
        const PListNodePtr copy = root->queryWithString(query);
        for (const PListNodePtr &child : copy->children())
            names << child->name();
        QCOMPARE(names, found);
    }

    // Random edits anywhere in a tree, then the same queries on it and on a
    // tree made afresh from its value: what the filter keeps up to date about
    // each group must never let it pass over a hit.
    void editedTreeFiltersAsAFreshOne()
    {
        QRandomGenerator random(20261121);
        const QStringList words{u"alpha"_s, u"beta"_s, u"zebra"_s, u"quokka"_s, u"kiwi"_s, u"Fig"_s, u"12"_s};
        int made = 0;
        const auto word = [&] { return words.at(random.bounded(words.size())) + QString::number(made++); };
        const auto newNode = [&]() -> PListNodePtr {
            if (random.bounded(4) > 0)
                return PListNode::initWithName(word(), PropertyList(word()));
            PropertyDictionary inner{{word(), PropertyList(word())}};
            return random.bounded(2) ? PListNode::initFromDictionary(inner, word())
                                     : PListNode::initFromArray(PropertyArray{PropertyList(word()), inner}, word());
        };
        const PListNodePtr root = PListNode::treeFromDictionary({});
        for (int step = 0; step < 600; ++step) {
            QList<PListNode *> nodes{root.get()};
            for (qsizetype i = 0; i < nodes.size(); ++i) {
                for (const PListNodePtr &child : nodes.at(i)->children())
                    nodes << child.get();
            }
            PListNode &node = *nodes.at(random.bounded(nodes.size()));
            const int choice = random.bounded(10);
            if (node.isGroup() && (choice < 6 || node.numberOfChildren() == 0))
                node.insertChild(newNode(), random.bounded(node.numberOfChildren() + 1));
            else if (node.isGroup() && choice < 8)
                node.removeChild(node.childAtIndex(random.bounded(node.numberOfChildren())));
            else if (node.isGroup())
                node.recursiveSortChildren();
            else if (choice < 4 && !node.nodeParent()->isArray())
                node.setName(word());
            else if (choice < 8)
                node.setValue(PropertyList(word()));
            else
                node.setMenu(random.bounded(2) ? IntegerClass : StringClass);
            if (step % 50 != 49)
                continue;
            const PListNodePtr fresh = PListNode::treeFromDictionary(root->initialValue().dictionaryRef());
            for (const QString &query : {u"zeb"_s, u"kiwi1"_s, u"#fig"_s, u"!alpha"_s, u"12"_s, u"q"_s})
                QCOMPARE(TreePicture::of(*root->queryWithString(query)), TreePicture::of(*fresh->queryWithString(query)));
        }
    }

    // A filtered entry is its real entry under another parent: renaming the
    // real one renames what the filtered view shows, drags and copies.
    void copyAnswersWithTheRealName()
    {
        const PListNodePtr root = treeFrom(u"{k = plain; g = {inner = plain;}; list = (plain);}"_s);
        const PListNodePtr copy = root->queryWithString(u"plain"_s);
        QCOMPARE(TreePicture::of(*copy), u">{k = >plain; g = >{inner = >plain;}; list = >(>plain);}"_s);
        root->childWithName(u"k"_s)->setName(u"renamed"_s);
        root->childWithName(u"g"_s)->setName(u"group"_s);
        const PListNodePtr leaf = copy->childAtIndex(0);
        QCOMPARE(leaf->name(), u"renamed"_s);
        QCOMPARE(leaf->encodeWithCoder().name, u"renamed"_s);
        QCOMPARE(leaf->copy()->name(), u"renamed"_s);
        QCOMPARE(copy->childAtIndex(1)->name(), u"group"_s);
        QCOMPARE(copy->childAtIndex(1)->encodeWithCoder().name, u"group"_s);
        QCOMPARE(copy->childAtIndex(2)->childAtIndex(0)->displayName(), u"Item 1"_s);
    }

    void queryOnLeaf()
    {
        const PListNodePtr dictionary = PListNode::initFromDictionary(PropertyDictionary(), u"d"_s);
        const PListNodePtr array = PListNode::initFromArray(PropertyArray(), u"a"_s);
        for (const PListNodePtr &parent : {dictionary, array})
            parent->insertChild(PListNode::initWithName(u"key"_s, PropertyList(u"value"_s)), 0);
        const PListNodePtr found = dictionary->firstChild()->queryWithString(u"key"_s);
        QVERIFY(found && found != dictionary->firstChild());
        QCOMPARE(found->searchReference(), dictionary->firstChild().get());
        QCOMPARE(found->name() + TreePicture::of(*found), u"key>value"_s);
        QCOMPARE(dictionary->firstChild()->queryWithString(u"zzz"_s), nullptr);
        QCOMPARE(array->firstChild()->queryWithString(u"key"_s), nullptr); // an item's name is not searched
        const PListNodePtr item = array->firstChild()->queryWithString(u"alu"_s);
        QVERIFY(item && item->searchReference() == array->firstChild().get());
    }

    // A hit is a fresh leaf as initWithName makes it from the real leaf's name
    // and value, whatever class tag the real leaf has come to carry.
    void hitIsWhatInitWithNameMakes()
    {
        const PListNodePtr root =
            PListNode::treeFromDictionary({{u"k1"_s, PropertyList::unsignedInteger(18446744073709551615ULL)},
                                           {u"k2"_s, u"hello"_s},
                                           {u"k3"_s, PropertyList::integer(3, 'i')},
                                           {u"k4"_s, PropertyList::date(0.5)}});
        root->childAtIndex(1)->setMenu(DateClass); // refused, but the tag stays
        root->childAtIndex(2)->setMenu(BooleanClass);
        const PListNodePtr copy = root->queryWithString(u"k"_s);
        QVERIFY(copy && copy->numberOfChildren() == 4);
        for (int i = 0; i < 4; ++i) {
            const PListNode *real = copy->childAtIndex(i)->searchReference();
            QCOMPARE(real, root->childAtIndex(i).get());
            QVERIFY(copy->childAtIndex(i)->encodeWithCoder() ==
                    PListNode::initWithName(real->name(), real->value())->encodeWithCoder());
        }
    }

    // The filter's own matcher must answer what Qt's search does: beyond ASCII,
    // below four units, in the overlapping halves of four to seven, and at the
    // overlapping last block of eight.
    void searchPatternMatchesQt_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("query");
        QTest::addColumn<bool>("expected");
        QTest::newRow("kelvin-sign-folds-to-k") << u"\u212Aelvin"_s << u"kel"_s << true;
        QTest::newRow("long-s-inside-needle-match") << u"xx\u017Ft"_s << u"st"_s << true;
        QTest::newRow("kelvin-not-exact") << u"\u212Aelvin"_s << u"#kel"_s << false;
        QTest::newRow("accented-needle-ignores-case") << u"CAFÉ au lait"_s << u"café"_s << true;
        QTest::newRow("surrogate-pair-exact") << u"a\U0001F600b"_s << u"#\U0001F600b"_s << true;
        QTest::newRow("match-across-block-edge") << u"0123456Quasar89"_s << u"quasar"_s << true;
        QTest::newRow("partial-at-end-is-no-match") << u"0123456789quasa"_s << u"quasar"_s << false;
        QTest::newRow("short-text-first-unit-only") << u"12a"_s << u"ab"_s << false;
        QTest::newRow("five-units-overlapping-halves") << u"xxxxQ"_s << u"xq"_s << true;
        QTest::newRow("nine-units-exact-miss") << u"abcdefghI"_s << u"#hi"_s << false;
        QTest::newRow("letter-bit-is-not-a-match") << u"@@@@@@@@@@"_s << u"`"_s << false;
    }

    void searchPatternMatchesQt()
    {
        QFETCH(QString, text);
        QFETCH(QString, query);
        QFETCH(bool, expected);
        QCOMPARE(VXAdditions::SearchPattern(query).matches(text), expected);
        // What the pattern replaces, for every query form: the needle after the marks.
        const bool exact = query.startsWith(u'#');
        QCOMPARE(text.contains(exact ? query.sliced(1) : query, exact ? Qt::CaseSensitive : Qt::CaseInsensitive),
                 expected);
    }

    // The matcher folds ASCII itself and knows the two units beyond it that Qt
    // folds into it; a Qt with other case tables must make this fail.
    void onlyTwoUnitsFoldIntoAscii()
    {
        QList<char16_t> folding;
        for (char32_t unit = 0x80; unit <= 0xFFFF; ++unit) {
            if (!QChar::isSurrogate(unit) && QChar::toCaseFolded(unit) < 0x80)
                folding << static_cast<char16_t>(unit);
        }
        QCOMPARE(folding, (QList<char16_t>{0x017F, 0x212A}));
    }

    void copyIsLinkedAndLeavesRealTreeAlone()
    {
        const PListNodePtr root = treeFrom(u"{a = {b = hit; c = miss;}; d = (hit, x); hit = 1;}"_s);
        QVERIFY(root);
        root->setCanEdit(false); // searching must not make a read-only document editable
        const PListNodePtr copy = root->queryWithString(u"hit"_s);
        QVERIFY(copy);
        QCOMPARE(copy->searchReference(), root.get());
        QVERIFY(linkedToRealTree(*copy, nullptr));
        QCOMPARE(copy->firstChild()->firstChild()->searchReference(), root->firstChild()->firstChild().get());
        QVERIFY(!root->firstChild()->canEdit() && !root->childAtIndex(1)->firstChild()->canEdit());
    }

    void editThroughCopyReachesRealTree()
    {
        const PListNodePtr root = treeFrom(u"{g = {k = hit;}; other = x;}"_s);
        QVERIFY(root);
        const PListNodePtr copy = root->queryWithString(u"hit"_s);
        QVERIFY(copy && copy->numberOfChildren() == 1);
        copy->firstChild()->firstChild()->setName(u"renamed"_s);
        QCOMPARE(TreePicture::of(*root), u"{g = {renamed = hit;}; other = x;}"_s);
        copy->firstChild()->firstChild()->setValue(PropertyList(u"changed"_s));
        copy->firstChild()->setName(u"G2"_s);
        QCOMPARE(TreePicture::of(*root), u"{G2 = {renamed = changed;}; other = x;}"_s);
        QCOMPARE(TreePicture::of(*copy), u">{G2 = >{renamed = >changed;};}"_s);
    }

    void childWithName()
    {
        const PListNodePtr parent = PListNode::initFromDictionary(PropertyDictionary(), u"p"_s);
        QCOMPARE(parent->childWithName(u"a"_s), nullptr);
        for (const QString &name : {u"x"_s, u"Fonts"_s, u"b"_s, u"b"_s})
            parent->insertChild(PListNode::initWithName(name, PropertyList(u"v"_s)), parent->numberOfChildren());
        QCOMPARE(parent->childWithName(u"b"_s), parent->childAtIndex(2)); // the first of equal names
        QVERIFY(parent->containsChildWithName(u"b"_s));
        QVERIFY(!parent->containsChildWithName(u"fonts"_s)); // case matters
        QCOMPARE(parent->childWithName(u"Font"_s), nullptr); // whole names only
    }

    void recursiveSearchForChild_data()
    {
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QString>("expectedPath"); // of the first node named x with value 1
        QTest::newRow("group-subtree-before-later-sibling") << u"{a = {x = 1;}; x = 1;}"_s << u"a/x"_s;
        QTest::newRow("child-before-its-own-subtree") << u"{x = 1; a = {x = 1;};}"_s << u"x"_s;
        QTest::newRow("value-must-be-equal") << u"{a = {x = 2;}; x = 1;}"_s << u"x"_s;
        QTest::newRow("name-must-be-equal") << u"{X = 1;}"_s << QString();
        QTest::newRow("inside-array") << u"{l = (a, {x = 1;});}"_s << u"l/Item 2/x"_s;
    }

    void recursiveSearchForChild()
    {
        QFETCH(QString, tree);
        QFETCH(QString, expectedPath);
        const PListNodePtr root = treeFrom(tree);
        QVERIFY(root);
        const PListNodePtr probe = PListNode::initWithName(u"x"_s, PropertyList(u"1"_s));
        const PListNode *found = root->recursiveSearchForChild(*probe);
        QStringList path;
        for (const PListNode *node = found; node && node->nodeParent(); node = node->nodeParent())
            path.prepend(node->name());
        QCOMPARE(found ? path.join(u'/') : QString(), expectedPath);
        if (found) // the node asked is not among its own descendants
            QVERIFY(!found->recursiveSearchForChild(*probe));
    }
};

ORVANE_TEST(PListNodeSearchTest)
#include "PListNodeSearchTest.moc"
