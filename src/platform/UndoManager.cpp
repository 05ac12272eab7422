#include "UndoManager.h"

UndoManager::UndoManager(QObject *parent) : QObject(parent) {}

UndoManager::~UndoManager() = default;

UndoManager::Group &UndoManager::recordingGroup()
{
    switch (m_state) {
    case State::Undoing:
        return m_redo.back();
    case State::Redoing:
        return m_undo.back();
    case State::Idle:
        break;
    }
    if (!m_groupOpen) {
        // A new edit: what could be redone is gone, and with it the clean
        // position if it lay there.
        if (m_cleanDepth > qsizetype(m_undo.size()))
            m_cleanDepth = -1;
        m_redo.clear();
        m_undo.push_back(Group());
        m_groupOpen = true;
        if (!m_closeScheduled) {
            m_closeScheduled = true;
            QMetaObject::invokeMethod(
                this,
                [this] {
                    m_closeScheduled = false;
                    closeGroup();
                },
                Qt::QueuedConnection);
        }
    }
    return m_undo.back();
}

void UndoManager::registerUndo(Record record)
{
    const bool wasClean = isClean();
    recordingGroup().records.push_back(std::move(record));
    notify(wasClean);
}

void UndoManager::setActionName(const QString &name)
{
    if (m_state == State::Idle && !m_groupOpen)
        return; // nothing is being recorded that the name could belong to
    recordingGroup().actionName = name;
    emit changed();
}

bool UndoManager::canUndo() const { return !m_undo.empty(); }

bool UndoManager::canRedo() const { return !m_redo.empty(); }

void UndoManager::undo() { runGroup(m_undo, m_redo, State::Undoing); }

void UndoManager::redo() { runGroup(m_redo, m_undo, State::Redoing); }

void UndoManager::runGroup(std::vector<Group> &from, std::vector<Group> &to, State state)
{
    if (m_state != State::Idle)
        return;
    closeGroup();
    if (from.empty())
        return;
    const bool wasClean = isClean();
    Group group = std::move(from.back());
    from.pop_back();
    to.push_back(Group{{}, group.actionName});
    m_state = state;
    // The last thing done is the first put back.
    for (auto record = group.records.rbegin(); record != group.records.rend(); ++record)
        (*record)();
    m_state = State::Idle;
    if (to.back().records.empty()) {
        // Nothing was registered, so there is no way back: that position of
        // the history is gone.
        to.pop_back();
        if (m_cleanDepth > qsizetype(m_undo.size()))
            m_cleanDepth = -1;
    }
    notify(wasClean);
}

QString UndoManager::undoActionName() const { return m_undo.empty() ? QString() : m_undo.back().actionName; }

QString UndoManager::redoActionName() const { return m_redo.empty() ? QString() : m_redo.back().actionName; }

QString UndoManager::menuTitle(const QString &verb, const QString &name)
{
    return name.isEmpty() ? verb : verb + QLatin1Char(' ') + name;
}

QString UndoManager::undoMenuItemTitle() const { return menuTitle(tr("Undo"), undoActionName()); }

QString UndoManager::redoMenuItemTitle() const { return menuTitle(tr("Redo"), redoActionName()); }

void UndoManager::closeGroup() { m_groupOpen = false; }

void UndoManager::removeAllActions()
{
    const bool wasClean = isClean();
    m_undo.clear();
    m_redo.clear();
    m_groupOpen = false;
    m_cleanDepth = wasClean ? 0 : -1;
    notify(wasClean);
}

bool UndoManager::isClean() const { return m_cleanDepth == qsizetype(m_undo.size()); }

void UndoManager::setClean()
{
    const bool wasClean = isClean();
    // Later records of this turn are edits made after the save.
    closeGroup();
    m_cleanDepth = qsizetype(m_undo.size());
    notify(wasClean);
}

void UndoManager::notify(bool wasClean)
{
    emit changed();
    if (isClean() != wasClean)
        emit cleanChanged(!wasClean);
}
