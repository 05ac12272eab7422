// The information panel's texts for a file: size in the panel's units,
// permissions as "rwx" triples, dates in local time, and nothing for a path
// that is not there.
#include "TestRegistry.h"

#include "domains/FileInformation.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class FileInformationTest : public QObject {
    Q_OBJECT
private slots:
    void texts_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("modified"); // ISO, UTC
        QTest::addColumn<QString>("size");
        QTest::addColumn<QString>("permissions");
        QTest::addColumn<QString>("modificationDate"); // tests run in Europe/Berlin
        QTest::newRow("empty, owner only") << 0 << 0600 << u"2026-03-01T12:34:56Z"_s << u"0 bytes"_s
                                           << u"rw-------"_s << u"1 March 2026, 13:34:56"_s;
        QTest::newRow("KB, readable by all, summer time")
            << 2048 << 0644 << u"2026-07-01T00:00:00Z"_s << u"2.00 KB"_s << u"rw-r--r--"_s
            << u"1 July 2026, 02:00:00"_s;
        QTest::newRow("executable, group writes") << 10 << 0775 << u"2001-01-01T00:00:00Z"_s << u"10 bytes"_s
                                                  << u"rwxrwxr-x"_s << u"1 January 2001, 01:00:00"_s;
    }
    void texts()
    {
        QFETCH(int, bytes);
        QFETCH(int, mode);
        QFETCH(QString, modified);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"a.plist"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(bytes, 'x'));
        QVERIFY(file.flush()); // a later flush would stamp the file with the time of writing
        QVERIFY(file.setFileTime(QDateTime::fromString(modified, Qt::ISODate),
                                 QFileDevice::FileModificationTime));
        file.close();
        // Qt keeps one hexadecimal digit per class, the owner's twice (as owner and as user).
        const int owner = (mode >> 6) & 7, group = (mode >> 3) & 7, other = mode & 7;
        const auto permissions =
            QFileDevice::Permissions::fromInt(owner << 12 | owner << 8 | group << 4 | other);
        QVERIFY(QFile::setPermissions(path, permissions));

        const FileInformation information = FileInformation::of(path);
        QVERIFY(information.exists);
        QTEST(information.size, "size");
        QTEST(information.permissions, "permissions");
        QTEST(information.modificationDate, "modificationDate");
        QVERIFY(!information.owner.isEmpty() && !information.group.isEmpty());
        QVERIFY(!information.creationDate.isEmpty() && !information.accessDate.isEmpty());
    }

    void missingPathShowsNothing()
    {
        const FileInformation information = FileInformation::of(u"/nonexistent/orvane/a.plist"_s);
        QVERIFY(!information.exists);
        QVERIFY(information.size.isEmpty() && information.permissions.isEmpty() &&
                information.modificationDate.isEmpty());
    }
};

ORVANE_TEST(FileInformationTest)
#include "FileInformationTest.moc"
