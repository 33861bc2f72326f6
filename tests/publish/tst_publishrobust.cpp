// The preparation on awkward real folders: files that vanish during the run, copies that fail,
// family names that would lead outside the preparation folder, two photos with one name. Each
// leaves a clear report line, the run goes on where it can, and nothing is written outside the
// preparation folder and the data folder.
#include "publishfixture.h"

#include "lib/appstate.h"
#include "lib/error.h"

#include <QRegularExpression>

#include <memory>

using namespace quillet;
using namespace quillet::test;

class tst_PublishRobust : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PublishFixture> f;

    QString web() const { return f->prep(webVariant()); }
    QString report() const { return f->reports().isEmpty() ? QString() : f->reports().last(); }
    QStringList said(const QString &file) const
    {
        return PublishFixture::rowOf(report(), file).mid(2, 3);
    }

private Q_SLOTS:
    void init()
    {
        f = std::make_unique<PublishFixture>();
        QVERIFY(f->env.isValid());
        appState().cancel = false;
    }
    void cleanup() { f.reset(); }

    void fileVanishingDuringTheRun()
    {
        // The warning about file A comes while the run is under way; B goes at that moment.
        f->photo(QStringLiteral("A(#44#).jpg"), kInside);
        f->photo(QStringLiteral("B(#12#).jpg"), kInside);
        f->photo(QStringLiteral("C(#12#).jpg"), kInside);
        f->port.onMessage = [this](const ScriptedPrompt::Message &m) {
            if (m.text.startsWith(QStringLiteral("Family ID 44")))
                QFile::remove(f->src(QStringLiteral("B(#12#).jpg")));
        };
        f->run(webVariant());
        QCOMPARE(said(QStringLiteral("B(#12#).jpg")), (QStringList{"left out", "no longer there", ""}));
        QCOMPARE(said(QStringLiteral("C(#12#).jpg")), (QStringList{"copied", "", "C.jpg"}));
        QCOMPARE(PublishFixture::filesUnder(web()), QStringList{"C.jpg"});
    }

    void failedCopyAsksOnceAndGoesOn()
    {
        // A file where a family's folder should be: every copy into it fails.
        WriteSetting(QStringLiteral("WebTgtInclFam"), true);
        f->env.writeFile(QStringLiteral("web/Ann Lee"), "in the way");
        f->photo(QStringLiteral("IMG_0001(#12#7#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0002(#12#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0003(#7#).jpg"), kInside);
        f->port.answer(true);
        f->port.answer(false); // do not cancel after the first failure
        f->port.answer(false);
        PublishRun run(PublishNames::web(), f->db);
        run.run();
        QCOMPARE(f->port.texts().filter(QStringLiteral("Do you wish to cancel?")).size(), 1);
        QCOMPARE(PublishFixture::filesUnder(web()), (QStringList{"Ann Lee", "Bob/IMG_0001.jpg", "Bob/IMG_0003.jpg"}));
        const QStringList first = PublishFixture::rowOf(report(), QStringLiteral("IMG_0001(#12#7#).jpg"));
        QCOMPARE(first.at(2), QStringLiteral("partly copied"));
        QVERIFY(first.at(3).startsWith(QStringLiteral("Ann Lee/IMG_0001.jpg: ")));
        QCOMPARE(first.at(4), QStringLiteral("Bob/IMG_0001.jpg"));
        QCOMPARE(said(QStringLiteral("IMG_0002(#12#).jpg")).first(), QStringLiteral("copy failed"));
        QCOMPARE(run.copied(), 4); // the message line counts every copy attempted
        QVERIFY(f->port.texts().filter(QStringLiteral("2 files could not be copied completely: see the report.")).size()
                == 1);
    }

    // Stopping after a failed copy: the copies under way at that moment finish and are
    // reported, no later file is copied or listed, and the note says how far the run got.
    void cancelAfterFailedCopyStopsTheRun()
    {
        WriteSetting(QStringLiteral("WebTgtInclFam"), true);
        f->env.writeFile(QStringLiteral("web/Ann Lee"), "in the way");
        constexpr int kPhotos = 30;
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        for (int n = 2; n <= kPhotos; ++n)
            f->photo(QStringLiteral("IMG_%1(#7#).jpg").arg(n, 4, 10, QLatin1Char('0')), kInside);
        f->port.answer(true);
        f->port.answer(true); // cancel
        PublishRun run(PublishNames::web(), f->db);
        run.run();
        QVERIFY(run.cancelled());
        QVERIFY(!f->port.texts().contains(PublishNames::web().finalQuestion)); // the window is not moved on
        QCOMPARE(said(QStringLiteral("IMG_0001(#12#).jpg")).first(), QStringLiteral("copy failed"));
        QStringList listed, copied;
        int recorded = -1;
        for (const QStringList &r : PublishFixture::rows(report())) {
            if (r.size() >= 7 && r.first().startsWith(QStringLiteral("IMG_")))
                listed << r.first();
            if (r.size() >= 7 && r.at(2) == QLatin1String("copied"))
                copied << r.at(4);
            const QRegularExpressionMatch m =
                QRegularExpression(QStringLiteral("^Stopped by the user after (\\d+) of 30 files$")).match(r.value(0));
            if (m.hasMatch())
                recorded = m.captured(1).toInt();
        }
        QVERIFY2(recorded >= 1 && recorded < kPhotos, qPrintable(QString::number(recorded)));
        QCOMPARE(listed.size(), recorded);
        copied.sort();
        QCOMPARE(PublishFixture::filesUnder(web()), QStringList{"Ann Lee"} + copied);
        QCOMPARE(ReadSetting(QStringLiteral("WebMinDate")), QStringLiteral("20240301 080000"));
    }

    // The database failing half-way ends the run with its error, but what was copied until then
    // is in the report, and the report says where the run stopped.
    void databaseFailingHalfWayLeavesTheRecord()
    {
        f->photo(QStringLiteral("A(#12#).jpg"), kInside);
        f->photo(QStringLiteral("B(#44#).jpg"), kInside);
        f->photo(QStringLiteral("C(#7#).jpg"), kInside);
        f->port.onMessage = [this](const ScriptedPrompt::Message &m) {
            if (m.text.startsWith(QStringLiteral("Family ID 44")))
                f->db.exec(QStringLiteral("DROP TABLE tblFamilies"));
        };
        f->port.answer(true);
        PublishRun run(PublishNames::web(), f->db);
        QVERIFY_THROWS_EXCEPTION(Error, run.run());
        QCOMPARE(PublishFixture::filesUnder(web()), QStringList{"A.jpg"});
        QCOMPARE(said(QStringLiteral("A(#12#).jpg")), (QStringList{"copied", "", "A.jpg"}));
        QCOMPARE(said(QStringLiteral("B(#44#).jpg")).value(1), QStringLiteral("family 44 unknown"));
        const QList<QStringList> rows = PublishFixture::rows(report());
        QVERIFY(std::any_of(rows.begin(), rows.end(), [](const QStringList &r) {
            return r.value(0) == QLatin1String("Stopped by an error after 2 of 3 files");
        }));
    }

    void familyNameLeadingOutsideIsRefused_data()
    {
        QTest::addColumn<QString>("firstName");
        QTest::newRow("parent") << "..";
        QTest::newRow("absolute") << "/tmp";
        QTest::newRow("climbing") << "../../escaped";
    }

    void familyNameLeadingOutsideIsRefused()
    {
        QFETCH(QString, firstName);
        f->family(66, firstName, QVariant());
        WriteSetting(QStringLiteral("WebTgtInclFam"), true);
        f->photo(QStringLiteral("IMG_0001(#66#12#).jpg"), kInside);
        const QStringList rootBefore = QDir(f->env.root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        f->port.answer(true);
        f->port.answer(false);
        PublishRun(PublishNames::web(), f->db).run();
        QCOMPARE(PublishFixture::filesUnder(web()), QStringList{"Ann Lee/IMG_0001.jpg"});
        QCOMPARE(QDir(f->env.root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), rootBefore);
        const QStringList row = PublishFixture::rowOf(report(), QStringLiteral("IMG_0001(#66#12#).jpg"));
        QCOMPARE(row.at(2), QStringLiteral("partly copied"));
        QVERIFY(row.at(3).contains(QStringLiteral("leads outside the preparation folder")));
    }

    // Photos of one name from several folders, copied side by side by the workers: the last
    // one stays, and each line names the copy it replaced.
    void sameNameFromSeveralFoldersIsNoted()
    {
        QByteArray last;
        for (int day = 1; day <= 6; ++day) {
            // Large enough for two copies to be under way at once, were they let.
            const QString name = QStringLiteral("day%1/IMG_0001(#12#).jpg").arg(day);
            last = QByteArray(2 << 20, char('a' + day));
            f->env.writeFile(QStringLiteral("src/") + name, last);
            lib_SetFileDate(f->src(name), QLatin1Char('M'), kInside);
        }
        f->run(webVariant());
        QCOMPARE(PublishFixture::filesUnder(web()), QStringList{"IMG_0001.jpg"});
        QCOMPARE(fileBytes(web() + QStringLiteral("/IMG_0001.jpg")), last);
        QCOMPARE(said(QStringLiteral("day1/IMG_0001(#12#).jpg")), (QStringList{"copied", "", "IMG_0001.jpg"}));
        for (int day = 2; day <= 6; ++day)
            QCOMPARE(said(QStringLiteral("day%1/IMG_0001(#12#).jpg").arg(day)),
                     (QStringList{"copied",
                                  QStringLiteral("replaced the copy of day%1/IMG_0001(#12#).jpg made earlier in this run")
                                      .arg(day - 1),
                                  "IMG_0001.jpg"}));
    }

    // The report goes to the data folder, never into the folder that is uploaded or burnt, and
    // its totals add up to the files considered.
    void reportStaysOutOfThePreparationFolder()
    {
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0002(#12#P#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0003.jpg"), kInside);
        f->photo(QStringLiteral("old/IMG_0004(#12#).jpg"), kWindowStart.addDays(-9));
        f->privacy(webVariant(), true, false);
        f->run(webVariant());
        QCOMPARE(PublishFixture::filesUnder(web()), QStringList{"IMG_0001.jpg"});
        QCOMPARE(QFileInfo(report()).absolutePath(), QDir(AppPaths::dataDir()).absolutePath());
        const QList<QStringList> rows = PublishFixture::rows(report());
        const auto totals = std::find_if(rows.begin(), rows.end(), [](const QStringList &r) { return r.value(0) == "Totals"; });
        QVERIFY(totals != rows.end());
        QStringList lines;
        for (auto it = totals + 1; it != rows.end() && it->size() == 2; ++it)
            lines << it->join(QLatin1Char('='));
        QCOMPARE(lines, (QStringList{"copied=1", "left out: marked Keep Private=1", "left out: not allocated=1",
                                     "left out: outside the date window=1", "copies made=1"}));
    }

    void sizeAndDigestAreOfTheWholeCopy_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<bool>("familyFolders");
        for (int size : {0, 256 * 1024, 1024 * 1024 + 3}) {
            for (bool folders : {false, true})
                QTest::addRow("%d bytes%s", size, folders ? ", family folders" : "") << size << folders;
        }
    }
    // The digest is taken block by block as the copy is written, one copy after another: every
    // block of every file counts, and nothing of the file before.
    void sizeAndDigestAreOfTheWholeCopy()
    {
        QFETCH(int, size);
        QFETCH(bool, familyFolders);
        WriteSetting(QStringLiteral("WebTgtInclFam"), familyFolders);
        QList<QByteArray> contents;
        for (int n = 0; n < 3; ++n) {
            QByteArray bytes(size, Qt::Uninitialized);
            for (int i = 0; i < size; ++i)
                bytes[i] = char((i * 7 + n * 13) ^ (i >> 11));
            const QString name = QStringLiteral("IMG_%1(#12#7#).jpg").arg(n);
            f->env.writeFile(QStringLiteral("src/") + name, bytes);
            lib_SetFileDate(f->src(name), QLatin1Char('M'), kInside);
            contents << bytes;
        }
        f->run(webVariant());
        for (int n = 0; n < 3; ++n) {
            const QStringList row = PublishFixture::rowOf(report(), QStringLiteral("IMG_%1(#12#7#).jpg").arg(n));
            QCOMPARE(row.value(2), QStringLiteral("copied"));
            QCOMPARE(row.value(5), QString::number(size));
            QCOMPARE(row.value(6), PublishFixture::sha256(contents.at(n)));
        }
    }

    // A name with a comma, quotes, a leading blank and letters beyond ASCII comes back whole from
    // the report: quoted, its quotes doubled, in UTF-8; a plain name stays unquoted.
    void awkwardNamesAreQuotedInTheReport()
    {
        f->photo(QStringLiteral(" Léa, \"Jo\"(#12#).jpg"), kInside);
        f->photo(QStringLiteral("Zoë(#12#).jpg"), kInside);
        f->run(webVariant());
        QFile file(report());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.startsWith("\xEF\xBB\xBF"));
        const QString text = QString::fromUtf8(bytes);
        const QStringList lines = text.split(QStringLiteral("\r\n"));
        const auto lineOf = [&lines](const QString &start) -> QString {
            const auto it = std::find_if(lines.begin(), lines.end(), [&](const QString &l) { return l.startsWith(start); });
            return it == lines.end() ? QString() : *it;
        };
        const QString awkward = lineOf(QStringLiteral("\" Léa, \"\"Jo\"\"(#12#).jpg\","));
        QVERIFY2(awkward.contains(QStringLiteral(",copied,,\" Léa, \"\"Jo\"\".jpg\",")), qPrintable(awkward));
        QVERIFY2(lineOf(QStringLiteral("Zoë(#12#).jpg,")).contains(QStringLiteral(",copied,,Zoë.jpg,")),
                 qPrintable(text));
        QCOMPARE(PublishFixture::filesUnder(web()), (QStringList{" Léa, \"Jo\".jpg", "Zoë.jpg"}));
    }

    void missingSourceDirIsReported()
    {
        WriteSetting(QStringLiteral("SrcDir"), f->env.path(QStringLiteral("unplugged")));
        f->port.answer(true);
        PublishRun(PublishNames::web(), f->db).run();
        QVERIFY(f->port.lastText().startsWith(QStringLiteral("The Source Dir ") + f->env.path(QStringLiteral("unplugged"))));
        QVERIFY(f->reports().isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_PublishRobust)
#include "tst_publishrobust.moc"
