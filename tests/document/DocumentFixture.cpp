#include "DocumentFixture.h"

#include "document/DocumentReader.h"
#include "domains/ApplicationSettings.h"
#include "platform/PropertyListSerialization.h"

#include <QTest>

DocumentFixture::DocumentFixture()
{
    ApplicationSettings::registerDefaults(defaults, AppearanceDefaults::fallback(), QDateTime::currentDateTimeUtc());
}

DocumentFixture::~DocumentFixture() = default;

plistDocument &DocumentFixture::open(const PropertyList &value)
{
    m_document = std::make_unique<plistDocument>(plistDocument::Services{{service, defaults}, center});
    m_document->setScreen(&screen);
    m_document->adoptContent(sandbox.home() + QStringLiteral("/test.plist"),
                             DocumentReader::contentOf(value, false, true));
    return *m_document;
}

plistDocument &DocumentFixture::openFile(const QString &path)
{
    m_document = std::make_unique<plistDocument>(plistDocument::Services{{service, defaults}, center});
    m_document->setScreen(&screen);
    QString error;
    if (!m_document->readFromFile(path, &error))
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return *m_document;
}

PropertyList valueOf(const char *text)
{
    const auto read = PropertyListSerialization::read(QByteArray(text));
    if (!read)
        QTest::qFail(qPrintable(read.errorText()), __FILE__, __LINE__);
    return read.value.value;
}

PListNode *nodeAt(const plistDocument &document, const QString &path)
{
    PListNode *node = document.treeData().get();
    if (path.isEmpty())
        return node;
    for (const QString &part : path.split(QLatin1Char('/'))) {
        const PListNodePtr child =
            node->isArray() ? node->childAtIndex(part.toInt() - 1) : node->childWithName(part);
        if (!child)
            return nullptr;
        node = child.get();
    }
    return node;
}

QString detailedPicture(const PListNode &node, bool sorted)
{
    QString text = QStringLiteral("%1:%2%3=%4").arg(node.name()).arg(node.menu())
                       .arg(node.valueIsBool() ? QStringLiteral("b") : QString(), node.stringValue());
    if (node.isLeaf())
        return text + QLatin1Char('/') + node.value().description() + QLatin1Char(node.value().typeCode() ? node.value().typeCode() : '-');
    QStringList children;
    for (const PListNodePtr &child : node.children())
        children << detailedPicture(*child, sorted);
    if (sorted && !node.isArray())
        children.sort();
    return text + QStringLiteral("[") + children.join(QStringLiteral(", ")) + QLatin1Char(']');
}
