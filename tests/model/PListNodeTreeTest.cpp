// The node tree's structure: key order, item names, lookups by equality and
// identity, copies, the pasteboard archive, editability passed down the tree,
// and whole real files turned into trees and back.
#include "Corpus.h"
#include "TestRegistry.h"
#include "TreePicture.h"

#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

PropertyList integer(qint64 value) { return PropertyList::integer(value, 'i'); }

PListNodePtr nodeFor(const PropertyList &value, const QString &name = u"n"_s)
{
    if (value.isDictionary())
        return PListNode::initFromDictionary(value.dictionaryRef(), name);
    if (value.isArray())
        return PListNode::initFromArray(value.arrayRef(), name);
    return PListNode::initWithName(name, value);
}

QString childNames(const PListNode &node)
{
    QStringList names;
    for (const PListNodePtr &child : node.children())
        names << child->name();
    return names.join(u',');
}

PListNodePtr throughArchive(const PListNode &node)
{
    SequentialArchiveWriter writer;
    writer.encodeNode(node.encodeWithCoder());
    SequentialArchiveReader reader(writer.data());
    const ReadResult<ArchivedNode> read = reader.decodeNode();
    return read ? PListNode::initWithCoder(read.value) : nullptr;
}

// Every dictionary's keys in order and every node's parent link right.
bool sortedAndLinked(const PListNode &node)
{
    const ChildList &children = node.children();
    for (qsizetype i = 0; i < children.size(); ++i) {
        if (children.at(i)->nodeParent() != &node || !sortedAndLinked(*children.at(i)))
            return false;
        if (i > 0 && !node.isArray() && children.at(i - 1)->compare(*children.at(i)) > 0)
            return false;
    }
    return true;
}

} // namespace

