// The search filter's copy of a tree (what matches, what is left out, which
// groups are kept), edits made through that copy, and the lookups by name and
// by equality that editing and pasting use.
#include "TestRegistry.h"
#include "TreePicture.h"

#include "model/PListNode.h"
#include "model/VXAdditions.h"
#include "platform/PropertyListSerialization.h"

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

QString pictureOf(const PListNodePtr &node)
{
    return node ? node->name() + u": "_s + TreePicture::of(*node) : u"none"_s;
}

// Where a node sits: its names from below the root, "/"-joined.
QString pathOf(const PListNode *node)
{
    QStringList names;
    for (; node && node->nodeParent(); node = node->nodeParent())
        names.prepend(node->name());
    return names.join(u'/');
}

// Every node of the copy stands for a distinct real node with the same name
// and is linked to its own parent in the copy.
bool linkedToRealTree(const PListNode &copy, const PListNode *copyParent)
{
    const PListNode *real = copy.searchReference();
    if (copy.nodeParent() != copyParent || (real && (real == &copy || real->name() != copy.name())))
        return false;
    for (const PListNodePtr &child : copy.children()) {
        if (!child->searchReference() || !linkedToRealTree(*child, &copy))
            return false;
    }
    return true;
}

} // namespace

class PListNodeSearchTest : public QObject {
    Q_OBJECT

private slots:
    void queryWithString_data();
    void queryWithString();
    void queryOnLeaf_data();
    void queryOnLeaf();
    void hitIsWhatInitWithNameMakes_data();
    void hitIsWhatInitWithNameMakes();
    void searchPatternMatchesQt_data();
    void searchPatternMatchesQt();
    void onlyTwoUnitsFoldIntoAscii();
    void copyIsLinkedAndLeavesRealTreeAlone();
    void editThroughCopyReachesRealTree_data();
    void editThroughCopyReachesRealTree();
    void childWithName_data();
    void childWithName();
    void recursiveSearchForChild_data();
    void recursiveSearchForChild();
};

