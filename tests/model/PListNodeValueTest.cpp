// Value classes of the node tree: typed values converted to a node's class,
// class changes converting the value, array elements renamed by value, search
// copies editing the real node, and what the view is told to draw.
#include "TestRegistry.h"
#include "TreePicture.h"

#include "model/PListNode.h"

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

// Records every refresh notice as "name:what".
class Recorder : public PListNodeObserver {
public:
    QStringList seen;
    void nodeNeedsRefresh(const PListNode &node, NodeRefresh what) override
    {
        static const char *const names[] = {"Name", "Value", "Class", "Count"};
        seen << node.name() + u':' + QLatin1String(names[static_cast<int>(what)]);
    }
};

} // namespace

using StyleColour = RenditionStyle::Colour;
Q_DECLARE_METATYPE(Rendition)
Q_DECLARE_METATYPE(StyleColour)

class PListNodeValueTest : public QObject {
    Q_OBJECT

private slots:
    void setValue_data();
    void setValue();
    void setMenu_data();
    void setMenu();
    void arrayElementIsRenamed_data();
    void arrayElementIsRenamed();
    void searchCopies();
    void style_data();
    void style();
    void refreshNotices_data();
    void refreshNotices();
};

void PListNodeValueTest::setValue_data()
{
    QTest::addColumn<PropertyList>("initial");
    QTest::addColumn<PropertyList>("input");
    QTest::addColumn<PropertyList>("expected"); // compared with the type code
    QTest::addColumn<QString>("display");       // null: the expected value's description
    QTest::addColumn<bool>("isBool");

    const auto i = [](qint64 v, char code) { return PropertyList::integer(v, code); };
    const auto u = [](quint64 v, char code) { return PropertyList::unsignedInteger(v, code); };
    const PropertyList yes = PropertyList::boolean(true);
    const PropertyList no = PropertyList::boolean(false);

    QTest::newRow("string-takes-number-description") << str(u"a"_s) << i(5, 'q') << str(u"5"_s) << u"5"_s << false;
    QTest::newRow("integer-leading-number") << i(1, 'q') << str(u"12abc"_s) << i(12, 'q') << u"12"_s << false;
    QTest::newRow("integer-text-clamps-to-int") << i(1, 'q') << str(u"99999999999"_s) << i(2147483647, 'q')
                                                << u"2147483647"_s << false;
    QTest::newRow("unsigned-int-minus-one-wraps") << u(1, 'I') << str(u"-1"_s) << u(4294967295u, 'I')
                                                  << u"4294967295"_s << false;
    QTest::newRow("unsigned-short-minus-one-wraps") << u(1, 'S') << str(u"-1"_s) << u(65535, 'S') << u"65535"_s << false;
    QTest::newRow("short-wraps-past-32767") << i(1, 's') << str(u"40000"_s) << i(-25536, 's') << u"-25536"_s << false;
    QTest::newRow("unsigned-long-long-minus-one") << u(1, 'Q') << str(u"-1"_s) << u(18446744073709551615u, 'Q')
                                                  << u"18446744073709551615"_s << false;
    QTest::newRow("int-number-keeps-low-32-bits") << i(1, 'i') << i(4294967297LL, 'q') << i(1, 'i') << u"1"_s << false;
    QTest::newRow("real-number-truncates") << i(1, 'q') << PropertyList::real(-2.9) << i(-2, 'q') << u"-2"_s << false;
    QTest::newRow("negative-real-into-unsigned-int") << u(1, 'I') << PropertyList::real(-1.0) << u(4294967295u, 'I')
                                                     << u"4294967295"_s << false;
    QTest::newRow("huge-real-saturates") << i(1, 'q') << PropertyList::real(1e300) << i(9223372036854775807LL, 'q')
                                         << u"9223372036854775807"_s << false;
    QTest::newRow("big-real-into-unsigned-long-long") << u(1, 'Q') << PropertyList::real(1e19)
                                                      << u(10000000000000000000u, 'Q') << u"10000000000000000000"_s << false;
    QTest::newRow("boolean-number-into-integer") << i(1, 'q') << yes << i(1, 'q') << u"1"_s << false;
    QTest::newRow("double-reads-leading-number") << PropertyList::real(1) << str(u"2.5e1x"_s) << PropertyList::real(25)
                                                 << u"25"_s << false;
    QTest::newRow("float-stays-float") << PropertyList::real(1, 'f') << str(u"0.1"_s) << PropertyList::real(0.1, 'f')
                                       << u"0.1"_s << false;
    QTest::newRow("float-overflow-is-infinity")
        << PropertyList::real(1, 'f') << PropertyList::real(1e300)
        << PropertyList::real(std::numeric_limits<double>::infinity(), 'f') << QString() << false;
    QTest::newRow("bool-one-is-true") << no << str(u"1"_s) << yes << u"true"_s << true;
    QTest::newRow("bool-Yes-is-false") << yes << str(u"Yes"_s) << no << u"false"_s << true;
    QTest::newRow("bool-zero-number-is-false") << yes << i(0, 'q') << no << u"false"_s << true;
    QTest::newRow("bool-fraction-number-is-true") << no << PropertyList::real(0.5) << yes << u"true"_s << true;
    QTest::newRow("date-parses-description-format")
        << PropertyList::date(0) << str(u"2007-03-14 09:30:00 +0100"_s) << PropertyList::date(kMarch14) << QString()
        << false;
    QTest::newRow("date-bad-text-changes-nothing") << PropertyList::date(0) << str(u"hello"_s) << PropertyList::date(0)
                                                   << QString() << false;
    QTest::newRow("data-is-not-edited") << PropertyList(QByteArray("\x01\x02", 2)) << str(u"abc"_s)
                                        << PropertyList(QByteArray("\x01\x02", 2)) << u"(Data Item)"_s << false;
}

