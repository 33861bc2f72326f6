#include "app/clsfamily.h"
#include "app/colfamilies.h"
#include "lib/error.h"

#include <QSqlField>
#include <QSqlRecord>
#include <QTest>

using namespace quillet;

namespace {

QSqlRecord row(const QVariantMap &values)
{
    QSqlRecord r;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        QSqlField f(it.key(), it.value().metaType());
        f.setValue(it.value());
        r.append(f);
    }
    return r;
}

} // namespace

class TestFamilyRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dayFlags()
    {
        const clsFamily f = clsFamily::FromRecord(row({{"FamilyID", 4}, {"FirstName", "Ann"}, {"FamDaysTHpm", -1},
                                                       {"FamDaysOverride", 0}}));
        QVERIFY(f.FamDaysByName(QStringLiteral("FamDaysTHpm")));
        QVERIFY(f.FamDays(1, 3));
        QVERIFY(!f.FamDaysByName(QStringLiteral("FamDaysTpm")));
        QVERIFY(!f.FamDaysByName(QStringLiteral("FamDaysSam")));
        // The override folds into every session of every day.
        const clsFamily all = clsFamily::FromRecord(row({{"FamilyID", 4}, {"FirstName", "Ann"},
                                                         {"FamDaysOverride", -1}, {"FamDaysTam", 0}}));
        for (int s = 0; s < 2; ++s)
            for (int d = 0; d < clsFamily::kDays; ++d)
                QVERIFY(all.FamDays(s, d));
    }

    void nullsStayNull()
    {
        QSqlRecord r = row({{"FamilyID", 1}, {"FirstName", "Ann"}, {"Current", -1}});
        QSqlField last(QStringLiteral("LastName"), QMetaType(QMetaType::QString));
        last.clear();
        r.append(last);
        const clsFamily f = clsFamily::FromRecord(r);
        QVERIFY(f.LastName.isNull());
        QVERIFY(f.Parent.isNull());
        QVERIFY(f.Current);
        QCOMPARE(f.DisplayName(), QStringLiteral("Ann"));
        clsFamily g = f;
        g.LastName = QStringLiteral("Lee");
        QCOMPARE(g.DisplayName(), QStringLiteral("Ann Lee"));
    }

    void collection()
    {
        colFamilies c;
        c.Add(7).FirstName = QStringLiteral("Bob");
        c.Add(3, QStringLiteral("k3")).FirstName = QStringLiteral("Ann");
        QCOMPARE(c.Count(), 2);
        QCOMPARE(c.item(1).FamilyID, 7);
        QCOMPARE(c.item(QStringLiteral("k3")).FirstName, QStringLiteral("Ann"));
        QList<int> order;
        for (const clsFamily &f : c)
            order << f.FamilyID;
        QCOMPARE(order, (QList<int>{7, 3}));
        c.Remove(1);
        QCOMPARE(c.item(1).FamilyID, 3);
        QVERIFY_THROWS_EXCEPTION(Error, c.item(2));
        QVERIFY_THROWS_EXCEPTION(Error, c.item(QStringLiteral("nope")));
    }

    void keysIgnoreLetterCase()
    {
        colFamilies c;
        c.Add(1, QStringLiteral("K1"));
        QCOMPARE(c.item(QStringLiteral("k1")).FamilyID, 1);
        QVERIFY_THROWS_EXCEPTION(Error, c.Add(2, QStringLiteral("k1")));
        QCOMPARE(c.Count(), 1);
        c.Add(3);
        c.Add(4, QStringLiteral("K4"));
        c.Remove(QStringLiteral("k4"));
        QCOMPARE(c.Count(), 2);
        QCOMPARE(c.item(2).FamilyID, 3);
        QVERIFY_THROWS_EXCEPTION(Error, c.Remove(QStringLiteral("K4")));
    }
};

QTEST_GUILESS_MAIN(TestFamilyRecords)
#include "tst_familyrecords.moc"
