// The document window driven as a user drives it: keys into the outline and
// its editors, the menu's actions, the sheets' buttons, and a window closed
// while its file is still being read.
#include "DocumentSession.h"
#include "TestRegistry.h"

#include "document/plistDocument.h"
#include "domains/ApplicationSettings.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"
#include "document/OutlineModel.h"
#include "ui/PrefOV.h"
#include "ui/SearchField.h"
#include "ui/VXDocumentController.h"
#include "ui/VXWindowController.h"
#include "ui/prefController.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace {

// The cell editor that has the keyboard, if one does.
QLineEdit *openEditor(const VXWindowController &window)
{
    auto *focused = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    return focused && window.outlineView()->isAncestorOf(focused) ? focused : nullptr;
}

} // namespace

class VXWindowControllerTest : public QObject {
    Q_OBJECT
private slots:
    void editUndoRedoSave();
    void classChangesFromTheKeyboard_data();
    void classChangesFromTheKeyboard();
    void refusedEditsKeepTheEditor_data();
    void refusedEditsKeepTheEditor();
    void closingAskedAboutEdits_data();
    void closingAskedAboutEdits();
    void failedSaveKeepsTheEdits();
    void deleteSheetCanStopAsking();
    void outlineFollowsColourAndFontSettings();
    void filterOutlivesReload();
    void readOnlyDocumentDisablesEditing();
    void closingWhileReading();
    void openingOnceOrWithAReason();
};

void VXWindowControllerTest::editUndoRedoSave()
{
    Session session;
    const QString path = session.write("{a = 1; b = x;}");
    VXWindowController *window = session.open(path);
    QVERIFY(window);
    plistDocument &document = *window->document();
    QVERIFY(window->outlineView()->hasFocus());
    QCOMPARE(document.selectedNode()->name(), u"a"_s);

    QTest::keyClick(window->outlineView(), Qt::Key_Down);
    QTest::keyClick(window->outlineView(), Qt::Key_Return);
    QLineEdit *editor = openEditor(*window);
    QVERIFY(editor);
    QCOMPARE(editor->selectedText(), u"b"_s);
    QTest::keyClicks(editor, u"c"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    QCOMPARE(names(document), u"a c"_s);
    QVERIFY(window->isWindowModified());

    const VXWindowController::Actions &actions = window->actions();
    QCOMPARE(actions.undo->text(), u"Undo Change Name"_s);
    actions.undo->trigger();
    QCOMPARE(names(document), u"a b"_s);
    QVERIFY(!window->isWindowModified());
    QCOMPARE(actions.redo->text(), u"Redo Change Name"_s);
    actions.redo->trigger();
    QCOMPARE(names(document), u"a c"_s);

    QVERIFY(actions.save->isEnabled());
    actions.save->trigger();
    QVERIFY(!window->isWindowModified());
    QVERIFY(!actions.save->isEnabled());
    const auto saved = PropertyListSerialization::readFile(path);
    QCOMPARE(saved.value.value, PropertyListSerialization::read("{a = 1; c = x;}").value.value);
}

void VXWindowControllerTest::classChangesFromTheKeyboard_data()
{
    QTest::addColumn<bool>("byTab");
    QTest::newRow("Tab from the key's editor") << true;
    QTest::newRow("Alt+Down on the row") << false;
}

void VXWindowControllerTest::classChangesFromTheKeyboard()
{
    QFETCH(bool, byTab);
    Session session;
    VXWindowController *window = session.open(session.write("{a = 12abc;}"));
    QVERIFY(window);
    PrefOV *outline = window->outlineView();
    if (byTab) {
        QTest::keyClick(outline, Qt::Key_Return);
        QVERIFY(openEditor(*window));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    } else {
        QTest::keyClick(outline, Qt::Key_Down, Qt::AltModifier);
    }
    auto *classes = outline->findChild<QComboBox *>(u"Classes"_s);
    QVERIFY(classes);
    QTRY_VERIFY(classes->view()->isVisible());
    classes->setCurrentIndex(classes->findText(u"Integer"_s));
    emit classes->activated(classes->currentIndex());
    const PListNode &node = *window->document()->treeData()->children().first();
    QVERIFY(node.value().isInteger());
    QCOMPARE(node.value().toInteger(), 12);
    QCOMPARE(window->actions().undo->text(), u"Undo Change Class"_s);
}

void VXWindowControllerTest::refusedEditsKeepTheEditor_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("key");
    QTest::newRow("empty key, Return") << QString() << int(Qt::Key_Return);
    QTest::newRow("a sibling's key, Enter") << u"b"_s << int(Qt::Key_Enter);
    QTest::newRow("a sibling's key, Tab") << u"b"_s << int(Qt::Key_Tab);
}

