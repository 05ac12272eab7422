#pragma once

#include <QString>

// What went wrong while reading untrusted bytes. Every reader (the property-list
// codecs, the sequential archive, later the defaults text) reports through these.
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
    // For example "line 3, column 7" or "object 12 at byte 345".
    QString toString() const;
};

// The outcome of a read: the value on success, otherwise the status, the
// position and a message that says what is wrong, for the user.
template <typename T>
struct ReadResult {
    T value{};
    ReadStatus status = ReadStatus::Ok;
    SourcePosition position;
    QString message;

    explicit operator bool() const { return status == ReadStatus::Ok; }
    bool ok() const { return status == ReadStatus::Ok; }

    static ReadResult success(T v)
    {
        ReadResult r;
        r.value = std::move(v);
        return r;
    }
    static ReadResult failure(ReadStatus s, SourcePosition where, QString text)
    {
        ReadResult r;
        r.status = s;
        r.position = where;
        r.message = std::move(text);
        return r;
    }
    // Carries another reader's failure over to this result type.
    template <typename U>
    static ReadResult failure(const ReadResult<U> &other)
    {
        return failure(other.status, other.position, other.message);
    }

    // "message (line 3, column 7)", or the message alone when the place is unknown.
    QString errorText() const
    {
        return position.isKnown() ? message + QStringLiteral(" (") + position.toString() + QLatin1Char(')')
                                  : message;
    }
};
