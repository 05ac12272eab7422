#pragma once

#include <QRect>
#include <QString>

#include <functional>

class PListNode;

// What a document asks of the window that shows it. The window controller
// implements it; document tests use a fake. Nodes are those of the shown tree.
class DocumentScreen {
public:
    // The outline's columns, numbered as editing starts them.
    enum Column { KeyColumn = 0, ClassColumn = 1, ValueColumn = 2 };
    // How the delete confirmation ends.
    enum DeleteAnswer { DeleteConfirmed = 1, DeleteCanceled = 2 };
    // How the duplicate-key dialog ends.
    enum DuplicateAnswer { ReplaceConfirmed = 1, ReplaceCanceled = 2 };

    virtual ~DocumentScreen() = default;

    virtual void expandItem(const PListNode *node) = 0;
    virtual bool isItemExpanded(const PListNode *node) const = 0;
    virtual void scrollToItem(const PListNode *node) = 0;
    // Opens the cell editor on the node's column with its text selected.
    virtual void editColumn(const PListNode *node, int column) = 0;
    // The delete confirmation sheet showing question; done gets a DeleteAnswer.
    virtual void confirmDelete(const QString &question, std::function<void(int answer)> done) = 0;
    // The duplicate-key dialog for key, showing the value there now and the
    // one arriving as XML texts. A window showing another document brings
    // this one forward first. done gets a DuplicateAnswer and whether the
    // user turned the warning off; the document asks again only after done.
    // A screen without the dialog cancels, so nothing is replaced unasked.
    virtual void askDuplicateKey(const QString &key, const QString &oldValue, const QString &newValue,
                                 std::function<void(int answer, bool stopWarning)> done)
    {
        Q_UNUSED(key);
        Q_UNUSED(oldValue);
        Q_UNUSED(newValue);
        done(ReplaceCanceled, false);
    }
    // The sheet that says the document may not be changed.
    virtual void showBadPermissions() = 0;
    virtual void beep() = 0;
    // Whether the document's window is the one the user works in.
    virtual bool isKeyWindow() const = 0;
    virtual bool isApplicationActive() const = 0;
    // Whether this document is the one its window shows now.
    virtual bool isShowingDocument() const = 0;
    // Gives the outline the keyboard once the current event is over.
    virtual void focusOutlineLater() = 0;
    // The part of the outline's rows in view, in the coordinates of all its
    // rows; a screen that does not scroll has none.
    virtual QRect visibleRect() const { return {}; }
    virtual void scrollRectToVisible(const QRect &) {}
};
