#include "workspace/familylistmodel.h"
#include "workspace/orderedprefetch.h"
#include "workspace/sourcelistmodel.h"
#include "workspace/thumbnailstore.h"

#include <QAtomicInt>
#include <QMutex>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace quillet;

class TestListModels : public QObject
{
    Q_OBJECT

    static SourceListModel::Entry entry(int row, const QString &text)
    {
        SourceListModel::Entry e;
        e.row = row;
        e.text = text;
        e.tag = e.colour = QStringLiteral("BLACK");
        return e;
    }

private Q_SLOTS:
    void keysAndSelection()
    {
        SourceListModel m;
        m.append(entry(3, QStringLiteral("a.jpg")));
        m.append(entry(17, QStringLiteral("b.jpg")));
        QCOMPARE(m.data(m.index(1), SourceListModel::KeyRole).toString(), QStringLiteral("K17"));
        QCOMPARE(SourceListModel::RowOfKey(QStringLiteral("K17")), 17);
        QCOMPARE(m.positionOfRow(17), 1);
        QCOMPARE(m.positionOfRow(4), -1);

        QSignalSpy changed(&m, &SourceListModel::selectionChanged);
        m.setSelected(1, true);
        m.setSelected(1, true); // no change, no signal
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m.selectedRows(), QList<int>{17});
        m.HighlightSourceSelections(true);
        QVERIFY(m.at(1).ghosted && !m.at(0).ghosted);
        m.HighlightSourceSelections(false);
        QVERIFY(!m.at(1).ghosted);
        m.removeAt(1);
        QCOMPARE(changed.count(), 2); // a selected entry left
        QVERIFY(m.selectedRows().isEmpty());
    }

    void viewsShowDifferentThings()
    {
        SourceListModel m;
        ThumbnailStore store([](const QString &) { return QImage(); });
        m.setThumbnailSource(&store, [](int) { return QString(); });
        m.append(entry(1, QStringLiteral("IMG_1.jpg")));
        store.put(1, QImage(96, 72, QImage::Format_RGB32));
        m.setThumbnailView(true);
        QVERIFY(!m.data(m.index(0), Qt::DisplayRole).isValid());
        QCOMPARE(m.data(m.index(0), Qt::DecorationRole).value<QImage>().size(), QSize(96, 72));
        m.setThumbnailView(false);
        QCOMPARE(m.data(m.index(0), Qt::DisplayRole).toString(), QStringLiteral("IMG_1.jpg"));
        QCOMPARE(m.data(m.index(0), Qt::DecorationRole).value<QImage>().size(), QSize(12, 12));
    }

    void insertByName()
    {
        const QStringList names = {QString(), QStringLiteral("b.jpg"), QStringLiteral("d.jpg"), QStringLiteral("a.jpg"),
                                   QStringLiteral("c.jpg"), QStringLiteral("e.jpg")};
        auto nameOf = [&names](int row) { return names.value(row); };
        SourceListModel m;
        m.append(entry(1, names[1]));
        m.append(entry(2, names[2]));
        m.insertByName(entry(4, names[4]), nameOf); // between
        m.insertByName(entry(3, names[3]), nameOf); // first
        m.insertByName(entry(5, names[5]), nameOf); // last
        QStringList order;
        for (int i = 0; i < m.rowCount(); ++i)
            order << m.at(i).text;
        QCOMPARE(order, (QStringList{"a.jpg", "b.jpg", "c.jpg", "d.jpg", "e.jpg"}));
    }

    void familySelection()
    {
        FamilyListModel m;
        m.setEntries({{QStringLiteral("Ann Lee"), 3, false},
                      {QStringLiteral("(Staff)"), 9, false},
                      {QStringLiteral(" (Keep Private)"), FamilyListModel::kPrivacyMarkerId, false},
                      {QStringLiteral("Bob"), 7, false}});
        m.selectAll();
        QCOMPARE(m.selectedPositions(), (QList<int>{0, 3}));
        m.clearSelection();
        QVERIFY(!m.anyRealFamilySelected());
        m.setSelected(m.privacyMarkerPosition(), true);
        QVERIFY(!m.anyRealFamilySelected()); // the marker alone cannot be saved
        m.setSelected(m.positionOfId(7), true);
        QVERIFY(m.anyRealFamilySelected());
    }

    void prefetchKeepsOrderAndBoundsTheWindow()
    {
        QAtomicInt started;
        OrderedPrefetch<int> prefetch(
            50,
            [&](int i) {
                started.fetchAndAddOrdered(1);
                QThread::msleep(i % 3);
                return i * i;
            },
            8);
        int timerTicks = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] { ++timerTicks; });
        timer.start(0);
        for (int i = 0; i < 50; ++i) {
            QCOMPARE(prefetch.take(i), i * i);
            QVERIFY(started.loadRelaxed() <= std::min(50, i + 8)); // never more than the window ahead
        }
        QVERIFY(timerTicks > 0); // events ran while waiting
    }

    void prefetchCancelStopsEarly()
    {
        QAtomicInt started;
        {
            OrderedPrefetch<int> prefetch(1000, [&](int i) { started.fetchAndAddOrdered(1); return i; }, 4);
            QCOMPARE(prefetch.take(0), 0);
            prefetch.cancel();
        }
        QVERIFY(started.loadRelaxed() <= 4);
    }

    // A result that arrives after its row was cleared or given a newer picture is dropped: a new
    // load reuses row numbers, and a rotation's thumbnail must not be overwritten by the old one.
    void storeDropsStaleResults_data()
    {
        QTest::addColumn<QString>("meanwhile");
        QTest::addColumn<bool>("held");
        QTest::addColumn<int>("width");
        QTest::newRow("nothing") << QString() << true << 10;
        QTest::newRow("cleared") << QStringLiteral("clear") << false << 0;
        QTest::newRow("put") << QStringLiteral("put") << true << 20;
    }
    void storeDropsStaleResults()
    {
        QFETCH(QString, meanwhile);
        QFETCH(bool, held);
        QFETCH(int, width);
        auto gate = std::make_shared<QSemaphore>();
        const auto openGate = qScopeGuard([gate] { gate->release(100); });
        ThumbnailStore store([gate](const QString &) {
            gate->acquire();
            return QImage(10, 10, QImage::Format_RGB32);
        });
        QSignalSpy ready(&store, &ThumbnailStore::ready);
        store.request({{1, QStringLiteral("a.jpg")}});
        QCOMPARE(store.pendingCount(), 1);
        if (meanwhile == QLatin1String("clear"))
            store.clear();
        else if (meanwhile == QLatin1String("put"))
            store.put(1, QImage(20, 20, QImage::Format_RGB32));
        gate->release();
        QTRY_COMPARE(store.pendingCount(), 0);
        QTest::qWait(20); // a dropped result would have arrived by now
        QCOMPARE(store.has(1), held);
        QCOMPARE(store.image(1).width(), width);
        QCOMPARE(ready.count(), meanwhile.isEmpty() ? 1 : 0);
    }

    // A new request replaces what was queued and not started: after a scroll, the rows that left
    // the view are not made; rows held or being made are not asked for twice.
    void storeRequestReplacesTheQueue()
    {
        QStringList made;
        QMutex lock;
        ThumbnailStore store([&](const QString &path) {
            QMutexLocker locked(&lock);
            made << path;
            return QImage(4, 4, QImage::Format_RGB32);
        });
        QList<std::pair<int, QString>> first, second;
        for (int row = 1; row <= 40; ++row)
            first.append({row, QStringLiteral("old%1").arg(row)});
        for (int row = 100; row < 104; ++row)
            second.append({row, QStringLiteral("new%1").arg(row)});
        store.request(first);
        store.request(second + first.mid(0, 1));
        QTRY_COMPARE(store.pendingCount(), 0);
        QMutexLocker locked(&lock);
        QVERIFY(made.size() <= 4 + QThread::idealThreadCount()); // at most the started old ones
        for (int row = 100; row < 104; ++row)
            QVERIFY(made.contains(QStringLiteral("new%1").arg(row)));
        QCOMPARE(made.count(QStringLiteral("old1")), 1);
        store.retainOnly({100, 101});
        QCOMPARE(store.heldCount(), 2);
    }
};

QTEST_GUILESS_MAIN(TestListModels)
#include "tst_listmodels.moc"
