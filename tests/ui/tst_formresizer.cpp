#include "lib/windowrules.h"
#include "ui/formresizer.h"

#include <QLabel>
#include <QTest>
#include <QVBoxLayout>

using namespace quillet;

class TestFormResizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rules_data()
    {
        QTest::addColumn<bool>("width");
        QTest::addColumn<bool>("height");
        QTest::addColumn<bool>("proportion");
        QTest::addColumn<QSize>("previous");
        QTest::addColumn<QSize>("current");
        QTest::addColumn<QSize>("expected");
        const QSize design(400, 300);
        QTest::newRow("free") << true << true << false << design << QSize(800, 600) << QSize(800, 600);
        QTest::newRow("fixed height snaps back") << true << false << false << design << QSize(400, 500) << design;
        QTest::newRow("fixed height, width free") << true << false << false << design << QSize(500, 300)
                                                  << QSize(500, 300);
        QTest::newRow("fixed width snaps back") << false << true << false << design << QSize(450, 300) << design;
        QTest::newRow("proportion from height") << true << true << true << design << QSize(400, 600) << QSize(800, 600);
        QTest::newRow("proportion from width") << true << true << true << design << QSize(200, 300) << QSize(200, 150);
    }
    void rules()
    {
        QFETCH(bool, width);
        QFETCH(bool, height);
        QFETCH(bool, proportion);
        QFETCH(QSize, previous);
        QFETCH(QSize, current);
        QFETCH(QSize, expected);
        WindowRules r;
        r.allowChgWinWidth = width;
        r.allowChgWinHeight = height;
        r.constrainProportion = proportion;
        QCOMPARE(r.enforce(QSize(400, 300), previous, current), expected);
    }

    void fontScale()
    {
        QCOMPARE(WindowRules::fontScale(QSize(400, 300), QSize(800, 600)), 1.0);
        QCOMPARE(WindowRules::fontScale(QSize(400, 300), QSize(200, 150)), 0.5);
        QCOMPARE(WindowRules::fontScale(QSize(400, 300), QSize(800, 150)), 0.5);
    }

    void windowFollowsTheRules()
    {
        QWidget window;
        auto *label = new QLabel(QStringLiteral("text"), &window);
        (new QVBoxLayout(&window))->addWidget(label);
        window.resize(400, 300);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto *resizer = new lib_clsFormResizer(&window);
        resizer->SetDefaults();
        const qreal design = label->font().pointSizeF();

        window.resize(800, 600); // the first resize only records the rectangle
        window.resize(200, 150);
        QTRY_COMPARE(label->font().pointSizeF(), design / 2);
        window.resize(800, 600);
        QTRY_COMPARE(label->font().pointSizeF(), design); // never beyond the design size

        resizer->setAllowChgWinHeight(false);
        window.resize(800, 700);
        QTRY_COMPARE(window.size(), QSize(800, 600));
    }
};

QTEST_MAIN(TestFormResizer)
#include "tst_formresizer.moc"
