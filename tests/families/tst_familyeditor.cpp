// The family editor's rules against a real SQLite file, real family folders under a temporary
// Target Dir and the real batchfile journal.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "families/familyeditor.h"
#include "sync/batchfilejournal.h"
#include "support/hometest.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSqlRecord>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

class TestFamilyEditor : public HomeTest
{
    Q_OBJECT

    std::unique_ptr<FamilyDatabase> m_db;

    // Adds a family the way the editor does; the folder is made when `folder`.
    int addFamily(const QString &first, const QString &last, bool current = true, const QString &endDate = {},
                  bool folder = true)
    {
        FamilyEditor editor(*m_db);
        FamilyFields f;
        f.firstName = first;
        f.lastName = last;
        f.current = current;
        f.endDate = endDate;
        const int id = editor.Save(f);
        if (folder)
            QDir().mkpath(m_env->tgtDir() + QLatin1Char('/') + f.folderName());
        return id;
    }

    QSqlRecord row(int id) const
    {
        const auto rows = m_db->select(QStringLiteral("SELECT * FROM tblFamilies WHERE FamilyID=") + QString::number(id));
        return rows.isEmpty() ? QSqlRecord() : rows.first();
    }

    QString journal() const
    {
        QFile f(Batchfile::CurrentPath());
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

    bool folderExists(const QString &name) const { return QDir(m_env->tgtDir() + QLatin1Char('/') + name).exists(); }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        m_db = std::make_unique<FamilyDatabase>();
        QVERIFY(m_db->OpenDatabase());
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("PC1"));
        WriteSetting(QStringLiteral("CreateBatchs"), true);
        Batchfile::SetBatchfileName(false);
    }

    void cleanup()
    {
        QCOMPARE(m_port->unexpectedQuestions, 0);
        m_db.reset();
        HomeTest::cleanup();
    }

    void duplicateNames_data()
    {
        QTest::addColumn<bool>("existingCurrent");
        QTest::addColumn<bool>("answerYes");
        QTest::addColumn<QString>("expectedOldLast");
        QTest::newRow("current one exists: refused") << true << false << "O'Brien";
        QTest::newRow("retired one, user says No") << false << false << "O'Brien";
        QTest::newRow("retired one renamed (ex yymmdd)") << false << true << "O'Brien (ex 160315)";
    }
    void duplicateNames()
    {
        QFETCH(bool, existingCurrent);
        QFETCH(bool, answerYes);
        QFETCH(QString, expectedOldLast);
        const int old = addFamily(QStringLiteral("Jack & Jill"), QStringLiteral("O'Brien"), existingCurrent,
                                  QStringLiteral("2016-03-15"));
        QVERIFY(old > 0);
        m_port->clear();
        if (!existingCurrent)
            m_port->answer(answerYes);

        FamilyEditor editor(*m_db);
        FamilyFields f;
        f.firstName = QStringLiteral("jack & jill"); // the same names whatever the letter case
        f.lastName = QStringLiteral("O'BRIEN");
        const int id = editor.Save(f);

        QCOMPARE(row(old).value(QStringLiteral("LastName")).toString(), expectedOldLast);
        QCOMPARE(id > 0, answerYes);
        if (existingCurrent)
            QCOMPARE(m_port->lastText(), QStringLiteral("Sorry, there is already a current family with that first name/last name"));
        else
            QVERIFY(m_port->texts().first().endsWith(QStringLiteral("renamed as Jack & Jill O'Brien (ex 160315).")));
        QCOMPARE(folderExists(QStringLiteral("Jack & Jill O'Brien (ex 160315)")), answerYes);
        QCOMPARE(journal().contains(QStringLiteral("NTD\r\nJack & Jill O'Brien\r\nJack & Jill O'Brien (ex 160315)\r\n")),
                 answerYes);
    }

    void invalidCharacters_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("message");
        QTest::newRow("slash") << "Tom/Ann" << "" << "'/' is not a valid character (as names are used to create file dir)";
        QTest::newRow("colon in last name") << "Tom" << "Bro:wn" << "':' is not a valid character (as names are used to create file dir)";
        QTest::newRow("accent") << "Zo\u00e9" << "" << "'\u00e9' is not a valid character (as names are used to create file dir)";
        QTest::newRow("blank first name") << "   " << "Brown" << "Must have a First Name";
        QTest::newRow("dots only") << ".." << "" << "'..' can not be used as a name (as names are used to create file dir)";
        QTest::newRow("bad date") << "Tom" << "" << "'31/02/2020' is not a date. Type dates as year-month-day, for example 2016-03-15";
    }
    void invalidCharacters()
    {
        QFETCH(QString, first);
        QFETCH(QString, last);
        QFETCH(QString, message);
        FamilyEditor editor(*m_db);
        FamilyFields f;
        f.firstName = first;
        f.lastName = last;
        if (QTest::currentDataTag() == QByteArray("bad date"))
            f.startDate = QStringLiteral("31/02/2020");
        QCOMPARE(editor.Save(f), 0);
        QCOMPARE(m_port->lastText(), message);
        QVERIFY(m_db->select(QStringLiteral("SELECT * FROM tblFamilies")).isEmpty());
    }

    void validCharactersPassWhole()
    {
        const QString all = QStringLiteral("Az09 -=!\u00a3$%^&()_+[]#{}~;'@,.`\u00ac");
        for (const QChar c : all)
            QVERIFY2(FamilyEditor::IsValidNameChar(c), qPrintable(QString(c)));
        for (const QChar c : QStringLiteral("\\/:*?\"<>|\u00e9\t"))
            QVERIFY2(!FamilyEditor::IsValidNameChar(c), qPrintable(QString(c)));
    }

    void datesFollowCurrent_data()
    {
        QTest::addColumn<bool>("current");
        QTest::addColumn<QString>("typedStart");
        QTest::addColumn<QString>("typedEnd");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("end");
        const QString today = QDate::currentDate().toString(Qt::ISODate);
        QTest::newRow("current, no start: today, end cleared") << true << "" << "2015-01-01" << today << "";
        QTest::newRow("current, typed start day-first") << true << "3/9/2014" << "" << "2014-09-03" << "";
        QTest::newRow("retired, no end: today, start kept") << false << "2014-09-03" << "" << "2014-01-02" << today;
        QTest::newRow("retired, typed end") << false << "" << "2016-03-15" << "2014-01-02" << "2016-03-15";
    }
    void datesFollowCurrent()
    {
        QFETCH(bool, current);
        QFETCH(QString, typedStart);
        QFETCH(QString, typedEnd);
        const int id = addFamily(QStringLiteral("Tom"), QStringLiteral("Brown"));
        m_db->exec(QStringLiteral("UPDATE tblFamilies SET StartDate='2014-01-02 00:00:00', EndDate=NULL WHERE FamilyID=?"), {id});
        FamilyEditor editor(*m_db);
        editor.LoadList(false, false);
        FamilyFields f = editor.Fields(id);
        QCOMPARE(f.startDate, QStringLiteral("2014-01-02"));
        f.current = current;
        f.startDate = typedStart;
        f.endDate = typedEnd;
        QCOMPARE(editor.Save(f), id);
        editor.LoadList(false, false);
        QTEST(editor.Fields(id).startDate, "start");
        QTEST(editor.Fields(id).endDate, "end");
    }

    // The rename is saved and journalled whether or not the family's folder is there to move.
    void renameMovesFolderAndCounts_data()
    {
        QTest::addColumn<bool>("folder");
        QTest::newRow("folder moved") << true;
        QTest::newRow("folder missing") << false;
    }
    void renameMovesFolderAndCounts()
    {
        QFETCH(bool, folder);
        const int tom = addFamily(QStringLiteral("Tom"), QStringLiteral("Brown"), true, {}, folder);
        if (folder)
            QVERIFY(QFile(m_env->tgtDir() + QStringLiteral("/Tom Brown/a.jpg")).open(QIODevice::WriteOnly));
        FamilyEditor editor(*m_db);
        editor.LoadList(false, false);
        QCOMPARE(FamilyEditor::CountsText(editor.entryTexts()), QStringLiteral("1 families, 1 children"));
        QSignalSpy changed(&editor, &FamilyEditor::familiesChanged);
        FamilyFields f = editor.Fields(tom);
        f.firstName = QStringLiteral("Tom & Ann");
        f.lastName = QStringLiteral("Browne");
        QCOMPARE(editor.Save(f), tom);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(row(tom).value(QStringLiteral("LastName")).toString(), QStringLiteral("Browne"));
        QVERIFY(!folderExists(QStringLiteral("Tom Brown")));
        QCOMPARE(QFile::exists(m_env->tgtDir() + QStringLiteral("/Tom & Ann Browne/a.jpg")), folder);
        QVERIFY(journal().endsWith(QStringLiteral("NTD\r\nTom Brown\r\nTom & Ann Browne\r\n")));
        editor.LoadList(false, false);
        QCOMPARE(FamilyEditor::CountsText(editor.entryTexts()), QStringLiteral("1 families, 2 children"));
        // The save stamps the database and rewrites the ID list in the Source Dir.
        QVERIFY(!m_db->ReadParam(QStringLiteral("LastDBUpdate")).isNull());
        QFile csv(m_env->srcDir() + QStringLiteral("/_FamilyIDs.csv"));
        QVERIFY(csv.open(QIODevice::ReadOnly));
        QVERIFY(csv.readAll().contains("\"Tom & Ann\",\"Browne\""));
    }

    void groupEntriesSortLastAndAreNotCounted()
    {
        for (const auto &[first, last] : {std::pair{"(Staff)", ""}, std::pair{"zoe", "Adams"}, std::pair{"Amy and Bo", "Zed"},
                                          std::pair{"\u00c9mile", "Brun"}}) {
            FamilyEditor editor(*m_db);
            FamilyFields f;
            f.firstName = QString::fromUtf8(first);
            f.lastName = QString::fromUtf8(last);
            // The accented name cannot be typed in the editor; another tool may have written it.
            if (f.firstName.startsWith(QChar(0xc9)))
                m_db->insert(QStringLiteral("INSERT INTO tblFamilies (FirstName, LastName) VALUES (?, ?)"), {f.firstName, f.lastName});
            else
                QVERIFY(editor.Save(f) > 0);
        }
        QVERIFY(m_port->texts().contains(
            "Note: first names starting with ( are treated in a number of sprecial ways eg. sorted last."));
        FamilyEditor editor(*m_db);
        editor.LoadList(false, false);
        QCOMPARE(editor.entryTexts(), (QStringList{"Amy and Bo Zed", "\u00c9mile Brun", "zoe Adams", "(Staff)"}));
        QCOMPARE(FamilyEditor::CountsText(editor.entryTexts()), QStringLiteral("3 families, 4 children"));
        QCOMPARE(FamilyEditor::CountsText({QStringLiteral("(Staff)")}), QString());
    }

    void listOrdersCopiesAndCurrentOnly()
    {
        const int ann = addFamily(QStringLiteral("Ann"), QStringLiteral("Lee"));
        const int bob = addFamily(QStringLiteral("Bob"), QStringLiteral("Kay"), false);
        m_db->exec(QStringLiteral("UPDATE tblFamilies SET Parent=? WHERE FamilyID=?"), {QStringLiteral("Zara"), ann});
        m_db->exec(QStringLiteral("UPDATE tblFamilies SET Parent=? WHERE FamilyID=?"), {QStringLiteral("alan"), bob});
        FamilyEditor editor(*m_db);
        editor.LoadList(false, true);
        QCOMPARE(editor.entryTexts(), (QStringList{"alan - Bob Kay", "Zara - Ann Lee"}));
        QCOMPARE(editor.entries().first().key, QStringLiteral("K") + QString::number(bob));
        editor.CopyList(true);
        QCOMPARE(m_port->clipboard, QStringLiteral("alan\tBob Kay\r\nZara\tAnn Lee\r\n"));
        editor.LoadList(true, false);
        QCOMPARE(editor.entryTexts(), QStringList{"Ann Lee"});
    }

    void deleteNeedsTypedYes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("deleted");
        QTest::newRow("yes in lower case") << "yes" << true;
        QTest::newRow("YES") << "YES" << true;
        QTest::newRow("empty answer") << "" << false;
        QTest::newRow("something else") << "no" << false;
    }
    void deleteNeedsTypedYes()
    {
        QFETCH(QString, typed);
        QFETCH(bool, deleted);
        const int id = addFamily(QStringLiteral("Tom"), QStringLiteral("Brown"));
        FamilyEditor editor(*m_db);
        m_port->choose(typed);
        QCOMPARE(editor.Delete(id, QStringLiteral("Tom Brown")), deleted);
        QCOMPARE(row(id).isEmpty(), deleted);
        QCOMPARE(folderExists(QStringLiteral("Tom Brown")), !deleted);
        QCOMPARE(journal().contains(QStringLiteral("DTD\r\nTom Brown\r\n")), deleted);
    }

    void deleteUsesStoredNamesOnly()
    {
        // The name typed over the record is another family's: only the shown family's folder goes.
        addFamily(QStringLiteral("Ann"), QStringLiteral("Lee"));
        const int tom = addFamily(QStringLiteral("Tom"), QStringLiteral("Brown"));
        FamilyEditor editor(*m_db);
        m_port->choose(QStringLiteral("YES"));
        QVERIFY(editor.Delete(tom, QStringLiteral("Ann Lee")));
        QVERIFY(folderExists(QStringLiteral("Ann Lee")));
        QVERIFY(!folderExists(QStringLiteral("Tom Brown")));
    }

    // A name written into the database by another tool may point outside the Target Dir: the
    // editor never deletes or moves anything there.
    void namesReachingOutsideTargetDirTouchNothing_data()
    {
        QTest::addColumn<QString>("first");
        QTest::newRow("parent folder") << "../victim";
        QTest::newRow("dots") << "..";
    }
    void namesReachingOutsideTargetDirTouchNothing()
    {
        QFETCH(QString, first);
        QDir().mkpath(m_env->path(QStringLiteral("victim")));
        QVERIFY(QFile(m_env->path(QStringLiteral("victim/keep.jpg"))).open(QIODevice::WriteOnly));
        const int id = int(m_db->insert(QStringLiteral("INSERT INTO tblFamilies (FirstName) VALUES (?)"), {first}));
        FamilyEditor editor(*m_db);
        editor.LoadList(false, false);
        FamilyFields f = editor.Fields(id);
        f.firstName = QStringLiteral("Safe");
        QCOMPARE(editor.Save(f), id);
        QVERIFY(QFile::exists(m_env->path(QStringLiteral("victim/keep.jpg"))));
        m_db->exec(QStringLiteral("UPDATE tblFamilies SET FirstName=? WHERE FamilyID=?"), {first, id});
        m_port->choose(QStringLiteral("YES"));
        QVERIFY(editor.Delete(id, first));
        QVERIFY(row(id).isEmpty());
        QVERIFY(QFile::exists(m_env->path(QStringLiteral("victim/keep.jpg"))));
        QVERIFY(QDir(m_env->tgtDir()).exists());
    }

    // Apostrophes through the update, the last-name check and the delete (the duplicate check
    // meets one in duplicateNames).
    void obrienThroughEveryStatement()
    {
        const int id = addFamily(QStringLiteral("Sean"), QStringLiteral("O'Brien"));
        QVERIFY(id > 0);
        FamilyEditor editor(*m_db);
        editor.LoadList(false, false);
        FamilyFields f = editor.Fields(id);
        f.firstName = QStringLiteral("Sean & Aoife");
        f.lastName = QStringLiteral("O'Brien-D'Souza");
        QCOMPARE(editor.Save(f), id);
        QVERIFY(folderExists(QStringLiteral("Sean & Aoife O'Brien-D'Souza")));
        QVERIFY(editor.CheckLastNameChange(id, QStringLiteral("O'Brien")));
        m_port->choose(QStringLiteral("yes"));
        QVERIFY(editor.Delete(id, QStringLiteral("Sean & Aoife O'Brien-D'Souza")));
        QVERIFY(row(id).isEmpty());
        QVERIFY(!folderExists(QStringLiteral("Sean & Aoife O'Brien-D'Souza")));
    }

    void lastNameWarning_data()
    {
        QTest::addColumn<QString>("storedLast");
        QTest::addColumn<QString>("entered");
        QTest::addColumn<bool>("warns");
        QTest::newRow("changed") << "Brown" << "Green" << true;
        QTest::newRow("cleared") << "Brown" << "" << true;
        QTest::newRow("unchanged") << "Brown" << "Brown" << false;
        QTest::newRow("stored empty") << "" << "Green" << false;
    }
    void lastNameWarning()
    {
        QFETCH(QString, storedLast);
        QFETCH(QString, entered);
        QFETCH(bool, warns);
        const int id = addFamily(QStringLiteral("Tom"), storedLast);
        m_port->clear();
        FamilyEditor editor(*m_db);
        QCOMPARE(editor.CheckLastNameChange(id, entered), warns);
        QCOMPARE(editor.CheckLastNameChange(0, entered), false); // a new family
        QCOMPARE(m_port->texts().size(), warns ? 1 : 0);
    }

    void firstNameKeys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("pass");
        QTest::addColumn<bool>("dirty");
        const int ctrl = int(Qt::ControlModifier);
        QTest::newRow("letter") << int(Qt::Key_A) << 0 << "a" << true << true;
        QTest::newRow("apostrophe") << int(Qt::Key_Apostrophe) << 0 << "'" << true << true;
        QTest::newRow("slash swallowed") << int(Qt::Key_Slash) << 0 << "/" << false << false;
        QTest::newRow("accent swallowed") << int(Qt::Key_Eacute) << 0 << "\u00e9" << false << false;
        QTest::newRow("Ctrl+C") << int(Qt::Key_C) << ctrl << "\x03" << true << false;
        QTest::newRow("Ctrl+V") << int(Qt::Key_V) << ctrl << "\x16" << true << true;
        QTest::newRow("Ctrl+X") << int(Qt::Key_X) << ctrl << "\x18" << true << true;
        QTest::newRow("Ctrl+Z swallowed") << int(Qt::Key_Z) << ctrl << "\x1a" << false << false;
        QTest::newRow("Alt+letter swallowed") << int(Qt::Key_F) << int(Qt::AltModifier) << "f" << false << false;
        QTest::newRow("Esc") << int(Qt::Key_Escape) << 0 << "\x1b" << true << false;
        QTest::newRow("Backspace") << int(Qt::Key_Backspace) << 0 << "\b" << true << false;
        QTest::newRow("arrow") << int(Qt::Key_Left) << 0 << "" << true << false;
        QTest::newRow("Tab") << int(Qt::Key_Tab) << 0 << "\t" << true << false;
    }
    void firstNameKeys()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(QString, text);
        const FamilyEditor::KeyVerdict v = FamilyEditor::FirstNameKey(key, Qt::KeyboardModifiers(modifiers), text);
        QTEST(v.pass, "pass");
        QTEST(v.dirty, "dirty");
    }

    void copyList_data()
    {
        QTest::addColumn<bool>("showParent");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("text");
        QTest::newRow("names") << false << QStringList{"Ann Lee", "(Staff)", "Tom - Bo"} << "Ann Lee\r\nTom - Bo\r\n";
        QTest::newRow("parent split by tab") << true << QStringList{"Zara - Ann Lee", " - Bob Kay", "(Staff)"}
                                             << "Zara\tAnn Lee\r\n\tBob Kay\r\n";
        QTest::newRow("empty") << true << QStringList{} << "";
    }
    void copyList()
    {
        QFETCH(bool, showParent);
        QFETCH(QStringList, entries);
        QTEST(FamilyEditor::CopyListText(entries, showParent), "text");
    }
};

QTEST_GUILESS_MAIN(TestFamilyEditor)
#include "tst_familyeditor.moc"
