// Value classes of the node tree: typed values converted to a node's class,
// class changes converting the value, array elements renamed by value, search
// copies editing the real node, and what the view is told to draw.
#include "TestRegistry.h"
#include "TreePicture.h"

#include "model/PListNode.h"

#include <QScopeGuard>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

// 2007-03-14 09:30:00 +0100 in seconds since 2001-01-01 UTC.
constexpr double kMarch14 = 195553800.0;

PropertyList str(const QString &text) { return PropertyList(text); }

// A leaf under an editable dictionary root, so it can be edited as in a document.
struct Leaf {
    PListNodePtr root;
    PListNodePtr node;
};

Leaf leafWith(const PropertyList &value)
{
    Leaf leaf{PListNode::treeFromDictionary({}), PListNode::initWithName(u"key"_s, value)};
    leaf.root->setCanEdit(true);
    leaf.root->insertChild(leaf.node, 0);
    return leaf;
}

} // namespace

using StyleColour = RenditionStyle::Colour;
Q_DECLARE_METATYPE(Rendition)
Q_DECLARE_METATYPE(StyleColour)

class PListNodeValueTest : public QObject {
    Q_OBJECT

private slots:
    // display: null for the expected value's description; a boolean value reads as one.
    void setValue_data()
    {
        QTest::addColumn<PropertyList>("initial");
        QTest::addColumn<PropertyList>("input");
        QTest::addColumn<PropertyList>("expected"); // compared with the type code
        QTest::addColumn<QString>("display");

        const auto i = [](qint64 v, char code) { return PropertyList::integer(v, code); };
        const auto u = [](quint64 v, char code) { return PropertyList::unsignedInteger(v, code); };
        const auto r = [](double v, char code = 'd') { return PropertyList::real(v, code); };
        const PropertyList yes = PropertyList::boolean(true), no = PropertyList::boolean(false);
        const PropertyList data(QByteArray("\x01\x02", 2));
        QTest::newRow("string-takes-number-text") << str(u"a"_s) << i(5, 'q') << str(u"5"_s) << QString();
        QTest::newRow("integer-leading-number") << i(1, 'q') << str(u"12abc"_s) << i(12, 'q') << QString();
        QTest::newRow("integer-text-clamps-to-int")
            << i(1, 'q') << str(u"99999999999"_s) << i(2147483647, 'q') << QString();
        QTest::newRow("unsigned-int-minus-one-wraps")
            << u(1, 'I') << str(u"-1"_s) << u(4294967295u, 'I') << u"4294967295"_s;
        QTest::newRow("short-wraps-past-32767") << i(1, 's') << str(u"40000"_s) << i(-25536, 's') << QString();
        QTest::newRow("real-number-truncates") << i(1, 'q') << r(-2.9) << i(-2, 'q') << u"-2"_s;
        QTest::newRow("huge-real-saturates")
            << i(1, 'q') << r(1e300) << i(9223372036854775807LL, 'q') << u"9223372036854775807"_s;
        QTest::newRow("float-stays-float") << r(1, 'f') << str(u"0.1"_s) << r(0.1, 'f') << u"0.1"_s;
        QTest::newRow("float-overflow-is-infinity")
            << r(1, 'f') << r(1e300) << r(std::numeric_limits<double>::infinity(), 'f') << QString();
        QTest::newRow("bool-Yes-is-false") << yes << str(u"Yes"_s) << no << u"false"_s;
        QTest::newRow("bool-fraction-number-is-true") << no << r(0.5) << yes << u"true"_s;
        QTest::newRow("date-parses-description-format") << PropertyList::date(0) << str(u"2007-03-14 09:30:00 +0100"_s)
                                                        << PropertyList::date(kMarch14) << QString();
        QTest::newRow("date-bad-text-changes-nothing")
            << PropertyList::date(0) << str(u"hello"_s) << PropertyList::date(0) << QString();
        QTest::newRow("data-is-not-edited") << data << str(u"abc"_s) << data << u"(Data Item)"_s;
    }

