#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

// Per-PC settings: section "Settings" of quillet.ini in the data folder, with the administrator's
// quilletP.ini winning (and locking) on a portable copy. Files are read on every call; nothing is
// cached, so a value written is seen by the next read.

struct SettingValue
{
    QString value;
    bool locked = false;
};

// Reads a key. The administrator file wins when it holds a non-empty value (a single blank forces
// ""); finding that file at all marks the copy portable. SrcDir, TgtDir and BatchXfrDir are passed
// through ResolveRelativeDir.
SettingValue ReadSettingEx(const QString &key, const QString &defaultValue = QString());
// The value alone.
QString ReadSetting(const QString &key, const QString &defaultValue = QString());
bool ReadSettingBool(const QString &key, bool defaultValue = false);
int ReadSettingInt(const QString &key, int defaultValue = 0);
// Writes key=value into the user file (never the administrator file), keeping every other line.
void WriteSetting(const QString &key, const QString &value);
void WriteSetting(const QString &key, bool value);
void WriteSetting(const QString &key, int value);

// True once a read has found the administrator file.
bool IsPortableCopy();

// Resolves a relative directory: "..\" or "../" climb from baseDir (the application folder when
// empty), a path without a root joins baseDir; absolute paths stay.
QString ResolveRelativeDir(const QString &path, const QString &baseDir = QString());
// "<My Pictures>"/"<My Documents>" placeholders, as the settings dialog shows folders.
QString ExpandDirPlaceholders(const QString &path, bool toPlaceholder);

// Writes the default of every missing key (and TargetResizeQ/UnallocResizeQ also when 0,
// AssnSrcSubToTgt from AssnSubToTgt, PCname from the host name).
void InitialiseMissingSettings();
// Every key of the table that has a default, with it.
QList<QPair<QString, QString>> SettingDefaults();

} // namespace quillet
