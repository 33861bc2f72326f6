#include "lib/apppaths.h"
#include "ui/frmsettings.h"
#include "uitest.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QSlider>
#include <QStandardPaths>

using namespace quillet;
using namespace quillet::test;

class TestSettingsDialog : public HomeTest
{
    Q_OBJECT

    FamilyDatabase *m_dbp = nullptr;

private Q_SLOTS:
    void init()
    {
        HomeTest::init();
        QVERIFY(m_env->makeInstallation());
        m_dbp = new FamilyDatabase;
        QVERIFY(m_dbp->OpenDatabase());
        m_dbp->exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName) VALUES (3, 'Ann', 'Lee')"));
        m_dbp->exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName) VALUES (7, 'Bob')"));
        m_dbp->exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, [Current]) VALUES (8, 'Gone', False)"));
        WriteSetting(QStringLiteral("ResizeExclFam"), QStringLiteral("7"));
    }
    void cleanup()
    {
        delete m_dbp;
        HomeTest::cleanup();
    }

    void everyControlIsThere()
    {
        frmSettings dlg(*m_dbp);
        for (const SettingsForm::Field &f : SettingsForm::Fields())
            QVERIFY2(dlg.findChild<QWidget *>(QLatin1String(f.control)), f.control);
        for (const char *name : {"txtDataDir", "cmdSrcLookup", "cmdTgtLookup", "cmdBatchXfrDirLookup",
                                 "cmdPortableCopyXfrDirLookup", "cmdWebTgtLookup", "cmdCdTgtLookup", "cmdSwapWebDate",
                                 "cmdSwapCdDate", "cmdResetFormSizes", "cmdSave", "cmdCancel", "lblMsg"})
            QVERIFY2(dlg.findChild<QWidget *>(QLatin1String(name)), name);
    }

    void loadShowsValues()
    {
        const QString pics = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        WriteSetting(QStringLiteral("BatchXfrDir"), pics + QStringLiteral("/xfr"));
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        QCOMPARE(child<QLineEdit>(dlg, "txtBatchXfrDir")->text(), QStringLiteral("<My Pictures>/xfr"));
        auto *families = child<QComboBox>(dlg, "cboResizeExclFamily");
        QCOMPARE(families->currentText(), QStringLiteral("Bob"));
        QCOMPARE(families->count(), 3); // "(none)" and the two current families, in name order
        QCOMPARE(families->itemText(1), QStringLiteral("Ann Lee"));
        QCOMPARE(child<QLabel>(dlg, "lblTargetResizeMaxDim")->text(), QStringLiteral("1024"));
        child<QSlider>(dlg, "sldTargetResizeQuality")->setValue(5);
        QCOMPARE(child<QLabel>(dlg, "lblTargetResizeQuality")->text(), QStringLiteral("Superb"));
        QCOMPARE(child<QLineEdit>(dlg, "txtMorningSessEnd")->text(), QStringLiteral("12:30"));
        QVERIFY(m_port->messages().isEmpty());
    }

    void resizeNoteAndUnallocatedRule()
    {
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        auto *unalloc = child<QCheckBox>(dlg, "chkUnallocResize");
        QVERIFY(!unalloc->isEnabled()); // no Batch Xfr Dir yet
        child<QLineEdit>(dlg, "txtBatchXfrDir")->setText(QStringLiteral("/srv/xfr"));
        QVERIFY(unalloc->isEnabled());
        unalloc->setChecked(true);
        QCOMPARE(m_port->lastText(), QStringLiteral("Note: using resize option will lose any EXIF data in the target file"));
        QCOMPARE(m_port->messages().last().timeout, 3);
        child<QLineEdit>(dlg, "txtBatchXfrDir")->clear();
        QVERIFY(!unalloc->isChecked());
        QVERIFY(!unalloc->isEnabled());
    }

    void lookupWritesPlaceholderForm()
    {
        const QString pics = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        m_port->choose(pics + QStringLiteral("/Incoming"));
        QTest::mouseClick(child<QAbstractButton>(dlg, "cmdSrcLookup"), Qt::LeftButton);
        QCOMPARE(child<QLineEdit>(dlg, "txtSrcDir")->text(), QStringLiteral("<My Pictures>/Incoming"));
        const QString before = child<QLineEdit>(dlg, "txtTgtDir")->text();
        QTest::mouseClick(child<QAbstractButton>(dlg, "cmdTgtLookup"), Qt::LeftButton); // cancelled
        QCOMPARE(child<QLineEdit>(dlg, "txtTgtDir")->text(), before);
    }

    void swapDatesAndResetSizes()
    {
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        child<QDateTimeEdit>(dlg, "dtpWebMinDate")->setDateTime(QDateTime(QDate(2024, 3, 1), QTime(0, 0)));
        QTest::mouseClick(child<QAbstractButton>(dlg, "cmdSwapWebDate"), Qt::LeftButton);
        QCOMPARE(child<QDateTimeEdit>(dlg, "dtpWebMaxDate")->dateTime(), QDateTime(QDate(2024, 3, 1), QTime(0, 0)));
        QTest::mouseClick(child<QPushButton>(dlg, "cmdResetFormSizes"), Qt::LeftButton);
        QCOMPARE(m_port->lastText(),
                 QStringLiteral("To do this, close the application, then restart it whilst holding down the Shift key"));
    }

    void saveWritesAndCloses()
    {
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        dlg.show();
        child<QCheckBox>(dlg, "chkBeepOnDateChange")->setChecked(false);
        child<QComboBox>(dlg, "cboResizeExclFamily")->setCurrentIndex(1);
        child<QLineEdit>(dlg, "txtPrivacyText")->setText(QStringLiteral("(Private)"));
        QTest::mouseClick(child<QPushButton>(dlg, "cmdSave"), Qt::LeftButton);
        QVERIFY(dlg.Updated());
        QVERIFY(!dlg.isVisible());
        QCOMPARE(ReadSetting(QStringLiteral("BeepOnDtChg")), QStringLiteral("0"));
        QCOMPARE(ReadSetting(QStringLiteral("ResizeExclFam")), QStringLiteral("3"));
        QCOMPARE(m_dbp->ReadParam(QStringLiteral("PrivacyText")).toString(), QStringLiteral("Private"));
        QCOMPARE(ReadSetting(QStringLiteral("WebMinDate")), QStringLiteral("20000101 000000"));
    }

    void closeAsksOnlyWhenEdited()
    {
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        dlg.show();
        child<QLineEdit>(dlg, "txtPCname")->setFocus();
        QTest::keyClicks(child<QLineEdit>(dlg, "txtPCname"), QStringLiteral("X"));
        m_port->answer(false);
        QTest::mouseClick(child<QPushButton>(dlg, "cmdCancel"), Qt::LeftButton);
        QVERIFY(dlg.isVisible());
        m_port->answer(true);
        QTest::keyClick(&dlg, Qt::Key_Escape);
        QVERIFY(!dlg.isVisible());
        QVERIFY(!dlg.Updated());
        QVERIFY(ReadSetting(QStringLiteral("PCname")) != child<QLineEdit>(dlg, "txtPCname")->text());
    }

    void portableCopyDisablesLockedControls()
    {
        writeBytes(AppPaths::adminIni(), "[Settings]\r\nCreateBatchs=1\r\n");
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        QCOMPARE(child<QLabel>(dlg, "lblMsg")->text(),
                 QStringLiteral("This is a 'portable' copy of the application, some features locked by the administrator"));
        for (const char *name : {"txtSrcDir", "cmdSrcLookup", "txtTgtDir", "chkCreateBatchfiles", "txtPCname",
                                 "txtPrivacyText", "cboResizeExclFamily", "txtBatchXfrDir", "cmdBatchXfrDirLookup"})
            QVERIFY2(!child<QWidget>(dlg, name)->isEnabled(), name);
        QVERIFY(child<QWidget>(dlg, "txtMorningSessEnd")->isEnabled());
        QVERIFY(child<QWidget>(dlg, "chkAutoReselPriv")->isEnabled());
    }

    void looksRight()
    {
        frmSettings dlg(*m_dbp);
        dlg.LoadData();
        dlg.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dlg));
        // Nothing clipped: every visible control gets at least its minimum size.
        for (QWidget *w : dlg.findChildren<QWidget *>()) {
            if (w->isVisible() && !w->objectName().isEmpty())
                QVERIFY2(w->width() >= w->minimumSizeHint().width() - 1, qPrintable(w->objectName()));
        }
        const QString shot = qEnvironmentVariable("QUILLET_SCREENSHOT_DIR");
        if (!shot.isEmpty())
            dlg.grab().save(shot + QStringLiteral("/settings.png"));
    }
};

QTEST_MAIN(TestSettingsDialog)
#include "tst_settingsdialog.moc"
