// The web and CD preparation on real files and a real family database: which photo goes out,
// under which name and into which folder, what the report says about it, and the texts of the
// run. Each case runs the web variant and, from the same table, the CD variant.
#include "publishfixture.h"

#include "lib/appstate.h"

#include <memory>

using namespace quillet;
using namespace quillet::test;

namespace {

// One file through one run: what the preparation folder holds afterwards and what the report
// says. An expected outcome "left out: ..." means no file in the folder.
struct Case
{
    const char *name;
    QString file;
    QDateTime modified;
    bool allow = false, copy = false, inclFam = false;
    QStringList webTargets;
    QString webOutcome;
    // The CD variant's expectation where it differs from the web's (the families' wishes are
    // kept per variant); otherwise the same.
    std::optional<QStringList> cdTargets = std::nullopt;
    QString cdOutcome = QString();
    QString warning = QString();
};

QList<Case> cases()
{
    const QDateTime in = kInside;
    const QString copied = QStringLiteral("copied");
    return {
        {"one family asked for no web", "IMG_0001(#12#9#).jpg", in, true, false, false, {},
         "left out: family 9 asked for no web", QStringList{"IMG_0001.jpg"}, copied},
        {"no web wish holds without the privacy option", "IMG_0001(#9#).jpg", in, false, false, true, {},
         "left out: family 9 asked for no web", QStringList{"Cy Dee/IMG_0001.jpg"}, copied},
        {"one family asked for no CD", "IMG_0001(#5#12#).jpg", in, false, false, false, {"IMG_0001.jpg"}, copied,
         QStringList{}, "left out: family 5 asked for no CD"},
        {"private, option off", "IMG_0001(#12#P#).jpg", in, false, false, false, {"IMG_0001.jpg"}, copied},
        {"private, option on", "IMG_0001(#12#P#).jpg", in, true, false, false, {}, "left out: marked Keep Private"},
        {"private, option on, copy private", "IMG_0001(#12#P#).jpg", in, true, true, false, {"IMG_0001.jpg"}, copied},
        {"private, option off, copy private", "IMG_0001(#12#P#).jpg", in, false, true, false, {"IMG_0001.jpg"}, copied},
        {"private marker gets no folder", "IMG_0001(#12#P#).jpg", in, false, false, true, {"Ann Lee/IMG_0001.jpg"},
         copied},
        {"window start exactly", "IMG_0002(#12#).jpg", kWindowStart, false, false, false, {"IMG_0002.jpg"}, copied},
        {"window end exactly", "IMG_0002(#12#).jpg", kWindowEnd, false, false, false, {"IMG_0002.jpg"}, copied},
        {"window end within its second", "IMG_0002(#12#).jpg", kWindowEnd.addMSecs(600), false, false, false,
         {"IMG_0002.jpg"}, copied},
        {"a second before the window", "IMG_0002(#12#).jpg", kWindowStart.addSecs(-1), false, false, false, {},
         "left out: outside the date window"},
        {"a second after the window", "IMG_0002(#12#).jpg", kWindowEnd.addSecs(1), false, false, false, {},
         "left out: outside the date window"},
        {"three families, one copy", "IMG_0003(#12#7#3#).jpg", in, false, false, false, {"IMG_0003.jpg"}, copied},
        {"three families, three folders", "IMG_0003(#12#7#3#).jpg", in, false, false, true,
         {"Ann Lee/IMG_0003.jpg", "Bob/IMG_0003.jpg", "Cat Fox/IMG_0003.jpg"}, copied},
        {"untagged name keeps the extension's case", "IMG_0001(#12#).JPG", in, false, false, false, {"IMG_0001.JPG"},
         copied},
        {"movie", "clip(#12#).mp4", in, false, false, false, {"clip.mp4"}, copied},
        {"not allocated", "IMG_0004.jpg", in, false, false, false, {}, "left out: not allocated"},
        {"not a photo", "notes(#12#).txt", in, false, false, false, {}, "left out: not a photo or movie"},
        {"tag in a folder name only", "Party (#1)/IMG_0005.jpg", in, false, false, false, {}, "left out: not allocated"},
        {"tag in a folder name and the file", "Party (#1)/IMG_0005(#12#).jpg", in, false, false, false,
         {"IMG_0005.jpg"}, copied},
        {"tag not closed", "IMG_0006(#.jpg", in, false, false, false, {}, "left out: allocation tag not closed by #)"},
        {"tag not closed after an id", "IMG_0006(#12.jpg", in, false, false, false, {},
         "left out: allocation tag not closed by #)"},
        {"empty tag", "IMG_0006(##).jpg", in, false, false, false, {}, "left out: allocation tag names no family"},
        {"tag of the marker alone", "IMG_0006(#P#).jpg", in, false, false, false, {},
         "left out: allocation tag names no family"},
        {"tag element not a number", "IMG_0006(#abc#).jpg", in, false, false, false, {}, "left out: family abc unknown",
         std::nullopt, QString(), "Family ID abc assigned to the file was not found in the db"},
        {"family not in the db", "IMG_0007(#12#44#).jpg", in, false, false, true, {}, "left out: family 44 unknown",
         std::nullopt, QString(), "Family ID 44 assigned to the file was not found in the db"},
    };
}

} // namespace

