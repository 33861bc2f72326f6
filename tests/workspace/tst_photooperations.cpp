#include "allocationfixture.h"

#include "lib/apppaths.h"
#include "support/listthumbnails.h"
#include "support/testjpeg.h"
#include "workspace/photooperations.h"

#include <QImageReader>
#include <QStandardPaths>

using namespace quillet;
using namespace quillet::test;

class TestPhotoOperations : public QObject
{
    Q_OBJECT

    std::unique_ptr<AllocationFixture> m_fx;
    Workspace *m_ws = nullptr;
    ScriptedPrompt *m_port = nullptr;

    QString src(const QString &name) const { return m_fx->src(name); }

    void photo(const QString &name)
    {
        TestJpeg want;
        want.size = QSize(64, 48); // whole JPEG blocks: the turn is exact
        want.dateTaken = QStringLiteral("2024:03:05 09:00:00");
        QVERIFY(writeTestJpeg(src(name), want));
        lib_SetFileDate(src(name), QLatin1Char('M'), QDateTime(QDate(2024, 3, 5), QTime(9, 0)));
    }

    void load(bool thumbnails)
    {
        m_ws->options().thumbnails = thumbnails;
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::Done);
        m_port->progressCaptions.clear();
    }

    void select(const QStringList &names) { m_fx->selectPhotos(names); }
    static QByteArray journal() { return fileBytes(Batchfile::CurrentPath()); }

private Q_SLOTS:
    void init()
    {
        m_fx = std::make_unique<AllocationFixture>();
        m_ws = m_fx->ws.get();
        m_port = &m_fx->port;
        for (const char *name : {"a.jpg", "b.jpg", "c.jpg", "sub/d.jpg"})
            photo(QLatin1String(name));
    }
    void cleanup() { m_fx.reset(); }

    void rotateTurnsKeepsTimeAndJournals()
    {
        load(true);
        QVERIFY(test::waitForAllThumbnails(m_ws->sourceList()));
        const QImage before = m_ws->sourceList().thumbnailAt(0);
        select({QStringLiteral("a.jpg"), QStringLiteral("b.jpg")});
        QVERIFY(PhotoOperations(*m_ws).RotateSelected(true));
        QVERIFY(m_port->progressCaptions.isEmpty()); // two photos: no progress report
        QCOMPARE(QImageReader(src(QStringLiteral("a.jpg"))).size(), QSize(48, 64));
        QCOMPARE(lib_FileDate(src(QStringLiteral("a.jpg"))), QDateTime(QDate(2024, 3, 5), QTime(9, 0)));
        QCOMPARE(m_ws->sourceList().thumbnailAt(0).size(), before.size().transposed());
        QCOMPARE(journal().mid(journal().indexOf("RSR")), QByteArray("RSR\r\na.jpg\r\nRSR\r\nb.jpg\r\n"));

        select({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("c.jpg")});
        QVERIFY(PhotoOperations(*m_ws).RotateSelected(false));
        QCOMPARE(m_port->progressCaptions, QStringList{"Reloading thumbnails..."});
        QCOMPARE(QImageReader(src(QStringLiteral("a.jpg"))).size(), QSize(64, 48));
        QVERIFY(journal().endsWith("RSL\r\nc.jpg\r\n"));
    }

    void nothingSelectedNothingHappens()
    {
        load(false);
        QVERIFY(!PhotoOperations(*m_ws).RotateSelected(true));
        QVERIFY(!PhotoOperations(*m_ws).DeleteSelected().has_value());
        QVERIFY(m_port->messages().isEmpty());
        QVERIFY(!QFile::exists(Batchfile::CurrentPath()));
    }

    void deleteAsksAndSelectsTheNewLast()
    {
        load(false);
        const int count = m_ws->sourceList().rowCount();
        select({m_ws->sourceList().at(count - 1).text});
        const QString last = m_ws->srcFiles().row(m_ws->sourceList().at(count - 1).row).PathFile;
        m_port->answer(false);
        QVERIFY(!PhotoOperations(*m_ws).DeleteSelected().has_value());
        QVERIFY(QFile::exists(last));
        m_port->answer(true);
        QCOMPARE(PhotoOperations(*m_ws).DeleteSelected(), std::optional<int>(count - 2));
        QCOMPARE(m_port->lastText(), QStringLiteral("Delete selected pictures (there is no built-in undo for this).  Are you sure?"));
        QVERIFY(!QFile::exists(last));
        QCOMPARE(m_ws->sourceList().rowCount(), count - 1);
        const QString trash = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Trash/files");
        QCOMPARE(QDir(trash).entryList(QDir::Files).size(), 1);
        QVERIFY(journal().endsWith(QByteArray("DS\r\n" + Batchfile::RelativePath(last, m_fx->src()).toUtf8() + "\r\n")));
    }

    void putAsideMovesIntoTheFolderItself_data()
    {
        QTest::addColumn<bool>("journaling");
        QTest::newRow("journaled with its sub-folder") << true;
        QTest::newRow("batchfiles off: no journal touched") << false;
    }
    void putAsideMovesIntoTheFolderItself()
    {
        QFETCH(bool, journaling);
        WriteSetting(QStringLiteral("CreateBatchs"), journaling);
        load(false);
        select({QStringLiteral("d.jpg")});
        m_port->answer(true);
        QVERIFY(PhotoOperations(*m_ws).PutAsideSelected().has_value());
        QVERIFY(m_port->lastText().startsWith(QStringLiteral("Move selected photos to temp folder ") + PhotoOperations::PutAsideDir()));
        QVERIFY(m_port->lastText().endsWith(QStringLiteral(" (there is no built-in undo for this).  Are you sure?")));
        QVERIFY(QFile::exists(PhotoOperations::PutAsideDir() + QStringLiteral("d.jpg")));
        QVERIFY(!QFile::exists(src(QStringLiteral("sub/d.jpg"))));
        if (journaling)
            QVERIFY(journal().endsWith("MS\r\nsub\\d.jpg\r\n"));
        else
            QVERIFY(!QFile::exists(Batchfile::CurrentPath()));
    }
};

QTEST_GUILESS_MAIN(TestPhotoOperations)
#include "tst_photooperations.moc"
