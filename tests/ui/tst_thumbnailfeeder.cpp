// The photo list's thumbnails in a real list view: made for the rows in view, released far away,
// made again from the desktop cache when the user scrolls back.
#include "app/familydatabase.h"
#include "imaging/cthumbnailgenerator.h"
#include "imaging/thumbnailcache.h"
#include "support/testenv.h"
#include "support/testjpeg.h"
#include "ui/thumbnailfeeder.h"
#include "workspace/workspace.h"

#include "app/settingsstore.h"
#include "lib/appstate.h"

#include <QAtomicInt>
#include <QFile>
#include <QListView>
#include <QScopeGuard>
#include <QScrollBar>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

#include <unistd.h>

using namespace quillet;
using namespace quillet::test;

class TestThumbnailFeeder : public QObject
{
    Q_OBJECT

    TestEnv *m_env = nullptr;
    FamilyDatabase *m_db = nullptr;
    Workspace *m_ws = nullptr;
    QListView *m_view = nullptr;
    ThumbnailFeeder *m_feeder = nullptr;

    // `count` photos: hard links to one real JPEG, each its own file for the thumbnail cache.
    void photos(int count)
    {
        TestJpeg want;
        want.size = QSize(320, 240);
        want.dateTaken = QStringLiteral("2024:03:05 09:41:00");
        const QString original = m_env->path(QStringLiteral("original.jpg"));
        QVERIFY(writeTestJpeg(original, want));
        for (int i = 0; i < count; ++i) {
            const QString name = m_env->srcDir() + QStringLiteral("/IMG_%1.jpg").arg(i, 4, 10, QLatin1Char('0'));
            QVERIFY(::link(QFile::encodeName(original).constData(), QFile::encodeName(name).constData()) == 0);
        }
    }

    void open(PhotoServices services)
    {
        m_ws = new Workspace(*m_db, std::move(services));
        m_ws->ReadSessionSettings();
        m_ws->options().thumbnails = true;
        m_view = new QListView;
        m_view->setViewMode(QListView::IconMode);
        m_view->setIconSize(QSize(96, 96));
        m_view->setGridSize(QSize(104, 104));
        m_view->setResizeMode(QListView::Adjust);
        m_view->setMovement(QListView::Static);
        m_view->setUniformItemSizes(true);
        m_view->setModel(&m_ws->sourceList());
        m_feeder = new ThumbnailFeeder(m_view, &m_ws->sourceList());
        m_view->resize(440, 330);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view));
    }

    QList<int> rowsInView() const
    {
        QList<int> rows;
        for (const QModelIndex &i : m_feeder->positionsInView())
            rows << i.data(SourceListModel::RowRole).toInt();
        return rows;
    }

    bool allInViewReady() const
    {
        const QModelIndexList shown = m_feeder->positionsInView();
        for (const QModelIndex &i : shown) {
            if (!i.data(SourceListModel::ThumbnailReadyRole).toBool())
                return false;
        }
        return !shown.isEmpty();
    }

    void scrollTo(int value)
    {
        m_view->verticalScrollBar()->setValue(value);
        m_feeder->feedNow();
    }

private Q_SLOTS:
    void init()
    {
        m_env = new TestEnv;
        QVERIFY(m_env->makeInstallation());
        m_db = new FamilyDatabase;
        QVERIFY(m_db->OpenDatabase());
        appState().cancel = false;
    }

    void cleanup()
    {
        delete m_view;
        delete m_ws;
        delete m_db;
        delete m_env;
        m_view = nullptr;
        m_ws = nullptr;
    }

    void visibleRowsGetThumbnailsAndFarRowsReleaseThem()
    {
        photos(300);
        open(PhotoServices::Default());
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::Done);
        QCOMPARE(m_ws->sourceList().rowCount(), 300);

        QTRY_VERIFY_WITH_TIMEOUT(allInViewReady(), 20000);
        const QList<int> top = rowsInView();
        const int shown = int(top.size());
        QVERIFY(shown >= 4 && shown < 100);
        for (const QModelIndex &i : m_feeder->positionsInView())
            QCOMPARE(i.data(Qt::DecorationRole).value<QImage>().size(), QSize(96, 72));
        // Only the view, a screenful ahead and half one behind were asked for.
        QTRY_COMPARE(m_ws->thumbnails().pendingCount(), 0);
        QVERIFY(m_ws->thumbnails().heldCount() <= 2 * shown + shown / 2 + 1);

        scrollTo(m_view->verticalScrollBar()->maximum());
        QTRY_VERIFY_WITH_TIMEOUT(allInViewReady(), 20000);
        const QList<int> bottom = rowsInView();
        QVERIFY(bottom.contains(300));
        for (int row : top) {
            QVERIFY2(!m_ws->thumbnails().has(row), qPrintable(QString::number(row)));
            const QModelIndex far = m_ws->sourceList().index(m_ws->sourceList().positionOfRow(row));
            QVERIFY(!far.data(SourceListModel::ThumbnailReadyRole).toBool());
            QCOMPARE(far.data(Qt::DecorationRole).value<QImage>(), m_ws->placeholder());
        }
        // What is held follows the screen, not the folder.
        QVERIFY(m_ws->thumbnails().heldCount() <= (2 * ThumbnailFeeder::kKeepScreens + 1) * shown + shown);

        // Back at the top the released thumbnails come again, from the desktop cache.
        for (int row : top)
            QVERIFY(QFile::exists(ThumbnailCache::entryPath(m_ws->srcFiles().row(row).PathFile)));
        scrollTo(0);
        QTRY_VERIFY_WITH_TIMEOUT(allInViewReady(), 20000);
        QCOMPARE(rowsInView(), top);
    }

    // Until its thumbnail is made an entry shows the placeholder; the arrival repaints it.
    void placeholderUntilReady()
    {
        photos(30);
        auto gate = std::make_shared<QSemaphore>();
        PhotoServices services = PhotoServices::Default();
        services.thumbnail = [gate](const QString &path) {
            gate->acquire();
            return cThumbnailGenerator::thumbnailOrNull(path);
        };
        const auto openGate = qScopeGuard([gate] { gate->release(1000); }); // never leave a worker waiting
        open(services);
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::Done);
        m_feeder->feedNow();
        const QModelIndex first = m_ws->sourceList().index(0);
        QVERIFY(!first.data(SourceListModel::ThumbnailReadyRole).toBool());
        QCOMPARE(first.data(Qt::DecorationRole).value<QImage>(), m_ws->placeholder());

        QSignalSpy changed(&m_ws->sourceList(), &QAbstractItemModel::dataChanged);
        gate->release(1000);
        QTRY_VERIFY(first.data(SourceListModel::ThumbnailReadyRole).toBool());
        QCOMPARE(first.data(Qt::DecorationRole).value<QImage>().size(), QSize(96, 72));
        QVERIFY(!changed.isEmpty());
        QTRY_VERIFY(allInViewReady());
    }

    // A photo whose thumbnail cannot be made keeps the placeholder, and counts as ready.
    void noThumbnailIsFinal()
    {
        photos(3);
        PhotoServices services = PhotoServices::Default();
        services.thumbnail = [](const QString &) { return QImage(); };
        open(services);
        m_ws->LoadSource(true, false);
        QTRY_VERIFY(allInViewReady());
        QCOMPARE(m_ws->sourceList().index(0).data(Qt::DecorationRole).value<QImage>(), m_ws->placeholder());
    }
};

QTEST_MAIN(TestThumbnailFeeder)
#include "tst_thumbnailfeeder.moc"