    void setValue()
    {
        QFETCH(PropertyList, initial);
        QFETCH(PropertyList, input);
        QFETCH(PropertyList, expected);
        QFETCH(QString, display);
        const Leaf leaf = leafWith(initial);
        leaf.node->setValue(input);
        QVERIFY2(leaf.node->value().isIdenticalTo(expected),
                 qPrintable(leaf.node->value().description() + u" code "_s +
                            QChar::fromLatin1(leaf.node->value().typeCode())));
        QCOMPARE(leaf.node->stringValue(), display.isNull() ? expected.description() : display);
        QCOMPARE(leaf.node->valueIsBool(), expected.isBoolean());
        QCOMPARE(leaf.node->name(), u"key"_s); // only array elements are renamed
    }

    void setMenu_data()
    {
        QTest::addColumn<PropertyList>("initial");
        QTest::addColumn<int>("tag");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<PropertyList>("expected");
        QTest::addColumn<QString>("display"); // null: the expected value's description
        QTest::addColumn<bool>("isBool");

        const PropertyList yes = PropertyList::boolean(true), hello = str(u"hello"_s);
        QTest::newRow("string-to-integer-reads-int")
            << str(u"2.5"_s) << 2 << true << PropertyList::integer(2, 'i') << u"2"_s << false;
        QTest::newRow("string-to-float-is-float")
            << str(u"2.5"_s) << 3 << true << PropertyList::real(2.5, 'f') << u"2.5"_s << false;
        QTest::newRow("long-long-clamps-to-int") << PropertyList::integer(5000000000LL) << 2 << true
                                                 << PropertyList::integer(2147483647, 'i') << QString() << false;
        QTest::newRow("string-yes-to-boolean") << str(u"yes"_s) << 4 << true << yes << u"true"_s << true;
        QTest::newRow("boolean-to-string-keeps-flag") << yes << 0 << true << str(u"1"_s) << u"1"_s << true;
        QTest::newRow("date-text-to-date")
            << str(u"2007-03-14 09:30:00 +0100"_s) << 5 << true << PropertyList::date(kMarch14) << QString() << false;
        QTest::newRow("hello-to-date-fails") << hello << 5 << false << hello << u"hello"_s << false;
        QTest::newRow("to-data-refused") << hello << 1 << false << hello << u"hello"_s << false;
        QTest::newRow("beyond-seven-refused") << hello << 8 << false << hello << u"hello"_s << false;
    }

    void setMenu()
    {
        QFETCH(PropertyList, initial);
        QFETCH(int, tag);
        QFETCH(bool, accepted);
        QFETCH(PropertyList, expected);
        QFETCH(QString, display);
        QFETCH(bool, isBool);
        const Leaf leaf = leafWith(initial);
        QCOMPARE(leaf.node->setMenu(tag), accepted);
        QCOMPARE(leaf.node->menu(), tag); // stored even when refused
        QVERIFY2(leaf.node->value().isIdenticalTo(expected), qPrintable(leaf.node->value().description()));
        QCOMPARE(leaf.node->stringValue(), display.isNull() ? expected.description() : display);
        QCOMPARE(leaf.node->valueIsBool(), isBool);
    }

    // An array element is named after its value as typed, unless the value is refused.
    void arrayElementIsRenamed()
    {
        const PListNodePtr root =
            PListNode::treeFromDictionary({{u"s"_s, PropertyArray{str(u"a"_s), str(u"b"_s)}},
                                           {u"n"_s, PropertyArray{PropertyList::integer(1), PropertyList::integer(2)}},
                                           {u"d"_s, PropertyArray{PropertyList::date(0), PropertyList::date(2)}}});
        root->setCanEdit(true);
        const auto second = [&root](const QString &list) { return root->childWithName(list)->childAtIndex(1); };
        second(u"s"_s)->setValue(str(u"z"_s));
        second(u"n"_s)->setValue(str(u"12abc"_s));
        second(u"d"_s)->setValue(str(u"soon"_s));
        QCOMPARE(second(u"s"_s)->name(), u"z"_s);
        QCOMPARE(second(u"n"_s)->name(), u"12abc"_s);
        QCOMPARE(second(u"d"_s)->name(), PropertyList::date(2).description());
        QCOMPARE(second(u"n"_s)->displayName(), u"Item 2"_s);
        QCOMPARE(TreePicture::of(*root->childWithName(u"s"_s)), u"(a, z)"_s);
        QCOMPARE(TreePicture::of(*root->childWithName(u"n"_s)), u"(1, 12)"_s);
    }

