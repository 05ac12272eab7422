#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

// A document's undo history, kept the way the original platform's undo manager
// keeps it: every edit registers its inverse as a record ("register the
// inverse, then act"), and running a record registers the inverse of the
// inverse, which is how redo comes about without code of its own.
//
// Records registered during one turn of the event loop form one group, one
// step of Undo or Redo. A group closes when control returns to the event loop
// (or when closeGroup() is called, for code that runs without one), and before
// any undo or redo. While a group is being undone, whatever it registers goes
// into the redo group, which takes the undone group's action name; while one
// is redone, into a new undo group. A record registered outside undo and redo
// discards what could be redone.
//
// Whether the document is edited is told from the position in the history:
// it is clean at the position last marked with setClean().
class UndoManager : public QObject {
    Q_OBJECT
public:
    using Record = std::function<void()>;

    explicit UndoManager(QObject *parent = nullptr);
    ~UndoManager() override;

    void registerUndo(Record record);
    // The name of the group being recorded (while undoing or redoing: of the
    // group being made, which already has the undone one's name).
    void setActionName(const QString &name);

    bool canUndo() const;
    bool canRedo() const;
    void undo();
    void redo();
    bool isUndoing() const { return m_state == State::Undoing; }
    bool isRedoing() const { return m_state == State::Redoing; }

    QString undoActionName() const;
    QString redoActionName() const;
    // The Edit menu's titles: "Undo Change Value", or plain "Undo" for a
    // group without a name.
    QString undoMenuItemTitle() const;
    QString redoMenuItemTitle() const;

    // Ends the group of the current event-loop turn now.
    void closeGroup();
    void removeAllActions();

    bool isClean() const;
    // The present position is what the file on disk holds.
    void setClean();

signals:
    // Anything the Edit menu shows may have changed.
    void changed();
    void cleanChanged(bool clean);

private:
    struct Group {
        std::vector<Record> records;
        QString actionName;
    };
    enum class State { Idle, Undoing, Redoing };

    // The group records go into now, opened on first use.
    Group &recordingGroup();
    void runGroup(std::vector<Group> &from, std::vector<Group> &to, State state);
    void notify(bool wasClean);
    static QString menuTitle(const QString &verb, const QString &name);

    std::vector<Group> m_undo;
    std::vector<Group> m_redo;
    bool m_groupOpen = false;
    bool m_closeScheduled = false;
    State m_state = State::Idle;
    // The undo stack's size at the clean position; -1 once that position can
    // no longer be reached (its redo records were discarded).
    qsizetype m_cleanDepth = 0;
};