void PListNodeSearchTest::queryWithString_data()
{
    QTest::addColumn<QString>("tree");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("expected");

    const QString fonts = u"{VXTextFont = Monaco; fontsize = <*I12>; colour = red;}"_s;
    QTest::newRow("plain-query-ignores-case")
        << fonts << u"Font"_s << u"OVRoot: >{VXTextFont = >Monaco; fontsize = >12;}"_s;
    QTest::newRow("hash-query-keeps-case") << fonts << u"#Font"_s << u"OVRoot: >{VXTextFont = >Monaco;}"_s;
    QTest::newRow("value-hit-with-other-name") << fonts << u"MONA"_s << u"OVRoot: >{VXTextFont = >Monaco;}"_s;
    QTest::newRow("no-hit-gives-empty-search-root") << fonts << u"zzz"_s << u"Search Root: {}"_s;
    QTest::newRow("empty-query-gives-empty-search-root") << fonts << QString() << u"Search Root: {}"_s;

    const QString list = u"{List = (alpha, beta);}"_s;
    QTest::newRow("array-item-found-by-value") << list << u"alpha"_s << u"OVRoot: >{List = >(>alpha);}"_s;
    QTest::newRow("array-item-not-found-by-name") << list << u"Item"_s << u"Search Root: {}"_s;
    QTest::newRow("array-group-item-not-found-by-name")
        << u"{List = ({a = b;});}"_s << u"Item"_s << u"Search Root: {}"_s;
    QTest::newRow("array-name-itself-is-searched") << list << u"Lis"_s << u"OVRoot: >{List = >();}"_s;

    const QString colours = u"{Colors = {fg = black; bg = white;}; Other = x;}"_s;
    QTest::newRow("matching-group-kept-empty") << colours << u"col"_s << u"OVRoot: >{Colors = >{};}"_s;
    QTest::newRow("group-with-hits-holds-only-hits")
        << colours << u"whi"_s << u"OVRoot: >{Colors = >{bg = >white;};}"_s;
    QTest::newRow("nested-hit-keeps-order")
        << u"{b = {x = hit1;}; a = hit2; c = ({y = hit3;});}"_s << u"hit"_s
        << u"OVRoot: >{b = >{x = >hit1;}; a = >hit2; c = >(>{y = >hit3;});}"_s;
    QTest::newRow("root-name-matches-like-any-group") << u"{a = b;}"_s << u"ovr"_s << u"OVRoot: >{}"_s;

    const QString numbers = u"{size = <*I12>; ratio = <*R0.5>; big = <*I12345678901>; flag = <*BY>; off = <*BN>;}"_s;
    QTest::newRow("integer-by-its-text") << numbers << u"123"_s << u"OVRoot: >{big = >12345678901;}"_s;
    QTest::newRow("real-by-its-text") << numbers << u".5"_s << u"OVRoot: >{ratio = >\"0.5\";}"_s;
    QTest::newRow("boolean-true-by-1") << numbers << u"1"_s
                                       << u"OVRoot: >{size = >12; big = >12345678901; flag = >true;}"_s;
    QTest::newRow("boolean-false-by-0")
        << numbers << u"0"_s << u"OVRoot: >{ratio = >\"0.5\"; big = >12345678901; off = >false;}"_s;
    QTest::newRow("boolean-not-by-shown-word") << numbers << u"true"_s << u"Search Root: {}"_s;
    QTest::newRow("date-never-by-value")
        << u"{when = <*D2001-01-01 00:00:00 +0000>;}"_s << u":"_s << u"Search Root: {}"_s;
    QTest::newRow("data-never-by-value") << u"{blob = <4142>;}"_s << u"41"_s << u"Search Root: {}"_s;
    QTest::newRow("data-not-by-shown-text") << u"{blob = <4142>;}"_s << u"Item"_s << u"Search Root: {}"_s;
    QTest::newRow("data-found-by-name") << u"{blob = <4142>;}"_s << u"blo"_s << u"OVRoot: >{blob = >\"(Data Item)\";}"_s;

    QTest::newRow("bang-alone-finds-exclamation")
        << u"{a = \"wow!\"; b = plain;}"_s << u"!"_s << u"OVRoot: >{a = >\"wow!\";}"_s;
    QTest::newRow("negation-drops-value-hit-despite-name")
        << u"{xyz = abcdef; other = hello;}"_s << u"!abc"_s << u"OVRoot: >{other = >hello;}"_s;
    QTest::newRow("negation-keeps-leaf-whose-name-holds-term")
        << u"{abc = hello;}"_s << u"!abc"_s << u"OVRoot: >{abc = >hello;}"_s;
    QTest::newRow("negation-keeps-group-by-name")
        << u"{grp = {k = abc;};}"_s << u"!abc"_s << u"OVRoot: >{grp = >{};}"_s;
    QTest::newRow("bang-hash-drops-exact-only")
        << u"{x = ABCdef; y = abcdef;}"_s << u"!#abc"_s << u"OVRoot: >{x = >ABCdef;}"_s;
    QTest::newRow("hash-bang-is-not-negated-so-name-hits-stay")
        << u"{x = ABC; y = abcdef; abc = abc;}"_s << u"#!abc"_s << u"OVRoot: >{x = >ABC; y = >abcdef;}"_s;
    QTest::newRow("bang-hash-pair-drops-values-holding-hash")
        << u"{\"a!#\" = \"x#y\"; \"b!#\" = plain;}"_s << u"!#"_s << u"OVRoot: >{\"b!#\" = >plain;}"_s;
    QTest::newRow("negated-number-dropped") << numbers << u"!1"_s
                                            << u"OVRoot: >{ratio = >\"0.5\"; off = >false;}"_s;
}

void PListNodeSearchTest::queryWithString()
{
    QFETCH(QString, tree);
    QFETCH(QString, query);
    QFETCH(QString, expected);
    const PListNodePtr root = treeFrom(tree);
    QVERIFY(root);
    const QString before = TreePicture::of(*root);
    QCOMPARE(pictureOf(root->queryWithString(query)), expected);
    QCOMPARE(TreePicture::of(*root), before);
}

