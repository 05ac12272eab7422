// A document printed straight to a PDF file: its settings' margins, and pages
// broken by the text layout.
#include "Corpus.h"
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "document/plistDocument.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"
#include "ui/DocumentPrinter.h"

#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Account {
    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
};

// The number of pages of a PDF file, -1 when it is none.
qsizetype pdfPages(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray bytes = file.readAll();
    if (!bytes.startsWith("%PDF-"))
        return -1;
    return QString::fromLatin1(bytes).count(QRegularExpression(u"/Type\\s*/Page\\b"_s));
}

// Prints the file's document to a PDF file; its number of pages.
qsizetype printedPages(Account &account, const QString &path)
{
    plistDocument document({{account.service, account.defaults}, account.center});
    if (!document.readFromFile(path))
        return -1;
    QPrinter *printer = DocumentPrinter::printInfo(&document);
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(account.sandbox.home() + u"/printed.pdf"_s);
    DocumentPrinter::printShowingPrintPanel(&document, nullptr, false);
    return pdfPages(printer->outputFileName());
}

} // namespace

class DocumentPrinterTest : public QObject {
    Q_OBJECT
private slots:
    void printInfoHasTheDocumentMargins();
    void longerDocumentsPrintMorePages();
    void printPanelPrintsOnAcceptAndClosesWithItsDocument();
};

void DocumentPrinterTest::printInfoHasTheDocumentMargins()
{
    Account account;
    plistDocument document({{account.service, account.defaults}, account.center});
    const QPageLayout layout = DocumentPrinter::printInfo(&document)->pageLayout();
    QCOMPARE(layout.margins(QPageLayout::Point), QMarginsF(18, 36, 18, 36));
    QCOMPARE(DocumentPrinter::printInfo(&document), DocumentPrinter::printInfo(&document));
}

void DocumentPrinterTest::longerDocumentsPrintMorePages()
{
    Account account;
    const qsizetype shortPages = printedPages(account, Corpus::testDataPath(u"sample.plist"_s));
    QCOMPARE(shortPages, 1);

    PropertyDictionary entries;
    for (int i = 0; i < 300; ++i)
        entries.insert(u"Key%1"_s.arg(i), PropertyList(u"value %1"_s.arg(i)));
    const QString longFile = account.sandbox.write(
        u"long.plist"_s, PropertyListSerialization::write(PropertyList(entries), PropertyListFormat::Xml));
    QCOMPARE_GT(printedPages(account, longFile), shortPages);
}

void DocumentPrinterTest::printPanelPrintsOnAcceptAndClosesWithItsDocument()
{
    Account account;
    QWidget window;
    const QString output = account.sandbox.home() + u"/panel.pdf"_s;
    auto document = std::make_unique<plistDocument>(
        plistDocument::Services{{account.service, account.defaults}, account.center});
    QVERIFY(document->readFromFile(Corpus::testDataPath(u"sample.plist"_s)));
    QPrinter *printer = DocumentPrinter::printInfo(document.get());
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(output);

    DocumentPrinter::printShowingPrintPanel(document.get(), &window, true);
    QPointer<QPrintDialog> panel = window.findChild<QPrintDialog *>();
    QVERIFY(panel && panel->windowModality() == Qt::WindowModal);
    QCOMPARE(pdfPages(output), -1);
    panel->accept();
    QCOMPARE(pdfPages(output), 1);

    DocumentPrinter::printShowingPrintPanel(document.get(), &window, true);
    panel = window.findChild<QPrintDialog *>();
    QVERIFY(panel);
    document.reset();
    QVERIFY(!panel);
}

ORVANE_TEST(DocumentPrinterTest)
#include "DocumentPrinterTest.moc"
