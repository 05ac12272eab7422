#pragma once

#include "ReadResult.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The text of an XML property list: the bytes decoded once to UTF-16 with the
// encoding chosen as the platform chooses it (byte-order mark; a NUL in the first
// bytes for unmarked UTF-16; the declaration's encoding="…"; otherwise UTF-8),
// and the way back from a place in that text to line, column and byte offset
// for error messages.
class XmlText {
public:
    enum class Form { Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE, Latin1, Ascii, Named };

    // What the first bytes alone say: a byte-order mark, or NULs that only
    // 16- or 32-bit units put there. `announced` is false for plain 8-bit text.
    struct UnicodeForm {
        Form form = Form::Utf8;
        int markLength = 0;
        bool announced = false;
    };
    static UnicodeForm unicodeForm(QByteArrayView bytes);

    // Empty input, invalid UTF-8 (with its byte offset), lone surrogates, bytes
    // outside the declared charset and charsets Qt cannot decode are BadEncoding.
    // A declared 16- or 32-bit charset in 8-bit text is read as UTF-8, with a warning.
    static ReadResult<XmlText> decode(const QByteArray &bytes);

    const QString &text() const { return m_text; }
    // Line and column (1-based, in UTF-16 units) of text()[index], which may be
    // the end, and its byte offset when the encoding lets it be known.
    SourcePosition positionOf(qsizetype index) const;
    // Readers collect warnings with an index into text() as the offset; this
    // gives them their full positions, in one pass, and puts them in text order.
    void placeWarnings(QList<ReadWarning> &warnings) const;

private:
    QString m_text;
    Form m_form = Form::Utf8;
    int m_markLength = 0;
};
