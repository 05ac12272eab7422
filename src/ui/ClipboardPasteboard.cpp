#include "ClipboardPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

const QMimeData *ClipboardPasteboard::mimeData() const { return QGuiApplication::clipboard()->mimeData(); }

void ClipboardPasteboard::setMimeData(std::unique_ptr<QMimeData> data)
{
    QGuiApplication::clipboard()->setMimeData(data.release());
}

ClipboardPasteboard &ClipboardPasteboard::shared()
{
    static ClipboardPasteboard pasteboard;
    return pasteboard;
}