void PListNodeSearchTest::queryOnLeaf_data()
{
    QTest::addColumn<bool>("inArray");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("expected");
    QTest::newRow("name-hit") << false << u"key"_s << u"key: >value"_s;
    QTest::newRow("value-hit") << false << u"VAL"_s << u"key: >value"_s;
    QTest::newRow("no-hit") << false << u"zzz"_s << u"none"_s;
    QTest::newRow("array-item-name-not-searched") << true << u"key"_s << u"none"_s;
    QTest::newRow("array-item-value-searched") << true << u"alu"_s << u"key: >value"_s;
}

void PListNodeSearchTest::queryOnLeaf()
{
    QFETCH(bool, inArray);
    QFETCH(QString, query);
    QFETCH(QString, expected);
    const PListNodePtr parent = inArray ? PListNode::initFromArray(PropertyArray(), u"a"_s)
                                        : PListNode::initFromDictionary(PropertyDictionary(), u"d"_s);
    const PListNodePtr leaf = PListNode::initWithName(u"key"_s, PropertyList(u"value"_s));
    parent->insertChild(leaf, 0);
    const PListNodePtr found = leaf->queryWithString(query);
    QCOMPARE(pictureOf(found), expected);
    if (found) {
        QCOMPARE(found->searchReference(), leaf.get());
        QVERIFY(found != leaf);
    }
}

// A hit is a fresh leaf as initWithName makes it from the real leaf's name and
// value, whatever class tag the real leaf has come to carry.
void PListNodeSearchTest::hitIsWhatInitWithNameMakes_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<int>("tagSetBefore"); // NoClass: none
    QTest::newRow("string") << PropertyList(u"abc"_s) << int(NoClass);
    QTest::newRow("integer") << PropertyList::integer(-7, 'q') << int(NoClass);
    QTest::newRow("unsigned") << PropertyList::unsignedInteger(18446744073709551615ULL) << int(NoClass);
    QTest::newRow("float") << PropertyList::real(0.1, 'f') << int(NoClass);
    QTest::newRow("date") << PropertyList::date(86400.5) << int(NoClass);
    QTest::newRow("boolean") << PropertyList::boolean(true) << int(NoClass);
    QTest::newRow("data") << PropertyList(QByteArray("AB")) << int(NoClass);
    QTest::newRow("string-left-tagged-date") << PropertyList(u"hello"_s) << int(DateClass);
    QTest::newRow("integer-made-boolean") << PropertyList::integer(3, 'i') << int(BooleanClass);
    QTest::newRow("real-made-integer") << PropertyList::real(2.5) << int(IntegerClass);
}

void PListNodeSearchTest::hitIsWhatInitWithNameMakes()
{
    QFETCH(PropertyList, value);
    QFETCH(int, tagSetBefore);
    const PListNodePtr root = PListNode::treeFromDictionary(PropertyDictionary{{u"key"_s, value}});
    const PListNodePtr real = root->childAtIndex(0);
    if (tagSetBefore != NoClass)
        real->setMenu(tagSetBefore);
    const PListNodePtr copy = root->queryWithString(u"key"_s);
    QVERIFY(copy && copy->numberOfChildren() == 1);
    const PListNodePtr hit = copy->childAtIndex(0);
    QCOMPARE(hit->searchReference(), real.get());
    QVERIFY(hit->encodeWithCoder() == PListNode::initWithName(real->name(), real->value())->encodeWithCoder());
}

