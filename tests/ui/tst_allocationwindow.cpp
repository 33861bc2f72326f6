#include "support/windowtest.h"
#include "sync/batchfilejournal.h"
#include "uitest.h"
#include "workspace/clsundos.h"

using namespace quillet;
using namespace quillet::test;

// Save, restart, review and Undo through the real main window.
class TestAllocationWindow : public WindowTest
{
    Q_OBJECT

    void prepare()
    {
        WindowTest::prepare({{12, "Anna", "Smith"}, {7, "Ben", "Jones"}}, {"IMG_0041.jpg", "IMG_0042.jpg", "IMG_0043.jpg"});
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Office"));
    }

    static QString undoLabel(frmMain &w) { return child<QLabel>(w, "lblUndoLevelsCnt")->text(); }

private Q_SLOTS:
    void doubleClickOnAFamilySaves()
    {
        prepare();
        frmMain w;
        QVERIFY(started(w));
        auto *families = w.findChild<QListView *>(QStringLiteral("lstFamilies"));
        const QModelIndex ben = families->model()->index(w.workspace().familyList().positionOfId(7), 0);
        select(w, QString(), {7});
        Q_EMIT families->doubleClicked(ben); // no photo selected: Save is not enabled
        QVERIFY(!QFile::exists(tgt(QStringLiteral("Ben Jones/IMG_0041.jpg"))));
        select(w, QStringLiteral("IMG_0041.jpg"), {7});
        Q_EMIT families->doubleClicked(ben);
        QVERIFY(QFile::exists(tgt(QStringLiteral("Ben Jones/IMG_0041.jpg"))));
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0041(#7#).jpg"))));
    }

    void saveRestartReviewUndo()
    {
        prepare();
        {
            frmMain w;
            QVERIFY(started(w));
            QCOMPARE(undoLabel(w), QStringLiteral("0 undos"));
            QVERIFY(!button(w, "cmdUndo")->isEnabled());
            select(w, QStringLiteral("IMG_0042.jpg"), {12, 7});
            QVERIFY(button(w, "cmdSave")->isEnabled());
            QTest::mouseClick(button(w, "cmdSave"), Qt::LeftButton);

            QVERIFY(QFile::exists(src(QStringLiteral("IMG_0042(#12#7#).jpg"))));
            QVERIFY(QFile::exists(tgt(QStringLiteral("Anna Smith/IMG_0042.jpg"))));
            QVERIFY(QFile::exists(tgt(QStringLiteral("Ben Jones/IMG_0042.jpg"))));
            QVERIFY(fileBytes(Batchfile::CurrentPath()).endsWith("CS\r\nIMG_0042.jpg\r\nAnna Smith\\IMG_0042.jpg\r\n"
                                               "CS\r\nIMG_0042.jpg\r\nBen Jones\\IMG_0042.jpg\r\n"
                                               "NS\r\nIMG_0042.jpg\r\nIMG_0042(#12#7#).jpg\r\n"));
            QCOMPARE(undoLabel(w), QStringLiteral("1 undo"));
            QVERIFY(button(w, "cmdUndo")->isEnabled());
            QCOMPARE(w.workspace().sourceList().rowCount(), 2);
            QCOMPARE(w.findChild<QLabel *>(QStringLiteral("lblMsg"))->text(), QStringLiteral("2 files copied (of 2)"));
            // The photo after the saved one is on view.
            const QList<int> rows = w.workspace().sourceList().selectedRows();
            QCOMPARE(rows.size(), 1);
            QCOMPARE(w.workspace().srcFiles().row(rows.first()).FileNoFamIDs, QStringLiteral("IMG_0043.jpg"));
            QVERIFY(button(w, "cmdRepeatSelect")->isEnabled());
            w.close();
        }
        QVERIFY(QFile::exists(clsUndos::FilePath()));

        frmMain w;
        QVERIFY(started(w));
        QCOMPARE(undoLabel(w), QStringLiteral("1 undo"));
        QTest::mouseClick(button(w, "cmdReviewUndoL1"), Qt::LeftButton);
        QCOMPARE(undoLabel(w), QStringLiteral("Reviewing 1 of 1"));
        SourceListModel &list = w.workspace().sourceList();
        QCOMPARE(list.rowCount(), 3);
        const QList<int> reviewed = list.selectedPositions();
        QCOMPARE(reviewed.size(), 1);
        QCOMPARE(list.at(reviewed.first()).tag, QStringLiteral("RED"));
        QCOMPARE(w.workspace().familyList().selectedPositions().size(), 2);

        // Clicking another photo while reviewing is refused.
        QListView *view = w.findChild<QListView *>(QStringLiteral("lvwSrcFiles"));
        const int other = reviewed.first() == 0 ? 1 : 0;
        list.clearSelection();
        list.setSelected(other, true);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(list.index(other)).center());
        QCOMPARE(m_port->lastText(), QStringLiteral("You cannot view new photos when in Review mode. Click the * "
                                                    "button to leave Review mode."));

        QTest::mouseClick(button(w, "cmdUndo"), Qt::LeftButton);
        QCOMPARE(undoLabel(w), QStringLiteral("0 undos"));
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0042.jpg"))));
        QVERIFY(!QFile::exists(tgt(QStringLiteral("Anna Smith/IMG_0042.jpg"))));
        QVERIFY(!QFile::exists(tgt(QStringLiteral("Ben Jones/IMG_0042.jpg"))));
        QVERIFY(!button(w, "cmdUndo")->isEnabled());
        w.close();
    }
};

QTEST_MAIN(TestAllocationWindow)
#include "tst_allocationwindow.moc"
