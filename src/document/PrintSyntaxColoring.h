#pragma once

#include "model/VXAdditions.h"
#include "platform/PropertyList.h"

#include <QList>
#include <QString>

class plistDocument;

// A document prints as the XML text of its real tree, coloured by syntax: tag
// contents brown, quoted text blue, element names and angle brackets purple.
// The colouring is plain text processing, so the command line's HTML page and
// the printed pages share it; only laying out pages needs the GUI.
namespace PrintSyntaxColoring {

enum class SyntaxColor { Brown, Blue, Purple };

// Positions and lengths count UTF-16 units.
struct ColorRun {
    qsizetype position = 0;
    qsizetype length = 0;
    SyntaxColor color = SyntaxColor::Brown;

    bool operator==(const ColorRun &other) const = default;
};

// The platform's named colours the printed text uses.
CalibratedColor calibratedColor(SyntaxColor color);
// "brown", "blue", "purple": the class names of the HTML page.
QString colorName(SyntaxColor color);

// The coloured runs of text, in text order: maximal runs of one colour,
// uncoloured text left out. Four passes, each overriding the earlier ones
// where they overlap: tag contents, quoted text, element names, brackets.
QList<ColorRun> colorString(const QString &text);

// The XML property-list text of the value; empty, with the reason, when the
// value cannot be written.
QString printText(const PropertyList &value, QString *error);
// The text of the document's real tree, whatever its search filter shows.
QString printText(const plistDocument &document, QString *error);

// A whole HTML page: the text in one <pre>, each run a <span> of its colour's
// class, never nested.
QString htmlFromColoredText(const QString &text, const QList<ColorRun> &runs, const QString &title);

} // namespace PrintSyntaxColoring
