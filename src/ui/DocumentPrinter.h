#pragma once

#include <memory>

class QPrinter;
class QWidget;
class plistDocument;

// Prints a document as the XML text of its real tree, coloured by syntax, in
// the fixed-pitch font at 9 points, and keeps each document's print settings.
// The core document cannot hold a QtGui type, so the settings live in a child
// object of the document and go with it.
namespace DocumentPrinter {

// The document's print settings, made on first use from the application's
// shared ones, with margins of 18 points left and right and 36 top and bottom.
// Owned by the document.
QPrinter *printInfo(plistDocument *document);
// Replaces the document's print settings (none: made again on next use); a
// panel still open on the old ones is closed.
void setPrintInfo(plistDocument *document, std::unique_ptr<QPrinter> printer);

// With showPanels, a print panel on window first and printing when it is
// accepted; without, straight to the printer of the print settings. A value
// that cannot be written as XML prints nothing (the reason goes to the log).
void printShowingPrintPanel(plistDocument *document, QWidget *window, bool showPanels);
// The printed pages in a preview on window.
void printPreview(plistDocument *document, QWidget *window);
// The page setup panel on window, for the document's print settings.
void runPageLayout(plistDocument *document, QWidget *window);

} // namespace DocumentPrinter
