// The undo history: grouping by event-loop turn, redo through inverses, action
// names, and the clean position a document's edited mark is told from.
#include "TestRegistry.h"

#include "platform/UndoManager.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

namespace {

// A one-number document whose edits register their inverse, as documents do.
struct Counter {
    UndoManager undo;
    int value = 0;

    void set(int newValue)
    {
        const int old = value;
        undo.registerUndo([this, old] { set(old); });
        if (!undo.isUndoing() && !undo.isRedoing())
            undo.setActionName(QStringLiteral("Set %1").arg(newValue));
        value = newValue;
    }
};

} // namespace

class UndoManagerTest : public QObject {
    Q_OBJECT

private slots:
    void history_data();
    void history();
};

void UndoManagerTest::history_data()
{
    // Steps: a digit sets the value, "|" ends the event-loop turn, "u" undoes,
    // "r" redoes, "s" marks the clean position, "x" removes all actions.
    QTest::addColumn<QString>("steps");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("undoTitle");
    QTest::addColumn<QString>("redoTitle");
    QTest::addColumn<bool>("clean");
    QTest::addColumn<int>("cleanChanges");

    QTest::newRow("one turn is one step, named last") << "12|u" << 0 << "Undo" << "Redo Set 2" << true << 2;
    QTest::newRow("each turn is a step") << "1|2|u" << 1 << "Undo Set 1" << "Redo Set 2" << false << 1;
    QTest::newRow("redo runs the inverse's inverse") << "1|2|uur" << 1 << "Undo Set 1" << "Redo Set 2" << false << 3;
    QTest::newRow("a new edit drops what could be redone") << "1|2|u3" << 3 << "Undo Set 3" << "Redo" << false << 1;
    QTest::newRow("undo ends the open turn first") << "1|2u3u" << 1 << "Undo Set 1" << "Redo Set 3" << false << 1;
    QTest::newRow("clean where saved") << "1|s2|u" << 1 << "Undo Set 1" << "Redo Set 2" << true << 4;
    QTest::newRow("edits after a save in the same turn") << "1s2u" << 1 << "Undo Set 1" << "Redo Set 2" << true << 4;
    QTest::newRow("saved position dropped with redo") << "1|su2|u" << 0 << "Undo" << "Redo Set 2" << false << 3;
    QTest::newRow("history removed while edited") << "1|2|x" << 2 << "Undo" << "Redo" << false << 1;
    QTest::newRow("history removed, then marked clean") << "1|2|xs" << 2 << "Undo" << "Redo" << true << 2;
}

void UndoManagerTest::history()
{
    QFETCH(QString, steps);
    Counter counter;
    QSignalSpy cleanChanges(&counter.undo, &UndoManager::cleanChanged);
    for (const QChar step : steps) {
        if (step.isDigit())
            counter.set(step.digitValue());
        else if (step == u'|')
            QCoreApplication::processEvents();
        else if (step == u'u')
            counter.undo.undo();
        else if (step == u'r')
            counter.undo.redo();
        else if (step == u's')
            counter.undo.setClean();
        else if (step == u'x')
            counter.undo.removeAllActions();
    }
    QTEST(counter.value, "value");
    QTEST(counter.undo.undoMenuItemTitle(), "undoTitle");
    QTEST(counter.undo.redoMenuItemTitle(), "redoTitle");
    QTEST(counter.undo.isClean(), "clean");
    QTEST(int(cleanChanges.count()), "cleanChanges");
}

ORVANE_TEST(UndoManagerTest)
#include "UndoManagerTest.moc"
