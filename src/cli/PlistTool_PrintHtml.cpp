// orvane-plist print-html: a document's printed text as an HTML page, so the
// colouring a window prints with can be seen and checked without a printer.
#include "PlistTool.h"

#include "document/PrintSyntaxColoring.h"
#include "document/plistDocument.h"

#include <QFileInfo>

int PlistTool::printHtml(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return usage(QStringLiteral("print-html takes one file"));
    const QString &path = arguments.first();
    QString error;
    const auto document = openDocument(path, &error);
    if (!document)
        return fail(error);
    const QString text = PrintSyntaxColoring::printText(*document, &error);
    if (text.isEmpty())
        return fail(QStringLiteral("%1 cannot be printed: %2").arg(path, error));
    m_out << PrintSyntaxColoring::htmlFromColoredText(text, PrintSyntaxColoring::colorString(text),
                                                      QFileInfo(path).fileName());
    return 0;
}
