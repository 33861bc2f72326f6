#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "lib/fileutils.h"
#include "support/hometest.h"
#include "support/testjpeg.h"
#include "workspace/maintenancetools.h"
#include "workspace/srcfiles.h"

#include <QFile>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// The maintenance tools on real files: dates set from EXIF dates, the source table as text and
// the reset of the stored window positions.
class TestMaintenanceTools : public HomeTest
{
    Q_OBJECT

    const QDateTime kTaken = QDateTime(QDate(2009, 3, 14), QTime(15, 9, 26));

    // A camera JPEG taken at kTaken whose modified date is kTaken shifted by `offsetSecs`.
    QString photo(const QString &relative, qint64 offsetSecs, bool exif = true)
    {
        TestJpeg want;
        want.size = QSize(32, 24);
        want.noExif = !exif;
        want.dateTaken = QStringLiteral("2009:03:14 15:09:26");
        const QString path = m_env->path(relative);
        if (!writeTestJpeg(path, want))
            return QString();
        lib_SetFileDate(path, QLatin1Char('M'), kTaken.addSecs(offsetSecs));
        return path;
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        m_env->dataDir();
    }

    void syncComparesWholeMinutes_data()
    {
        QTest::addColumn<qint64>("offset"); // modified date minus EXIF date, in seconds
        QTest::addColumn<bool>("changed");
        QTest::newRow("same") << qint64(0) << false;
        QTest::newRow("seconds later, same minute") << qint64(30) << false;
        QTest::newRow("seconds earlier, same minute") << qint64(-26) << false;
        QTest::newRow("next minute by seconds") << qint64(40) << true;
        QTest::newRow("an hour off (time zone)") << qint64(3600) << true;
        QTest::newRow("a day earlier") << qint64(-86400) << true;
    }
    void syncComparesWholeMinutes()
    {
        QFETCH(qint64, offset);
        QFETCH(bool, changed);
        const QString path = photo(QStringLiteral("pics/IMG_1.jpg"), offset);
        QVERIFY(!path.isEmpty());
        const QDateTime before = lib_FileDate(path);
        m_port->choose(m_env->path(QStringLiteral("pics")));
        m_port->answer(false);
        const MaintenanceTools::SyncResult r = MaintenanceTools::SyncDatesMfromE(m_env->path(QStringLiteral("src")));
        QVERIFY(r.ran);
        QCOMPARE(r.analysed, 1);
        QCOMPARE(r.updated, changed ? 1 : 0);
        QCOMPARE(lib_FileDate(path), changed ? kTaken : before);
        QCOMPARE(m_port->chooserStart, m_env->path(QStringLiteral("src")));
        QCOMPARE(m_port->chooserPrompt,
                 QStringLiteral("This will sync the mod date to the EXIF date for all picture files.\r\nContinue?"));
    }

    void syncCountsAndSubfolders_data()
    {
        QTest::addColumn<bool>("subfolders");
        QTest::addColumn<QString>("result");
        QTest::newRow("folder only") << false << QStringLiteral("1 file updated (out of 4 analysed)");
        QTest::newRow("with subfolders") << true << QStringLiteral("2 files updated (out of 5 analysed)");
    }
    void syncCountsAndSubfolders()
    {
        QFETCH(bool, subfolders);
        QFETCH(QString, result);
        photo(QStringLiteral("pics/A.jpg"), 600);
        photo(QStringLiteral("pics/B.JPG"), 10);
        photo(QStringLiteral("pics/C.jpg"), 600, false);             // no EXIF date: analysed, left alone
        m_env->writeFile(QStringLiteral("pics/clip.mov"), "not a photo"); // accepted name, no EXIF
        photo(QStringLiteral("pics/D.jpeg"), 600);                    // not an accepted name
        m_env->writeFile(QStringLiteral("pics/notes.txt"), "x");
        photo(QStringLiteral("pics/sub/E.jpg"), -600);
        m_port->choose(m_env->path(QStringLiteral("pics")));
        m_port->answer(subfolders);
        const MaintenanceTools::SyncResult r = MaintenanceTools::SyncDatesMfromE(QString());
        QCOMPARE(r.text(), result);
        QCOMPARE(m_port->texts().first(), QStringLiteral("Include subdirectories?"));
        QCOMPARE(m_port->progressCaptions, QStringList{QStringLiteral("Syncing dates...")});
        QCOMPARE(m_port->progressMax, subfolders ? 7 : 6); // every file counted, whatever its name
        QVERIFY(!m_port->progressVisible);
        QVERIFY(lib_FileDate(m_env->path(QStringLiteral("pics/D.jpeg"))) != kTaken);
        QCOMPARE(lib_FileDate(m_env->path(QStringLiteral("pics/sub/E.jpg"))) == kTaken, subfolders);
    }