// The filter's own matcher must answer exactly what Qt's search does, also for
// texts beyond ASCII, long texts and matches in the last units.
void PListNodeSearchTest::searchPatternMatchesQt_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("query");
    QTest::addColumn<bool>("expected");
    QTest::newRow("kelvin-sign-folds-to-k") << u"\u212Aelvin"_s << u"kel"_s << true;
    QTest::newRow("kelvin-sign-inside-match") << u"MaKe"_s << u"AKE"_s << true;
    QTest::newRow("long-s-folds-to-s") << u"Po\u017Fition"_s << u"POS"_s << true;
    QTest::newRow("long-s-inside-needle-match") << u"xx\u017Ft"_s << u"st"_s << true;
    QTest::newRow("kelvin-not-exact") << u"\u212Aelvin"_s << u"#kel"_s << false;
    QTest::newRow("accented-needle-ignores-case") << u"CAFÉ au lait"_s << u"café"_s << true;
    QTest::newRow("surrogate-pair-exact") << u"a\U0001F600b"_s << u"#\U0001F600b"_s << true;
    QTest::newRow("deseret-case-folded") << u"x\U00010400y"_s << u"\U00010428"_s << true;
    QTest::newRow("match-in-last-unit-of-long-text") << u"0123456789abcdefghiZ"_s << u"iz"_s << true;
    QTest::newRow("match-across-block-edge") << u"0123456Quasar89"_s << u"quasar"_s << true;
    QTest::newRow("partial-at-end-is-no-match") << u"0123456789quasa"_s << u"quasar"_s << false;
    QTest::newRow("short-text-match-at-end") << u"12ab"_s << u"AB"_s << true;
    QTest::newRow("short-text-first-unit-only") << u"12a"_s << u"ab"_s << false;
    QTest::newRow("five-units-overlapping-halves") << u"xxxxQ"_s << u"xq"_s << true;
    QTest::newRow("eight-units-exact") << u"abcdefgH"_s << u"#gH"_s << true;
    QTest::newRow("nine-units-exact-miss") << u"abcdefghI"_s << u"#hi"_s << false;
    QTest::newRow("letter-bit-is-not-a-match") << u"@@@@@@@@@@"_s << u"`"_s << false;
    QTest::newRow("long-text-boyer-moore-range") << QString(u"ab"_s.repeated(400) + u"NEEDLEx"_s) << u"needlex"_s
                                                 << true;
}

void PListNodeSearchTest::searchPatternMatchesQt()
{
    QFETCH(QString, text);
    QFETCH(QString, query);
    QFETCH(bool, expected);
    QCOMPARE(VXAdditions::SearchPattern(query).matches(text), expected);
    // What the pattern replaces, for every query form: the needle after the marks.
    const bool exact = query.startsWith(u'#');
    const QString needle = exact ? query.sliced(1) : query;
    QCOMPARE(text.contains(needle, exact ? Qt::CaseSensitive : Qt::CaseInsensitive), expected);
}

// The matcher folds ASCII itself and knows the two units beyond it that Qt
// folds into it; a Qt with other case tables must make this fail.
void PListNodeSearchTest::onlyTwoUnitsFoldIntoAscii()
{
    QList<char16_t> folding;
    for (char32_t unit = 0x80; unit <= 0xFFFF; ++unit) {
        if (!QChar::isSurrogate(unit) && QChar::toCaseFolded(unit) < 0x80)
            folding << static_cast<char16_t>(unit);
    }
    QCOMPARE(folding, (QList<char16_t>{0x017F, 0x212A}));
}

void PListNodeSearchTest::copyIsLinkedAndLeavesRealTreeAlone()
{
    const PListNodePtr root = treeFrom(u"{a = {b = hit; c = miss;}; d = (hit, x); hit = 1;}"_s);
    QVERIFY(root);
    // A read-only document: searching must not make its nodes editable.
    root->setCanEdit(false);
    const PListNodePtr copy = root->queryWithString(u"hit"_s);
    QVERIFY(copy);
    QCOMPARE(copy->searchReference(), root.get());
    QVERIFY(linkedToRealTree(*copy, nullptr));
    QCOMPARE(copy->childAtIndex(0)->childAtIndex(0)->searchReference(), root->childAtIndex(0)->childAtIndex(0).get());
    QVERIFY(!root->childAtIndex(0)->canEdit());
    QVERIFY(!root->childAtIndex(1)->childAtIndex(0)->canEdit());
}

void PListNodeSearchTest::editThroughCopyReachesRealTree_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("expectedReal");
    QTest::addColumn<QString>("expectedCopy");
    QTest::newRow("rename-leaf") << u"name"_s << u"{g = {renamed = hit;}; other = x;}"_s
                                 << u">{g = >{renamed = >hit;};}"_s;
    QTest::newRow("new-value") << u"value"_s << u"{g = {k = changed;}; other = x;}"_s
                               << u">{g = >{k = >changed;};}"_s;
    QTest::newRow("rename-group") << u"group"_s << u"{G2 = {k = hit;}; other = x;}"_s
                                  << u">{G2 = >{k = >hit;};}"_s;
}

