#pragma once

#include <QMimeData>
#include <QString>

#include <memory>

// The types nodes travel as between documents, windows and other programs.
namespace PasteboardTypes {
// The archived nodes themselves (a sequential archive).
inline const QString kPListNodes = QStringLiteral("application/x-orvane-plist-nodes");
// The path of the document the nodes came from.
inline const QString kDocumentPath = QStringLiteral("application/x-orvane-document-path");
inline const QString kPlainText = QStringLiteral("text/plain");
// File names: QMimeData's URL list.
inline const QString kUriList = QStringLiteral("text/uri-list");
} // namespace PasteboardTypes

// Where copy, cut and paste keep their payload. The GUI wraps the system
// clipboard; tests and tools use MemoryPasteboard. Drags carry the same
// QMimeData in a QDrag and skip this interface.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    // What the pasteboard holds now; nullptr when it is empty.
    virtual const QMimeData *mimeData() const = 0;
    // Replaces the contents; the pasteboard owns data afterwards.
    virtual void setMimeData(std::unique_ptr<QMimeData> data) = 0;
};

class MemoryPasteboard : public Pasteboard {
public:
    const QMimeData *mimeData() const override { return m_data.get(); }
    void setMimeData(std::unique_ptr<QMimeData> data) override { m_data = std::move(data); }

private:
    std::unique_ptr<QMimeData> m_data;
};
