#include "settingsform.h"
#include "lib/atomicwrite.h"

#include "app/settingsdatabase.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "lib/userprompt.h"
#include "sync/batchfilejournal.h"

#include <QDir>
#include <QFileInfo>
#include <QTime>

namespace quillet {


namespace {

using K = SettingsForm::Kind;

const QString kCreateBatchs = QStringLiteral("CreateBatchs");
const QString kBatchOnly = QStringLiteral("BatchOnly");

QString timeText(const QVariant &value)
{
    if (value.isNull())
        return QString();
    QTime t = value.typeId() == QMetaType::QDateTime ? value.toDateTime().time() : value.toTime();
    if (!t.isValid())
        t = lib_ParseTimeOfDay(value.toString());
    return t.isValid() ? t.toString(QStringLiteral("HH:mm")) : value.toString();
}

} // namespace

const QList<SettingsForm::Field> &SettingsForm::Fields()
{
    static const QList<Field> fields = {
        {"SrcDir", K::Folder, "txtSrcDir", "Source Dir", false, true},
        {"TgtDir", K::Folder, "txtTgtDir", "Target Dir", false, true},
        {"PCname", K::Text, "txtPCname", "PC Name", false, true},
        {"SrcDirInclSubs", K::Check, "chkSrcDirInclSubs", "Incl Source subdirs", false, true},
        {"AssnSubToTgt", K::Check, "chkAssignFileSubdirToTgt", "Assign file subdir to tgt dir", false, true},
        {"AssnSrcSubToTgt", K::Check, "chkAssignSrcSubdirToTgt", "Assign SrcDir subdir to tgt dir", false, true},
        {"BeepOnDtChg", K::Check, "chkBeepOnDateChange", "Beep on date change", false, true},
        {"ReloadUndoThumbs", K::Check, "chkReloadUndoThumbs", "Reload Undo Thumbs", false, true},
        {"MaxReloadUndoThumbs", K::Number, "txtMaxReloadUndoThumbs", "Max No", false, true},
        {"CreateBatchs", K::Check, "chkCreateBatchfiles", "Create batchfiles", false, true},
        {"BatchOnly", K::Check, "chkBatchOnly", "Batch only, no copy", false, true},
        {"KeepLgPicOnTop", K::Check, "chkKeepLargePicOnTop", "Keep large picture on top", false, true},
        {"TargetResize", K::Check, "chkTargetResize", "Resize", false, true},
        {"TargetResizeMD", K::Slider, "sldTargetResizeMaxDim", "Max Size", false, true},
        {"TargetResizeQ", K::Slider, "sldTargetResizeQuality", "Quality", false, true},
        {"ResizeExclFam", K::Family, "cboResizeExclFamily", "Resize Excl", false, true},
        {"PrivacyText", K::Text, "txtPrivacyText", "Privacy Text", true, true},
        {"AutoReselPriv", K::Check, "chkAutoReselPriv", "Auto resel priv", false, false},
        {"MorningSessEnd", K::Time, "txtMorningSessEnd", "AM End", true, false},
        {"AfternoonSessEnd", K::Time, "txtAfternoonSessEnd", "PM End", true, false},
        {"BatchXfrDir", K::Folder, "txtBatchXfrDir", "Batch Xfr Dir", false, true},
        {"UnallocResize", K::Check, "chkUnallocResize", "Resize", false, true},
        {"UnallocResizeMD", K::Slider, "sldUnallocResizeMaxDim", "Max Size", false, true},
        {"UnallocResizeQ", K::Slider, "sldUnallocResizeQuality", "Quality", false, true},
        {"PortableCopyXfrDir", K::Folder, "txtPortableCopyXfrDir", "PCopy Xfr Dir", false, false},
        {"WebTgtDir", K::Folder, "txtWebTgtDir", "Web Tgt Dir", false, true},
        {"WebMinDate", K::Date, "dtpWebMinDate", "Min Date", false, false},
        {"WebMaxDate", K::Date, "dtpWebMaxDate", "Max Date", false, false},
        {"WebTgtInclFam", K::Check, "chkWebTgtInclFamName", "Append familiy name to Web Tgt Dir", false, true},
        {"WebAllowPriv", K::Check, "chkWebAllowPrivacy", "Allow privacy option", true, true},
        {"WebCopyPriv", K::Check, "chkWebCopyPrivate", "Copy private photos", true, true},
        {"CdTgtDir", K::Folder, "txtCdTgtDir", "CD Tgt Dir", false, true},
        {"CdMinDate", K::Date, "dtpCdMinDate", "Min Date", false, false},
        {"CdMaxDate", K::Date, "dtpCdMaxDate", "Max Date", false, false},
        {"CdTgtInclFam", K::Check, "chkCdTgtInclFamName", "Append familiy name to CD Tgt Dir", false, true},
        {"CdAllowPriv", K::Check, "chkCdAllowPrivacy", "Allow privacy option", true, true},
        {"CdCopyPriv", K::Check, "chkCdCopyPrivate", "Copy private photos", true, true},
    };
    return fields;
}

const SettingsForm::Field *SettingsForm::FindField(const QString &key)
{
    for (const Field &f : Fields()) {
        if (key == QLatin1String(f.key))
            return &f;
    }
    return nullptr;
}

QString SettingsForm::SizeLabel(int code)
{
    switch (code) {
    case 1: return QStringLiteral("320");
    case 2: return QStringLiteral("640");
    case 3: return QStringLiteral("1024");
    case 4: return QStringLiteral("1536");
    default: return QStringLiteral("2048");
    }
}

QString SettingsForm::QualityLabel(int code)
{
    switch (code) {
    case 1: return QStringLiteral("Poor");
    case 2: return QStringLiteral("Average");
    case 3: return QStringLiteral("Normal");
    case 4: return QStringLiteral("Good");
    default: return QStringLiteral("Superb");
    }
}

QString SettingsForm::FormatDate(const QDateTime &date)
{
    return date.toString(QStringLiteral("yyyyMMdd HHmmss"));
}

QDateTime SettingsForm::ParseDate(const QString &text)
{
    return QDateTime::fromString(text.trimmed(), QStringLiteral("yyyyMMdd HHmmss"));
}

void SettingsForm::LoadData(SettingsDatabase &db)
{
    InitialiseMissingSettings();
    if (db.ReadParam(QStringLiteral("MorningSessEnd")).toString().isEmpty())
        db.WriteParam(QStringLiteral("MorningSessEnd"), QTime(12, 30));
    if (db.ReadParam(QStringLiteral("AfternoonSessEnd")).toString().isEmpty())
        db.WriteParam(QStringLiteral("AfternoonSessEnd"), QTime(15, 30));

    m_values.clear();
    m_locked.clear();
    const bool portable = IsPortableCopy();
    for (const Field &f : Fields()) {
        const QString key = QLatin1String(f.key);
        QString text;
        if (f.dbParam) {
            const QVariant v = db.ReadParam(key);
            if (f.kind == K::Time)
                text = timeText(v);
            else if (f.kind == K::Check)
                text = lib_ParseNumber(v.isNull() ? QVariant(0) : QVariant(v.toString())) != 0 ? QStringLiteral("1")
                                                                                               : QStringLiteral("0");
            else
                text = v.toString();
        } else {
            const SettingValue s = ReadSettingEx(key);
            text = f.kind == K::Folder ? ExpandSpecialDir(s.value, true) : s.value;
            if (s.locked)
                m_locked.insert(key);
        }
        if (portable && f.portableLocked)
            m_locked.insert(key);
        m_values.insert(key, text);
    }
}

QString SettingsForm::cleanFolder(const QString &key)
{
    QString text = m_values.value(key).trimmed();
    while (text.size() > 1 && (text.endsWith(QLatin1Char('/')) || text.endsWith(QLatin1Char('\\'))))
        text.chop(1);
    m_values.insert(key, text);
    return ExpandSpecialDir(text, false);
}

bool SettingsForm::validateRequiredFolder(const QString &key, const QString &caption)
{
    const QString folder = cleanFolder(key);
    if (folder.isEmpty()) {
        lib_MsgWarning(QStringLiteral("Please choose the ") + caption
                       + QStringLiteral(" with its \"...\" button, then Save"));
        return false;
    }
    if (lib_DirExists(folder))
        return true;
    if (!lib_DirExists(lib_DrivePart(folder))) {
        lib_MsgWarning(caption + QStringLiteral(" drive does not exist"));
        return false;
    }
    if (!lib_MsgYesNo(caption + QStringLiteral(" not found. Do you want to create it?")))
        return false;
    return lib_MakePath(folder);
}

bool SettingsForm::validateOptionalFolder(const QString &key, const QString &caption, bool failOnMissingDrive)
{
    const QString folder = cleanFolder(key);
    if (folder.isEmpty() || lib_DirExists(folder))
        return true;
    if (!lib_DirExists(lib_DrivePart(folder))) {
        if (failOnMissingDrive) {
            lib_MsgWarning(caption + QStringLiteral(" drive does not exist"));
            return false;
        }
        return true;
    }
    if (lib_MsgYesNo(caption + QStringLiteral(" not found. Do you want to create it?")))
        lib_MakePath(folder);
    return true;
}

bool SettingsForm::ValidateSettings()
{
    lib_Stopwatch(1);
    const bool ok = [this] {
        if (!validateRequiredFolder(QStringLiteral("SrcDir"), QStringLiteral("Source Dir")))
            return false;
        if (!(isChecked(kCreateBatchs) && isChecked(kBatchOnly))
            && !validateRequiredFolder(QStringLiteral("TgtDir"), QStringLiteral("Target Dir")))
            return false;
        const QString src = ExpandSpecialDir(value(QStringLiteral("SrcDir")), false);
        const QString tgt = ExpandSpecialDir(value(QStringLiteral("TgtDir")), false);
        if (isChecked(QStringLiteral("SrcDirInclSubs")) && !src.isEmpty() && tgt.startsWith(src + QLatin1Char('/'))) {
            lib_MsgWarning(QStringLiteral("Target Dir cannot be a subdir of SourceDir if 'Incl Source subdirs' is set"));
            return false;
        }
        if (isChecked(kCreateBatchs) && value(QStringLiteral("PCname")).trimmed().isEmpty()) {
            lib_MsgWarning(QStringLiteral("Must have a PC name when 'Create batchfiles' is set (ensure name is "
                                          "different to any other PC you will be running this app on)"));
            return false;
        }
        validateOptionalFolder(QStringLiteral("BatchXfrDir"), QStringLiteral("Batch Xfr Dir"), false);
        validateOptionalFolder(QStringLiteral("PortableCopyXfrDir"), QStringLiteral("PCopy Xfr Dir"), false);
        if (!validateOptionalFolder(QStringLiteral("WebTgtDir"), QStringLiteral("Web Tgt Dir"), true)
            || !validateOptionalFolder(QStringLiteral("CdTgtDir"), QStringLiteral("CD Tgt Dir"), true))
            return false;
        if ((isChecked(QStringLiteral("WebAllowPriv")) || isChecked(QStringLiteral("CdAllowPriv")))
            && value(QStringLiteral("PrivacyText")).trimmed().isEmpty()) {
            lib_MsgWarning(QStringLiteral("If Web 'Allow privacy option' or CD 'Allow privacy option' is selected, "
                                          "then you must complete 'Privacy Text'"));
            return false;
        }
        for (const auto &[key, caption] : {std::pair{"MorningSessEnd", "AM End"}, std::pair{"AfternoonSessEnd", "PM End"}}) {
            if (!lib_ParseTimeOfDay(value(QLatin1String(key))).isValid()) {
                lib_MsgWarning(QLatin1String(caption) + QStringLiteral(" time is invalid"));
                return false;
            }
        }
        return true;
    }();
    DebugLogTiming(QStringLiteral("ValidateStngs"));
    return ok;
}

SettingsForm::SaveResult SettingsForm::Save(SettingsDatabase &db)
{
    SaveResult result;
    const QString oldSrc = ReadSetting(QStringLiteral("SrcDir"));
    const QString oldTgt = ReadSetting(QStringLiteral("TgtDir"));
    const QString oldPc = ReadSetting(QStringLiteral("PCname"));
    if (!ValidateSettings())
        return result;

    BusyPointer busy;
    for (const Field &f : Fields()) {
        const QString key = QLatin1String(f.key);
        if (m_locked.contains(key))
            continue;
        QString text = m_values.value(key);
        if (f.kind == K::Folder)
            text = ExpandSpecialDir(text, false);
        if (!f.dbParam) {
            WriteSetting(key, text);
        } else if (f.kind == K::Time) {
            db.WriteParam(key, lib_ParseTimeOfDay(text));
        } else if (f.kind == K::Check) {
            db.WriteParam(key, text == QLatin1String("1") ? 1 : 0);
        } else {
            QString privacy = text.trimmed();
            if (privacy.startsWith(QLatin1Char('(')))
                privacy.remove(0, 1);
            if (privacy.endsWith(QLatin1Char(')')))
                privacy.chop(1);
            db.WriteParam(key, privacy);
        }
    }

    const QString newSrc = ReadSetting(QStringLiteral("SrcDir"));
    const QString newTgt = ReadSetting(QStringLiteral("TgtDir"));
    const QString newPc = ReadSetting(QStringLiteral("PCname"));
    if (isChecked(kCreateBatchs) && !oldPc.isEmpty() && newPc != oldPc) {
        const QString oldFile = Batchfile::CurrentName(oldPc);
        if (QFileInfo::exists(oldFile))
            QFile::rename(oldFile, Batchfile::CurrentName(newPc));
        Batchfile::SetBatchfileName(false);
        result.pcNameChanged = true;
    }
    if ((!oldSrc.isEmpty() && oldSrc != newSrc) || (!oldTgt.isEmpty() && oldTgt != newTgt)) {
        if (QFileInfo::exists(Batchfile::CurrentName(newPc)))
            Batchfile::SetBatchfileName(true);
        result.foldersChanged = true;
    }
    if (!oldSrc.isEmpty() && oldSrc != newSrc) {
        writeFlagFile(oldSrc, newSrc);
        result.sourceDirChanged = true;
    }
    result.saved = true;
    return result;
}

QString RelativeFromAppDir(const QString &path, const QString &appDir)
{
    QString relative = QDir(appDir).relativeFilePath(path);
    if (!relative.startsWith(QLatin1String("../")))
        relative = QStringLiteral("../") + QDir(appDir).dirName() + QLatin1Char('/') + relative;
    return relative.replace(QLatin1Char('/'), QLatin1Char('\\'));
}

void SettingsForm::writeFlagFile(const QString &oldSrc, const QString &newSrc)
{
    const QString app = AppPaths::applicationDir();
    const QString path = AppPaths::dataFile(QStringLiteral("_Flag_SrcDirChg.log"));
    const QString failure = WriteFileAtomically(
        path, (RelativeFromAppDir(oldSrc, app) + QStringLiteral("\r\n") + RelativeFromAppDir(newSrc, app)
               + QStringLiteral("\r\n"))
                  .toUtf8());
    if (!failure.isEmpty())
        throw Error(kLibErrorNumber, QStringLiteral("SettingsForm.writeFlagFile"),
                    QStringLiteral("Could not write ") + path + QStringLiteral(": ") + failure);
}

} // namespace quillet
