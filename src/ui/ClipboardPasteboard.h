#pragma once

#include "document/Pasteboard.h"

// The desktop's clipboard as the documents' pasteboard.
class ClipboardPasteboard : public Pasteboard {
public:
    const QMimeData *mimeData() const override;
    void setMimeData(std::unique_ptr<QMimeData> data) override;

    // The one every document window shares.
    static ClipboardPasteboard &shared();
};