void PListNodeSearchTest::editThroughCopyReachesRealTree()
{
    QFETCH(QString, edit);
    QFETCH(QString, expectedReal);
    QFETCH(QString, expectedCopy);
    const PListNodePtr root = treeFrom(u"{g = {k = hit;}; other = x;}"_s);
    QVERIFY(root);
    const PListNodePtr copy = root->queryWithString(u"hit"_s);
    QVERIFY(copy && copy->numberOfChildren() == 1);
    const PListNodePtr group = copy->childAtIndex(0);
    const PListNodePtr leaf = group->childAtIndex(0);
    if (edit == u"name")
        leaf->setName(u"renamed"_s);
    else if (edit == u"value")
        leaf->setValue(PropertyList(u"changed"_s));
    else
        group->setName(u"G2"_s);
    QCOMPARE(TreePicture::of(*root), expectedReal);
    QCOMPARE(TreePicture::of(*copy), expectedCopy);
}

void PListNodeSearchTest::childWithName_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<int>("expectedIndex");
    QTest::newRow("found") << QStringList{u"a"_s, u"b"_s} << u"b"_s << 1;
    QTest::newRow("first-of-equal-names") << QStringList{u"x"_s, u"b"_s, u"b"_s} << u"b"_s << 1;
    QTest::newRow("case-matters") << QStringList{u"Font"_s} << u"font"_s << -1;
    QTest::newRow("whole-name-only") << QStringList{u"Fonts"_s} << u"Font"_s << -1;
    QTest::newRow("no-children") << QStringList() << u"a"_s << -1;
}

void PListNodeSearchTest::childWithName()
{
    QFETCH(QStringList, names);
    QFETCH(QString, wanted);
    QFETCH(int, expectedIndex);
    const PListNodePtr parent = PListNode::initFromDictionary(PropertyDictionary(), u"p"_s);
    for (const QString &name : names)
        parent->insertChild(PListNode::initWithName(name, PropertyList(u"v"_s)), parent->numberOfChildren());
    QCOMPARE(parent->containsChildWithName(wanted), expectedIndex >= 0);
    const PListNodePtr expected = parent->childAtIndex(expectedIndex < 0 ? PListNode::kNotFound : expectedIndex);
    QCOMPARE(parent->childWithName(wanted).get(), expected.get());
}

void PListNodeSearchTest::recursiveSearchForChild_data()
{
    QTest::addColumn<QString>("tree");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expectedPath");
    QTest::newRow("group-subtree-before-later-sibling")
        << u"{a = {x = 1;}; x = 1;}"_s << u"x"_s << u"1"_s << u"a/x"_s;
    QTest::newRow("child-before-its-own-subtree")
        << u"{x = 1; a = {x = 1;};}"_s << u"x"_s << u"1"_s << u"x"_s;
    QTest::newRow("deep-match") << u"{a = {b = {c = {x = 1;};};};}"_s << u"x"_s << u"1"_s << u"a/b/c/x"_s;
    QTest::newRow("value-must-be-equal") << u"{a = {x = 2;}; x = 1;}"_s << u"x"_s << u"1"_s << u"x"_s;
    QTest::newRow("name-must-be-equal") << u"{X = 1;}"_s << u"x"_s << u"1"_s << QString();
    QTest::newRow("inside-array") << u"{l = (a, {x = 1;});}"_s << u"x"_s << u"1"_s << u"l/Item 2/x"_s;
}

void PListNodeSearchTest::recursiveSearchForChild()
{
    QFETCH(QString, tree);
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, expectedPath);
    const PListNodePtr root = treeFrom(tree);
    QVERIFY(root);
    const PListNodePtr probe = PListNode::initWithName(name, PropertyList(value));
    const PListNode *found = root->recursiveSearchForChild(*probe);
    QCOMPARE(found ? pathOf(found) : QString(), expectedPath);
    // The node asked is not among its own descendants.
    if (found)
        QVERIFY(!found->recursiveSearchForChild(*probe));
}

ORVANE_TEST(PListNodeSearchTest)
#include "PListNodeSearchTest.moc"
