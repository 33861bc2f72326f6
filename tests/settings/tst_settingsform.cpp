#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "app/familydatabase.h"
#include "settings/settingsform.h"
#include "support/hometest.h"
#include "sync/batchfilejournal.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTest>
#include <QTime>

using namespace quillet;
using namespace quillet::test;

class TestSettingsForm : public HomeTest
{
    Q_OBJECT

    FamilyDatabase *m_db = nullptr;
    SettingsForm *m_form = nullptr;

    // The form loaded with batchfiles on for `pcName`, whose batchfile has an entry.
    void loadWithBatchfile(const QString &pcName)
    {
        WriteSetting(QStringLiteral("PCname"), pcName);
        WriteSetting(QStringLiteral("CreateBatchs"), QStringLiteral("1"));
        m_form->LoadData(*m_db);
        Batchfile::SetBatchfileName(false);
        BatchfileWriter().entry(Batchfile::kDeleteSource, {QStringLiteral("a.jpg")});
    }

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        m_db = new FamilyDatabase;
        QVERIFY(m_db->OpenDatabase());
        m_form = new SettingsForm;
        appState().systemLoaded = true;
    }
    void cleanup()
    {
        delete m_form;
        delete m_db;
        HomeTest::cleanup();
    }

    void loadWritesDefaults()
    {
        m_form->LoadData(*m_db);
        QCOMPARE(m_db->ReadParam(QStringLiteral("MorningSessEnd")).toString(), QStringLiteral("12:30:00"));
        QCOMPARE(m_db->ReadParam(QStringLiteral("AfternoonSessEnd")).toString(), QStringLiteral("15:30:00"));
        QCOMPARE(m_form->value(QStringLiteral("MorningSessEnd")), QStringLiteral("12:30"));
        QCOMPARE(m_form->value(QStringLiteral("TargetResizeQ")), QStringLiteral("3"));
        QCOMPARE(m_form->value(QStringLiteral("WebMaxDate")), QStringLiteral("20991231 235959"));
        QVERIFY(!m_form->isLocked(QStringLiteral("SrcDir")));
    }

    void foldersShownWithPlaceholders()
    {
        const QString pics = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        WriteSetting(QStringLiteral("SrcDir"), pics + QStringLiteral("/Camera"));
        m_form->LoadData(*m_db);
        QCOMPARE(m_form->value(QStringLiteral("SrcDir")), QStringLiteral("<My Pictures>/Camera"));
    }

    void validation_data()
    {
        QTest::addColumn<QStringList>("edits");     // key=value pairs applied after loading
        QTest::addColumn<QList<bool>>("answers");   // answers to the create questions
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QString>("message");       // last message, "" for none
        const QString missing = QStringLiteral("%1/missing");
        QTest::newRow("valid") << QStringList{} << QList<bool>{} << true << "";
        QTest::newRow("source on a missing drive never offers creation")
            << QStringList{"SrcDir=Q:/photos"} << QList<bool>{} << false << "Source Dir drive does not exist";
        QTest::newRow("source on an unplugged disk")
            << QStringList{"SrcDir=/media/nobody/NOSUCHDISK/photos"} << QList<bool>{} << false
            << "Source Dir drive does not exist";
        QTest::newRow("missing source declined") << QStringList{"SrcDir=" + missing} << QList<bool>{false} << false
                                                 << "Source Dir not found. Do you want to create it?";
        QTest::newRow("missing source created") << QStringList{"SrcDir=" + missing} << QList<bool>{true} << true
                                                << "Source Dir not found. Do you want to create it?";
        QTest::newRow("missing target declined") << QStringList{"TgtDir=" + missing} << QList<bool>{false} << false
                                                 << "Target Dir not found. Do you want to create it?";
        QTest::newRow("batch only skips the target")
            << QStringList{"TgtDir=" + missing, "CreateBatchs=1", "BatchOnly=1", "PCname=PC1"} << QList<bool>{} << true
            << "";
        QTest::newRow("target inside source")
            << QStringList{"TgtDir=%1/src/families", "SrcDirInclSubs=1"} << QList<bool>{true} << false
            << "Target Dir cannot be a subdir of SourceDir if 'Incl Source subdirs' is set";
        QTest::newRow("target equal to source passes")
            << QStringList{"TgtDir=%1/src", "SrcDirInclSubs=1"} << QList<bool>{} << true << "";
        QTest::newRow("batchfiles need a PC name")
            << QStringList{"CreateBatchs=1", "PCname=  "} << QList<bool>{} << false
            << "Must have a PC name when 'Create batchfiles' is set (ensure name is different to any other PC you "
               "will be running this app on)";
        QTest::newRow("declining the batch xfr dir still passes")
            << QStringList{"BatchXfrDir=" + missing} << QList<bool>{false} << true
            << "Batch Xfr Dir not found. Do you want to create it?";
        QTest::newRow("web dir on a missing drive")
            << QStringList{"WebTgtDir=Z:/web"} << QList<bool>{} << false << "Web Tgt Dir drive does not exist";
        QTest::newRow("privacy option needs the text")
            << QStringList{"CdAllowPriv=1", "PrivacyText= "} << QList<bool>{} << false
            << "If Web 'Allow privacy option' or CD 'Allow privacy option' is selected, then you must complete "
               "'Privacy Text'";
        QTest::newRow("25:00 is no time") << QStringList{"MorningSessEnd=25:00"} << QList<bool>{} << false
                                          << "AM End time is invalid";
        QTest::newRow("pm end checked too") << QStringList{"AfternoonSessEnd=half three"} << QList<bool>{} << false
                                            << "PM End time is invalid";
    }
    void validation()
    {
        QFETCH(QStringList, edits);
        QFETCH(QList<bool>, answers);
        QFETCH(bool, valid);
        QFETCH(QString, message);
        m_form->LoadData(*m_db); // valid: the installation has its Source and Target Dir
        for (const QString &edit : edits) {
            const int eq = edit.indexOf(QLatin1Char('='));
            m_form->setValue(edit.left(eq), edit.mid(eq + 1).arg(m_env->root()));
        }
        for (bool a : answers)
            m_port->answer(a);
        QCOMPARE(m_form->ValidateSettings(), valid);
        QCOMPARE(m_port->lastText(), message);
        if (!message.isEmpty() && !message.contains(QStringLiteral("create it")))
            QCOMPARE(m_port->messages().last().style, 2);
        if (QTest::currentDataTag() == QLatin1String("missing source created"))
            QVERIFY(QFileInfo(m_env->path(QStringLiteral("missing"))).isDir());
        QVERIFY(!QFileInfo(m_env->path(QStringLiteral("missing"))).isDir() || answers.value(0));
    }

    void trailingSeparatorsTrimmed()
    {
        m_form->LoadData(*m_db); // valid: the installation has its Source and Target Dir
        m_form->setValue(QStringLiteral("SrcDir"), QStringLiteral("  ") + m_env->path(QStringLiteral("src//")));
        QVERIFY(m_form->ValidateSettings());
        QCOMPARE(m_form->value(QStringLiteral("SrcDir")), m_env->path(QStringLiteral("src")));
    }

    void privacyTextStoredWithoutParentheses_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("stored");
        QTest::newRow("with parentheses") << "(Keep Private)" << "Keep Private";
        QTest::newRow("without") << "Keep Private" << "Keep Private";
    }
    void privacyTextStoredWithoutParentheses()
    {
        QFETCH(QString, typed);
        QFETCH(QString, stored);
        m_form->LoadData(*m_db); // valid: the installation has its Source and Target Dir
        m_form->setValue(QStringLiteral("PrivacyText"), typed);
        m_form->setValue(QStringLiteral("MorningSessEnd"), QStringLiteral("12:15"));
        QVERIFY(m_form->Save(*m_db).saved);
        QCOMPARE(m_db->ReadParam(QStringLiteral("PrivacyText")).toString(), stored);
        QCOMPARE(m_db->ReadParam(QStringLiteral("MorningSessEnd")).toString(), QStringLiteral("12:15:00"));
        QCOMPARE(m_db->ReadParam(QStringLiteral("AfternoonSessEnd")).toString(), QStringLiteral("15:30:00"));
    }

    void nothingWrittenWhenInvalid()
    {
        m_form->LoadData(*m_db); // valid: the installation has its Source and Target Dir
        m_form->setValue(QStringLiteral("BeepOnDtChg"), QStringLiteral("0"));
        m_form->setValue(QStringLiteral("MorningSessEnd"), QStringLiteral("99:99"));
        QVERIFY(!m_form->Save(*m_db).saved);
        QCOMPARE(ReadSetting(QStringLiteral("BeepOnDtChg")), QStringLiteral("1"));
    }

    void sourceChangeWritesFlagAndClosesBatchfile()
    {
        loadWithBatchfile(QStringLiteral("Office"));
        QDir().mkpath(m_env->path(QStringLiteral("src2")));
        m_form->setValue(QStringLiteral("SrcDir"), m_env->path(QStringLiteral("src2")));
        const SettingsForm::SaveResult r = m_form->Save(*m_db);
        QVERIFY(r.saved && r.foldersChanged && r.sourceDirChanged && !r.pcNameChanged);
        QVERIFY(!QFile::exists(Batchfile::CurrentName(QStringLiteral("Office"))));
        QCOMPARE(QDir(AppPaths::dataDir()).entryList({QStringLiteral("_Batchfile_*_Office.log")}).size(), 1);

        const QList<QByteArray> lines = fileBytes(AppPaths::dataFile(QStringLiteral("_Flag_SrcDirChg.log"))).split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines[0].startsWith("..\\") && lines[0].endsWith("src\r"));
        QVERIFY(lines[1].startsWith("..\\") && lines[1].endsWith("src2\r"));
    }

    void pcNameChangeRenamesTheBatchfile()
    {
        loadWithBatchfile(QStringLiteral("Old"));
        m_form->setValue(QStringLiteral("PCname"), QStringLiteral("New"));
        const SettingsForm::SaveResult r = m_form->Save(*m_db);
        QVERIFY(r.pcNameChanged && !r.foldersChanged);
        QVERIFY(!QFile::exists(Batchfile::CurrentName(QStringLiteral("Old"))));
        QCOMPARE(Batchfile::CurrentPath(), Batchfile::CurrentName(QStringLiteral("New")));
        QCOMPARE(Batchfile::CountLines(Batchfile::CurrentPath()), 5); // kept its entries
        QVERIFY(!QFile::exists(AppPaths::dataFile(QStringLiteral("_Flag_SrcDirChg.log"))));
    }

    void portableCopyLocksItsFields()
    {
        writeBytes(AppPaths::adminIni(), "[Settings]\r\nTgtDir=/srv/families\r\n");
        m_form->LoadData(*m_db);
        QVERIFY(m_form->isLocked(QStringLiteral("TgtDir")));
        QVERIFY(m_form->isLocked(QStringLiteral("CreateBatchs")));
        QVERIFY(m_form->isLocked(QStringLiteral("PrivacyText")));
        QVERIFY(!m_form->isLocked(QStringLiteral("MorningSessEnd")));
        QVERIFY(!m_form->isLocked(QStringLiteral("PortableCopyXfrDir")));
    }

    void labels()
    {
        QCOMPARE(SettingsForm::SizeLabel(1), QStringLiteral("320"));
        QCOMPARE(SettingsForm::SizeLabel(4), QStringLiteral("1536"));
        QCOMPARE(SettingsForm::SizeLabel(9), QStringLiteral("2048"));
        QCOMPARE(SettingsForm::QualityLabel(2), QStringLiteral("Average"));
        QCOMPARE(SettingsForm::QualityLabel(5), QStringLiteral("Superb"));
    }
};

QTEST_GUILESS_MAIN(TestSettingsForm)
#include "tst_settingsform.moc"
