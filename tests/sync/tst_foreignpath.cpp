#include "sync/foreignpath.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace quillet;

class TestForeignPath : public QObject
{
    Q_OBJECT

    QTemporaryDir *m_dir = nullptr;
    QString base() const { return m_dir->path() + QStringLiteral("/base"); }
    QString outside() const { return m_dir->path() + QStringLiteral("/outside"); }

private Q_SLOTS:
    void init()
    {
        m_dir = new QTemporaryDir;
        QVERIFY(QDir().mkpath(base() + QStringLiteral("/Smith/sub")));
        QVERIFY(QDir().mkpath(outside()));
        QFile sentinel(outside() + QStringLiteral("/sentinel.jpg"));
        QVERIFY(sentinel.open(QIODevice::WriteOnly));
        // Links inside the base: one to a folder outside, one dangling, one to a folder inside.
        QVERIFY(QFile::link(outside(), base() + QStringLiteral("/escape")));
        QVERIFY(QFile::link(outside() + QStringLiteral("/nothing-here"), base() + QStringLiteral("/dangling")));
        QVERIFY(QFile::link(base() + QStringLiteral("/Smith"), base() + QStringLiteral("/alias")));
        QVERIFY(QFile::link(outside() + QStringLiteral("/sentinel.jpg"), base() + QStringLiteral("/Smith/photo.jpg")));
    }
    void cleanup() { delete m_dir; }

    void resolves_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("expected"); // relative to the base, "" when refused
        QTest::newRow("bare name") << "IMG_0001.jpg" << "IMG_0001.jpg";
        QTest::newRow("backslash") << "Smith\\IMG_0001.jpg" << "Smith/IMG_0001.jpg";
        QTest::newRow("slash") << "Smith/sub/IMG_0001.jpg" << "Smith/sub/IMG_0001.jpg";
        QTest::newRow("folder operand") << "Smith\\" << "Smith";
        QTest::newRow("missing folders") << "New Family\\a\\b.jpg" << "New Family/a/b.jpg";
        QTest::newRow("link inside the base") << "alias\\x.jpg" << "alias/x.jpg";
        QTest::newRow("tag characters") << "IMG(#12#P#).jpg" << "IMG(#12#P#).jpg";
        QTest::newRow("dots in a name") << "..hidden..jpg" << "..hidden..jpg";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("dot-dot") << "..\\outside\\sentinel.jpg" << "";
        QTest::newRow("dot-dot inside") << "Smith\\..\\..\\outside\\sentinel.jpg" << "";
        QTest::newRow("dot-dot slash") << "Smith/../../outside/sentinel.jpg" << "";
        QTest::newRow("dot segment") << "Smith\\.\\x.jpg" << "";
        QTest::newRow("leading backslash") << "\\etc\\passwd" << "";
        QTest::newRow("leading slash") << "/etc/passwd" << "";
        QTest::newRow("unc") << "\\\\server\\share\\x.jpg" << "";
        QTest::newRow("drive letter") << "C:\\Windows\\x.jpg" << "";
        QTest::newRow("drive relative") << "C:x.jpg" << "";
        QTest::newRow("colon inside") << "Smith\\C:x.jpg" << "";
        QTest::newRow("empty segment") << "Smith\\\\x.jpg" << "";
        QTest::newRow("nul") << QStringLiteral("Smith\\x") + QChar(0) + QStringLiteral(".jpg") << "";
        QTest::newRow("newline") << "Smith\\x\n.jpg" << "";
        QTest::newRow("link to outside folder") << "escape\\sentinel.jpg" << "";
        QTest::newRow("link to outside itself") << "escape" << "";
        QTest::newRow("dangling link") << "dangling" << "";
        QTest::newRow("file link to outside") << "Smith\\photo.jpg" << "";
    }
    void resolves()
    {
        QFETCH(QString, relative);
        QFETCH(QString, expected);
        const ForeignPath p = ForeignPath::resolve(base(), relative);
        // A base kept for a run answers alike once it has its canonical form.
        ForeignBase kept(base());
        QVERIFY(kept.resolve(QStringLiteral("IMG_0001.jpg")).ok());
        const ForeignPath again = kept.resolve(relative);
        QCOMPARE(again.path(), p.path());
        QCOMPARE(again.refusal(), p.refusal());
        if (expected.isEmpty()) {
            QVERIFY2(!p.ok(), qPrintable(p.path()));
            QVERIFY(!p.refusal().isEmpty());
            QVERIFY(p.path().isEmpty());
        } else {
            QVERIFY2(p.ok(), qPrintable(p.refusal()));
            QCOMPARE(p.path(), base() + QLatin1Char('/') + expected);
        }
    }

    void missingBaseRefused()
    {
        const ForeignPath p = ForeignPath::resolve(m_dir->path() + QStringLiteral("/unplugged"), QStringLiteral("x.jpg"));
        QVERIFY(!p.ok());
        QVERIFY(p.refusal().contains(QStringLiteral("unplugged")));
        QVERIFY(!ForeignPath::resolve(QString(), QStringLiteral("x.jpg")).ok());
    }

    void baseChangedDuringTheRun_data()
    {
        QTest::addColumn<QString>("change");
        QTest::newRow("moved away") << "moved";
        QTest::newRow("replaced by a link to outside") << "link";
        QTest::newRow("replaced by a new folder") << "new";
    }
    // A base kept for a run takes its canonical form again when its name leads elsewhere: it
    // answers as a fresh resolve would, never from the folder it saw before.
    void baseChangedDuringTheRun()
    {
        QFETCH(QString, change);
        ForeignBase kept(base());
        QVERIFY(kept.resolve(QStringLiteral("x.jpg")).ok());
        QVERIFY(QDir().rename(base(), m_dir->path() + QStringLiteral("/old")));
        if (change == QLatin1String("link"))
            QVERIFY(QFile::link(outside(), base()));
        else if (change == QLatin1String("new"))
            QVERIFY(QDir().mkpath(base()));
        for (const QString &relative : {QStringLiteral("x.jpg"), QStringLiteral("sentinel.jpg"), QStringLiteral("Smith\\a.jpg")}) {
            const ForeignPath fresh = ForeignPath::resolve(base(), relative);
            const ForeignPath p = kept.resolve(relative);
            QCOMPARE(p.path(), fresh.path());
            QCOMPARE(p.ok(), fresh.ok());
            QCOMPARE(kept.isInside(base() + QLatin1Char('/') + relative), ForeignPath::isInside(base(), base() + QLatin1Char('/') + relative));
        }
        QCOMPARE(kept.resolve(QStringLiteral("x.jpg")).ok(), change != QLatin1String("moved"));
    }

    void isInside()
    {
        QVERIFY(ForeignPath::isInside(base(), base()));
        QVERIFY(ForeignPath::isInside(base(), base() + QStringLiteral("/Smith/new/x.jpg")));
        QVERIFY(!ForeignPath::isInside(base(), outside() + QStringLiteral("/sentinel.jpg")));
        QVERIFY(!ForeignPath::isInside(base(), base() + QStringLiteral("/escape/sentinel.jpg")));
        QVERIFY(!ForeignPath::isInside(base(), base() + QStringLiteral("/../outside")));
        // A sibling whose name starts with the base's name is not inside it.
        QVERIFY(QDir().mkpath(base() + QStringLiteral("2")));
        QVERIFY(!ForeignPath::isInside(base(), base() + QStringLiteral("2/x.jpg")));
    }
};

QTEST_GUILESS_MAIN(TestForeignPath)
#include "tst_foreignpath.moc"
