#pragma once

#include <QString>

#include <functional>

class openNode;

// What the domain browser's core asks of the browser window. The window
// implements it; tests use a fake. Nodes are those of the shown tree.
class BrowserScreen {
public:
    // How the delete confirmation ends.
    enum DeleteAnswer { DeleteConfirmed = 1, DeleteCanceled = 2 };

    virtual ~BrowserScreen() = default;

    virtual void beep() = 0;
    // The delete confirmation sheet showing question; done gets a
    // DeleteAnswer. The sheet's "do not ask again" box calls
    // openDomain::domainWarnClicked when it is clicked.
    virtual void confirmDelete(const QString &question, std::function<void(int answer)> done) = 0;
    virtual void expandItem(const openNode *node) = 0;
    virtual void collapseItem(const openNode *node) = 0;
    virtual bool isItemExpanded(const openNode *node) const = 0;
    virtual void scrollToItem(const openNode *node) = 0;
    // Opens every group of the shown tree.
    virtual void expandAll() = 0;
    virtual bool isKeyWindow() const = 0;
    virtual bool isApplicationActive() const = 0;
    // Whether the outline has the keyboard in the browser window.
    virtual bool isOutlineFocused() const = 0;
    // Gives the outline the keyboard once the current event is over.
    virtual void focusOutlineLater() = 0;
    // Brings the browser window forward and makes it key.
    virtual void bringForward() = 0;
};
