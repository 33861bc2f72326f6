#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/fileutils.h"
#include "support/hometest.h"
#include "ui/frmlargepic.h"
#include "ui/frmmain.h"
#include "ui/picturebox.h"
#include "ui/workspacecontroller.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTest>

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
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        QVERIFY(image.save(src(name), "JPG"));
        lib_SetFileDate(src(name), QLatin1Char('M'), taken);
    }

    void prepare()
    {
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

    static QListView *list(frmMain &w, const char *name) { return w.findChild<QListView *>(QLatin1String(name)); }

    static void clickEntry(frmMain &w, const QString &text)
    {
        QListView *view = list(w, "lvwSrcFiles");
        for (int i = 0; i < view->model()->rowCount(); ++i) {
            const QModelIndex index = view->model()->index(i, 0);
            if (index.data(Qt::ToolTipRole).toString() == text) {
                view->scrollTo(index);
                QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
                return;
            }
        }
        QFAIL(qPrintable(QStringLiteral("no entry ") + text));
    }

    static QStringList familyTexts(frmMain &w)
    {
        QStringList out;
        QListView *view = list(w, "lstFamilies");
        for (int i = 0; i < view->model()->rowCount(); ++i)
            out << view->model()->index(i, 0).data().toString();
        return out;
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        prepare();
    }

    void clickShowsPhotoAndFiltersFamilies()
    {
        frmMain w;
        w.resize(1100, 760);
        w.show();
        QVERIFY(w.StartUp());
        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("lblSrcFilesCnt"))->text(), QStringLiteral("4 photos"));
        QVERIFY(!w.findChild<QPushButton *>(QStringLiteral("cmdDelete"))->isEnabled());

        clickEntry(w, QStringLiteral("IMG_1.jpg"));
        QVERIFY(w.findChild<QLabel *>(QStringLiteral("lblSrcFileDets"))->text().endsWith(QStringLiteral("/src/IMG_1.jpg")));
        QVERIFY(w.findChild<QLabel *>(QStringLiteral("lblSrcFileDets1"))->text().endsWith(QStringLiteral("-24 - 09:00")));
        auto *pic = w.findChild<PictureBox *>(QStringLiteral("imgPic"));
        QVERIFY(pic->hasPicture());
        // Fitted into the picture area with its aspect ratio kept: it fills one side of the area.
        const QSize shown = pic->pixmap().size();
        const QSize area = pic->contentsRect().size();
        QVERIFY2(shown.height() == area.height() || shown.width() == area.width(), qPrintable(QStringLiteral("%1x%2 in %3x%4").arg(shown.width()).arg(shown.height()).arg(area.width()).arg(area.height())));
        QVERIFY(qAbs(shown.width() * 4 - shown.height() * 3) <= 4);
        QVERIFY(w.findChild<QCheckBox *>(QStringLiteral("chkFilterFamsTam"))->isChecked());
        QCOMPARE(familyTexts(w), QStringList{"Ann Lee"});
        QVERIFY(w.findChild<QPushButton *>(QStringLiteral("cmdDelete"))->isEnabled());
        QVERIFY(w.menus().mnuFamsBothDays->isEnabled());
        QVERIFY(!w.findChild<QPushButton *>(QStringLiteral("cmdRepeatSelect"))->isEnabled());
        QCOMPARE(m_port->beeps, 1); // the first photo starts a new day

        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        QVERIFY(w.findChild<QCheckBox *>(QStringLiteral("chkFilterFamsTpm"))->isChecked());
        QVERIFY(!w.findChild<QCheckBox *>(QStringLiteral("chkFilterFamsTam"))->isChecked());
        QCOMPARE(familyTexts(w), QStringList{"Bob Moss"});
        QCOMPARE(m_port->beeps, 2); // the afternoon begins
    }

    void moviesAndUnreadableFiles()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        auto *msg = w.findChild<QLabel *>(QStringLiteral("lblPictureMsg"));
        clickEntry(w, QStringLiteral("clip.MOV"));
        QCOMPARE(msg->text(), QStringLiteral("Cannot display movies, but you can still allocate them"));
        QVERIFY(msg->isVisible());
        QVERIFY(w.findChild<QPushButton *>(QStringLiteral("cmdDelete"))->isEnabled());
        clickEntry(w, QStringLiteral("broken.jpg"));
        QCOMPARE(msg->text(), QStringLiteral("Cannot read file"));
        QVERIFY(!w.findChild<PictureBox *>(QStringLiteral("imgPic"))->hasPicture());
    }

    void familyClickEnablesSave()
    {
        WriteSetting(QStringLiteral("AutoFilterFams"), QStringLiteral("0"));
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        auto *save = w.findChild<QPushButton *>(QStringLiteral("cmdSave"));
        QListView *families = list(w, "lstFamilies");
        QTest::mouseClick(families->viewport(), Qt::LeftButton, {}, families->visualRect(families->model()->index(0, 0)).center());
        QVERIFY(!save->isEnabled()); // no photo selected
        clickEntry(w, QStringLiteral("IMG_1.jpg"));
        QTest::mouseClick(families->viewport(), Qt::LeftButton, {}, families->visualRect(families->model()->index(1, 0)).center());
        QVERIFY(save->isEnabled());
        QTest::mouseClick(w.findChild<QPushButton *>(QStringLiteral("cmdClearAll")), Qt::LeftButton);
        QVERIFY(!save->isEnabled());
        QTest::mouseClick(w.findChild<QPushButton *>(QStringLiteral("cmdSelectAll")), Qt::LeftButton);
        QCOMPARE(families->selectionModel()->selectedIndexes().size(), 2);
        QVERIFY(save->isEnabled());
    }

    void textViewAndShowAllocatedKeepSelection()
    {
        photo(QStringLiteral("IMG_0(#1#).jpg"), QDateTime(kTuesday, QTime(8, 0)));
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        auto *thumbs = w.findChild<QCheckBox *>(QStringLiteral("chkThumbnails"));
        QTest::mouseClick(thumbs, Qt::LeftButton);
        QCOMPARE(ReadSetting(QStringLiteral("Thumbnails")), QStringLiteral("0"));
        QCOMPARE(list(w, "lvwSrcFiles")->viewMode(), QListView::ListMode);
        QCOMPARE(list(w, "lvwSrcFiles")->model()->index(0, 0).data().toString(), QStringLiteral("broken.jpg"));
        QVERIFY(list(w, "lvwSrcFiles")->model()->index(0, 0).data(Qt::DecorationRole).value<QImage>().width() < 20);

        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        QTest::mouseClick(w.findChild<QCheckBox *>(QStringLiteral("chkShowRemovedPhotos")), Qt::LeftButton);
        QCOMPARE(list(w, "lvwSrcFiles")->model()->rowCount(), 5);
        const QModelIndexList selected = list(w, "lvwSrcFiles")->selectionModel()->selectedIndexes();
        QCOMPARE(selected.size(), 1);
        QCOMPARE(selected.first().data(Qt::ToolTipRole).toString(), QStringLiteral("IMG_2.jpg"));
        QVERIFY(!w.findChild<QWidget *>(QStringLiteral("txtSrcfilesBg"))->isVisible());
    }

    void stoppedLoadSaysTheListIsIncomplete()
    {
        m_port->cancelAtPosition = 2; // the user closes the progress window after two photos
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        QCOMPARE(w.workspace().sourceList().rowCount(), 2);
        QVERIFY(w.findChild<QLabel *>(QStringLiteral("lblMsg"))->text().startsWith(QStringLiteral("Loading was stopped")));
        m_port->cancelAtPosition = 0;
        w.menus().mnuRefresh->trigger();
        QCOMPARE(w.workspace().sourceList().rowCount(), 4);
        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("lblMsg"))->text(), QString());
    }

    void refreshListsNewPhotos()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        photo(QStringLiteral("IMG_9.jpg"), QDateTime(kTuesday, QTime(10, 0)));
        QVERIFY(w.menus().mnuRefresh->isEnabled());
        w.menus().mnuRefresh->trigger();
        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("lblSrcFilesCnt"))->text(), QStringLiteral("5 photos"));
    }

    void deleteThroughTheButton()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        m_port->answer(true);
        QTest::mouseClick(w.findChild<QPushButton *>(QStringLiteral("cmdDelete")), Qt::LeftButton);
        QVERIFY(!QFile::exists(src(QStringLiteral("IMG_2.jpg"))));
        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("lblSrcFilesCnt"))->text(), QStringLiteral("3 photos"));
        QCOMPARE(list(w, "lvwSrcFiles")->selectionModel()->selectedIndexes().size(), 1); // the next photo
        QVERIFY(!w.findChild<QLabel *>(QStringLiteral("lblSrcFileDets"))->text().isEmpty());
    }

    void missingPlaceholderEndsStartUp()
    {
        const QString placeholder = AppPaths::placeholderPicture();
        QVERIFY(QFile::rename(placeholder, placeholder + QStringLiteral(".away")));
        frmMain w;
        const bool started = w.StartUp();
        QFile::rename(placeholder + QStringLiteral(".away"), placeholder);
        QVERIFY(!started);
        QCOMPARE(m_port->lastText(), QStringLiteral("Error: file ") + placeholder + QStringLiteral(" not found"));
    }

    void largePictureOpensOnDoubleClick()
    {
        frmMain w;
        w.show();
        QVERIFY(w.StartUp());
        clickEntry(w, QStringLiteral("IMG_2.jpg"));
        QTest::mouseDClick(w.findChild<PictureBox *>(QStringLiteral("imgPic")), Qt::LeftButton);
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
