#pragma once

#include "domains/BrowserScreen.h"

#include <QSet>

#include <optional>

// The browser window as core tests see it: it remembers what it was asked to
// do, and answers the delete confirmation at once when told how.
class FakeBrowserScreen : public BrowserScreen {
public:
    void beep() override { ++beeps; }
    void confirmDelete(const QString &text, std::function<void(int)> done) override
    {
        question = text;
        if (answer)
            done(*answer);
    }
    void expandItem(const openNode *node) override { expanded.insert(node); }
    void collapseItem(const openNode *node) override { expanded.remove(node); }
    bool isItemExpanded(const openNode *node) const override { return expanded.contains(node); }
    void scrollToItem(const openNode *node) override { scrolledTo = node; }
    void expandAll() override { ++expandAlls; }
    bool isKeyWindow() const override { return true; }
    bool isApplicationActive() const override { return true; }
    bool isOutlineFocused() const override { return true; }
    void focusOutlineLater() override {}
    void bringForward() override { ++forwards; }

    QSet<const openNode *> expanded;
    const openNode *scrolledTo = nullptr;
    QString question;
    std::optional<int> answer;
    int beeps = 0;
    int expandAlls = 0;
    int forwards = 0;
};