class PListNodeTreeTest : public QObject {
    Q_OBJECT

private slots:
    void compare_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::addColumn<int>("expected");
        QTest::newRow("digit runs compare by value, not by text") << u"Item 9"_s << u"Item 10"_s << -1;
        QTest::newRow("case is ignored") << u"abc"_s << u"ABC"_s << 0;
        QTest::newRow("a prefix sorts first") << u"b"_s << u"B10"_s << -1;
        QTest::newRow("leading zeros do not count") << u"x007"_s << u"x7"_s << 0;
        QTest::newRow("comparison goes on after equal numbers") << u"a007b"_s << u"a7c"_s << -1;
        QTest::newRow("runs beyond 64 bits by length") << u"n18446744073709551616"_s << u"n9223372036854775808"_s << 1;
        QTest::newRow("runs beyond 64 bits by digits")
            << u"n98765432109876543210123"_s << u"n98765432109876543210124"_s << -1;
        QTest::newRow("folds to lower case: _ before letters") << u"_z"_s << u"Aa"_s << -1;
        QTest::newRow("digit against punctuation by code") << u"a1"_s << u"a-"_s << 1;
        QTest::newRow("empty first") << QString() << u"a"_s << -1;
        QTest::newRow("accented case ignored") << u"\u00c9t\u00e9"_s << u"\u00e9T\u00c9"_s << 0;
        QTest::newRow("non-BMP case pairs fold whole") << u"\U00010400x"_s << u"\U00010428y"_s << -1;
    }

    void compare()
    {
        QFETCH(QString, left);
        QFETCH(QString, right);
        QFETCH(int, expected);
        const PListNodePtr a = PListNode::initWithName(left, integer(1));
        const PListNodePtr b = PListNode::initWithName(right, integer(1));
        QCOMPARE(a->compare(*b), expected);
        QCOMPARE(b->compare(*a), -expected);
    }

    // Sorting takes shortcuts over the leading characters of names; whatever
    // order the children come in, the result must be the order compare() gives,
    // with ties kept in the order they came.
    void sortAgreesWithCompare_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::newRow("digits against punctuation and letters")
            << QStringList{u"a1"_s, u"a-"_s, u"a/"_s, u"a:"_s, u"a"_s, u"A0"_s, u"a00"_s, u"a0b"_s, u"a_"_s};
        QTest::newRow("runs longer than a prefix")
            << QStringList{u"x123456789012345678901"_s, u"x123456789012345678900"_s, u"x9"_s, u"x09"_s,
                           u"x0"_s, u"x00000"_s, u"x1234567890123456789012"_s, u"X9z"_s, u"x9a"_s};
        QTest::newRow("shared leads longer than a prefix")
            << QStringList{u"NSWindow Frame b"_s, u"NSWindow Frame A"_s, u"NSWindow Frame 10"_s,
                           u"NSWindow Frame 9"_s, u"nswindow frame a"_s, u"NSWindow Fram"_s};
        QTest::newRow("beyond ASCII")
            << QStringList{u"a\u00e9"_s, u"A\u00c9"_s, u"a\U00010400"_s, u"a\U00010428b"_s, u"a\uffff"_s,
                           u"a\uffffb"_s, u"a\uff21"_s, u"a\uff41"_s, u"az"_s, u"a\u0000"_s, QString()};
    }

    void sortAgreesWithCompare()
    {
        QFETCH(QStringList, names);
        for (int turn = 0; turn < names.size(); ++turn) {
            std::rotate(names.begin(), names.begin() + 1, names.end());
            std::swap(names.first(), names[names.size() / 2]);
            const PListNodePtr dictionary = PListNode::initFromDictionary({}, u"d"_s);
            for (const QString &name : std::as_const(names))
                dictionary->insertChild(PListNode::initWithName(name, integer(names.indexOf(name))),
                                        dictionary->numberOfChildren());
            dictionary->sortChildren();
            for (int i = 1; i < names.size(); ++i) {
                const PListNode &before = *dictionary->childAtIndex(i - 1);
                const PListNode &after = *dictionary->childAtIndex(i);
                const int order = before.compare(after);
                QVERIFY2(order < 0 || (order == 0 && before.value().toInteger() < after.value().toInteger()),
                         qPrintable(childNames(*dictionary)));
            }
        }
    }

    void recursiveSortKeepsArrays()
    {
        const PropertyArray records{PropertyDictionary{{u"z"_s, integer(1)}, {u"a"_s, integer(2)}},
                                    PropertyDictionary{{u"c"_s, integer(3)}, {u"B"_s, integer(4)}}};
        const PListNodePtr root = PListNode::treeFromDictionary(
            {{u"y"_s, PropertyDictionary{{u"q"_s, integer(5)}, {u"p"_s, integer(6)}}}, {u"list"_s, records}});
        QCOMPARE(TreePicture::of(*root), u"{y = {q = 5; p = 6;}; list = ({z = 1; a = 2;}, {c = 3; B = 4;});}"_s);
        root->recursiveSortChildren();
        QCOMPARE(TreePicture::of(*root), u"{list = ({a = 2; z = 1;}, {B = 4; c = 3;}); y = {p = 6; q = 5;};}"_s);
    }

    void fixupNames()
    {
        const PropertyArray items{u"x"_s, integer(2), PropertyDictionary{{u"k"_s, integer(1)}}};
        const PListNodePtr array = nodeFor(items);
        array->fixupNames();
        QCOMPARE(childNames(*array), u"Item 1,Item 2,Item 3"_s);
        const PListNodePtr dictionary = nodeFor(PropertyDictionary{{u"k"_s, integer(1)}});
        QTest::ignoreMessage(QtWarningMsg, "Attempt to fix the names of a non-array type.");
        dictionary->fixupNames();
        QCOMPARE(childNames(*dictionary), u"k"_s);
        const PListNodePtr searchCopy = nodeFor(PropertyArray{u"x"_s}); // left to its real node
        searchCopy->setSearchReference(array.get());
        searchCopy->fixupNames();
        QCOMPARE(childNames(*searchCopy), u"x"_s);
    }

    // An element's name is its value's text as it was when the tree was made,
    // whatever happens to the element afterwards.
    void elementNamesOutliveEdits()
    {
        const PropertyDictionary record{{u"k"_s, integer(1)}};
        const QString recordText = PropertyList(record).description();
        const PListNodePtr root =
            PListNode::treeFromDictionary({{u"list"_s, PropertyArray{record, integer(5), u"s"_s}}, {u"d"_s, record}});
        const PListNodePtr list = root->childWithName(u"list"_s);
        const PListNodePtr group = list->childAtIndex(0), number = list->childAtIndex(1);
        QCOMPARE(childNames(*list), recordText + u",5,s"_s);
        QCOMPARE(group->value().dictionaryRef().size(), 0); // a group's value is only its kind
        QVERIFY(!group->isEqualToNode(*root->childWithName(u"d"_s)));

        group->firstChild()->setValue(u"2"_s);
        QVERIFY(number->setMenu(BooleanClass));
        QCOMPARE(childNames(*list), recordText + u",5,s"_s);
        QCOMPARE(group->copy()->name(), recordText);
        QCOMPARE(throughArchive(*group)->name(), recordText);
        QCOMPARE(throughArchive(*group)->value().dictionaryRef().size(), 0);
        QCOMPARE(list->initialValue().arrayRef().at(0), PropertyList(PropertyDictionary{{u"k"_s, integer(2)}}));

        // Taken out of the array, it keeps the name it has.
        list->removeChild(group);
        root->insertChild(group, 0);
        QCOMPARE(root->initialValue().dictionaryRef().keys().first(), recordText);
        number->setValue(u"7"_s);
        QCOMPARE(number->name(), u"7"_s);
        group->setName(u"renamed"_s);
        QCOMPARE(group->value().dictionaryRef().size(), 0);
        QCOMPARE(TreePicture::of(*root->firstChild()), u"{k = 2;}"_s);
    }

    void lookups()
    {
        const PListNodePtr root = PListNode::treeFromDictionary({{u"a"_s, integer(1)}, {u"b"_s, integer(2)}});
        QCOMPARE(root->childAtIndex(PListNode::kNotFound), nullptr);
        QCOMPARE(root->childAtIndex(2), nullptr);
        QCOMPARE(root->childAtIndex(1)->name(), u"b"_s);
        const PListNodePtr twin = PListNode::initWithName(u"b"_s, integer(2));
        QCOMPARE(root->indexOfChild(twin.get()), 1);
        QCOMPARE(root->indexOfChildIdenticalTo(twin.get()), -1);
        QCOMPARE(root->indexOfChildIdenticalTo(root->childAtIndex(1).get()), 1);
        // An equal stranger is not removed, nor its own parent's link touched.
        const PListNodePtr holder = PListNode::initFromDictionary({}, u"h"_s);
        holder->insertChild(twin, 0);
        root->removeChild(twin);
        QCOMPARE(twin->nodeParent(), holder.get());
        QCOMPARE(childNames(*root), u"a,b"_s);
        holder->removeChild(twin);
        QCOMPARE(root->childAtIndex(1)->nodeParent(), root.get());
        // Inserting beyond the end is refused and leaves both alone.
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(u"beyond bounds"_s));
        QVERIFY(!root->insertChild(twin, 3));
        QCOMPARE(TreePicture::of(*root), u"{a = 1; b = 2;}"_s);
        QCOMPARE(twin->nodeParent(), nullptr);

        const PListNodePtr deep = PListNode::treeFromDictionary({{u"d"_s, PropertyDictionary{{u"e"_s, integer(1)}}}});
        const PListNode *e = deep->firstChild()->firstChild().get();
        QVERIFY(e->isDescendantOfNode(deep.get()) && e->isDescendantOfNode(e));
        QVERIFY(!deep->isDescendantOfNode(e) && !e->isDescendantOfNode(root.get()) && !e->isDescendantOfNode(nullptr));
        QVERIFY(e->isDescendantOfNodeInArray({twin, deep}));
        QVERIFY(!e->isDescendantOfNodeInArray({twin, root}));
    }

    void equality_data()
    {
        QTest::addColumn<PropertyList>("left");
        QTest::addColumn<PropertyList>("right");
        QTest::addColumn<bool>("expected");
        const PropertyList full(PropertyDictionary{{u"k"_s, integer(1)}});
        QTest::newRow("numbers equal by value across widths") << integer(1) << PropertyList::integer(1, 'q') << true;
        QTest::newRow("an integer never equals a real") << integer(1) << PropertyList::real(1.0) << false;
        QTest::newRow("no children equals a node with some") << PropertyList(PropertyDictionary()) << full << true;
        QTest::newRow("children are compared when present") << full << PropertyList(PropertyDictionary()) << false;
        QTest::newRow("children compared by position")
            << PropertyList(PropertyArray{u"a"_s, u"b"_s}) << PropertyList(PropertyArray{u"b"_s, u"a"_s}) << false;
        QTest::newRow("array against dictionary")
            << PropertyList(PropertyArray()) << PropertyList(PropertyDictionary()) << false;
    }

    void equality()
    {
        QFETCH(PropertyList, left);
        QFETCH(PropertyList, right);
        QFETCH(bool, expected);
        QCOMPARE(nodeFor(left)->isEqualToNode(*nodeFor(right)), expected);
        QVERIFY(!nodeFor(left, u"m"_s)->isEqualToNode(*nodeFor(left)));
    }

    void copyIsDeepAndStandalone()
    {
        const PListNodePtr root =
            PListNode::treeFromDictionary({{u"d"_s, PropertyDictionary{{u"a"_s, PropertyArray{integer(1)}}}}});
        const PListNodePtr source = root->firstChild();
        source->setCanEdit(false);
        const PListNodePtr copy = source->copy();
        QCOMPARE(copy->nodeParent(), nullptr);
        QCOMPARE(root->numberOfChildren(), 1);
        QVERIFY(copy->isEqualToNode(*source) && source->isEqualToNode(*copy));
        QVERIFY(!copy->firstChild()->firstChild()->canEdit());
        QCOMPARE(copy->firstChild()->nodeParent(), copy.get());
        copy->firstChild()->setName(u"renamed"_s);
        copy->firstChild()->removeChild(copy->firstChild()->firstChild());
        QCOMPARE(TreePicture::of(*root), u"{d = {a = (1);};}"_s);
    }

    // Undo records and the pasteboard keep nodes alive after their tree is
    // gone: none of them may reach into it any more.
    void nodesOutliveTheirTree()
    {
        const PropertyDictionary content{{u"d"_s, PropertyDictionary{{u"k"_s, integer(1)}}}};
        PListNodePtr root = PListNode::treeFromDictionary(content);
        const PListNodePtr copy = root->firstChild()->copy();
        root.reset();
        copy->setName(u"renamed"_s);
        QCOMPARE(copy->name(), u"renamed"_s);

        root = PListNode::treeFromDictionary(content);
        const PListNodePtr kept = root->firstChild();
        root.reset();
        QCOMPARE(kept->nodeParent(), nullptr);
        QCOMPARE(kept->firstChild()->nodeParent(), kept.get());
        kept->firstChild()->setValue(integer(2));
        QCOMPARE(TreePicture::of(*kept), u"{k = 2;}"_s);
    }

    // A copy of a filtered entry answers what the real entry answered, with no
    // link into the real tree.
    void searchCopyCopiesItsReference()
    {
        PListNodePtr real = PListNode::initWithName(u"k"_s, integer(1));
        const PListNodePtr stand = PListNode::initWithName(u"other"_s, integer(2));
        stand->setSearchReference(real.get());
        const PListNodePtr copy = stand->copy();
        stand->setSearchReference(nullptr);
        real.reset();
        QCOMPARE(copy->searchReference(), nullptr);
        QCOMPARE(copy->name(), u"k"_s);
        QCOMPARE(copy->initialValue(), integer(1));
    }

    void archiveRoundTrip()
    {
        const PListNodePtr root = PListNode::treeFromDictionary(
            {{u"s"_s, u"text"_s},
             {u"list"_s, PropertyArray{PropertyList::real(0.5, 'f'), PropertyList::boolean(true),
                                       PropertyDictionary{{u"d"_s, PropertyList(QByteArray("\0\1", 2))}}}},
             {u"when"_s, PropertyList::date(1.0e8)},
             {u"uid"_s, PropertyList::uid(3)}});
        const PListNodePtr back = throughArchive(*root);
        QVERIFY(back);
        QVERIFY(back->isEqualToNode(*root) && root->isEqualToNode(*back));
        QVERIFY(back->initialValue().isIdenticalTo(root->initialValue()));
        QCOMPARE(back->childWithName(u"uid"_s)->menu(), int(NoClass));
        QVERIFY(back->childWithName(u"list"_s)->childAtIndex(1)->valueIsBool());
        const PListNodePtr deep = back->childWithName(u"list"_s)->lastChild()->firstChild();
        QCOMPARE(deep->nodeParent(), back->childWithName(u"list"_s)->lastChild().get());
        QVERIFY(!back->canEdit() && !deep->canEdit());
        root->insertChild(back, 0);
        QVERIFY(deep->canEdit());
        // The archive comes from the pasteboard: a tag this build does not know is no class.
        ArchivedNode archived = root->firstChild()->encodeWithCoder();
        archived.menuValue = integer(99);
        QCOMPARE(PListNode::initWithCoder(archived)->menu(), int(NoClass));
    }

    void editabilityFollowsParent()
    {
        const PListNodePtr root = PListNode::treeFromDictionary({{u"d"_s, PropertyDictionary{{u"e"_s, integer(1)}}}});
        const PListNodePtr group = root->firstChild(), deep = group->firstChild();
        root->setCanEdit(false);
        QVERIFY(!deep->canEdit());
        root->setCanEdit(true);
        group->removeFromParent();
        QVERIFY(!group->canEdit() && !deep->canEdit());
        root->insertChild(group, 0);
        QVERIFY(deep->canEdit());
    }

    void corpusFiles_data()
    {
        QTest::addColumn<PropertyList>("original");
        ORVANE_REQUIRE_CORPUS();
        const QStringList paths = Corpus::files(u"plists/binary"_s) + Corpus::files(u"plists/xml"_s);
        for (const QString &path : paths) {
            const auto read = PropertyListSerialization::readFile(path);
            if (read && read.value.value.isDictionary())
                QTest::newRow(qPrintable(path.section(u'/', -2))) << read.value.value;
        }
    }

    // Built, sorted, copied and archived, a real file's tree still stands for the file.
    void corpusFiles()
    {
        QFETCH(PropertyList, original);
        const PListNodePtr root = PListNode::treeFromDictionary(original.dictionaryRef());
        root->recursiveSortChildren();
        QVERIFY(sortedAndLinked(*root));
        QVERIFY(root->initialValue().isIdenticalTo(original));
        QVERIFY(root->copy()->initialValue().isIdenticalTo(original));
        const PListNodePtr back = throughArchive(*root);
        QVERIFY(back && back->isEqualToNode(*root));
        QVERIFY(back->initialValue().isIdenticalTo(original));
    }
};

ORVANE_TEST(PListNodeTreeTest)
#include "PListNodeTreeTest.moc"
