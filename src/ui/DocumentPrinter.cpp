#include "ui/DocumentPrinter.h"

#include "document/PrintSyntaxColoring.h"
#include "document/plistDocument.h"
#include "ui/AppearanceDefaults.h"

#include <QAbstractTextDocumentLayout>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPointer>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTextCursor>
#include <QTextDocument>

#include <array>

namespace DocumentPrinter {

namespace {

constexpr double kPointSize = 9;
// Tab stops as the platform's text system sets them by default.
constexpr double kTabIntervalPoints = 28;

// Print settings owned by an object (a document, or the application for the
// shared ones). Panels open on them close first, so none outlives the printer.
class PrintSettings : public QObject {
public:
    PrintSettings(QObject *owner, std::unique_ptr<QPrinter> settings)
        : QObject(owner), printer(std::move(settings))
    {
    }
    ~PrintSettings() override
    {
        for (const QPointer<QDialog> &dialog : std::as_const(panels))
            delete dialog.data();
    }

    std::unique_ptr<QPrinter> printer;
    QList<QPointer<QDialog>> panels;
};

PrintSettings *settingsOf(const QObject *owner)
{
    for (QObject *child : owner->children()) {
        if (auto *settings = dynamic_cast<PrintSettings *>(child))
            return settings;
    }
    return nullptr;
}

QPrinter &sharedPrintInfo()
{
    QCoreApplication *application = QCoreApplication::instance();
    if (PrintSettings *settings = settingsOf(application))
        return *settings->printer;
    return *(new PrintSettings(application, std::make_unique<QPrinter>()))->printer;
}

std::unique_ptr<QPrinter> documentPrinter(const QPrinter &shared)
{
    auto printer = std::make_unique<QPrinter>();
    printer->setOutputFormat(shared.outputFormat());
    if (shared.outputFormat() == QPrinter::NativeFormat)
        printer->setPrinterName(shared.printerName());
    printer->setOutputFileName(shared.outputFileName());
    printer->setColorMode(shared.colorMode());
    printer->setDuplex(shared.duplex());
    printer->setCopyCount(shared.copyCount());
    // Qt's page layout is never centred: the text starts at the top left margin.
    QPageLayout layout = shared.pageLayout();
    layout.setUnits(QPageLayout::Point);
    layout.setMargins(QMarginsF(18, 36, 18, 36));
    printer->setPageLayout(layout);
    return printer;
}

void fill(QTextDocument &document, const QString &text)
{
    std::array<QTextCharFormat, 3> formats;
    for (const auto color : {PrintSyntaxColoring::SyntaxColor::Brown, PrintSyntaxColoring::SyntaxColor::Blue,
                             PrintSyntaxColoring::SyntaxColor::Purple})
        formats[size_t(color)].setForeground(
            SystemAppearance::qColor(PrintSyntaxColoring::calibratedColor(color)));
    QTextCursor cursor(&document);
    qsizetype at = 0;
    for (const PrintSyntaxColoring::ColorRun &run : PrintSyntaxColoring::colorString(text)) {
        cursor.insertText(text.mid(at, run.position - at), QTextCharFormat());
        cursor.insertText(text.mid(run.position, run.length), formats[size_t(run.color)]);
        at = run.position + run.length;
    }
    cursor.insertText(text.mid(at), QTextCharFormat());
}

// Lays the coloured text out on the printer's pages, measured in its own
// pixels, and lets the text layout break the pages.
void printColoredText(const QString &text, QPrinter *printer)
{
    QTextDocument document;
    document.documentLayout()->setPaintDevice(printer);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(kPointSize);
    document.setDefaultFont(font);
    QTextOption option = document.defaultTextOption();
    option.setTabStopDistance(kTabIntervalPoints * printer->logicalDpiX() / 72.0);
    document.setDefaultTextOption(option);
    document.setDocumentMargin(0);
    const QSizeF page = printer->pageRect(QPrinter::DevicePixel).size();
    document.setPageSize(page);
    fill(document, text);

    QPainter painter;
    if (!painter.begin(printer))
        return;
    for (int index = 0; index < document.pageCount(); ++index) {
        if (index > 0)
            printer->newPage();
        const QRectF shown(QPointF(0, index * page.height()), page);
        painter.save();
        painter.translate(0, -shown.top());
        document.drawContents(&painter, shown);
        painter.restore();
    }
}

// The document's text, or nothing when it cannot be written (said in the log).
QString textOf(const plistDocument &document)
{
    QString error;
    const QString text = PrintSyntaxColoring::printText(document, &error);
    if (text.isEmpty() && !error.isEmpty())
        qWarning("got an error!\n %s", qPrintable(error));
    return text;
}

// Opens a panel on the document's print settings as a sheet of window.
void openPanel(plistDocument *document, QDialog *panel)
{
    panel->setAttribute(Qt::WA_DeleteOnClose);
    printInfo(document); // the settings the panel works on exist from here
    settingsOf(document)->panels.append(panel);
    panel->open();
}

} // namespace

QPrinter *printInfo(plistDocument *document)
{
    if (PrintSettings *settings = settingsOf(document))
        return settings->printer.get();
    return (new PrintSettings(document, documentPrinter(sharedPrintInfo())))->printer.get();
}

void setPrintInfo(plistDocument *document, std::unique_ptr<QPrinter> printer)
{
    delete settingsOf(document);
    if (printer)
        new PrintSettings(document, std::move(printer));
}

void printShowingPrintPanel(plistDocument *document, QWidget *window, bool showPanels)
{
    const QString text = textOf(*document);
    if (text.isEmpty())
        return;
    QPrinter *printer = printInfo(document);
    if (!showPanels) {
        printColoredText(text, printer);
        return;
    }
    auto *panel = new QPrintDialog(printer, window);
    QObject::connect(panel, &QDialog::accepted, panel, [text, printer] { printColoredText(text, printer); });
    openPanel(document, panel);
}

void printPreview(plistDocument *document, QWidget *window)
{
    if (textOf(*document).isEmpty())
        return;
    auto *panel = new QPrintPreviewDialog(printInfo(document), window);
    // The preview lays the pages out again whenever its settings change, from
    // the document as it is then.
    QObject::connect(panel, &QPrintPreviewDialog::paintRequested, panel,
                     [document](QPrinter *printer) { printColoredText(textOf(*document), printer); });
    openPanel(document, panel);
}

void runPageLayout(plistDocument *document, QWidget *window)
{
    openPanel(document, new QPageSetupDialog(printInfo(document), window));
}

} // namespace DocumentPrinter
