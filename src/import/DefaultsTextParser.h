#pragma once

#include "platform/PropertyList.h"
#include "platform/ReadResult.h"

#include <QString>
#include <QStringView>

#include <optional>
#include <variant>

// What one line makes: the domain name and a dictionary with exactly one entry.
struct DefaultsEntry {
    QString domain;
    PropertyDictionary dictionary;
};

// Reads a dropped or pasted `defaults write <domain> <key> [-type] <value>`
// line into one preference entry: the domain name and a one-entry dictionary.
//
// This is not a shell. Tokens are separated by exactly one blank; a blank
// escaped with a backslash belongs to the token; a double-quoted token has no
// escapes at all. Those rules, and the odd corners they lead to (two blanks in a
// row, a quote without its partner), are what users' existing drops rely on, so
// they are kept exactly. Positions count UTF-16 units of the text.
//
// The text is untrusted (drops, pastes, fuzzing): it is consumed through an
// index, so every reading is linear in the text, and nothing here recurses.
class DefaultsTextParser {
public:
    // The text still to be read, consumed from its front. The list readers get
    // the command's working text and read on from where the command stopped.
    class WorkingText {
    public:
        // Positions in errors are counted in source; `cut` and `cutLength` say
        // which run of source was taken out before reading (the command prefix).
        explicit WorkingText(const QString &text);
        WorkingText(const QString &text, const QString &source, qsizetype cut, qsizetype cutLength);

        bool isEmpty() const { return m_position >= m_text.size(); }
        QStringView rest() const { return QStringView(m_text).mid(m_position); }
        void consume(qsizetype count) { m_position = qMin(m_position + count, m_text.size()); }
        // The index of the front of rest() in the working text, for later errors.
        qsizetype index() const { return m_position; }
        // Line and column in the source text of the unit at a working-text index.
        SourcePosition sourcePositionOf(qsizetype index) const;

    private:
        QString m_text;
        QString m_source;
        qsizetype m_position = 0;
        qsizetype m_cut = -1;
        qsizetype m_cutLength = 0;
    };

    // An entry; no entry (not a command this parser makes an entry of, with
    // nothing to report); or a failure, after which the whole drop or paste must
    // be abandoned: OutOfRange for a token that has no end or starts with a
    // blank, BadValue for a date that cannot be read. Positions are lines and
    // columns (1-based, UTF-16 units) of the text given here. An entry's
    // warnings name what was not taken as written: a repeated key, a value the
    // platform's reading changes, a list item or key left out. Never changes text.
    [[nodiscard]] static ReadResult<std::optional<DefaultsEntry>>
    dictionaryFromDefaultsString(const QString &text);
    // The items after -dict/-dict-add: key [-type] value ... A later key replaces
    // an earlier one. Success, or the failure that aborts the whole command.
    [[nodiscard]] static ReadResult<std::monostate> populateDict(PropertyDictionary &dictionary,
                                                                 WorkingText &working);
    // The items after -array/-array-add: [-type] item ...
    [[nodiscard]] static ReadResult<std::monostate> populateArray(PropertyArray &array, WorkingText &working);
};
