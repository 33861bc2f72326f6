#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/fileutils.h"
#include "ui/frmlargepic.h"
#include "ui/picturebox.h"
#include "ui/workspacecontroller.h"
#include "uitest.h"

#include <QScopeGuard>
#include <QTemporaryDir>

using namespace quillet;
using namespace quillet::test;

namespace {
const QDate kTuesday(2024, 3, 5);
}

// The workspace through the real main window: what a user clicks and reads.
class TestMainWorkspace : public HomeTest
{
    Q_OBJECT

    QString src(const QString &name) const { return m_env->path(QStringLiteral("src/") + name); }

    void photo(const QString &name, const QDateTime &taken, const QSize &size = QSize(80, 60))
    {
        QVERIFY(savePhoto(src(name), size));
        lib_SetFileDate(src(name), QLatin1Char('M'), taken);
    }

    static QListView *list(frmMain &w, const char *name) { return child<QListView>(w, name); }

    // Clicks the photo list's entry of this name.
    static void clickEntry(frmMain &w, const QString &text)
    {
        const int row = int(rowTexts(list(w, "lvwSrcFiles"), Qt::ToolTipRole).indexOf(text));
        QVERIFY2(row >= 0, qPrintable(QStringLiteral("no entry ") + text));
        clickRow(list(w, "lvwSrcFiles"), row);
    }
    static QStringList familyTexts(frmMain &w) { return rowTexts(list(w, "lstFamilies")); }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, FamDaysTam) VALUES (1,'Ann','Lee',True)"));
            db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, FamDaysTpm) VALUES (2,'Bob','Moss',True)"));
            db.WriteParam(QStringLiteral("MorningSessEnd"), QTime(12, 30));
            db.WriteParam(QStringLiteral("AfternoonSessEnd"), QTime(15, 30));
        }
        photo(QStringLiteral("IMG_1.jpg"), QDateTime(kTuesday, QTime(9, 0)), QSize(60, 80));
        photo(QStringLiteral("IMG_2.jpg"), QDateTime(kTuesday, QTime(14, 0)));
        m_env->writeFile(QStringLiteral("src/clip.MOV"), "movie");
        m_env->writeFile(QStringLiteral("src/broken.jpg"), "not a picture");
        lib_SetFileDate(src(QStringLiteral("clip.MOV")), QLatin1Char('M'), QDateTime(kTuesday, QTime(9, 30)));
    }

    void clickShowsPhotoAndFiltersFamilies()
    {
        frmMain w;
        w.resize(1100, 760);
        QVERIFY(started(w));
        QCOMPARE(child<QLabel>(w, "lblSrcFilesCnt")->text(), QStringLiteral("4 photos"));
        QVERIFY(!child<QPushButton>(w, "cmdDelete")->isEnabled());

        clickEntry(w, QStringLiteral("IMG_1.jpg"));
        QVERIFY(child<QLabel>(w, "lblSrcFileDets")->text().endsWith(QStringLiteral("/src/IMG_1.jpg")));
        QVERIFY(child<QLabel>(w, "lblSrcFileDets1")->text().endsWith(QStringLiteral("-24 - 09:00")));
        auto *pic = child<PictureBox>(w, "imgPic");
        QVERIFY(pic->hasPicture());
        // Fitted into the picture area with its aspect ratio kept: it fills one side of the area.
        const QSize shown = pic->pixmap().size();
        const QSize area = pic->contentsRect().size();
        QVERIFY2(shown.height() == area.height() || shown.width() == area.width(), qPrintable(QStringLiteral("%1x%2 in %3x%4").arg(shown.width()).arg(shown.height()).arg(area.width()).arg(area.height())));
        QVERIFY(qAbs(shown.width() * 4 - shown.height() * 3) <= 4);
        QVERIFY(child<QCheckBox>(w, "chkFilterFamsTam")->isChecked());
        QCOMPARE(familyTexts(w), QStringList{"Ann Lee"});
        QVERIFY(child<QPushButton>(w, "cmdDelete")->isEnabled());
        QVERIFY(w.menus().mnuFamsBothDays->isEnabled());
        QVERIFY(!child<QPushButton>(w, "cmdRepeatSelect")->isEnabled());
        QCOMPARE(m_port->beeps, 1); // the first photo starts a new day

        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        QVERIFY(child<QCheckBox>(w, "chkFilterFamsTpm")->isChecked());
        QVERIFY(!child<QCheckBox>(w, "chkFilterFamsTam")->isChecked());
        QCOMPARE(familyTexts(w), QStringList{"Bob Moss"});
        QCOMPARE(m_port->beeps, 2); // the afternoon begins
    }

    void moviesAndUnreadableFiles()
    {
        frmMain w;
        QVERIFY(started(w));
        auto *msg = child<QLabel>(w, "lblPictureMsg");
        clickEntry(w, QStringLiteral("clip.MOV"));
        QCOMPARE(msg->text(), QStringLiteral("Cannot display movies, but you can still allocate them"));
        QVERIFY(msg->isVisible());
        QVERIFY(child<QPushButton>(w, "cmdDelete")->isEnabled());
        clickEntry(w, QStringLiteral("broken.jpg"));
        QCOMPARE(msg->text(), QStringLiteral("Cannot read file"));
        QVERIFY(!child<PictureBox>(w, "imgPic")->hasPicture());
    }

    void familyClickEnablesSave()
    {
        WriteSetting(QStringLiteral("AutoFilterFams"), QStringLiteral("0"));
        frmMain w;
        QVERIFY(started(w));
        auto *save = child<QPushButton>(w, "cmdSave");
        QListView *families = list(w, "lstFamilies");
        clickRow(families, 0);
        QVERIFY(!save->isEnabled()); // no photo selected
        clickEntry(w, QStringLiteral("IMG_1.jpg"));
        clickRow(families, 1);
        QVERIFY(save->isEnabled());
        QTest::mouseClick(child<QPushButton>(w, "cmdClearAll"), Qt::LeftButton);
        QVERIFY(!save->isEnabled());
        QTest::mouseClick(child<QPushButton>(w, "cmdSelectAll"), Qt::LeftButton);
        QCOMPARE(families->selectionModel()->selectedIndexes().size(), 2);
        QVERIFY(save->isEnabled());
    }

    void textViewAndShowAllocatedKeepSelection()
    {
        photo(QStringLiteral("IMG_0(#1#).jpg"), QDateTime(kTuesday, QTime(8, 0)));
        frmMain w;
        QVERIFY(started(w));
        QTest::mouseClick(child<QCheckBox>(w, "chkThumbnails"), Qt::LeftButton);
        QCOMPARE(ReadSetting(QStringLiteral("Thumbnails")), QStringLiteral("0"));
        QListView *photos = list(w, "lvwSrcFiles");
        QCOMPARE(photos->viewMode(), QListView::ListMode);
        QCOMPARE(photos->model()->index(0, 0).data().toString(), QStringLiteral("broken.jpg"));
        QVERIFY(photos->model()->index(0, 0).data(Qt::DecorationRole).value<QImage>().width() < 20);

        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        QTest::mouseClick(child<QCheckBox>(w, "chkShowRemovedPhotos"), Qt::LeftButton);
        QCOMPARE(photos->model()->rowCount(), 5);
        const QModelIndexList selected = photos->selectionModel()->selectedIndexes();
        QCOMPARE(selected.size(), 1);
        QCOMPARE(selected.first().data(Qt::ToolTipRole).toString(), QStringLiteral("IMG_2.jpg"));
        QVERIFY(!child<QWidget>(w, "txtSrcfilesBg")->isVisible());
    }

    // Refresh lists the whole folder again, with what has come into it since.
    void stoppedLoadSaysTheListIsIncompleteUntilRefresh()
    {
        m_port->cancelAtPosition = 2; // the user closes the progress window after two photos
        frmMain w;
        QVERIFY(started(w));
        QCOMPARE(w.workspace().sourceList().rowCount(), 2);
        QVERIFY(child<QLabel>(w, "lblMsg")->text().startsWith(QStringLiteral("Loading was stopped")));
        m_port->cancelAtPosition = 0;
        photo(QStringLiteral("IMG_9.jpg"), QDateTime(kTuesday, QTime(10, 0)));
        QVERIFY(w.menus().mnuRefresh->isEnabled());
        w.menus().mnuRefresh->trigger();
        QCOMPARE(w.workspace().sourceList().rowCount(), 5);
        QCOMPARE(child<QLabel>(w, "lblSrcFilesCnt")->text(), QStringLiteral("5 photos"));
        QCOMPARE(child<QLabel>(w, "lblMsg")->text(), QString());
    }

    void deleteThroughTheButton()
    {
        frmMain w;
        QVERIFY(started(w));
        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        m_port->answer(true);
        QTest::mouseClick(child<QPushButton>(w, "cmdDelete"), Qt::LeftButton);
        QVERIFY(!QFile::exists(src(QStringLiteral("IMG_2.jpg"))));
        QCOMPARE(child<QLabel>(w, "lblSrcFilesCnt")->text(), QStringLiteral("3 photos"));
        QCOMPARE(list(w, "lvwSrcFiles")->selectionModel()->selectedIndexes().size(), 1); // the next photo
        QVERIFY(!child<QLabel>(w, "lblSrcFileDets")->text().isEmpty());
    }

    void missingPlaceholderEndsStartUp()
    {
        // A folder without the program's files: the one beside this test program is shared with
        // the other window tests, which may be starting at this moment.
        const QTemporaryDir bare;
        AppPaths::setResourceDirForTests(bare.path());
        const auto back = qScopeGuard([] { AppPaths::setResourceDirForTests(QString()); });
        frmMain w;
        QVERIFY(!w.StartUp());
        QCOMPARE(m_port->lastText(),
                 QStringLiteral("Error: file ") + bare.path() + QStringLiteral("/ThumbnailPlaceholder.gif not found"));
    }

    void largePictureOpensOnDoubleClick()
    {
        frmMain w;
        QVERIFY(started(w));
        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        QTest::mouseDClick(child<PictureBox>(w, "imgPic"), Qt::LeftButton);
        frmLargePic *large = w.controller().largePicture();
        QVERIFY(large && large->isVisible());
        QVERIFY(large->picture()->hasPicture());
        QCOMPARE(ReadSetting(QStringLiteral("FormOpenEP")), QStringLiteral("1"));
        w.close();
        QVERIFY(!large->isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("FormOpenEP")), QStringLiteral("1")); // it opens again next time
    }
};

QTEST_MAIN(TestMainWorkspace)
#include "tst_mainworkspace.moc"