    void searchCopies()
    {
        // A filtered tree holding the real entry and only the real array's second element.
        const PListNodePtr root = PListNode::treeFromDictionary(
            {{u"count"_s, PropertyList::integer(4, 'I')}, {u"list"_s, PropertyArray{str(u"x"_s), str(u"y"_s)}}});
        const PListNodePtr realList = root->childWithName(u"list"_s);
        const PListNodePtr copy = PListNode::initWithName(u"count"_s, str(u"stale"_s));
        copy->setSearchReference(root->childWithName(u"count"_s).get());
        const PListNodePtr filtered = PListNode::initFromArray({str(u"y"_s)}, u"list"_s);
        filtered->setSearchReference(realList.get());
        filtered->childAtIndex(0)->setSearchReference(realList->childAtIndex(1).get());

        copy->setValue(str(u"-1"_s)); // converted in the real node's own width
        QCOMPARE(copy->stringValue(), u"4294967295"_s);
        QVERIFY(copy->setMenu(StringClass));
        QCOMPARE(TreePicture::of(*root), u"{count = 4294967295; list = (x, y);}"_s);
        QCOMPARE(root->childWithName(u"count"_s)->menu(), int(StringClass));

        QCOMPARE(filtered->childAtIndex(0)->displayName(), u"Item 2"_s); // the real position
        QCOMPARE(filtered->countedText(), u"1 Item"_s);                  // its own children
        QCOMPARE(realList->countedText(), u"2 Items"_s);
        QCOMPARE(PListNode::initFromArray({}, u"e"_s)->countedText(), u"0 Items"_s);
    }

    void style_data()
    {
        QTest::addColumn<Rendition>("rendition");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<bool>("custom");
        QTest::addColumn<bool>("itemCount");
        QTest::addColumn<StyleColour>("colour");
        QTest::addColumn<QString>("customColor");
        const QString text = u"0.1 0.2 0.3 1"_s, disabled = u"0.5 0.5 0.5 1"_s;
        QTest::newRow("editable-custom") << Rendition::Normal << true << true << false << StyleColour::CustomText
                                         << text;
        QTest::newRow("locked-disabled") << Rendition::Normal << false << false << false << StyleColour::DisabledText
                                         << QString();
        QTest::newRow("locked-custom-disabled")
            << Rendition::Normal << false << true << false << StyleColour::CustomDisabled << disabled;
        QTest::newRow("count-custom-disabled")
            << Rendition::Normal << true << true << true << StyleColour::CustomDisabled << disabled;
        QTest::newRow("selected-ignores-custom")
            << Rendition::Selected << false << true << false << StyleColour::AlternateSelectedText << QString();
        QTest::newRow("background-selected-standard")
            << Rendition::BackgroundSelected << false << true << true << StyleColour::StandardText << QString();
    }

    void style()
    {
        QFETCH(Rendition, rendition);
        QFETCH(bool, editable);
        QFETCH(bool, custom);
        QFETCH(bool, itemCount);
        QFETCH(StyleColour, colour);
        QFETCH(QString, customColor);
        const Leaf leaf = leafWith(str(u"v"_s));
        leaf.node->setCanEdit(editable);
        const RenditionSettings settings{u"Menlo"_s, 13, custom, u"0.1 0.2 0.3 1"_s, u"0.5 0.5 0.5 1"_s};

        const RenditionStyle result = leaf.node->style(rendition, settings, itemCount);
        QCOMPARE(result.colour, colour);
        QCOMPARE(result.customColor, customColor);
        QVERIFY(result.fontName == u"Menlo"_s && result.fontSize == 13.0);
    }

};

ORVANE_TEST(PListNodeValueTest)
#include "PListNodeValueTest.moc"
