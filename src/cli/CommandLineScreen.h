#pragma once

#include "document/DocumentScreen.h"

// A document's screen when there is no window: requests that need one do
// nothing, a refusal that would beep is counted, and duplicate keys are
// answered as told (the default cancels, as a screen without the dialog does).
class CommandLineScreen : public DocumentScreen {
public:
    void expandItem(const PListNode *) override {}
    bool isItemExpanded(const PListNode *) const override { return false; }
    void scrollToItem(const PListNode *) override {}
    void editColumn(const PListNode *, int) override {}
    void confirmDelete(const QString &, std::function<void(int)>) override {}
    void askDuplicateKey(const QString &, const QString &, const QString &,
                         std::function<void(int, bool)> done) override
    {
        done(replaceDuplicates ? ReplaceConfirmed : ReplaceCanceled, false);
    }
    void showBadPermissions() override {}
    void beep() override { ++beeps; }
    bool isKeyWindow() const override { return true; }
    bool isApplicationActive() const override { return true; }
    bool isShowingDocument() const override { return true; }
    void focusOutlineLater() override {}

    int beeps = 0;
    bool replaceDuplicates = false;
};
