// The find window over a small account: a search shown as its result line and
// tree, the rows' menu enabled by the selection and the tabs setting, rows of
// one domain opening its document once, and the frame and close notice.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "document/plistDocument.h"
#include "domains/SettingsKeys.h"
#include "domains/openNode.h"
#include "find/FindOutlineModel.h"
#include "find/FindStrings.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"
#include "ui/VXDocumentController.h"
#include "ui/VXWindowController.h"
#include "ui/findController.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

struct FindWindow {
    FindWindow()
    {
        sandbox.writeDictionary(
            sandbox.userFolder() + u"/com.a.plist"_s,
            {{u"Greeting"_s, PropertyList(u"Hello"_s)},
             {u"Outer"_s, PropertyDictionary{{u"Deep"_s, PropertyList(u"hello again"_s)}}}});
        sandbox.writeDictionary(sandbox.userFolder() + u"/com.b.plist"_s,
                                {{u"x"_s, PropertyList::integer(1)}});
    }
    void find(const QString &term)
    {
        window.searchField()->setText(term);
        QTest::mouseClick(window.findButton(), Qt::LeftButton);
    }
    QModelIndex row(const QModelIndex &parent, int row) const
    {
        return window.model()->index(row, 0, parent);
    }
    void select(const QModelIndexList &rows)
    {
        QItemSelectionModel *selection = window.outlineView()->selectionModel();
        selection->clearSelection();
        for (const QModelIndex &index : rows)
            selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    VXDocumentController documents{{{service, defaults}, center}};
    findController window{documents, service, defaults, center};
};

} // namespace

class findControllerTest : public QObject {
    Q_OBJECT
private slots:
    void searchShowsTheTreeAndOpensDomains();
    void closeRemembersTheFrameAndTellsOthers();
};

void findControllerTest::searchShowsTheTreeAndOpensDomains()
{
    FindWindow f;
    f.window.bringFindToFront();
    f.find(u"nowhere"_s);
    QCOMPARE(f.window.searchResultsText()->text(), u"No match found."_s);
    QCOMPARE(f.window.model()->rowCount(), 0);
    QVERIFY(!f.window.openAction()->isEnabled());

    f.find(u"hello"_s);
    QCOMPARE(f.window.searchResultsText()->text(), u"Found 2 matches in these domains:"_s);
    const QModelIndex domain = f.row({}, 0);
    const QModelIndex deep = f.row(f.row(domain, 1), 0);
    QCOMPARE(deep.data().toString(), u"Deep"_s);
    QCOMPARE(deep.siblingAtColumn(FindOutlineModel::ValueColumn).data().toString(), u"hello again"_s);
    QCOMPARE(domain.data(FindOutlineModel::PresentationRole).toInt(), int(openNode::Presentation::Normal));
    QCOMPARE(deep.data(FindOutlineModel::PresentationRole).toInt(), int(openNode::Presentation::Disabled));
    QVERIFY(f.window.outlineView()->selectionModel()->isRowSelected(0, {}));
    QVERIFY(f.window.openAction()->isEnabled() && f.window.getInfoAction()->isEnabled());
    f.defaults.setBool(false, SettingsKeys::VXDocumentsUseTabs);
    f.select({deep});
    QVERIFY(!f.window.openInNewWindowAction()->isEnabled());
    f.defaults.setBool(true, SettingsKeys::VXDocumentsUseTabs);
    f.select({deep, domain});
    QVERIFY(f.window.openInNewWindowAction()->isEnabled());

    f.window.openAction()->trigger();
    QCOMPARE(f.documents.documents().size(), 1);
    VXWindowController *opened = f.documents.windowForDocument(f.documents.documents().first());
    QVERIFY(QTest::qWaitFor([opened] { return !opened->isLoading(); }));
    QCOMPARE(opened->document()->fileName(), f.sandbox.userFolder() + u"/com.a.plist"_s);
}

void findControllerTest::closeRemembersTheFrameAndTellsOthers()
{
    FindWindow f;
    int closed = 0;
    QObject observer;
    f.center.addObserver(&observer, FindStrings::kFindPanelDidCloseNotification,
                         [&closed](const Notification &) { ++closed; });
    f.window.bringFindToFront();
    f.window.setGeometry(40, 50, 400, 300);
    f.window.close();
    QCOMPARE(closed, 1);
    findController again(f.documents, f.service, f.defaults, f.center);
    again.bringFindToFront();
    QCOMPARE(again.geometry().size(), QSize(400, 300));
}

ORVANE_TEST(findControllerTest)
#include "findControllerTest.moc"
