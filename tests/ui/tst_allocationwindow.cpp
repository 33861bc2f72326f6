#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "sync/batchfilejournal.h"
#include "ui/frmmain.h"
#include "workspace/clsundos.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

// Save, restart, review and Undo through the real main window.
class TestAllocationWindow : public QObject
{
    Q_OBJECT

    TestEnv *m_env = nullptr;
    ScriptedPrompt *m_port = nullptr;

    QString src(const QString &name) const { return m_env->path(QStringLiteral("src/") + name); }
    QString tgt(const QString &name) const { return m_env->path(QStringLiteral("tgt/") + name); }

    void prepare()
    {
        QVERIFY(m_env->makeInstallation());
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("AutoFilterFams"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Office"));
        WriteSetting(QStringLiteral("AssnSubToTgt"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("AssnSrcSubToTgt"), QStringLiteral("0"));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (12,'Anna','Smith',True)"));
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (7,'Ben','Jones',True)"));
        db.CloseDatabase();
        for (const char *name : {"IMG_0041.jpg", "IMG_0042.jpg", "IMG_0043.jpg"}) {
            QImage image(64, 48, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            QVERIFY(image.save(src(QLatin1String(name)), "JPG"));
        }
    }

    static void select(frmMain &w, const QString &photo, const QList<int> &families)
    {
        SourceListModel &list = w.workspace().sourceList();
        list.clearSelection();
        for (int i = 0; i < list.rowCount(); ++i) {
            if (list.at(i).text == photo)
                list.setSelected(i, true);
        }
        FamilyListModel &fams = w.workspace().familyList();
        fams.clearSelection();
        for (int id : families)
            fams.setSelected(fams.positionOfId(id), true);
    }

    static QString undoLabel(frmMain &w) { return w.findChild<QLabel *>(QStringLiteral("lblUndoLevelsCnt"))->text(); }
    static QPushButton *button(frmMain &w, const char *name) { return w.findChild<QPushButton *>(QLatin1String(name)); }

private Q_SLOTS:
    void init()
    {
        m_env = new TestEnv;
        m_port = new ScriptedPrompt;
        appState().isPortableCopy = false;
    }
    void cleanup()
    {
        delete m_port;
        delete m_env;
        Batchfile::SetCurrentPath(QString());
    }

    void doubleClickOnAFamilySaves()
    {
        prepare();
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
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
            w.show();
            QVERIFY(w.StartUp());
            QCOMPARE(undoLabel(w), QStringLiteral("0 undos"));
            QVERIFY(!button(w, "cmdUndo")->isEnabled());
            select(w, QStringLiteral("IMG_0042.jpg"), {12, 7});
            QVERIFY(button(w, "cmdSave")->isEnabled());
            QTest::mouseClick(button(w, "cmdSave"), Qt::LeftButton);

            QVERIFY(QFile::exists(src(QStringLiteral("IMG_0042(#12#7#).jpg"))));
            QVERIFY(QFile::exists(tgt(QStringLiteral("Anna Smith/IMG_0042.jpg"))));
            QVERIFY(QFile::exists(tgt(QStringLiteral("Ben Jones/IMG_0042.jpg"))));
            QFile journal(Batchfile::CurrentPath());
            QVERIFY(journal.open(QIODevice::ReadOnly));
            QVERIFY(journal.readAll().endsWith("CS\r\nIMG_0042.jpg\r\nAnna Smith\\IMG_0042.jpg\r\n"
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
        w.show();
        QVERIFY(w.StartUp());
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
