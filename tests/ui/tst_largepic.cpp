#include "ui/frmlargepic.h"
#include "ui/picturebox.h"
#include "uitest.h"

using namespace quillet;
using namespace quillet::test;

class TestLargePic : public QObject
{
    Q_OBJECT

    TestEnv *m_env = nullptr;

    QString photo(const QString &name, const QSize &size)
    {
        const QString path = m_env->path(name);
        savePhoto(path, size);
        return path;
    }

private Q_SLOTS:
    void init()
    {
        m_env = new TestEnv;
        m_env->dataDir();
    }
    void cleanup() { delete m_env; }

    void fitting_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("area");
        QTest::addColumn<QSize>("fitted");
        QTest::newRow("portrait fills the height") << QSize(300, 400) << QSize(500, 500) << QSize(375, 500);
        QTest::newRow("landscape fills the width") << QSize(400, 300) << QSize(500, 500) << QSize(500, 375);
        QTest::newRow("small pictures grow") << QSize(40, 30) << QSize(400, 400) << QSize(400, 300);
    }
    void fitting()
    {
        QFETCH(QSize, picture);
        QFETCH(QSize, area);
        QFETCH(QSize, fitted);
        QCOMPARE(PictureBox::fittedSize(picture, area), fitted);
    }

    void scaledDecodeIsSmall()
    {
        const QString path = photo(QStringLiteral("big.jpg"), QSize(4000, 3000));
        const QImage image = PictureBox::loadScaled(path, QSize(200, 200));
        QVERIFY(!image.isNull());
        QVERIFY(image.width() <= 400);
        QCOMPARE(image.width() * 3, image.height() * 4);
    }

    void unreadableFileClearsTheBox()
    {
        PictureBox box;
        box.resize(200, 200);
        QVERIFY(box.showFile(photo(QStringLiteral("ok.jpg"), QSize(100, 80))));
        QVERIFY(box.pixmap().width() > 0);
        const QString broken = m_env->writeFile(QStringLiteral("broken.jpg"), "not a jpeg");
        QVERIFY(!box.showFile(broken));
        QVERIFY(box.pixmap().isNull());
    }

    void rectanglesSwitchAndClose()
    {
        WriteSetting(QStringLiteral("FormRectEP1"), QStringLiteral("420;20;620;120"));
        WriteSetting(QStringLiteral("FormRectEP2"), QStringLiteral("600;0;800;0"));
        frmLargePic w;
        w.open();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.geometry(), QRect(20, 120, 600, 300));
        QCOMPARE(ReadSetting(QStringLiteral("FormOpenEP")), QStringLiteral("1"));
        QVERIFY(w.showFile(photo(QStringLiteral("p.jpg"), QSize(300, 400))));
        QTRY_COMPARE(w.picture()->pixmap().height(), w.picture()->height()); // portrait fills the height

        QTest::mouseDClick(w.picture(), Qt::LeftButton);
        QVERIFY(w.isAlternate());
        // The alternate size fills the screen's available area, frame included.
        const QRect available = w.screen()->availableGeometry();
        QVERIFY(available.contains(w.frameGeometry()));
        QVERIFY(w.frameGeometry().width() >= available.width() - 2);
        w.setGeometry(QRect(10, 10, 700, 500));

        w.close(); // in the alternate rectangle: back to normal, still open
        QVERIFY(w.isVisible());
        QVERIFY(!w.isAlternate());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectEP2")), QStringLiteral("510;10;710;10"));
        QCOMPARE(w.geometry(), QRect(20, 120, 600, 300));

        w.setGeometry(QRect(30, 40, 500, 400));
        w.close();
        QVERIFY(!w.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectEP1")), QStringLiteral("440;30;530;40"));
        QCOMPARE(ReadSetting(QStringLiteral("FormOpenEP")), QStringLiteral("0"));
    }

    // Escape closes the window for good; the program's shutdown leaves it marked open for the
    // next start.
    void closing_data()
    {
        QTest::addColumn<bool>("shutdown");
        QTest::addColumn<QString>("open");
        QTest::newRow("Escape") << false << "0";
        QTest::newRow("shutdown") << true << "1";
    }
    void closing()
    {
        QFETCH(bool, shutdown);
        QFETCH(QString, open);
        frmLargePic w;
        w.open();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        if (shutdown)
            w.closeForShutdown();
        else
            QTest::keyClick(&w, Qt::Key_Escape);
        QVERIFY(!w.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormOpenEP")), open);
    }

    void storedRectangleIsBroughtInsideTheScreen_data()
    {
        QTest::addColumn<QString>("stored"); // bottom;left;right;top
        QTest::newRow("hanging over the bottom right") << "900;500;1200;400";
        QTest::newRow("larger than the screen") << "2000;-100;3000;-50";
        QTest::newRow("above the top") << "200;100;500;-150";
    }
    void storedRectangleIsBroughtInsideTheScreen()
    {
        QFETCH(QString, stored);
        WriteSetting(QStringLiteral("FormRectEP1"), stored);
        frmLargePic w;
        w.open();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY2(w.screen()->availableGeometry().contains(w.frameGeometry()), qPrintable(stored));
    }

    void rectangleOffEveryScreenIsForgotten()
    {
        WriteSetting(QStringLiteral("FormRectEP1"), QStringLiteral("9600;9000;9800;9400"));
        WriteSetting(QStringLiteral("FormRectEP2"), QStringLiteral("600;0;800;0"));
        frmLargePic w;
        w.open();
        QCOMPARE(ReadSetting(QStringLiteral("FormRectEP1")), QString());
        QCOMPARE(ReadSetting(QStringLiteral("FormRectEP2")), QString());
        QVERIFY(w.geometry().intersects(w.screen()->availableGeometry()));
    }
};

QTEST_MAIN(TestLargePic)
#include "tst_largepic.moc"
