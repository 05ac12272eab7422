// The colouring of a printed document's XML text, one row per rule, and the
// HTML page the command line makes of it.
#include "DocumentFixture.h"
#include "TestRegistry.h"

#include "document/PrintSyntaxColoring.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace PrintSyntaxColoring;

namespace {

// The text with each run marked {br:…}, {bl:…} or {pu:…}; a run that is empty,
// out of order, overlapping, past the end or not maximal makes a complaint.
QString picture(const QString &text, const QList<ColorRun> &runs)
{
    static const QString tags[] = {u"br"_s, u"bl"_s, u"pu"_s};
    QString answer;
    qsizetype at = 0;
    for (qsizetype i = 0; i < runs.size(); ++i) {
        const ColorRun &run = runs.at(i);
        const bool joinsPrevious = i > 0 && run.position == at && runs.at(i - 1).color == run.color;
        if (run.length <= 0 || run.position < at || run.position + run.length > text.size() || joinsPrevious)
            return u"bad run at %1, length %2"_s.arg(run.position).arg(run.length);
        answer += text.mid(at, run.position - at) + u'{' + tags[int(run.color)] + u':' +
                  text.mid(run.position, run.length) + u'}';
        at = run.position + run.length;
    }
    return answer + text.mid(at);
}

} // namespace

class PrintSyntaxColoringTest : public QObject {
    Q_OBJECT
private slots:
    void colorString_data();
    void colorString();
    void htmlPage();
    void printTextIsTheRealTree();
};

void PrintSyntaxColoringTest::colorString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("colored");

    QTest::newRow("names and brackets purple over brown tag contents; text between tags bare")
        << u"<key>date</key>"_s << u"{pu:<key>}date{pu:</key>}"_s;
    QTest::newRow("a tag naming no element keeps brown contents") << u"<x y>"_s << u"{pu:<}{br:x y}{pu:>}"_s;
    QTest::newRow("an empty tag's name takes its slash") << u"<true/>"_s << u"{pu:<true/>}"_s;
    QTest::newRow("a name after a slash takes the slash, one inside a word is bare")
        << u"<string>up/date database</string>"_s << u"{pu:<string>}up{pu:/date} database{pu:</string>}"_s;
    QTest::newRow("a name before a slash takes it, unless a slash stands before the name")
        << u"x false/ a/date/b"_s << u"x {pu:false/} a{pu:/date}/b"_s;
    QTest::newRow("a name at the very start has nothing before it") << u"true/ key"_s << u"{pu:true/} key"_s;
    QTest::newRow("names ignore case") << u"<DICT></Dict>"_s << u"{pu:<DICT></Dict>}"_s;
    QTest::newRow("the header's quoted values are blue with their quotes")
        << u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">"_s
        << u"{pu:<}{br:?xml version=}{bl:\"1.0\"}{br: encoding=}{bl:\"UTF-8\"}{br:?}{pu:>}\n"
           "{pu:<plist}{br: version=}{bl:\"1.0\"}{pu:>}"_s;
    QTest::newRow("a quote unclosed before the next '<' is blue up to it, then scanning goes on there")
        << u"<string>6\" tall</string><string>\"x\"</string>"_s
        << u"{pu:<string>}6{bl:\" tall}{pu:</string><string>}{bl:\"x\"}{pu:</string>}"_s;
    QTest::newRow("a quote unclosed with no '<' after it is blue to the end")
        << u"a \"b"_s << u"a {bl:\"b}"_s;
    QTest::newRow("later passes win: brackets inside quotes are purple")
        << u"<a \"b>c\" d>"_s << u"{pu:<}{br:a }{bl:\"b}{pu:>}{bl:c\"} d>"_s;
    QTest::newRow("a '<' with no '>' colours only the unit after it") << u"x<abc"_s << u"x{pu:<}{br:a}bc"_s;
    QTest::newRow("a '<' ending the text colours nothing past it") << u"x<"_s << u"x{pu:<}"_s;
    QTest::newRow("brackets pair up: a '>' before any '<' and a second '<' stay bare")
        << u"> <<a> >"_s << u"> {pu:<}{br:<a}{pu:>} >"_s;
    QTest::newRow("positions count UTF-16 units")
        << u"\U0001F600\"a\"<b>"_s << u"\U0001F600{bl:\"a\"}{pu:<}{br:b}{pu:>}"_s;
}

void PrintSyntaxColoringTest::colorString()
{
    QFETCH(QString, text);
    QFETCH(QString, colored);
    QCOMPARE(picture(text, PrintSyntaxColoring::colorString(text)), colored);
}

void PrintSyntaxColoringTest::htmlPage()
{
    const QString text = u"<key>R&D</key><x>\"y\""_s;
    const QString page = htmlFromColoredText(text, PrintSyntaxColoring::colorString(text), u"a<b"_s);
    const qsizetype start = page.indexOf(u"<pre>"_s) + 5;
    QCOMPARE(page.mid(start, page.indexOf(u"</pre>"_s) - start),
             u"<span class=\"purple\">&lt;key&gt;</span>R&amp;D<span class=\"purple\">&lt;/key&gt;&lt;</span>"
             "<span class=\"brown\">x</span><span class=\"purple\">&gt;</span>"
             "<span class=\"blue\">&quot;y&quot;</span>"_s);
    QVERIFY(page.contains(u"<title>a&lt;b</title>"_s));
    for (const char *rule :
         {".brown { color: #996633; }", ".blue { color: #0000ff; }", ".purple { color: #800080; }"})
        QVERIFY2(page.contains(QLatin1StringView(rule)), rule);
}

void PrintSyntaxColoringTest::printTextIsTheRealTree()
{
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf("{Shown = 1; Hidden = 2;}"));
    document.searchDocument(u"shown"_s);
    QString error;
    const QString text = printText(document, &error);
    QVERIFY(text.startsWith(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"_s));
    QVERIFY(text.contains(u"<key>Hidden</key>"_s));
    QVERIFY(error.isEmpty());

    QVERIFY(printText(PropertyList(QString(QChar(0xD800))), &error).isEmpty());
    QVERIFY(error.contains(u"surrogate"_s));
}

ORVANE_TEST(PrintSyntaxColoringTest)
#include "PrintSyntaxColoringTest.moc"
