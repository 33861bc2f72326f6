#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

namespace quillet {

class SettingsDatabase;

// The settings the dialog edits, held as the texts its controls show, with the rules for loading,
// validating and saving them. The dialog only binds controls to these values, so every rule runs
// the same headless.
class SettingsForm
{
public:
    enum class Kind { Folder, Text, Check, Number, Slider, Date, Time, Family };

    struct Field
    {
        const char *key;       // setting key or database parameter name
        Kind kind;
        const char *control;   // object name of the dialog's control
        const char *caption;   // the control's label caption
        bool dbParam;          // kept in the family database rather than the ini file
        bool portableLocked;   // disabled on a portable copy
    };

    // Every edited setting, in the dialog's order.
    static const QList<Field> &Fields();
    static const Field *FindField(const QString &key);

    // Loads every value: writes missing defaults first (ini keys, and the session ends in the
    // database when empty), then reads the ini (administrator values locked) and the parameters.
    // Folders are shown with their "<My Pictures>"/"<My Documents>" placeholders.
    void LoadData(SettingsDatabase &db);

    QString value(const QString &key) const { return m_values.value(key); }
    void setValue(const QString &key, const QString &value) { m_values.insert(key, value); }
    bool isChecked(const QString &key) const { return m_values.value(key) == QLatin1String("1"); }
    bool isLocked(const QString &key) const { return m_locked.contains(key); }

    // Checks the values in order; the first failure shows its message and returns false. Folder
    // texts are trimmed and stripped of trailing separators in place; missing folders may be
    // created after asking. Nothing is written to the settings.
    bool ValidateSettings();

    struct SaveResult
    {
        bool saved = false;
        bool pcNameChanged = false;
        bool foldersChanged = false;  // Source or Target Dir changed from a non-empty value
        bool sourceDirChanged = false;
    };
    // Validates, then writes every value, renames the batchfile after a PC-name change, closes it
    // after a folder change and writes the Source-Dir-change flag file.
    SaveResult Save(SettingsDatabase &db);

    // The labels beside the sliders.
    static QString SizeLabel(int code);
    static QString QualityLabel(int code);
    // "yyyymmdd hhnnss" to and from the date pickers.
    static QString FormatDate(const QDateTime &date);
    static QDateTime ParseDate(const QString &text);

private:
    bool validateRequiredFolder(const QString &key, const QString &caption);
    bool validateOptionalFolder(const QString &key, const QString &caption, bool failOnMissingDrive);
    QString cleanFolder(const QString &key);
    void writeFlagFile(const QString &oldSrc, const QString &newSrc);

    QHash<QString, QString> m_values;
    QSet<QString> m_locked;
};

// The Source Dir as the flag file records it: relative to the program's folder, beginning "..\".
QString RelativeFromAppDir(const QString &path, const QString &appDir);

} // namespace quillet