class tst_Publish : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PublishFixture> f;

private Q_SLOTS:
    void initTestCase()
    {
        // Local time apart from UTC (half an hour off, as no whole-hour mix-up could hide), so
        // that the report's times and the moved window are seen to be local.
        qputenv("TZ", "QLT-5:30");
    }
    void init()
    {
        f = std::make_unique<PublishFixture>();
        QVERIFY(f->env.isValid());
        appState().cancel = false;
    }
    void cleanup() { f.reset(); }

    void decisions_data()
    {
        QTest::addColumn<bool>("cd");
        QTest::addColumn<int>("index");
        const QList<Case> all = cases();
        for (bool cd : {false, true}) {
            for (int i = 0; i < all.size(); ++i)
                QTest::addRow("%s: %s", cd ? "cd" : "web", all.at(i).name) << cd << i;
        }
    }

    void decisions()
    {
        QFETCH(bool, cd);
        QFETCH(int, index);
        const Case c = cases().at(index);
        const Variant v = cd ? cdVariant() : webVariant();
        const QStringList targets = cd && c.cdTargets ? *c.cdTargets : c.webTargets;
        const QString outcome = cd && !c.cdOutcome.isEmpty() ? c.cdOutcome : c.webOutcome;
        f->privacy(v, c.allow, c.copy);
        WriteSetting(v.inclFamKey, c.inclFam);
        const QByteArray bytes = f->photo(c.file, c.modified);

        f->run(v);

        QStringList sorted = targets;
        sorted.sort();
        QCOMPARE(PublishFixture::filesUnder(f->prep(v)), sorted);
        for (const QString &t : targets) {
            QFile copy(f->prep(v) + QLatin1Char('/') + t);
            QVERIFY(copy.open(QIODevice::ReadOnly));
            QCOMPARE(copy.readAll(), bytes);
        }
        QCOMPARE(f->reports().size(), 1);
        const QStringList row = PublishFixture::rowOf(f->reports().first(), c.file);
        QVERIFY2(!row.isEmpty(), qPrintable(c.file));
        const QString said = row.at(3).isEmpty() ? row.at(2) : row.at(2) + QStringLiteral(": ") + row.at(3);
        QCOMPARE(said, outcome);
        QCOMPARE(row.at(4), targets.join(QStringLiteral("; ")));
        QCOMPARE(row.at(1), QDateTime(c.modified.date(), QTime(c.modified.time().hour(), c.modified.time().minute(),
                                                                c.modified.time().second()))
                                .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
        QCOMPARE(row.at(5), targets.isEmpty() ? QString() : QString::number(bytes.size()));
        QCOMPARE(row.at(6), targets.isEmpty() ? QString() : PublishFixture::sha256(bytes));
        QCOMPARE(f->port.texts().contains(c.warning), !c.warning.isEmpty());
        QCOMPARE(f->port.beeps, c.warning.isEmpty() ? 0 : 1);
        const QString summary = f->port.messages().at(f->port.messages().size() - 2).text;
        QCOMPARE(summary.contains(QStringLiteral("They are the copies of 1 file of the Source Dir")), targets.size() > 1);
        QCOMPARE(f->status.last(), lib_FormatCount(targets.size(), QStringLiteral("file"))
                                       + QStringLiteral(" copied to ") + f->prep(v));
    }

    // The texts that tell the variants apart, as the user meets them in one run.
    void variantTexts_data()
    {
        QTest::addColumn<bool>("cd");
        QTest::addColumn<QString>("confirmEnd");
        QTest::addColumn<QString>("progress");
        QTest::addColumn<QString>("finalQuestion");
        QTest::newRow("web") << false << "upload to the web."
                             << "Copying relevant files in preparation for move to web"
                             << "Set the Web Min Date to the current Web Max Date so duplicate photos will not be "
                                "included next time?";
        QTest::newRow("cd") << true << "burning to CD/DVD."
                            << "Copying relevant files in preparation for move to Cd"
                            << "Set the Cd Min Date to the current Cd Max Date so duplicate photos will not be "
                               "included next time?";
    }

    void variantTexts()
    {
        QFETCH(bool, cd);
        QFETCH(QString, confirmEnd);
        QFETCH(QString, progress);
        QFETCH(QString, finalQuestion);
        const Variant v = cd ? cdVariant() : webVariant();
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        f->run(v);
        const QStringList texts = f->port.texts();
        QCOMPARE(texts.first(), QStringLiteral("This will copy files between the dates specified (in Settings) into the "
                                               "directory specified ready for ")
                                    + confirmEnd + QStringLiteral("  Continue?"));
        QCOMPARE(texts.last(), finalQuestion);
        QCOMPARE(f->status, (QStringList{progress, QStringLiteral("1 file copied to ") + f->prep(v)}));
        QCOMPARE(f->port.progressCaptions, QStringList{progress});
        QVERIFY(QFileInfo(f->reports().first()).fileName().startsWith(cd ? QStringLiteral("CopyToCD_")
                                                                          : QStringLiteral("WebUpload_")));
        // The other variant's folder is untouched.
        QCOMPARE(PublishFixture::filesUnder(f->prep(cd ? webVariant() : cdVariant())), QStringList());
    }

    void confirmationText_data()
    {
        QTest::addColumn<bool>("allow");
        QTest::addColumn<bool>("copy");
        QTest::addColumn<QString>("privacy");
        const QString start = QStringLiteral("This will copy files between the dates specified (in Settings) into the "
                                             "directory specified ready for upload to the web.");
        QTest::newRow("option off") << false << true << QString();
        QTest::newRow("option on") << true << false
                                   << "  In accordance with your Settings, it will exclude families who requested "
                                      "privacy AND files marked as Keep Private.";
        QTest::newRow("option on, copy private") << true << true
                                                 << "  In accordance with your Settings, it will exclude families who "
                                                    "requested privacy but WILL still include files marked as Keep "
                                                    "Private.";
    }

    void confirmationText()
    {
        QFETCH(bool, allow);
        QFETCH(bool, copy);
        QFETCH(QString, privacy);
        f->privacy(webVariant(), allow, copy);
        f->port.answer(false);
        PublishRun(PublishNames::web(), f->db).run();
        QCOMPARE(f->port.texts(),
                 QStringList{QStringLiteral("This will copy files between the dates specified (in Settings) into the "
                                            "directory specified ready for upload to the web.")
                             + privacy + QStringLiteral("  Continue?")});
        QCOMPARE(f->port.actionCaptions, QStringList{QStringLiteral("Pre&view...")});
        QVERIFY(f->reports().isEmpty());
    }

    // The preview from the confirmation shows what would go out and why the rest stays in,
    // writes the same decisions as a report, and copies nothing; answering No then ends.
    void previewCopiesNothing()
    {
        f->privacy(webVariant(), true, false);
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0002(#12#P#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0003(#9#).jpg"), kInside);
        f->photo(QStringLiteral("IMG_0004.jpg"), kInside);
        f->photo(QStringLiteral("IMG_0005(#12#).jpg"), kWindowStart.addDays(-1));
        f->port.pressAction(true);  // Preview... on the confirmation
        f->port.pressAction(true);  // Open list on the preview
        f->port.answer(false);
        PublishRun(PublishNames::web(), f->db).run();

        QCOMPARE(PublishFixture::filesUnder(f->prep(webVariant())), QStringList());
        QCOMPARE(f->port.messages().size(), 2);
        const QString preview = f->port.messages().at(1).text;
        QCOMPARE(f->port.messages().at(1).style, 3);
        QVERIFY(preview.startsWith(QStringLiteral("Preview: nothing has been copied yet.\r\n\r\n1 file would go out (1 copy) to ")
                                   + f->prep(webVariant())));
        for (const char *line : {"      1  would be copied", "      1  left out: marked Keep Private",
                                 "      1  left out: family 9 asked for no web", "      1  left out: not allocated",
                                 "      1  left out: outside the date window"})
            QVERIFY2(preview.contains(QLatin1String(line)), line);
        QCOMPARE(f->reports().size(), 1);
        const QString report = f->reports().first();
        QVERIFY(report.endsWith(QStringLiteral("_preview.csv")));
        QCOMPARE(f->port.opened, QStringList{report});
        QCOMPARE(PublishFixture::rowOf(report, QStringLiteral("IMG_0001(#12#).jpg")).mid(2, 3),
                 (QStringList{"would be copied", "", "IMG_0001.jpg"}));
        QCOMPARE(PublishFixture::rowOf(report, QStringLiteral("IMG_0002(#12#P#).jpg")).mid(2, 2),
                 (QStringList{"left out", "marked Keep Private"}));
    }

    // The summary offers the report, and the final question moves the window past the newest
    // photo that fell into it.
    void windowMovesOn()
    {
        f->photo(QStringLiteral("a/IMG_0001(#12#).jpg"), kInside);
        f->photo(QStringLiteral("b/IMG_0002.jpg"), kInside.addSecs(3600)); // unallocated, still the newest
        f->photo(QStringLiteral("IMG_0003(#12#).jpg"), kWindowEnd.addSecs(60));
        f->port.pressAction(false); // no preview
        f->port.pressAction(true);  // Open report on the summary
        f->run(webVariant(), true);
        QCOMPARE(ReadSetting(QStringLiteral("WebMinDate")), QStringLiteral("20240301 113001"));
        QCOMPARE(ReadSetting(QStringLiteral("WebMaxDate")), QStringLiteral("20991231 235959"));
        QCOMPARE(ReadSetting(QStringLiteral("CdMinDate")), QStringLiteral("20240301 080000"));
        QCOMPARE(f->port.opened, QStringList{f->reports().first()});
        const ScriptedPrompt::Message summary = f->port.messages().at(f->port.messages().size() - 2);
        QCOMPARE(summary.style, 3);
        QVERIFY(summary.text.startsWith(QStringLiteral("1 file copied to ") + f->prep(webVariant())));
        QVERIFY(summary.text.endsWith(f->reports().first()));
        QCOMPARE(f->port.actionCaptions, (QStringList{"Pre&view...", "&Open report"}));
    }

    void windowMovesToZeroDateWhenNothingPassed()
    {
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kWindowStart.addDays(-3));
        f->run(webVariant(), true);
        QCOMPARE(ReadSetting(QStringLiteral("WebMinDate")), QStringLiteral("18991230 000001"));
        QCOMPARE(ReadSetting(QStringLiteral("WebMaxDate")), QStringLiteral("20991231 235959"));
    }

    void windowStaysOnNo()
    {
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        f->run(webVariant(), false);
        QCOMPARE(ReadSetting(QStringLiteral("WebMinDate")), QStringLiteral("20240301 080000"));
        QCOMPARE(ReadSetting(QStringLiteral("WebMaxDate")), QStringLiteral("20240301 170000"));
    }

    void emptyTargetDoesNothing()
    {
        WriteSetting(QStringLiteral("WebTgtDir"), QString());
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        PublishRun(PublishNames::web(), f->db, [this](const QString &t) { f->status << t; }).run();
        QVERIFY(f->port.messages().isEmpty());
        QVERIFY(f->status.isEmpty());
        QVERIFY(f->reports().isEmpty());
    }

    void missingFolderIsCreatedOnYes_data()
    {
        QTest::addColumn<bool>("cd");
        QTest::addColumn<bool>("create");
        QTest::newRow("web, yes") << false << true;
        QTest::newRow("web, no") << false << false;
        QTest::newRow("cd, yes") << true << true;
    }

    void missingFolderIsCreatedOnYes()
    {
        QFETCH(bool, cd);
        QFETCH(bool, create);
        const Variant v = cd ? cdVariant() : webVariant();
        const QString dir = f->env.path(QStringLiteral("new/deeper/prep"));
        WriteSetting(v.tgtKey, dir);
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        f->port.answer(true);
        f->port.answer(create);
        if (create)
            f->port.answer(false);
        PublishRun(v.names, f->db).run();
        QCOMPARE(f->port.texts().at(1), cd ? QStringLiteral("Cd Target Dir not found. Do you want to create it?")
                                           : QStringLiteral("Web Target Dir not found. Do you want to create it?"));
        QCOMPARE(PublishFixture::filesUnder(dir), create ? QStringList{"IMG_0001.jpg"} : QStringList());
        QCOMPARE(QFileInfo::exists(dir), create);
    }

    void missingDriveStops()
    {
        WriteSetting(QStringLiteral("CdTgtDir"), QStringLiteral("/media/nobody/NO_SUCH_DISK/cd"));
        f->photo(QStringLiteral("IMG_0001(#12#).jpg"), kInside);
        f->port.answer(true);
        PublishRun(PublishNames::cd(), f->db).run();
        QCOMPARE(f->port.texts().last(), QStringLiteral("Cd Target Dir drive (/media/nobody/NO_SUCH_DISK) does not exist"));
        QCOMPARE(f->port.messages().last().style, 2);
        QVERIFY(f->reports().isEmpty());
    }

    void malformedWindowIsReported()
    {
        WriteSetting(QStringLiteral("WebMaxDate"), QStringLiteral("2024-03-01 17:00"));
        PublishRun(PublishNames::web(), f->db).run();
        QCOMPARE(f->port.messages().size(), 1);
        QCOMPARE(f->port.messages().first().style, 2);
        QVERIFY(f->port.lastText().contains(QStringLiteral("2024-03-01 17:00")));
    }

    void datesAreReadByPosition_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("expected");
        QTest::newRow("plain") << "20240301 170005" << QDateTime(QDate(2024, 3, 1), QTime(17, 0, 5));
        QTest::newRow("end of the century") << "20991231 235959" << QDateTime(QDate(2099, 12, 31), QTime(23, 59, 59));
        QTest::newRow("locale form") << "01/03/2024 17:00" << QDateTime();
        QTest::newRow("no blank") << "20240301T170005" << QDateTime();
        QTest::newRow("month 13") << "20241301 170005" << QDateTime();
        QTest::newRow("short") << "20240301 1700" << QDateTime();
    }

    void datesAreReadByPosition()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, expected);
        QCOMPARE(PublishSettings::parseDate(text), expected);
        if (expected.isValid())
            QCOMPARE(PublishSettings::formatDate(expected), text);
    }
};

QTEST_GUILESS_MAIN(tst_Publish)
#include "tst_publish.moc"