void PListNodeValueTest::setValue()
{
    QFETCH(PropertyList, initial);
    QFETCH(PropertyList, input);
    QFETCH(PropertyList, expected);
    QFETCH(QString, display);
    QFETCH(bool, isBool);

    const Leaf leaf = leafWith(initial);
    leaf.node->setValue(input);
    QVERIFY2(leaf.node->value().isIdenticalTo(expected),
             qPrintable(leaf.node->value().description() + u" code "_s + QChar::fromLatin1(leaf.node->value().typeCode())));
    QCOMPARE(leaf.node->stringValue(), display.isNull() ? expected.description() : display);
    QCOMPARE(leaf.node->valueIsBool(), isBool);
    QCOMPARE(leaf.node->name(), u"key"_s); // only array elements are renamed
}

void PListNodeValueTest::setMenu_data()
{
    QTest::addColumn<PropertyList>("initial");
    QTest::addColumn<int>("tag");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<PropertyList>("expected");
    QTest::addColumn<QString>("display"); // null: the expected value's description
    QTest::addColumn<bool>("isBool");

    const PropertyList yes = PropertyList::boolean(true);
    const PropertyList hello = str(u"hello"_s);

    QTest::newRow("integer-to-string") << PropertyList::integer(3) << 0 << true << str(u"3"_s) << u"3"_s << false;
    QTest::newRow("string-to-integer-reads-int") << str(u"2.5"_s) << 2 << true << PropertyList::integer(2, 'i')
                                                 << u"2"_s << false;
    QTest::newRow("string-to-float-is-float") << str(u"2.5"_s) << 3 << true << PropertyList::real(2.5, 'f')
                                              << u"2.5"_s << false;
    QTest::newRow("long-long-clamps-to-int") << PropertyList::integer(5000000000LL) << 2 << true
                                             << PropertyList::integer(2147483647, 'i') << u"2147483647"_s << false;
    QTest::newRow("string-yes-to-boolean") << str(u"yes"_s) << 4 << true << yes << u"true"_s << true;
    QTest::newRow("number-to-boolean-by-truth") << PropertyList::real(0.25) << 4 << true << yes << u"true"_s << true;
    QTest::newRow("boolean-to-string-keeps-flag") << yes << 0 << true << str(u"1"_s) << u"1"_s << true;
    QTest::newRow("date-text-to-date") << str(u"2007-03-14 09:30:00 +0100"_s) << 5 << true
                                       << PropertyList::date(kMarch14) << QString() << false;
    QTest::newRow("date-stays-date") << PropertyList::date(kMarch14) << 5 << true << PropertyList::date(kMarch14)
                                     << QString() << false;
    QTest::newRow("hello-to-date-fails") << hello << 5 << false << hello << u"hello"_s << false;
    QTest::newRow("to-data-refused") << hello << 1 << false << hello << u"hello"_s << false;
    QTest::newRow("beyond-seven-refused") << hello << 8 << false << hello << u"hello"_s << false;
}

void PListNodeValueTest::setMenu()
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

void PListNodeValueTest::arrayElementIsRenamed_data()
{
    QTest::addColumn<PropertyArray>("array");
    QTest::addColumn<PropertyList>("input");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("picture");

    const PropertyArray strings{str(u"a"_s), str(u"b"_s), str(u"c"_s)};
    const PropertyArray numbers{PropertyList::integer(1), PropertyList::integer(2), PropertyList::integer(3)};
    const PropertyArray dates{PropertyList::date(0), PropertyList::date(1), PropertyList::date(2)};
    QTest::newRow("string-element") << strings << str(u"z"_s) << u"z"_s << u"(a, b, z)"_s;
    QTest::newRow("named-by-typed-text") << numbers << str(u"12abc"_s) << u"12abc"_s << u"(1, 2, 12)"_s;
    QTest::newRow("bad-date-keeps-name") << dates << str(u"soon"_s) << PropertyList::date(2).description() << QString();
}