void VXWindowControllerTest::refusedEditsKeepTheEditor()
{
    QFETCH(QString, typed);
    QFETCH(int, key);
    Session session;
    VXWindowController *window = session.open(session.write("{a = 1; b = x;}"));
    QVERIFY(window);
    QTest::keyClick(window->outlineView(), Qt::Key_Return);
    QLineEdit *editor = openEditor(*window);
    QVERIFY(editor);
    QTest::keyClick(editor, Qt::Key_Backspace);
    QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key(key));
    QCOMPARE(openEditor(*window), editor);
    QVERIFY(window->outlineView()->isEditing());

    QTest::keyClick(editor, Qt::Key_Escape);
    QVERIFY(QTest::qWaitFor([&] { return !window->outlineView()->isEditing(); }));
    QCOMPARE(names(*window->document()), u"a b"_s);
    QVERIFY(!window->document()->undoManager().canUndo());
}

void VXWindowControllerTest::closingAskedAboutEdits_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("closed");
    QTest::addColumn<QString>("onDisk");
    QTest::newRow("save") << u"Save"_s << true << u"New Key a"_s;
    QTest::newRow("don't save") << u"Don't Save"_s << true << u"a"_s;
    QTest::newRow("cancel") << u"Cancel"_s << false << u"a"_s;
}

void VXWindowControllerTest::closingAskedAboutEdits()
{
    QFETCH(QString, button);
    QFETCH(bool, closed);
    QFETCH(QString, onDisk);
    Session session;
    const QString path = session.write("{a = 1;}");
    QPointer<VXWindowController> window = session.open(path);
    QVERIFY(window);
    window->document()->deselectAll();
    window->actions().addLeaf->trigger();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);

    window->actions().close->trigger();
    QVERIFY(window);
    answer(window, button);
    QCOMPARE(QTest::qWaitFor([&] { return window.isNull(); }, 200), closed);
    QStringList keys = PropertyListSerialization::readFile(path).value.value.toDictionary().keys();
    keys.sort();
    QCOMPARE(keys.join(u' '), onDisk);
}

void VXWindowControllerTest::failedSaveKeepsTheEdits()
{
    Session session;
    VXWindowController *window = session.open(session.write("{a = 1;}"));
    QVERIFY(window);
    window->actions().addLeaf->trigger();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QVERIFY(!window->saveDocumentTo(session.sandbox.home() + u"/missing/folder/doc.plist"_s,
                                    PropertyListFormat::Binary));
    QVERIFY(window->isWindowModified());
    answer(window, u"OK"_s);
}

void VXWindowControllerTest::deleteSheetCanStopAsking()
{
    Session session;
    VXWindowController *window = session.open(session.write("{a = 1; b = 2; c = 3;}"));
    QVERIFY(window);
    // The preferences window, open meanwhile, shows what the sheet's box decides.
    window->actions().preferences->trigger();
    prefController *preferences = prefController::sharedWindow();
    QVERIFY(preferences && preferences->findChild<QCheckBox *>(u"documentWarnBox"_s)->isChecked());
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    QTest::keyClick(window->outlineView(), Qt::Key_Backspace);
    auto *sheet = window->findChild<QDialog *>();
    QVERIFY(sheet && sheet->isVisible());
    QVERIFY(sheet->findChild<QLabel *>()->text().contains(u" a ?"_s));
    sheet->findChild<QCheckBox *>()->click();
    QVERIFY(!session.defaults.boolForKey(u"VXWarnOnDocumentDelete"_s));
    QVERIFY(!preferences->findChild<QCheckBox *>(u"documentWarnBox"_s)->isChecked());
    preferences->close();
    answer(window, u"Delete"_s, sheet);
    QCOMPARE(names(*window->document()), u"b c"_s);
    QCOMPARE(window->actions().undo->text(), u"Undo Cut"_s);

    QVERIFY(QTest::qWaitFor([&] { return window->outlineView()->isKeyOutline(); }));
    QTest::keyClick(window->outlineView(), Qt::Key_Delete); // not asked any more
    QCOMPARE(names(*window->document()), u"c"_s);
    QCOMPARE(window->actions().undo->text(), u"Undo Delete"_s);
}

