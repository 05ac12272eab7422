// The standard folders by their (type, domain) codes: found where they exist,
// never made where they do not.
#include "TemporaryPreferences.h"
#include "TestRegistry.h"

#include "platform/FolderLookup.h"

#include <QDir>
#include <QTest>

using namespace FolderLookup;

class FolderLookupTest : public QObject {
    Q_OBJECT

private slots:
    void folderForType_data()
    {
        QTest::addColumn<quint32>("type");
        QTest::addColumn<int>("domain");
        QTest::addColumn<bool>("makeFolders");
        QTest::addColumn<QString>("expected"); // relative to the temporary account; "-" for none
        QTest::newRow("user folder") << kPreferencesFolderType << int(kUserDomain) << true
                                     << QStringLiteral("home/Library/Preferences");
        QTest::newRow("machine folder from the environment")
            << kPreferencesFolderType << int(kLocalDomain) << true << QStringLiteral("local");
        QTest::newRow("missing user folder") << kPreferencesFolderType << int(kUserDomain) << false
                                             << QStringLiteral("-");
        QTest::newRow("missing machine folder") << kPreferencesFolderType << int(kLocalDomain) << false
                                                << QStringLiteral("-");
        QTest::newRow("temporary folder in the user domain")
            << kTemporaryFolderType << int(kUserDomain) << true << QStringLiteral("-");
    }

    void folderForType()
    {
        QFETCH(quint32, type);
        QFETCH(int, domain);
        QFETCH(bool, makeFolders);
        QFETCH(QString, expected);
        TemporaryPreferences account;
        QVERIFY(account.isValid());
        if (makeFolders)
            QVERIFY(QDir().mkpath(account.userFolder()) && QDir().mkpath(account.local()));
        const std::optional<QString> found = FolderLookup::folderForType(type, FolderDomain(domain));
        const QString root = QDir(account.local()).absoluteFilePath(QStringLiteral(".."));
        QCOMPARE(found.value_or(QStringLiteral("-")),
                 expected == u'-' ? expected : QDir::cleanPath(root + u'/' + expected));
        // Looking a folder up never makes it.
        QCOMPARE(QDir(account.userFolder()).exists(), makeFolders);
        QCOMPARE(QDir(account.local()).exists(), makeFolders);
    }

    void temporaryFolder()
    {
        QCOMPARE(FolderLookup::folderForType(kTemporaryFolderType, kLocalDomain), std::optional(QDir::cleanPath(QDir::tempPath())));
    }
};

ORVANE_TEST(FolderLookupTest)
#include "FolderLookupTest.moc"
