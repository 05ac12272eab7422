#pragma once

#include <QList>
#include <QString>

// What went wrong while reading untrusted bytes. Every reader (the property-list
// codecs, the sequential archive, the defaults text) reports through these.
enum class ReadStatus {
    Ok,
    CannotOpen,       // the file could not be opened or read
    Empty,            // no bytes at all
    Truncated,        // the input ends before the structure does
    BadHeader,        // magic bytes or declaration not recognised
    BadTrailer,       // binary trailer or offset table inconsistent
    OutOfRange,       // an offset, reference or length points outside the input
    Cycle,            // a container contains itself
    BadEncoding,      // invalid UTF-8, UTF-16, lone surrogate, or an unknown charset
    Syntax,           // text that does not follow the grammar
    BadValue,         // a well-formed element whose content is not a valid value
    Unsupported,      // a valid construct this reader refuses (entities, sets, UIDs where none may be)
    TooDeep,          // nesting beyond the documented limit
    TooLarge,         // more objects than the input could hold, or beyond the node budget
    BadVersion,       // an archive of a version this build does not know
};

// Where the problem is. Text readers fill line and column (1-based, counting
// UTF-16 units of the decoded text); every reader fills the byte offset when it
// knows it; the binary reader fills the object number.
struct SourcePosition {
    qint64 offset = -1;
    int line = 0;
    int column = 0;
    qint64 object = -1;

    bool isKnown() const { return offset >= 0 || line > 0 || object >= 0; }
    bool operator==(const SourcePosition &other) const = default;
    // For example "line 3, column 7" or "object 12 at byte 345".
    QString toString() const;
};

// Text quoted for a message: shortened, so that a broken 4 MB string stays
// readable, and with control characters spelt out so the message stays one line.
QString quotedForMessage(QStringView text);

// Something a reader resolved on its own where it could have refused the input:
// the value read is what the platform reads too, but the user may want to know
// that the file says more, or other, than the value shows.
struct ReadWarning {
    enum class Kind : quint8 {
        DuplicateKey, // a dictionary key occurs again; the message says which value was kept
        OutOfRange,   // a number beyond its type's range, read as the nearest value that fits or as infinity
        Adjusted,     // a value read as something close to what was written (a day past the month's end)
        Dropped,      // characters or items left out of the value
        Reinterpreted, // the input read in another way than it claims or looks (encoding, format)
        More,         // more warnings than are listed; the message says how many
    };
    Kind kind = Kind::Adjusted;
    SourcePosition position;
    QString message;

    bool operator==(const ReadWarning &other) const = default;
};

// A reader's warnings as it collects them. Past kLimit only a count is kept, so
// that a hostile input cannot become millions of messages; take() then ends the
// list with one saying how many more there were. Nothing is allocated until the
// first warning.
class ReadWarnings {
public:
    static constexpr qsizetype kLimit = 100;

    // False once the list is full: a caller may skip working out the place and the message.
    bool wantsMore() const { return m_list.size() < kLimit; }
    void add(ReadWarning::Kind kind, SourcePosition where, QString message);
    QList<ReadWarning> take();

private:
    QList<ReadWarning> m_list;
    qsizetype m_omitted = 0;
};

// The outcome of a read: the value on success, otherwise the status, the
// position and a message that says what is wrong, for the user. Either way the
// warnings say what the reader resolved instead of refusing.
template <typename T>
struct ReadResult {
    T value{};
    ReadStatus status = ReadStatus::Ok;
    SourcePosition position;
    QString message;
    QList<ReadWarning> warnings; // empty, without an allocation, for most input

    explicit operator bool() const { return status == ReadStatus::Ok; }
    bool ok() const { return status == ReadStatus::Ok; }

    static ReadResult success(T v, QList<ReadWarning> warnings = {})
    {
        ReadResult r;
        r.value = std::move(v);
        r.warnings = std::move(warnings);
        return r;
    }
    // A value made from another read, which keeps that read's warnings.
    template <typename U>
    static ReadResult success(T v, const ReadResult<U> &from)
    {
        return success(std::move(v), from.warnings);
    }
    static ReadResult failure(ReadStatus s, SourcePosition where, QString text, QList<ReadWarning> warnings = {})
    {
        ReadResult r;
        r.status = s;
        r.position = where;
        r.message = std::move(text);
        r.warnings = std::move(warnings);
        return r;
    }
    // Carries another reader's failure, and its warnings, over to this result type.
    template <typename U>
    static ReadResult failure(const ReadResult<U> &other)
    {
        return failure(other.status, other.position, other.message, other.warnings);
    }

    // "message (line 3, column 7)", or the message alone when the place is unknown.
    QString errorText() const
    {
        return position.isKnown() ? message + QStringLiteral(" (") + position.toString() + QLatin1Char(')')
                                  : message;
    }
};
