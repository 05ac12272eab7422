#pragma once

#include "document/DocumentScreen.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

// The window as document tests see it: it remembers what it was asked to do,
// and answers the delete confirmation and the duplicate-key questions at once
// when told how (a question without an answer stays open in pendingDuplicate).
class FakeScreen : public DocumentScreen {
public:
    struct Edit {
        const PListNode *node;
        int column;
    };

    void expandItem(const PListNode *node) override { expanded.insert(node); }
    bool isItemExpanded(const PListNode *node) const override { return expanded.contains(node); }
    void scrollToItem(const PListNode *node) override { scrolledTo = node; }
    void editColumn(const PListNode *node, int column) override { edits.append({node, column}); }
    void confirmDelete(const QString &text, std::function<void(int)> done) override
    {
        question = text;
        if (answer)
            done(*answer);
    }
    void askDuplicateKey(const QString &key, const QString &oldValue, const QString &newValue,
                         std::function<void(int, bool)> done) override
    {
        duplicateQuestions.append({key, oldValue, newValue});
        if (duplicateAnswers.isEmpty()) {
            pendingDuplicate = std::move(done);
            return;
        }
        const auto [given, stopWarning] = duplicateAnswers.takeFirst();
        done(given, stopWarning);
    }
    void showBadPermissions() override { ++permissionSheets; }
    void beep() override { ++beeps; }
    bool isKeyWindow() const override { return keyWindow; }
    bool isApplicationActive() const override { return active; }
    bool isShowingDocument() const override { return showing; }
    void focusOutlineLater() override { ++focusRequests; }
    QRect visibleRect() const override { return shownRect; }
    void scrollRectToVisible(const QRect &rect) override { shownRect = rect; }

    QSet<const PListNode *> expanded;
    const PListNode *scrolledTo = nullptr;
    QList<Edit> edits;
    QString question;
    QList<QStringList> duplicateQuestions;        // key, old value text, new value text
    QList<std::pair<int, bool>> duplicateAnswers; // answer, whether the warning is turned off
    std::function<void(int, bool)> pendingDuplicate;
    std::optional<int> answer;
    int permissionSheets = 0;
    int beeps = 0;
    int focusRequests = 0;
    bool keyWindow = true;
    bool active = true;
    bool showing = true;
    QRect shownRect;
};
