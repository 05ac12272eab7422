// The crash dialog gives back the user's answer: Send with the note typed,
// or Cancel (also by Escape), and never both.
#include "TestRegistry.h"

#include "ui/CrashReportDialog.h"

#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class CrashReportDialogTest : public QObject {
    Q_OBJECT
private slots:
    void answers_data()
    {
        QTest::addColumn<bool>("send"); // else Escape
        QTest::addColumn<QString>("typed");
        QTest::newRow("send with a note") << true << u"It broke while I was saving."_s;
        QTest::newRow("send without one") << true << QString();
        QTest::newRow("escape cancels") << false << u"never mind"_s;
    }
    void answers()
    {
        QFETCH(bool, send);
        QFETCH(QString, typed);
        const QString report = u"**********\nDate: today\nSignal: 11\n"_s;
        CrashReportDialog dialog(report);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QSignalSpy sent(&dialog, &CrashReportDialog::sendRequested);
        QSignalSpy cancelled(&dialog, &CrashReportDialog::cancelled);
        auto *shown = dialog.findChild<QPlainTextEdit *>(u"crashReport"_s);
        QVERIFY(shown->isReadOnly());
        QCOMPARE(shown->toPlainText(), report);
        // The note has the keyboard from the start.
        QTest::keyClicks(QApplication::focusWidget(), typed);
        if (send)
            dialog.findChild<QPushButton *>(u"sendButton"_s)->click();
        else
            QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(sent.size(), send ? 1 : 0);
        QCOMPARE(cancelled.size(), send ? 0 : 1);
        if (send)
            QCOMPARE(sent.first().first().toString(), typed);
    }
};

ORVANE_TEST(CrashReportDialogTest)
#include "CrashReportDialogTest.moc"
