// The domain browser driven from the keyboard and its menus: a domain opened
// into its document window, a delete confirmed on the sheet (whose box turns
// the warning off) and undone from the Edit menu, and the search field
// filtering the tree as the user types.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/ApplicationSettings.h"
#include "domains/DomainOutlineModel.h"
#include "domains/SettingsKeys.h"
#include "document/plistDocument.h"
#include "domains/openDomain.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"
#include "ui/DeleteSheet.h"
#include "ui/SearchField.h"
#include "ui/VXDocumentController.h"
#include "ui/VXWindowController.h"
#include "ui/openQuicklyOV.h"
#include "ui/openQuicklyPanel.h"

#include <QCheckBox>
#include <QApplication>
#include <QFile>
#include <QMimeData>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kDomainBytes = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>Greeting</key><string>Hello</string></dict></plist>
)"_ba;

// An account with a few domains and the browser over it, key and focused.
struct Browser {
    Browser()
    {
        for (const char *name : {"com.example.alpha", "com.example.beta", "org.sample.gamma"})
            sandbox.write(u"Library/Preferences/%1.plist"_s.arg(QLatin1String(name)), kDomainBytes);
        ApplicationSettings::registerDefaults(defaults, AppearanceDefaults::fallback(),
                                              QDateTime::currentDateTimeUtc());
        // Tests switch windows freely; the browser is not to step aside meanwhile.
        defaults.setBool(true, SettingsKeys::VXKeepODQWindowVisible);
        application = std::make_unique<openDomain>(openDomain::Services{defaults, center});
        panel = std::make_unique<openQuicklyPanel>(*application, documents, defaults, center);
        panel->bringForward();
    }
    bool ready() const
    {
        return QTest::qWaitForWindowActive(panel.get()) && panel->outlineView()->hasFocus();
    }
    // Selects the domain of that name and returns its path.
    QString select(const QString &domain)
    {
        const QString path = sandbox.userFolder() + u'/' + domain + u".plist"_s;
        const QModelIndexList found = application->model()->match(
            application->model()->index(0, 0), DomainOutlineModel::PathRole, path, 1, Qt::MatchExactly);
        if (!found.isEmpty())
            application->selectRow(application->rowForNode(application->model()->nodeAt(found.first())));
        return path;
    }
    int topLevelRows() const { return application->model()->rowCount(); }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    VXDocumentController documents{{{service, defaults}, center}};
    std::unique_ptr<openDomain> application;
    std::unique_ptr<openQuicklyPanel> panel;
};

} // namespace

class openQuicklyPanelTest : public QObject {
    Q_OBJECT
private slots:
    void returnOpensTheSelectedDomain()
    {
        Browser browser;
        QVERIFY(browser.ready());
        const QString path = browser.select(u"com.example.beta"_s);
        QTest::keyClick(browser.panel->outlineView(), Qt::Key_Return);
        QCOMPARE(browser.documents.documents().size(), 1);
        VXWindowController *window =
            browser.documents.windowForDocument(browser.documents.documents().first());
        QVERIFY(QTest::qWaitFor([window] { return !window->isLoading(); }));
        QCOMPARE(window->document()->fileName(), path);
    }

    void deleteOnTheSheetIsUndoneFromTheEditMenu()
    {
        Browser browser;
        QVERIFY(browser.ready());
        const QString path = browser.select(u"com.example.alpha"_s);
        QTest::keyClick(browser.panel->outlineView(), Qt::Key_Delete);
        auto *sheet = browser.panel->findChild<DeleteSheet *>();
        QVERIFY(sheet && sheet->isVisible());
        QVERIFY(sheet->question().contains(u"com.example.alpha.plist"_s));
        QVERIFY(QFile::exists(path));             // nothing goes before the user agrees
        sheet->findChild<QCheckBox *>()->click(); // do not ask again
        QVERIFY(!browser.defaults.boolForKey(SettingsKeys::VXWarnOnDomainDelete));
        for (QPushButton *button : sheet->findChildren<QPushButton *>()) {
            if (button->text() == u"Delete"_s)
                button->click();
        }
        QVERIFY(!QFile::exists(path));
        QAction *undo = browser.panel->actions().undo;
        QVERIFY(QTest::qWaitFor([undo] { return undo->isEnabled(); }));
        QVERIFY(undo->text().contains(u"Delete Domain"_s));
        undo->trigger();
        QFile restored(path);
        QVERIFY(restored.open(QIODevice::ReadOnly));
        QCOMPARE(restored.readAll(), kDomainBytes);
        QVERIFY(browser.panel->actions().redo->isEnabled());
    }

    void searchFieldFiltersAndEscapeRestores()
    {
        Browser browser;
        QVERIFY(browser.ready());
        const int full = browser.topLevelRows();
        QTest::keySequence(browser.panel.get(), QKeySequence::Find);
        SearchField *field = browser.panel->searchField();
        QVERIFY(field->hasFocus());
        QTest::keyClicks(field, u"example"_s);
        QCOMPARE(browser.topLevelRows(), 2);
        // A domain chosen among those found stays chosen in the whole tree.
        const QString chosen = browser.select(u"com.example.beta"_s);
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(browser.topLevelRows(), full);
        QVERIFY(field->text().isEmpty());
        QCOMPARE(browser.application->selectedPaths(), QStringList{chosen});
    }

    void droppedDefaultsLineOpensItsDomain_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("taken");
        QTest::newRow("a defaults write line") << u"defaults write com.example.new Count -int 3"_s << true;
        QTest::newRow("the command not first") << u"# defaults write com.example.new Count -int 3"_s << false;
    }
    void droppedDefaultsLineOpensItsDomain()
    {
        QFETCH(QString, text);
        QFETCH(bool, taken);
        Browser browser;
        QVERIFY(browser.ready());
        QObject::connect(browser.application.get(), &openDomain::applyDefaultsRequested, &browser.documents,
                         &VXDocumentController::applyDefaults);
        QMimeData data;
        data.setText(text);
        QWidget *viewport = browser.panel->outlineView()->viewport();
        const QPoint at(10, 10);
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &enter);
        QCOMPARE(enter.isAccepted(), taken);
        if (!taken)
            return;
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &drop);
        const QString path = browser.sandbox.userFolder() + u"/com.example.new.plist"_s;
        QCOMPARE(QFile::permissions(path) & QFileDevice::Permissions(0x0077), QFileDevice::Permissions());
        QTRY_COMPARE(browser.documents.documents().size(), 1);
        plistDocument *document = browser.documents.documents().first();
        QTRY_COMPARE(document->cachedTreeData()->numberOfChildren(), 1);
        QCOMPARE(document->cachedTreeData()->childAtIndex(0)->name(), u"Count"_s);
    }
};

ORVANE_TEST(openQuicklyPanelTest)
#include "openQuicklyPanelTest.moc"
