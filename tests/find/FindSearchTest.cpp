// The cross-domain find over small preference folders: what it finds, how it
// counts, how the result tree is labelled and sorted; and which domain files
// the window's selected rows open.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "find/FindOpening.h"
#include "find/FindSearch.h"
#include "find/FindStrings.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(PropertyDictionary)

namespace {

PropertyList str(const QString &text)
{
    return PropertyList(text);
}
PropertyList num(qint64 value)
{
    return PropertyList::integer(value);
}

// The current user's folder holding each domain of domains as its file, and
// the application's registered defaults.
struct Account {
    Account(const PropertyDictionary &domains, const PropertyDictionary &registered)
        : defaults(service, center)
    {
        for (qsizetype i = 0; i < domains.size(); ++i)
            sandbox.writeDictionary(sandbox.userFolder() + u'/' + domains.keyAt(i) + u".plist"_s,
                                    domains.valueAt(i).toDictionary());
        defaults.registerDefaults(registered);
    }
    FindSearch::Result find(const QString &term) { return FindSearch::find(term, service, defaults); }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults;
};

} // namespace

class FindSearchTest : public QObject {
    Q_OBJECT
private slots:
    void find_data();
    void find();
    void opening_data();
    void opening();
};

void FindSearchTest::find_data()
{
    QTest::addColumn<PropertyDictionary>("domains");
    QTest::addColumn<PropertyDictionary>("registered");
    QTest::addColumn<QString>("term");
    QTest::addColumn<QString>("tree");
    QTest::addColumn<quint64>("hits");

    const PropertyDictionary none;
    auto one = [](const QString &domain, const PropertyDictionary &content) {
        return PropertyDictionary{{domain, PropertyList(content)}};
    };
    QTest::newRow("a key matching with nothing below it is an empty group")
        << one(u"com.a"_s,
               {{u"Window"_s, PropertyDictionary{{u"x"_s, num(2)}}}, {u"Windows"_s, PropertyArray{num(3)}}})
        << none << u"window"_s << u"com.a\n  Window\n  Windows\n"_s << quint64(2);
    QTest::newRow("key and value matching together count once")
        << one(u"com.a"_s, {{u"name"_s, str(u"my name"_s)}, {u"other"_s, str(u"x"_s)}}) << none << u"NAME"_s
        << u"com.a\n  name\tmy name\n"_s << quint64(1);
    QTest::newRow("numbers and booleans match by their text")
        << one(u"com.a"_s, {{u"n"_s, num(10)}, {u"b"_s, PropertyList::boolean(true)}, {u"z"_s, num(0)}})
        << none << u"1"_s << u"com.a\n  b\t1\n  n\t10\n"_s << quint64(2);
    QTest::newRow("data is found by its key, never by its content")
        << one(u"com.a"_s,
               {{u"blob"_s, PropertyList(QByteArray("abc"))}, {u"abc"_s, PropertyList(QByteArray("z"))}})
        << none << u"abc"_s << u"com.a\n  abc\t<7a>\n"_s << quint64(1);
    QTest::newRow("negation finds an entry whose key or value lacks the term")
        << one(u"com.a"_s,
               {{u"apple"_s, str(u"apple pie"_s)}, {u"b"_s, str(u"green apple"_s)}, {u"c"_s, str(u"pear"_s)}})
        << none << u"!apple"_s << u"com.a\n  b\tgreen apple\n  c\tpear\n"_s << quint64(2);
    QTest::newRow("# matches case exactly")
        << one(u"com.a"_s, {{u"Name"_s, str(u"Joe"_s)}, {u"n2"_s, str(u"joe"_s)}}) << none << u"#J"_s
        << u"com.a\n  Name\tJoe\n"_s << quint64(1);
    QTest::newRow("an empty term finds nothing")
        << one(u"com.a"_s, {{u"k"_s, str(u"v"_s)}}) << none << QString() << QString() << quint64(0);
    QTest::newRow("a domain's name is never matched")
        << one(u"com.findme"_s, {{u"k"_s, str(u"v"_s)}}) << none << u"findme"_s << QString() << quint64(0);
    QTest::newRow("global and registration domains under their own names")
        << one(u".GlobalPreferences"_s, {{u"AppleLocale"_s, str(u"en_X"_s)}})
        << PropertyDictionary{{u"VXKey"_s, str(u"en_Y"_s)}} << u"en_"_s
        << u"..NSRegistrationDomain\n  VXKey\ten_Y\n.GlobalPreferences\n  AppleLocale\ten_X\n"_s
        << quint64(2);
    QTest::newRow("array items by pruned position, sorted ignoring case and by number")
        << PropertyDictionary{{u"com.b"_s,
                               PropertyDictionary{{u"k10"_s, str(u"x"_s)}, {u"K2"_s, str(u"x"_s)}}},
                              {u"com.A"_s,
                               PropertyDictionary{
                                   {u"list"_s, PropertyArray{str(u"x"_s), str(u"y"_s),
                                                             PropertyArray{str(u"x"_s)}, str(u"x"_s)}}}}}
        << none << u"x"_s
        << u"com.A\n  list\n    Item 1\tx\n    Item 1\tx\n    Item 2\n      Item 1\tx\n"
           u"com.b\n  K2\tx\n  k10\tx\n"_s
        << quint64(5);
}

