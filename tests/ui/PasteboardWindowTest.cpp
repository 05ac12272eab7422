// Entries between documents as a user moves them: copied in one tab and
// pasted in another through the clipboard, with the duplicate-key sheet;
// rows dropped on another window's outline; a `defaults write` entry applied
// to its domain's document.
#include "DocumentSession.h"
#include "TestRegistry.h"

#include "document/plistDocument.h"
#include "domains/SettingsKeys.h"
#include "ui/DuplicateKeySheet.h"
#include "ui/PrefOV.h"

#include <QApplication>
#include <QCheckBox>
#include <QMimeData>

namespace {

QList<PListNodePtr> topLevel(const plistDocument &document)
{
    const ChildList &children = document.cachedTreeData()->children();
    return QList<PListNodePtr>(children.begin(), children.end());
}

QString valueOf(const plistDocument &document, const QString &key)
{
    for (const PListNodePtr &child : document.cachedTreeData()->children()) {
        if (child->name() == key)
            return child->initialValue().description();
    }
    return {};
}

// Sends a drag of data over the outline's row and drops it there, as a drag
// from another window does.
void dropOnRow(PrefOV *outline, const QMimeData &data, int row)
{
    QWidget *viewport = outline->viewport();
    const QPoint at = outline->visualRect(outline->model()->index(row, 0)).center();
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    QVERIFY(move.isAccepted());
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    QVERIFY(drop.isAccepted());
}

} // namespace

class PasteboardWindowTest : public QObject {
    Q_OBJECT
private slots:
    void copyPasteAcrossTabsAsksAboutADuplicate();
    void rowsDroppedOnAnotherWindow();
    void defaultsEntryOpensItsDomain();
};

void PasteboardWindowTest::copyPasteAcrossTabsAsksAboutADuplicate()
{
    Session session;
    const QString source = session.write("{Greeting = Other; Extra = 1;}", u"source.plist"_s);
    const QString target = session.write("{Greeting = Hello;}", u"target.plist"_s);
    VXWindowController *window = session.open(source);
    QVERIFY(window && session.open(target) == window);
    plistDocument *sourceDocument = window->documents().first();
    plistDocument *targetDocument = window->document();

    window->selectDocument(sourceDocument);
    sourceDocument->selectNodes(topLevel(*sourceDocument), false);
    window->actions().copy->trigger();
    window->actions().nextTab->trigger();
    QVERIFY(window->actions().paste->isEnabled());
    window->actions().paste->trigger();

    auto *sheet = window->findChild<DuplicateKeySheet *>();
    QVERIFY(sheet && sheet->isVisible());
    QCOMPARE(sheet->key(), u"Greeting"_s);
    sheet->findChild<QCheckBox *>()->click(); // do not ask again
    sheet->accept();
    QTRY_COMPARE(valueOf(*targetDocument, u"Greeting"_s), u"Other"_s);
    QCOMPARE(valueOf(*targetDocument, u"Extra"_s), u"1"_s);
    QVERIFY(!session.defaults.boolForKey(SettingsKeys::VXWarnOnDuplicateKeys));
    QVERIFY(!window->actions().warnOnDuplicates->isChecked());

    QCOMPARE(window->actions().undo->text(), u"Undo Paste"_s);
    window->actions().undo->trigger();
    QCOMPARE(valueOf(*targetDocument, u"Greeting"_s), u"Hello"_s);
}

void PasteboardWindowTest::rowsDroppedOnAnotherWindow()
{
    Session session;
    ApplicationSettings(session.defaults, session.center).setDocumentsUseTabs(false, nullptr);
    VXWindowController *from = session.open(session.write("{moved = {a = 1;};}", u"from.plist"_s));
    VXWindowController *to = session.open(session.write("{x = 1; y = 2;}", u"to.plist"_s));
    QVERIFY(from && to && from != to);
    const std::unique_ptr<QMimeData> dragged =
        from->document()->mimeDataForItems(topLevel(*from->document()));
    QVERIFY(dragged->hasText()); // what a text editor takes

    dropOnRow(to->outlineView(), *dragged, 0); // onto a leaf: just after it
    QCOMPARE(names(*to->document()), u"moved x y"_s);
    QCOMPARE(to->actions().undo->text(), u"Undo Drag"_s);
    QCOMPARE(names(*from->document()), u"moved"_s); // a copy
}

void PasteboardWindowTest::defaultsEntryOpensItsDomain()
{
    Session session;
    const QString path = session.write("{Greeting = Hello;}", u"com.example.app.plist"_s);
    PropertyDictionary entry;
    entry.insert(u"Count"_s, PropertyList::integer(3));
    session.documents.applyDefaults(path, entry);
    VXWindowController *window = session.open(path);
    QVERIFY(window);
    QTRY_COMPARE(valueOf(*window->document(), u"Count"_s), u"3"_s);
    QCOMPARE(window->actions().undo->text(), u"Undo Apply Defaults Value"_s);
}

ORVANE_TEST(PasteboardWindowTest)
#include "PasteboardWindowTest.moc"