    void cancelledChooserChangesNothing()
    {
        const QString path = photo(QStringLiteral("pics/A.jpg"), 600);
        const QDateTime before = lib_FileDate(path);
        const MaintenanceTools::SyncResult r = MaintenanceTools::SyncDatesMfromE(m_env->path(QStringLiteral("pics")));
        QVERIFY(!r.ran);
        QVERIFY(m_port->messages().isEmpty()); // not even the subfolder question
        QVERIFY(m_port->progressCaptions.isEmpty());
        QCOMPARE(lib_FileDate(path), before);
    }

    void closingTheProgressStopsTheRun()
    {
        for (const char *name : {"A.jpg", "B.jpg", "C.jpg", "D.jpg"})
            photo(QStringLiteral("pics/") + QLatin1String(name), 600);
        m_port->choose(m_env->path(QStringLiteral("pics")));
        m_port->answer(false);
        m_port->cancelAtPosition = 2;
        const MaintenanceTools::SyncResult r = MaintenanceTools::SyncDatesMfromE(QString());
        QVERIFY(r.updated < 4);
        QCOMPARE(lib_FileDate(m_env->path(QStringLiteral("pics/D.jpg"))), kTaken.addSecs(600));
    }

    void srcFilesText()
    {
        SrcFiles table;
        QCOMPARE(MaintenanceTools::SrcFilesText(table), QStringLiteral("\r\nPath\\File,File No FamIDs,Allocated"));
        table.AddScannedFile(QStringLiteral("/photos/IMG_1(#7#).jpg"));
        table.AddScannedFile(QStringLiteral("/photos/IMG_2.jpg"));
        QCOMPARE(MaintenanceTools::SrcFilesText(table),
                 QStringLiteral("\r\nPath\\File,File No FamIDs,Allocated"
                                "\r\n/photos/IMG_1(#7#).jpg,IMG_1.jpg,true"
                                "\r\n/photos/IMG_2.jpg,IMG_2.jpg,false"));
    }

    void resetFormsClearsTheThreeRectangles_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void resetFormsClearsTheThreeRectangles()
    {
        QFETCH(bool, yes);
        for (const char *key : {"FormRectMn", "FormRectEP1", "FormRectEP2"})
            WriteSetting(QLatin1String(key), QStringLiteral("500;0;400;0"));
        WriteSetting(QStringLiteral("FormRectSettings"), QStringLiteral("kept"));
        m_port->answer(yes);
        QCOMPARE(MaintenanceTools::ResetForms(), yes);
        QCOMPARE(m_port->lastText(), QStringLiteral("This will reset the forms then end the program. Changes take "
                                                    "effect when you restart the program.\r\nContinue?"));
        for (const char *key : {"FormRectMn", "FormRectEP1", "FormRectEP2"})
            QCOMPARE(ReadSetting(QLatin1String(key)).isEmpty(), yes);
        QCOMPARE(ReadSetting(QStringLiteral("FormRectSettings")), QStringLiteral("kept"));
    }
};

QTEST_GUILESS_MAIN(TestMaintenanceTools)
#include "tst_maintenancetools.moc"
