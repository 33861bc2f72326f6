#pragma once

#include "settingsdatabase.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <QVariant>

class QSqlQuery;

namespace quillet {

// The family database: one SQLite file in the data folder with the families (tblFamilies) and
// one row of parameters shared by every PC that uses the database (_tblParams). Statements are
// written in the program's own dialect and pass through translateJetSql. Text compares and sorts
// without regard to case, for every letter; the file itself is a plain SQLite database that any
// SQLite tool reads and writes (see FamilySchema).
class FamilyDatabase : public SettingsDatabase
{
public:
    FamilyDatabase();
    ~FamilyDatabase() override;
    FamilyDatabase(const FamilyDatabase &) = delete;
    FamilyDatabase &operator=(const FamilyDatabase &) = delete;

    // The database file in the data folder.
    static QString DbPath();
    // Creates an empty database with both tables and the one parameter row (a fresh installation).
    // False, with nothing written, when the file exists already or cannot be written.
    static bool Provision(const QString &path);

    // Opens the database; a damaged file is repaired once (rebuilt into a fresh file that then
    // replaces it). When the file is missing or cannot be made usable, the fatal message is shown
    // and false returned: the program must end.
    bool OpenDatabase();
    void CloseDatabase();
    bool isOpen() const;
    int DBversion() const { return m_dbVersion; }
    // The description of the last failure to open, for the fatal message.
    const QString &lastError() const { return m_lastError; }

    // Runs a statement; throws Error with the database's message when it fails. Values bind to
    // "?" in order: booleans are stored as -1/0, dates and times as storedDateText.
    QList<QSqlRecord> select(const QString &jetSql, const QVariantList &values = {}) const;
    void exec(const QString &jetSql, const QVariantList &values = {}) const;
    // Runs an INSERT and returns the key the database gave the new row (a new FamilyID).
    qint64 insert(const QString &jetSql, const QVariantList &values = {}) const;

    // The parameter as stored (may be Null). An unknown name throws Error.
    QVariant ReadParam(const QString &name) override;
    // Writes when the value differs (Null taken as ""); every name except the two "LastExport..."
    // ones also stamps LastDBUpdate with the present time.
    void WriteParam(const QString &name, const QVariant &value) override;
    QList<QPair<QString, int>> CurrentFamilies() override;
    // PrivacyText, read once and kept for the session.
    QString ReadPrivacyText();
    // Rewrites _FamilyIDs.csv in the Source Dir: one line per family in table order. Throws Error
    // when the file cannot be written.
    void WriteFamilyIDsCsv();

    // Sets LastDBUpdate to now (the family editor and the attendance import call this).
    void TouchLastDBUpdate();

    QSqlDatabase connection() const;

private:
    static void run(QSqlQuery &q, const QString &jetSql, const QVariantList &values);
    void checkParamName(const QString &name) const;
    bool tryOpen(const QString &path);
    bool repair(const QString &path);
    // Rebuilds a database of the first layout once (see FamilySchema) and opens it again.
    bool migrateOnce(const QString &path);
    void loadParams();

    QString m_connectionName;
    QSqlRecord m_params; // the one row of _tblParams, held for the session
    QString m_privacyTextCache;
    QString m_lastError;
    int m_dbVersion = 0;
};

} // namespace quillet
