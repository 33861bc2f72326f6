#include "allocationfixture.h"

#include "lib/apppaths.h"
#include "support/listthumbnails.h"

#include <QScopeGuard>
#include <QTemporaryDir>

using namespace quillet;
using namespace quillet::test;

namespace {

// Tue 5 March 2024 and the days around it.
const QDate kTuesday(2024, 3, 5);

} // namespace

class TestWorkspace : public QObject
{
    Q_OBJECT

    std::unique_ptr<AllocationFixture> m_fx;
    FamilyDatabase *m_db = nullptr;
    Workspace *m_ws = nullptr;
    ScriptedPrompt *m_port = nullptr;

    QString src(const QString &name = QString()) const { return m_fx->src(name); }

    // A small photo with the given modified time.
    void photo(const QString &name, const QDateTime &taken)
    {
        m_fx->photo(name);
        lib_SetFileDate(src(name), QLatin1Char('M'), taken);
    }

    void family(int id, const char *first, const char *last, const char *parent, const QStringList &days,
                bool current = true)
    {
        m_db->exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, Parent, [Current]) "
                                  "VALUES (?,?,?,?,?)"),
                   {id, QString::fromUtf8(first), last ? QVariant(QString::fromUtf8(last)) : QVariant(),
                    parent ? QVariant(QString::fromUtf8(parent)) : QVariant(), current});
        for (const QString &d : days)
            m_db->exec(QStringLiteral("UPDATE tblFamilies SET [FamDays") + d + QStringLiteral("]=True WHERE FamilyID=?"), {id});
    }

    // The source list's texts (or another field), in list order.
    QStringList sourceTexts(QString SourceListModel::Entry::*field = &SourceListModel::Entry::text) const
    {
        QStringList out;
        for (int i = 0; i < m_ws->sourceList().rowCount(); ++i)
            out << m_ws->sourceList().at(i).*field;
        return out;
    }

    QStringList familyTexts() const
    {
        QStringList out;
        for (int i = 0; i < m_ws->familyList().count(); ++i)
            out << m_ws->familyList().at(i).text;
        return out;
    }

    void selectPhoto(const QString &name) { m_fx->selectPhotos({name}); }