void PListNodeValueTest::arrayElementIsRenamed()
{
    QFETCH(PropertyArray, array);
    QFETCH(PropertyList, input);
    QFETCH(QString, name);
    QFETCH(QString, picture);

    const PListNodePtr root = PListNode::treeFromDictionary({{u"list"_s, array}});
    root->setCanEdit(true);
    const PListNodePtr third = root->childWithName(u"list"_s)->childAtIndex(2);
    third->setValue(input);
    QCOMPARE(third->name(), name);
    QCOMPARE(third->displayName(), u"Item 3"_s);
    if (!picture.isNull())
        QCOMPARE(TreePicture::of(*root->childWithName(u"list"_s)), picture);
}

void PListNodeValueTest::searchCopies()
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
    QCOMPARE(filtered->countedText(), u"1 Item"_s);                   // its own children
    QCOMPARE(realList->countedText(), u"2 Items"_s);
    QCOMPARE(PListNode::initFromArray({}, u"e"_s)->countedText(), u"0 Items"_s);
}

void PListNodeValueTest::style_data()
{
    QTest::addColumn<Rendition>("rendition");
    QTest::addColumn<bool>("editable");
    QTest::addColumn<bool>("custom");
    QTest::addColumn<bool>("itemCount");
    QTest::addColumn<StyleColour>("colour");
    QTest::addColumn<QString>("customColor");

    const QString text = u"0.1 0.2 0.3 1"_s, disabled = u"0.5 0.5 0.5 1"_s;
    QTest::newRow("editable-custom") << Rendition::Normal << true << true << false << StyleColour::CustomText << text;
    QTest::newRow("locked-disabled") << Rendition::Normal << false << false << false << StyleColour::DisabledText << QString();
    QTest::newRow("locked-custom-disabled") << Rendition::Normal << false << true << false << StyleColour::CustomDisabled
                                            << disabled;
    QTest::newRow("count-custom-disabled") << Rendition::Normal << true << true << true << StyleColour::CustomDisabled
                                           << disabled;
    QTest::newRow("selected-ignores-custom") << Rendition::Selected << false << true << false
                                             << StyleColour::AlternateSelectedText << QString();
    QTest::newRow("background-selected-standard") << Rendition::BackgroundSelected << false << true << true
                                                  << StyleColour::StandardText << QString();
}

void PListNodeValueTest::style()
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
    QCOMPARE(result.fontName, u"Menlo"_s);
    QCOMPARE(result.fontSize, 13.0);
}

void PListNodeValueTest::refreshNotices_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("setValue-dictionary-entry") << u"value-entry"_s << QStringList{u"num:Value"_s, u"num:Class"_s};
    QTest::newRow("setValue-array-element-renamed")
        << u"value-element"_s << QStringList{u"9:Name"_s, u"9:Value"_s, u"9:Class"_s};
    QTest::newRow("setValue-failed-date-silent") << u"value-bad-date"_s << QStringList{};
    QTest::newRow("setMenu-converts") << u"menu-string"_s << QStringList{u"num:Value"_s, u"num:Class"_s};
    QTest::newRow("setMenu-refused-still-retagged") << u"menu-data"_s << QStringList{u"num:Class"_s};
    QTest::newRow("setName") << u"name"_s << QStringList{u"renamed:Name"_s};
    QTest::newRow("search-copy-reports-real-node") << u"copy-value"_s << QStringList{u"num:Value"_s, u"num:Class"_s};
}

void PListNodeValueTest::refreshNotices()
{
    QFETCH(QString, edit);
    QFETCH(QStringList, expected);

    const PListNodePtr root = PListNode::treeFromDictionary({{u"num"_s, PropertyList::integer(1)},
                                                             {u"when"_s, PropertyList::date(0)},
                                                             {u"list"_s, PropertyArray{str(u"a"_s)}}});
    Recorder recorder;
    PListNode::setObserver(root.get(), &recorder);
    const PListNodePtr num = root->childWithName(u"num"_s);
    const PListNodePtr copy = PListNode::initWithName(u"num"_s, PropertyList::integer(1));
    copy->setSearchReference(num.get());

    if (edit == u"value-entry")
        num->setValue(str(u"7"_s));
    else if (edit == u"value-element")
        root->childWithName(u"list"_s)->childAtIndex(0)->setValue(str(u"9"_s));
    else if (edit == u"value-bad-date")
        root->childWithName(u"when"_s)->setValue(str(u"later"_s));
    else if (edit == u"menu-string")
        num->setMenu(StringClass);
    else if (edit == u"menu-data")
        num->setMenu(DataClass);
    else if (edit == u"name")
        num->setName(u"renamed"_s);
    else if (edit == u"copy-value")
        copy->setValue(str(u"8"_s));
    PListNode::setObserver(root.get(), nullptr);
    QCOMPARE(recorder.seen, expected);
}

ORVANE_TEST(PListNodeValueTest)
#include "PListNodeValueTest.moc"
