#include "FuzzCheck.h"
#include "import/DefaultsTextParser.h"

#include <cstring>

namespace {

using Result = ReadResult<std::optional<DefaultsEntry>>;

bool sameResult(const Result &a, const Result &b)
{
    if (a.value.has_value() != b.value.has_value() || a.status != b.status || a.position != b.position
        || a.message != b.message || a.warnings != b.warnings)
        return false;
    return !a.value
        || (a.value->domain == b.value->domain
            && PropertyList(a.value->dictionary).isIdenticalTo(PropertyList(b.value->dictionary)));
}

// A place inside the text: lines and columns counted from 1.
bool isInside(const SourcePosition &where, const QString &text)
{
    return where.line >= 1 && where.column >= 1 && where.line <= text.count(u'\n') + 1
        && where.column <= text.size() + 1;
}

// The parser never nests: a list holds scalars only.
bool holdsOnlyScalars(const PropertyList &value)
{
    if (value.isArray()) {
        for (const PropertyList &item : value.arrayRef().items()) {
            if (item.isContainer())
                return false;
        }
    } else if (value.isDictionary()) {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        for (qsizetype index = 0; index < dictionary.size(); ++index) {
            if (dictionary.valueAt(index).isContainer())
                return false;
        }
    }
    return true;
}

// What a drop makes is written to a preference file next, and must read back
// equal. Type codes may change on the way (a file's small integers come back
// as the platform reads them), so this compares values, not codes.
// Whatever a drop makes is either saved and read back equal, or refused with a reason.
void checkWritable(const PropertyList &value)
{
    const QByteArray bytes = PropertyListSerialization::write(value, PropertyListFormat::Binary);
    if (bytes.isEmpty()) {
        if (PropertyListSerialization::writeProblem(value).isEmpty())
            std::abort();
        return;
    }
    const auto again = PropertyListSerialization::read(bytes);
    if (!again || !(again.value.value == value))
        std::abort();
}

void check(const QString &text)
{
    const Result result = DefaultsTextParser::dictionaryFromDefaultsString(text);
    if (!sameResult(result, DefaultsTextParser::dictionaryFromDefaultsString(text)))
        std::abort(); // the same drop must always mean the same thing
    for (const ReadWarning &warning : result.warnings) {
        const bool placed = warning.kind == ReadWarning::Kind::More || isInside(warning.position, text);
        if (warning.message.isEmpty() || !placed)
            std::abort();
    }
    if (!result) {
        const bool knownStatus = result.status == ReadStatus::OutOfRange || result.status == ReadStatus::BadValue;
        if (!knownStatus || result.message.isEmpty() || !isInside(result.position, text) || result.value)
            std::abort();
        return;
    }
    if (result.value) {
        const PropertyDictionary &dictionary = result.value->dictionary;
        if (dictionary.size() != 1 || !holdsOnlyScalars(dictionary.valueAt(0)))
            std::abort();
        checkWritable(PropertyList(dictionary));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const char *bytes = reinterpret_cast<const char *>(data);
    const QString text = QString::fromUtf8(bytes, static_cast<qsizetype>(size));
    check(text);
    // Most mutations lose the command prefix; put it back so the token rules get exercised.
    static const QString prefix = QStringLiteral("defaults write ");
    if (!text.contains(prefix))
        check(prefix + text);
    // The same bytes as UTF-16 units reach lone surrogates and every unit value.
    if (size >= 2) {
        QString units(static_cast<qsizetype>(size / 2), Qt::Uninitialized);
        std::memcpy(static_cast<void *>(units.data()), data, size / 2 * 2);
        check(prefix + units);
    }
    return 0;
}