private Q_SLOTS:
    // The workspace of the Save tests; its session settings read again as the settings say.
    void init()
    {
        m_fx = std::make_unique<AllocationFixture>();
        m_db = &m_fx->db;
        m_ws = m_fx->ws.get();
        m_port = &m_fx->port;
        m_db->WriteParam(QStringLiteral("MorningSessEnd"), QTime(12, 30));
        m_db->WriteParam(QStringLiteral("AfternoonSessEnd"), QTime(15, 30));
        m_ws->ReadSessionSettings();
    }
    void cleanup() { m_fx.reset(); }

    void acceptedFilesAndTags()
    {
        photo(QStringLiteral("IMG_1.JPG"), QDateTime(kTuesday, QTime(9, 0)));
        photo(QStringLiteral("IMG_2(#3#).jpg"), QDateTime(kTuesday, QTime(9, 1)));
        photo(QStringLiteral("sub/IMG_3.jpg"), QDateTime(kTuesday, QTime(9, 2)));
        m_fx->env.writeFile(QStringLiteral("src/IMG_4.jpeg"), "x");
        m_fx->env.writeFile(QStringLiteral("src/notes.txt"), "x");
        m_fx->env.writeFile(QStringLiteral("src/clip.MOV"), "x");
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::Done);
        QCOMPARE(m_ws->srcFiles().SrcFilesCount(), 4); // allocated files are in the table even when hidden
        QStringList listed = sourceTexts();
        listed.sort();
        QCOMPARE(listed, (QStringList{"IMG_1.JPG", "IMG_3.jpg", "clip.MOV"}));

        m_ws->options().showAllocated = true;
        m_ws->LoadSource(false, false);
        QCOMPARE(m_ws->sourceList().rowCount(), 4);
        int tagged = -1;
        for (int i = 0; i < m_ws->sourceList().rowCount(); ++i) {
            if (m_ws->sourceList().at(i).text == QLatin1String("IMG_2.jpg"))
                tagged = i;
        }
        QVERIFY(tagged >= 0);
        QCOMPARE(m_ws->sourceList().at(tagged).tag, QStringLiteral("BLUE"));
        QVERIFY(m_ws->srcFiles().row(m_ws->sourceList().at(tagged).row).isAllocated());
    }

    void withoutSubfoldersWhenAsked()
    {
        photo(QStringLiteral("IMG_1.jpg"), QDateTime(kTuesday, QTime(9, 0)));
        photo(QStringLiteral("sub/IMG_3.jpg"), QDateTime(kTuesday, QTime(9, 2)));
        WriteSetting(QStringLiteral("SrcDirInclSubs"), QStringLiteral("0"));
        m_ws->LoadSource(true, false);
        QCOMPARE(sourceTexts(), QStringList{"IMG_1.jpg"});
    }

    void dayAndSessionGroups()
    {
        // 08:00 and 08:30 (morning), 12:30 exactly (still morning), 13:10 (afternoon), next day 08:05;
        // an allocated photo between them does not break a group.
        photo(QStringLiteral("a.jpg"), QDateTime(kTuesday, QTime(8, 0)));
        photo(QStringLiteral("b.jpg"), QDateTime(kTuesday, QTime(8, 30)));
        photo(QStringLiteral("c(#1#).jpg"), QDateTime(kTuesday, QTime(8, 45)));
        photo(QStringLiteral("d.jpg"), QDateTime(kTuesday, QTime(12, 30)));
        photo(QStringLiteral("e.jpg"), QDateTime(kTuesday, QTime(13, 10)));
        photo(QStringLiteral("f.jpg"), QDateTime(kTuesday.addDays(1), QTime(8, 5)));
        m_ws->options().thumbnails = true; // name order
        QCOMPARE(m_ws->LoadSource(false, false), Workspace::LoadResult::Done);
        QCOMPARE(sourceTexts(), (QStringList{"a.jpg", "b.jpg", "c.jpg", "d.jpg", "e.jpg", "f.jpg"}));
        QCOMPARE(sourceTexts(&SourceListModel::Entry::colour), (QStringList{"BLACK", "BLACK", "BLUE", "BLACK", "BLKWHT", "BLACK"}));
        // The list is complete before any thumbnail is made: each entry shows the placeholder
        // until a view asks for it.
        QCOMPARE(m_ws->thumbnails().heldCount(), 0);
        QCOMPARE(m_ws->sourceList().thumbnailAt(0), m_ws->placeholder());
        QVERIFY(waitForAllThumbnails(m_ws->sourceList()));
        for (int i = 0; i < m_ws->sourceList().rowCount(); ++i)
            QCOMPARE(m_ws->sourceList().thumbnailAt(i).size(), QSize(64, 48));
        QCOMPARE(m_port->progressCaptions.last(), QStringLiteral("Loading thumbnails..."));
        QVERIFY(!m_port->progressVisible);
    }

    // A sub-folder's photo comes after its parent's photos in the scan, but both views list by
    // name, so its group colour is the same whichever view the user picks.
    void bothViewsShareOrderAndColours_data()
    {
        QTest::addColumn<bool>("thumbnails");
        QTest::newRow("text view") << false;
        QTest::newRow("thumbnail view") << true;
    }
    void bothViewsShareOrderAndColours()
    {
        QFETCH(bool, thumbnails);
        photo(QStringLiteral("b.jpg"), QDateTime(kTuesday, QTime(8, 0)));
        photo(QStringLiteral("c.jpg"), QDateTime(kTuesday, QTime(8, 10)));
        photo(QStringLiteral("sub/a.jpg"), QDateTime(kTuesday, QTime(13, 0)));
        m_ws->options().thumbnails = thumbnails;
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::Done);
        QCOMPARE(sourceTexts(), (QStringList{"a.jpg", "b.jpg", "c.jpg"}));
        QCOMPARE(sourceTexts(&SourceListModel::Entry::colour), (QStringList{"BLACK", "BLKWHT", "BLKWHT"}));
    }

    void cancelKeepsWhatWasAdded()
    {
        for (int i = 0; i < 10; ++i)
            photo(QStringLiteral("p%1.jpg").arg(i), QDateTime(kTuesday, QTime(9, i)));
        m_ws->options().thumbnails = true;
        m_port->cancelAtPosition = 4;
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::Cancelled);
        QCOMPARE(m_ws->sourceList().rowCount(), 4);
        QVERIFY(!m_port->progressVisible);
    }

    void missingPlaceholderStops()
    {
        photo(QStringLiteral("a.jpg"), QDateTime(kTuesday, QTime(8, 0)));
        // A folder without the program's files: the one beside this test program is shared with
        // the others, which may be starting at this moment.
        const QTemporaryDir bare;
        AppPaths::setResourceDirForTests(bare.path());
        const auto back = qScopeGuard([] { AppPaths::setResourceDirForTests(QString()); });
        m_ws->options().thumbnails = true;
        QCOMPARE(m_ws->LoadSource(true, false), Workspace::LoadResult::PlaceholderMissing);
        QCOMPARE(m_port->lastText(), QStringLiteral("Error: file ") + AppPaths::placeholderPicture() + QStringLiteral(" not found"));
    }

    void reloadGivesTheSameRows()
    {
        photo(QStringLiteral("a.jpg"), QDateTime(kTuesday, QTime(8, 0)));
        photo(QStringLiteral("b.jpg"), QDateTime(kTuesday, QTime(8, 1)));
        m_ws->LoadSource(true, false);
        const QString first = m_ws->srcFiles().row(1).PathFile;
        m_ws->LoadSource(true, false);
        QCOMPARE(m_ws->srcFiles().SrcFilesCount(), 2);
        QCOMPARE(m_ws->srcFiles().row(1).PathFile, first);
    }

    void familyFilter_data()
    {
        QTest::addColumn<QDateTime>("taken");
        QTest::addColumn<QStringList>("families");
        QTest::addColumn<int>("session");  // ticked indicator, -1 none
        QTest::addColumn<int>("weekday");
        QTest::newRow("tuesday at the morning end") << QDateTime(kTuesday, QTime(12, 30)) << QStringList{"Ann Lee", "Cy"} << 0 << 1;
        QTest::newRow("tuesday afternoon") << QDateTime(kTuesday, QTime(14, 0)) << QStringList{"Bob Moss"} << 1 << 1;
        QTest::newRow("after the afternoon end") << QDateTime(kTuesday, QTime(16, 0))
                                                 << QStringList{"Ann Lee", "Bob Moss", "Cy", "(Group)"} << -1 << -1;
        QTest::newRow("saturday") << QDateTime(kTuesday.addDays(4), QTime(9, 0))
                                  << QStringList{"Ann Lee", "Bob Moss", "Cy", "(Group)"} << -1 << -1;
        QTest::newRow("nobody expected: everyone") << QDateTime(kTuesday.addDays(1), QTime(9, 0))
                                                   << QStringList{"Ann Lee", "Bob Moss", "Cy", "(Group)"} << 0 << 2;
    }
    void familyFilter()
    {
        QFETCH(QDateTime, taken);
        QFETCH(QStringList, families);
        QFETCH(int, session);
        QFETCH(int, weekday);
        family(1, "Ann", "Lee", "Jo Lee", {"Tam"});
        family(2, "Bob", "Moss", nullptr, {"Tpm"});
        family(3, "Cy", nullptr, "Al Cy", {"Tam", "Fam"});
        family(4, "(Group)", nullptr, nullptr, {});
        photo(QStringLiteral("p.jpg"), taken);
        m_ws->LoadSource(true, false);
        selectPhoto(QStringLiteral("p.jpg"));
        m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, true);
        QCOMPARE(familyTexts(), families);
        for (int s = 0; s < 2; ++s)
            for (int d = 0; d < 5; ++d)
                QCOMPARE(m_ws->indicator(s, d), s == session && d == weekday);
    }

    void parentOrderPrivacyMarkerAndSelectAll()
    {
        family(1, "Ann", "Lee", "Zed Lee", {});
        family(2, "bob", "Moss", "amy Moss", {});
        family(3, "(Group)", nullptr, nullptr, {});
        family(4, "Old", "Timer", "Pa Timer", {}, false);
        m_db->WriteParam(QStringLiteral("PrivacyText"), QStringLiteral("Keep Private"));
        m_db->WriteParam(QStringLiteral("CdAllowPriv"), 1);
        m_ws->LoadFamilies(false, true, false, false, false);
        QCOMPARE(familyTexts(), (QStringList{"amy Moss - bob Moss", "Pa Timer - Old Timer", "Zed Lee - Ann Lee",
                                             "(Group)", " (Keep Private)"}));
        QCOMPARE(m_ws->familyList().at(4).familyId, -999);
        m_ws->LoadFamilies(true, false, false, false, false);
        QCOMPARE(familyTexts(), (QStringList{"Ann Lee", "bob Moss", "(Group)", " (Keep Private)"}));
        m_ws->SelectAllFamilies();
        QCOMPARE(m_ws->familyList().selectedPositions(), (QList<int>{0, 1}));
    }

    void lostSelectionsAreNamed()
    {
        family(1, "Ann", "Lee", nullptr, {"Tam"});
        family(2, "Bob", "Moss", nullptr, {"Tpm"});
        photo(QStringLiteral("p.jpg"), QDateTime(kTuesday, QTime(9, 0)));
        m_ws->LoadSource(true, false);
        selectPhoto(QStringLiteral("p.jpg"));
        m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, false);
        m_ws->familyList().setSelected(m_ws->familyList().positionOfId(1), true);
        m_ws->familyList().setSelected(m_ws->familyList().positionOfId(2), true);
        m_ws->LoadFamilies(std::nullopt, std::nullopt, true, true, true);
        QCOMPARE(familyTexts(), QStringList{"Ann Lee"});
        QVERIFY(m_ws->familyList().at(0).selected);
        QCOMPARE(m_port->lastText(), QStringLiteral("Some of your family selections were lost when the family list was "
                                                    "rebuilt using selected filtering\r\n\r\nBob Moss"));
    }

    void saveAllowedRules()
    {
        family(1, "Ann", "Lee", nullptr, {});
        m_db->WriteParam(QStringLiteral("WebAllowPriv"), 1);
        photo(QStringLiteral("a.jpg"), QDateTime(kTuesday, QTime(9, 0)));
        photo(QStringLiteral("b(#1#).jpg"), QDateTime(kTuesday, QTime(9, 1)));
        m_ws->options().showAllocated = true;
        m_ws->LoadSource(false, false);
        m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, false);
        selectPhoto(QStringLiteral("a.jpg"));
        QVERIFY(!m_ws->SaveAllowed()); // no family
        m_ws->familyList().setSelected(m_ws->privacyMarkerPosition(), true);
        QVERIFY(!m_ws->SaveAllowed()); // only the marker
        m_ws->familyList().setSelected(m_ws->familyList().positionOfId(1), true);
        QVERIFY(m_ws->SaveAllowed());
        selectPhoto(QStringLiteral("b.jpg"));
        QVERIFY(!m_ws->SaveAllowed()); // an allocated photo
    }

    void clickOnAllocatedPhotoSelectsItsFamilies()
    {
        family(3, "Ann", "Lee", nullptr, {});
        family(7, "Bob", "Moss", nullptr, {});
        family(9, "Cy", nullptr, nullptr, {});
        photo(QStringLiteral("IMG_1(#7#3#P#).jpg"), QDateTime(kTuesday, QTime(9, 0)));
        m_ws->options().showAllocated = true;
        m_ws->LoadSource(false, false);
        m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, false);
        m_ws->familyList().setSelected(m_ws->familyList().positionOfId(9), true);
        selectPhoto(QStringLiteral("IMG_1.jpg"));
        QVERIFY(m_ws->SrcItemClicked(0));
        QCOMPARE(m_ws->familyList().selectedPositions(), (QList<int>{0, 1}));
    }

    void allocatedPhotoShowsFamiliesTheDayFilterWouldHide()
    {
        family(3, "Ann", "Lee", nullptr, {"Tam"});
        family(7, "Bob", "Moss", nullptr, {"Tpm"}); // not expected on Tuesday morning
        family(9, "Cy", nullptr, nullptr, {"Tam"});
        photo(QStringLiteral("IMG_1(#7#3#).jpg"), QDateTime(kTuesday, QTime(9, 0)));
        photo(QStringLiteral("IMG_2.jpg"), QDateTime(kTuesday, QTime(9, 5)));
        m_ws->options().showAllocated = true;
        m_ws->options().filterByDay = true;
        m_ws->LoadSource(false, false);
        selectPhoto(QStringLiteral("IMG_2.jpg"));
        m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, std::nullopt);
        QCOMPARE(familyTexts(), (QStringList{"Ann Lee", "Cy"}));

        // The first click on the allocated photo selects both its families; showing it keeps them.
        selectPhoto(QStringLiteral("IMG_1.jpg"));
        QVERIFY(m_ws->SrcItemClicked(m_ws->sourceList().selectedPositions().first()));
        m_ws->FollowPhotoWithFamilies();
        QCOMPARE(familyTexts(), (QStringList{"Ann Lee", "Bob Moss", "Cy"}));
        QCOMPARE(m_ws->familyList().selectedPositions(), (QList<int>{0, 1}));
        QCOMPARE(m_port->messages().size(), 0); // no "selections were lost"

        // The next, unallocated photo does not inherit that tag's families.
        selectPhoto(QStringLiteral("IMG_2.jpg"));
        QVERIFY(m_ws->SrcItemClicked(m_ws->sourceList().selectedPositions().first()));
        m_ws->FollowPhotoWithFamilies();
        QCOMPARE(familyTexts(), (QStringList{"Ann Lee", "Cy"}));
        QVERIFY(m_ws->familyList().selectedPositions().isEmpty());
        QCOMPARE(m_port->messages().size(), 0);
    }

    void viewerRules()
    {
        photo(QStringLiteral("a.jpg"), QDateTime(kTuesday, QTime(9, 0)));
        photo(QStringLiteral("b.jpg"), QDateTime(kTuesday, QTime(10, 0)));
        photo(QStringLiteral("c.jpg"), QDateTime(kTuesday, QTime(13, 0)));
        m_fx->env.writeFile(QStringLiteral("src/d.avi"), "x");
        m_ws->options().thumbnails = true;
        m_ws->options().beepOnDateChange = true;
        m_ws->LoadSource(true, false);
        selectPhoto(QStringLiteral("a.jpg"));
        Workspace::PhotoView v = m_ws->ViewSelectedPhoto();
        QVERIFY(v.beep); // the first photo starts a day
        QCOMPARE(v.kind, Workspace::PhotoView::Picture);
        QCOMPARE(v.nameText, QStringLiteral(" ") + src(QStringLiteral("a.jpg")));
        selectPhoto(QStringLiteral("b.jpg"));
        QVERIFY(!m_ws->ViewSelectedPhoto().beep); // same morning
        selectPhoto(QStringLiteral("c.jpg"));
        QVERIFY(m_ws->ViewSelectedPhoto().beep); // the afternoon begins
        selectPhoto(QStringLiteral("d.avi"));
        QCOMPARE(m_ws->ViewSelectedPhoto().kind, Workspace::PhotoView::Movie);
        m_ws->options().beepOnDateChange = false;
        selectPhoto(QStringLiteral("a.jpg"));
        QVERIFY(!m_ws->ViewSelectedPhoto().beep);
    }

    void familiesForBothDays()
    {
        family(1, "Ann", "Lee", "Jo Lee", {"Tam", "Fpm"});
        family(2, "Bob", "Moss", nullptr, {"Tpm"});
        family(3, "(Group)", nullptr, nullptr, {"Tam", "Fam"});
        photo(QStringLiteral("p.jpg"), QDateTime(kTuesday, QTime(9, 0)));
        m_ws->LoadSource(true, false);
        selectPhoto(QStringLiteral("p.jpg"));
        const QDate friday = kTuesday.addDays(3);
        const QString text = m_ws->FamiliesForBothDays(friday);
        QVERIFY(text.startsWith(QStringLiteral("Families that attend both today (")));
        QVERIFY(text.endsWith(QStringLiteral(":\r\n\r\nAnn Lee")));
        QVERIFY(m_ws->FamiliesForBothDays(kTuesday.addDays(4)).isEmpty()); // today is a Saturday
    }
};

QTEST_GUILESS_MAIN(TestWorkspace)
#include "tst_workspace.moc"
