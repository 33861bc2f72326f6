#include "settingsstore.h"

#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/fileutils.h"
#include "lib/inifile.h"
#include "lib/texthelpers.h"

#include <QDir>
#include <QFileInfo>
#include <QSysInfo>

namespace quillet {

namespace {

const QString kSection = QStringLiteral("Settings");

bool isRelativeDirKey(const QString &key)
{
    return key.compare(QLatin1String("SrcDir"), Qt::CaseInsensitive) == 0
        || key.compare(QLatin1String("TgtDir"), Qt::CaseInsensitive) == 0
        || key.compare(QLatin1String("BatchXfrDir"), Qt::CaseInsensitive) == 0;
}

QString computerName()
{
    QString name = QSysInfo::machineHostName();
    const int nul = name.indexOf(QChar(0));
    if (nul >= 0)
        name.truncate(nul);
    return name.left(255);
}

} // namespace

SettingValue ReadSettingEx(const QString &key, const QString &defaultValue)
{
    SettingValue result;
    const QString adminFile = AppPaths::adminIni();
    if (QFileInfo::exists(adminFile)) {
        result.value = IniFile::read(adminFile, kSection, key, defaultValue);
        appState().isPortableCopy = true;
    }
    if (result.value.isEmpty()) {
        result.value = IniFile::read(AppPaths::userIni(), kSection, key, defaultValue);
        result.locked = false;
    } else if (result.value == QLatin1String(" ")) {
        result.value.clear();
        result.locked = true;
    } else {
        result.locked = true;
    }
    if (isRelativeDirKey(key) && !result.value.isEmpty())
        result.value = ResolveRelativeDir(result.value);
    return result;
}

QString ReadSetting(const QString &key, const QString &defaultValue)
{
    return ReadSettingEx(key, defaultValue).value;
}

bool ReadSettingBool(const QString &key, bool defaultValue)
{
    return lib_ToBool(ReadSetting(key, defaultValue ? QStringLiteral("1") : QStringLiteral("0")));
}

int ReadSettingInt(const QString &key, int defaultValue)
{
    return lib_ToInt(ReadSetting(key, QString::number(defaultValue)));
}

void WriteSetting(const QString &key, const QString &value)
{
    IniFile::write(AppPaths::userIni(), kSection, key, value);
}

void WriteSetting(const QString &key, bool value)
{
    WriteSetting(key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

void WriteSetting(const QString &key, int value)
{
    WriteSetting(key, QString::number(value));
}

bool IsPortableCopy()
{
    return appState().isPortableCopy;
}

QString ResolveRelativeDir(const QString &path, const QString &baseDir)
{
    // Start-up makes the application folder the current one, so both cases resolve against it.
    const QString base = baseDir.isEmpty() ? QDir::currentPath() : baseDir;
    return lib_AbsolutePath(path, base);
}

QString ExpandDirPlaceholders(const QString &path, bool toPlaceholder)
{
    return ExpandSpecialDir(path, toPlaceholder);
}

QList<QPair<QString, QString>> SettingDefaults()
{
    static const QList<QPair<QString, QString>> defaults = {
        {QStringLiteral("SrcDirInclSubs"), QStringLiteral("1")},
        {QStringLiteral("AssnSubToTgt"), QStringLiteral("0")},
        {QStringLiteral("CreateBatchs"), QStringLiteral("0")},
        {QStringLiteral("BatchOnly"), QStringLiteral("0")},
        {QStringLiteral("ShowParent"), QStringLiteral("0")},
        {QStringLiteral("AutoFilterFams"), QStringLiteral("1")},
        {QStringLiteral("CurrFamsOnly"), QStringLiteral("0")},
        {QStringLiteral("CurrFamsOnly1"), QStringLiteral("1")},
        {QStringLiteral("Thumbnails"), QStringLiteral("1")},
        {QStringLiteral("UseEXIFdate"), QStringLiteral("0")},
        {QStringLiteral("AutoReselPriv"), QStringLiteral("1")},
        {QStringLiteral("BeepOnDtChg"), QStringLiteral("1")},
        {QStringLiteral("KeepLgPicOnTop"), QStringLiteral("0")},
        {QStringLiteral("ReloadUndoThumbs"), QStringLiteral("0")},
        {QStringLiteral("MaxReloadUndoThumbs"), QStringLiteral("20")},
        {QStringLiteral("TargetResize"), QStringLiteral("0")},
        {QStringLiteral("TargetResizeMD"), QStringLiteral("3")},
        {QStringLiteral("TargetResizeQ"), QStringLiteral("3")},
        {QStringLiteral("UnallocResize"), QStringLiteral("0")},
        {QStringLiteral("UnallocResizeMD"), QStringLiteral("3")},
        {QStringLiteral("UnallocResizeQ"), QStringLiteral("3")},
        {QStringLiteral("WebTgtInclFam"), QStringLiteral("1")},
        {QStringLiteral("WebMinDate"), QStringLiteral("20000101 000000")},
        {QStringLiteral("WebMaxDate"), QStringLiteral("20991231 235959")},
        {QStringLiteral("CdTgtInclFam"), QStringLiteral("0")},
        {QStringLiteral("CdMinDate"), QStringLiteral("20000101 000000")},
        {QStringLiteral("CdMaxDate"), QStringLiteral("20991231 235959")},
    };
    return defaults;
}

void InitialiseMissingSettings()
{
    for (const auto &[key, value] : SettingDefaults()) {
        const QString current = ReadSetting(key);
        const bool zeroToo = key == QLatin1String("TargetResizeQ") || key == QLatin1String("UnallocResizeQ");
        if (current.isEmpty() || (zeroToo && lib_ToInt(current) == 0))
            WriteSetting(key, value);
    }
    if (ReadSetting(QStringLiteral("AssnSrcSubToTgt")).isEmpty())
        WriteSetting(QStringLiteral("AssnSrcSubToTgt"),
                     ReadSetting(QStringLiteral("AssnSubToTgt")) == QLatin1String("1") ? QStringLiteral("0")
                                                                                      : QStringLiteral("1"));
    if (ReadSetting(QStringLiteral("PCname")).isEmpty())
        WriteSetting(QStringLiteral("PCname"), computerName());
}

} // namespace quillet
