#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/inifile.h"
#include "support/testenv.h"

#include <QDir>
#include <QFile>
#include <QHostInfo>
#include <QTest>

using namespace quillet;
using namespace quillet::test;

class TestSettingsStore : public QObject
{
    Q_OBJECT

    TestEnv *m_env = nullptr;
    QString m_savedCwd;

private Q_SLOTS:
    void init()
    {
        m_env = new TestEnv;
        m_env->dataDir();
        appState().isPortableCopy = false;
        m_savedCwd = QDir::currentPath();
    }
    void cleanup()
    {
        QDir::setCurrent(m_savedCwd);
        delete m_env;
        appState().isPortableCopy = false;
    }

    void lockingAndPortableCopy_data()
    {
        QTest::addColumn<QByteArray>("admin");     // empty: no administrator file
        QTest::addColumn<QByteArray>("user");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("locked");
        QTest::addColumn<bool>("portable");
        QTest::newRow("nothing anywhere") << QByteArray() << QByteArray() << "" << false << false;
        QTest::newRow("user value") << QByteArray() << QByteArray("[Settings]\r\nTgtDir=/t\r\n") << "/t" << false
                                    << false;
        QTest::newRow("admin blank forces empty")
            << QByteArray("[Settings]\r\nTgtDir= \r\n") << QByteArray("[Settings]\r\nTgtDir=/t\r\n") << "" << true
            << true;
        QTest::newRow("admin quoted blank forces empty")
            << QByteArray("[settings]\r\ntgtdir=\" \"\r\n") << QByteArray("[Settings]\r\nTgtDir=/t\r\n") << "" << true
            << true;
        QTest::newRow("admin value wins") << QByteArray("[SETTINGS]\nTGTDIR=/admin\n")
                                          << QByteArray("[Settings]\r\nTgtDir=/t\r\n") << "/admin" << true << true;
        QTest::newRow("admin without the key")
            << QByteArray("[Settings]\r\nOther=1\r\n") << QByteArray("[Settings]\r\nTgtDir=/t\r\n") << "/t" << false
            << true;
    }
    void lockingAndPortableCopy()
    {
        QFETCH(QByteArray, admin);
        QFETCH(QByteArray, user);
        QFETCH(QString, value);
        QFETCH(bool, locked);
        QFETCH(bool, portable);
        if (!admin.isEmpty())
            writeBytes(AppPaths::adminIni(), admin);
        if (!user.isEmpty())
            writeBytes(AppPaths::userIni(), user);
        const SettingValue v = ReadSettingEx(QStringLiteral("TgtDir"));
        QCOMPARE(v.value, value);
        QCOMPARE(v.locked, locked);
        QCOMPARE(IsPortableCopy(), portable);
    }

    void relativeDirectories_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("expected");
        QTest::newRow("climb with backslash") << "..\\Photos" << "%1/Photos";
        QTest::newRow("climb with slash") << "../Photos" << "%1/Photos";
        QTest::newRow("bare relative") << "Photos" << "%1/apps/Photos";
        QTest::newRow("absolute stays") << "/srv/Photos" << "/srv/Photos";
    }
    void relativeDirectories()
    {
        QFETCH(QString, stored);
        QFETCH(QString, expected);
        const QString app = m_env->path(QStringLiteral("apps"));
        QDir().mkpath(app);
        QDir::setCurrent(app);
        WriteSetting(QStringLiteral("SrcDir"), stored);
        WriteSetting(QStringLiteral("WebTgtDir"), stored);
        QCOMPARE(ReadSetting(QStringLiteral("SrcDir")), expected.arg(m_env->root()));
        QCOMPARE(ReadSetting(QStringLiteral("WebTgtDir")), stored); // only three keys resolve
    }

    void writeKeepsOtherLinesAndCase()
    {
        writeBytes(AppPaths::userIni(),
                 "; staff notes\r\n[Other]\r\nSrcDir=keep\r\n\r\n[settings]\r\nsrcdir=/old\r\nThumbnails=0\r\n");
        WriteSetting(QStringLiteral("SrcDir"), QStringLiteral("/new"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Frontdesk"));
        QCOMPARE(fileBytes(AppPaths::userIni()),
                 QByteArray("; staff notes\r\n[Other]\r\nSrcDir=keep\r\n\r\n[settings]\r\nSrcDir=/new\r\n"
                            "Thumbnails=0\r\nPCname=Frontdesk\r\n"));
        QVERIFY(!QFile::exists(AppPaths::adminIni())); // never written
    }

    void longAndAwkwardValuesRoundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("2000 characters") << QString(2000, QLatin1Char('x'));
        QTest::newRow("leading blanks") << QStringLiteral("  padded  ");
        QTest::newRow("equals sign and quotes") << QStringLiteral("a=b \"c\"");
        QTest::newRow("non-ASCII") << QString::fromUtf8("Zoë's Fotos");
    }
    void longAndAwkwardValuesRoundTrip()
    {
        QFETCH(QString, value);
        WriteSetting(QStringLiteral("WebTgtDir"), value);
        QCOMPARE(ReadSetting(QStringLiteral("WebTgtDir")), value);
    }

    void nothingIsCached()
    {
        WriteSetting(QStringLiteral("Thumbnails"), true);
        QVERIFY(ReadSettingBool(QStringLiteral("Thumbnails")));
        writeBytes(AppPaths::userIni(), "[Settings]\r\nThumbnails=0\r\n");
        QVERIFY(!ReadSettingBool(QStringLiteral("Thumbnails"), true));
    }

    void freshInstallationDefaults()
    {
        InitialiseMissingSettings();
        for (const auto &[key, value] : SettingDefaults())
            QCOMPARE(IniFile::read(AppPaths::userIni(), QStringLiteral("Settings"), key), value);
        QCOMPARE(ReadSetting(QStringLiteral("AssnSrcSubToTgt")), QStringLiteral("1"));
        QCOMPARE(ReadSetting(QStringLiteral("PCname")), QHostInfo::localHostName().left(255));
        QCOMPARE(ReadSetting(QStringLiteral("SrcDir")), QString()); // no default
    }

    void secondLoadKeepsUserValuesAndFixesZeroQuality()
    {
        WriteSetting(QStringLiteral("Thumbnails"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("TargetResizeQ"), QStringLiteral("0"));
        WriteSetting(QStringLiteral("UnallocResizeQ"), QStringLiteral("2"));
        WriteSetting(QStringLiteral("AssnSubToTgt"), QStringLiteral("1"));
        WriteSetting(QStringLiteral("PCname"), QStringLiteral("Office"));
        InitialiseMissingSettings();
        QCOMPARE(ReadSetting(QStringLiteral("Thumbnails")), QStringLiteral("0"));
        QCOMPARE(ReadSetting(QStringLiteral("TargetResizeQ")), QStringLiteral("3"));
        QCOMPARE(ReadSetting(QStringLiteral("UnallocResizeQ")), QStringLiteral("2"));
        QCOMPARE(ReadSetting(QStringLiteral("AssnSrcSubToTgt")), QStringLiteral("0"));
        QCOMPARE(ReadSetting(QStringLiteral("PCname")), QStringLiteral("Office"));
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