void FindSearchTest::find()
{
    QFETCH(PropertyDictionary, domains);
    QFETCH(PropertyDictionary, registered);
    QFETCH(QString, term);
    QFETCH(QString, tree);
    QFETCH(quint64, hits);
    Account account(domains, registered);
    const FindSearch::Result result = account.find(term);
    QCOMPARE(result.tree->outlineText(), tree);
    QCOMPARE(result.hits, hits);
    QCOMPARE(result.resultLine,
             hits ? u"Found %1 matches in these domains:"_s.arg(hits) : u"No match found."_s);
}

void FindSearchTest::opening_data()
{
    QTest::addColumn<QStringList>("rows");    // each row's names from its domain down
    QTest::addColumn<QStringList>("failing"); // domains whose open gives no document
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("calls"); // file name and window of each open, or the info paths

    const QStringList rows{u"com.a/outer/inner"_s, u"com.a/k"_s, u"com.b/x"_s, u"..NSRegistrationDomain/r"_s};
    QTest::newRow("open: each row its domain, retried once when nothing came")
        << rows << QStringList{u"com.b"_s} << u"open"_s
        << QStringList{u"com.a current"_s, u"com.a current"_s, u"com.b current"_s, u"com.b current"_s,
                       u"NSRegistrationDomain current"_s};
    QTest::newRow("new window: the first there, later ones opened again only when they opened")
        << rows << QStringList{u"com.b"_s} << u"new"_s
        << QStringList{u"com.a new"_s,
                       u"com.a current"_s,
                       u"com.a current"_s,
                       u"com.b current"_s,
                       u"NSRegistrationDomain current"_s,
                       u"NSRegistrationDomain current"_s};
    QTest::newRow("new window: a first row that fails is tried in the current window")
        << QStringList{u"com.b/x"_s} << QStringList{u"com.b"_s} << u"new"_s
        << QStringList{u"com.b new"_s, u"com.b current"_s};
    QTest::newRow("info: each domain file once, in selection order")
        << rows << QStringList() << u"info"_s
        << QStringList{u"/p/com.a.plist"_s, u"/p/com.b.plist"_s, u"/p/NSRegistrationDomain.plist"_s};
}

void FindSearchTest::opening()
{
    QFETCH(QStringList, rows);
    QFETCH(QStringList, failing);
    QFETCH(QString, command);
    QFETCH(QStringList, calls);
    const PropertyList hit(u"v"_s);
    const findNodePtr tree = findNode::treeFromDefDict(
        {{u"com.a"_s, PropertyDictionary{{u"k"_s, hit}, {u"outer"_s, PropertyDictionary{{u"inner"_s, hit}}}}},
         {u"com.b"_s, PropertyDictionary{{u"x"_s, hit}}},
         {u"..NSRegistrationDomain"_s, PropertyDictionary{{u"r"_s, hit}}}});
    QList<const findNode *> selected;
    for (const QString &row : rows) {
        const findNode *node = tree.get();
        for (const QString &name : row.split(u'/'))
            node = std::find_if(node->children().begin(), node->children().end(),
                                [&name](const findNodePtr &child) { return child->name() == name; })
                       ->get();
        selected.append(node);
    }
    QStringList log;
    const FindOpening::Opener opener = [&](const QString &path, bool inNewWindow) {
        const QString name = path.section(u'/', -1).chopped(6);
        log << name + (inNewWindow ? u" new"_s : u" current"_s);
        return !failing.contains(name);
    };
    if (command == u"open"_s)
        FindOpening::openFoundResult(selected, u"/p"_s, opener);
    else if (command == u"new"_s)
        FindOpening::openQuicklyInNewWindow(selected, u"/p"_s, opener);
    else
        log = FindOpening::infoPaths(selected, u"/p"_s);
    QCOMPARE(log, calls);
}

ORVANE_TEST(FindSearchTest)
#include "FindSearchTest.moc"