// An open document takes up new colours and fonts at once: stripes and text.
void VXWindowControllerTest::outlineFollowsColourAndFontSettings()
{
    Session session;
    VXWindowController *window = session.open(session.write("{a = 1;}"));
    QVERIFY(window);
    const PrefOV *outline = window->outlineView();
    const QModelIndex row = outline->model()->index(0, 0);
    ApplicationSettings settings(session.defaults, session.center);
    settings.setListColor(ApplicationSettings::ListColorWell::Light, {1, 0, 0, 1}, nullptr);
    QVERIFY(outline->palette().color(QPalette::Base) != QColor(Qt::red)); // custom colours are off
    settings.setUseCustomColors(true, nullptr);
    QCOMPARE(outline->palette().color(QPalette::Base), QColor(Qt::red));
    settings.setListFont(u"Mono"_s, 21, nullptr);
    QCOMPARE(row.data(OutlineModel::FontSizeRole).toDouble(), 21.0);
    settings.setUseCustomColors(false, nullptr);
    QVERIFY(outline->palette().color(QPalette::Base) != QColor(Qt::red));
}

void VXWindowControllerTest::filterOutlivesReload()
{
    Session session;
    VXWindowController *window = session.open(session.write("{apple = 1; pear = 2;}"));
    QVERIFY(window);
    QTest::keyClicks(window->searchField(), u"pe"_s);
    QCOMPARE(names(*window->document()), u"pear"_s);
    window->actions().reload->trigger();
    QCOMPARE(names(*window->document()), u"pear"_s);
    QTest::keyClick(window->searchField(), Qt::Key_Escape);
    QCOMPARE(names(*window->document()), u"apple pear"_s);
}

void VXWindowControllerTest::readOnlyDocumentDisablesEditing()
{
    Session session;
    // The registration domain has no file that could be written.
    VXWindowController *window = session.open(session.sandbox.home() + u"/NSRegistrationDomain.plist"_s);
    QVERIFY(window);
    QVERIFY(window->windowTitle().contains(u"Read Only"_s));
    const VXWindowController::Actions &a = window->actions();
    for (QAction *action : {a.save, a.revert, a.undo, a.redo, a.deleteItem, a.addLeaf, a.addGroup, a.addArray,
                            a.sort, a.reload, a.deleteTool, a.reloadTool})
        QVERIFY2(!action->isEnabled(), qPrintable(action->text()));
    QVERIFY(a.saveAs->isEnabled());
    QTest::keyClick(window->outlineView(), Qt::Key_Return);
    QVERIFY(!openEditor(*window));
}

void VXWindowControllerTest::closingWhileReading()
{
    Session session;
    const QString path = session.write("{a = 1;}");
    QThreadPool *pool = QThreadPool::globalInstance();
    const int threads = pool->maxThreadCount();
    pool->setMaxThreadCount(1);
    // The pool's one thread waits, so the read waits behind it.
    QSemaphore gate;
    pool->start([&gate] { gate.acquire(); });
    QPointer<VXWindowController> window = session.documents.openDocument(path);
    QPointer<plistDocument> document = window->document();
    QVERIFY(QTest::qWaitFor([&] { return window->isVisible(); })); // the busy page
    QVERIFY(window->isLoading());
    QVERIFY(!window->actions().addLeaf->isEnabled());

    window->close();
    QVERIFY(QTest::qWaitFor([&] { return window.isNull() && document.isNull(); }));
    QVERIFY(session.documents.documents().isEmpty());
    gate.release();
    pool->waitForDone();
    pool->setMaxThreadCount(threads);
    QCoreApplication::processEvents(); // a result on its way would arrive now, to nobody
    QVERIFY(session.documents.documents().isEmpty());
}

void VXWindowControllerTest::openingOnceOrWithAReason()
{
    Session session;
    const QString path = session.write("{a = 1;}");
    VXWindowController *window = session.open(path);
    QCOMPARE(session.documents.openDocument(path), window);
    QCOMPARE(session.documents.documents().size(), 1);

    QSignalSpy failed(&session.documents, &VXDocumentController::openFailed);
    const QString broken = session.sandbox.write(u"broken.plist"_s, "<plist><dict><key>a</key></plist>");
    session.documents.openDocument(broken);
    QVERIFY(failed.wait());
    QVERIFY2(failed.first().at(1).toString().contains(u"line"_s),
             qPrintable(failed.first().at(1).toString()));
    QCOMPARE(session.documents.documents().size(), 1);
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->text().contains(u"broken.plist"_s))
            box->close();
    }
}

ORVANE_TEST(VXWindowControllerTest)
#include "VXWindowControllerTest.moc"
