#include "PropertyListSerialization.h"

#include "BinaryPropertyListReader.h"
#include "BinaryPropertyListWriter.h"
#include "OpenStepPropertyListReader.h"
#include "XmlPropertyListReader.h"
#include "XmlPropertyListWriter.h"

#include <QFile>

#include <algorithm>

const QList<PropertyListCodec> &PropertyListSerialization::codecs()
{
    // Binary first: its magic is unambiguous. XML's sniff only says "looks like
    // markup"; read() falls back to old-style text when that guess fails.
    static const QList<PropertyListCodec> registry = {
        {PropertyListFormat::Binary, "binary1", &BinaryPropertyListReader::sniff,
         &BinaryPropertyListReader::read, &BinaryPropertyListWriter::write},
        {PropertyListFormat::Xml, "xml1", &XmlPropertyListReader::sniff,
         &XmlPropertyListReader::read, &XmlPropertyListWriter::write},
        // Old-style text has no magic and is never written (the platform refuses to).
        {PropertyListFormat::OpenStep, "openstep1", &OpenStepPropertyListReader::sniff,
         &OpenStepPropertyListReader::read, nullptr},
    };
    return registry;
}

const PropertyListCodec *PropertyListSerialization::codec(PropertyListFormat format)
{
    for (const PropertyListCodec &c : codecs()) {
        if (c.format == format)
            return &c;
    }
    return nullptr;
}

const PropertyListCodec *PropertyListSerialization::codecNamed(QByteArrayView name)
{
    for (const PropertyListCodec &c : codecs()) {
        if (name == QByteArrayView(c.name))
            return &c;
    }
    return nullptr;
}

ReadResult<PropertyListFile> PropertyListSerialization::read(const QByteArray &bytes)
{
    using Result = ReadResult<PropertyListFile>;
    if (bytes.isEmpty())
        return Result::failure(ReadStatus::Empty, {0}, QStringLiteral("The file is empty"));

    const PropertyListCodec *openStep = codec(PropertyListFormat::OpenStep);
    for (const PropertyListCodec &c : codecs()) {
        if (c.format == PropertyListFormat::OpenStep || !c.sniff(bytes))
            continue;
        ReadResult<PropertyList> attempt = c.read(bytes);
        if (attempt)
            return Result::success({attempt.value, c.format}, attempt);
        if (c.format == PropertyListFormat::Xml && openStep) {
            ReadResult<PropertyList> fallback = openStep->read(bytes);
            if (fallback) {
                // Text that looked like markup but is old-style text is worth a word: it may be broken XML.
                fallback.warnings.prepend({ReadWarning::Kind::Reinterpreted, attempt.position,
                                           QStringLiteral("The text is not XML (%1); it is read as old-style text")
                                               .arg(attempt.message)});
                return Result::success({fallback.value, PropertyListFormat::OpenStep}, fallback);
            }
        }
        return Result::failure(attempt);
    }
    if (openStep) {
        ReadResult<PropertyList> attempt = openStep->read(bytes);
        if (attempt)
            return Result::success({attempt.value, PropertyListFormat::OpenStep}, attempt);
        return Result::failure(attempt);
    }
    return Result::failure(ReadStatus::BadHeader, {0},
                           QStringLiteral("Not a property list: neither binary nor XML"));
}

ReadResult<PropertyListFile> PropertyListSerialization::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ReadResult<PropertyListFile>::failure(ReadStatus::CannotOpen, {},
                                                     QStringLiteral("Cannot open the file: %1").arg(file.errorString()));
    return read(file.readAll());
}

bool PropertyListSerialization::canWrite(PropertyListFormat format)
{
    const PropertyListCodec *c = codec(format);
    return c && c->write;
}

QByteArray PropertyListSerialization::write(const PropertyList &value, PropertyListFormat format)
{
    const PropertyListCodec *c = codec(format);
    if (!c || !c->write || !writeProblem(value).isEmpty())
        return QByteArray();
    return c->write(value);
}

namespace {

bool textHoldsLoneSurrogate(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        if (!QChar::isSurrogate(unit))
            continue;
        if (!QChar::isHighSurrogate(unit) || i + 1 == text.size() || !QChar::isLowSurrogate(text[i + 1].unicode()))
            return true;
        ++i;
    }
    return false;
}

bool holdsLoneSurrogate(const PropertyList &value)
{
    switch (value.type()) {
    case PropertyList::Type::String:
        return textHoldsLoneSurrogate(value.stringRef());
    case PropertyList::Type::Array:
        return std::any_of(value.arrayRef().items().cbegin(), value.arrayRef().items().cend(),
                           [](const PropertyList &item) { return holdsLoneSurrogate(item); });
    case PropertyList::Type::Dictionary: {
        const PropertyDictionary &entries = value.dictionaryRef();
        for (qsizetype i = 0; i < entries.size(); ++i) {
            if (textHoldsLoneSurrogate(entries.keyAt(i)) || holdsLoneSurrogate(entries.valueAt(i)))
                return true;
        }
        return false;
    }
    case PropertyList::Type::Data:
    case PropertyList::Type::Integer:
    case PropertyList::Type::Real:
    case PropertyList::Type::Boolean:
    case PropertyList::Type::Date:
    case PropertyList::Type::Uid:
        return false;
    }
    return false;
}

} // namespace

QString PropertyListSerialization::writeProblem(const PropertyList &value)
{
    if (holdsLoneSurrogate(value))
        return QStringLiteral("it holds text with half of a UTF-16 surrogate pair, which no property-list file can carry");
    return QString();
}
