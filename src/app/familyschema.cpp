#include "familyschema.h"

#include "sqlitecollation.h"

#include "lib/fileutils.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quillet::FamilySchema {

namespace {

// FamilyID is never given out twice, even after the family with the highest one is deleted:
// allocation tags in file names keep naming a deleted family, and a newcomer must not inherit
// its photos (or its privacy choices).
const char *const kTables[] = {
    "CREATE TABLE tblFamilies ("
    " FamilyID INTEGER PRIMARY KEY AUTOINCREMENT,"
    " FirstName TEXT NOT NULL,"
    " LastName TEXT,"
    " Parent TEXT,"
    " Current INTEGER NOT NULL DEFAULT -1,"
    " NoUploadToWeb INTEGER NOT NULL DEFAULT 0,"
    " NoCopyToCd INTEGER NOT NULL DEFAULT 0,"
    " FamDaysMam INTEGER NOT NULL DEFAULT 0, FamDaysTam INTEGER NOT NULL DEFAULT 0,"
    " FamDaysWam INTEGER NOT NULL DEFAULT 0, FamDaysTHam INTEGER NOT NULL DEFAULT 0,"
    " FamDaysFam INTEGER NOT NULL DEFAULT 0,"
    " FamDaysMpm INTEGER NOT NULL DEFAULT 0, FamDaysTpm INTEGER NOT NULL DEFAULT 0,"
    " FamDaysWpm INTEGER NOT NULL DEFAULT 0, FamDaysTHpm INTEGER NOT NULL DEFAULT 0,"
    " FamDaysFpm INTEGER NOT NULL DEFAULT 0,"
    " FamDaysOverride INTEGER NOT NULL DEFAULT 0,"
    " StartDate TEXT, EndDate TEXT)",
    "CREATE INDEX ixFamiliesName ON tblFamilies (FirstName, LastName)",
    "CREATE TABLE _tblParams ("
    " DBversion INTEGER, PrivacyText TEXT, MorningSessEnd TEXT, AfternoonSessEnd TEXT,"
    " WebAllowPriv INTEGER, WebCopyPriv INTEGER, CdAllowPriv INTEGER, CdCopyPriv INTEGER,"
    " LastDBUpdate TEXT, LastExport TEXT, LastExportFromPC TEXT)",
};

const char *const kFamilyColumns =
    "FamilyID, FirstName, LastName, Parent, Current, NoUploadToWeb, NoCopyToCd,"
    " FamDaysMam, FamDaysTam, FamDaysWam, FamDaysTHam, FamDaysFam,"
    " FamDaysMpm, FamDaysTpm, FamDaysWpm, FamDaysTHpm, FamDaysFpm, FamDaysOverride, StartDate, EndDate";
const char *const kParamColumns =
    "DBversion, PrivacyText, MorningSessEnd, AfternoonSessEnd, WebAllowPriv, WebCopyPriv, CdAllowPriv,"
    " CdCopyPriv, LastDBUpdate, LastExport, LastExportFromPC";

QString quotedPath(const QString &path)
{
    return QLatin1Char('\'') + QString(path).replace(QLatin1Char('\''), QStringLiteral("''")) + QLatin1Char('\'');
}

qint64 count(QSqlQuery &q, const QString &sql)
{
    return q.exec(sql) && q.next() ? q.value(0).toLongLong() : -1;
}

// Copies every row of the attached old file into the new tables of `db`. False with the reason.
bool copyRows(QSqlDatabase &db, const QString &oldPath, QString *error)
{
    QSqlQuery q(db);
    const auto run = [&](const QString &sql) {
        if (q.exec(sql))
            return true;
        *error = q.lastError().text() + QStringLiteral("\r\nSQL: ") + sql;
        return false;
    };
    for (const char *statement : kTables) {
        if (!run(QLatin1String(statement)))
            return false;
    }
    const QString families = QLatin1String(kFamilyColumns);
    const QString params = QLatin1String(kParamColumns);
    if (!run(QStringLiteral("ATTACH DATABASE ") + quotedPath(oldPath) + QStringLiteral(" AS old")) || !db.transaction())
        return false;
    const bool copied =
        run(QStringLiteral("INSERT INTO main.tblFamilies (") + families + QStringLiteral(") SELECT ") + families
            + QStringLiteral(" FROM old.tblFamilies ORDER BY FamilyID"))
        && run(QStringLiteral("INSERT INTO main._tblParams (") + params + QStringLiteral(") SELECT ") + params
               + QStringLiteral(" FROM old._tblParams"))
        && run(QStringLiteral("UPDATE main._tblParams SET DBversion=") + QString::number(kVersion))
        // The key counter goes on from where the old file left it, not from the highest key left.
        && run(QStringLiteral("DELETE FROM main.sqlite_sequence WHERE name='tblFamilies'"))
        && run(QStringLiteral("INSERT INTO main.sqlite_sequence (name, seq) SELECT 'tblFamilies', "
                              "MAX(IFNULL((SELECT seq FROM old.sqlite_sequence WHERE name='tblFamilies'),0), "
                              "IFNULL((SELECT MAX(FamilyID) FROM main.tblFamilies),0))"));
    if (!copied || !db.commit()) {
        db.rollback();
        return false;
    }
    if (count(q, QStringLiteral("SELECT COUNT(*) FROM main.tblFamilies")) != count(q, QStringLiteral("SELECT COUNT(*) FROM old.tblFamilies"))
        || count(q, QStringLiteral("SELECT COUNT(*) FROM main._tblParams")) != 1) {
        *error = QStringLiteral("The rebuilt database does not hold every family");
        return false;
    }
    return run(QStringLiteral("DETACH DATABASE old"));
}

} // namespace

QStringList CreateStatements()
{
    QStringList out;
    for (const char *statement : kTables)
        out << QLatin1String(statement);
    out << QStringLiteral("INSERT INTO _tblParams (DBversion, WebAllowPriv, WebCopyPriv, CdAllowPriv, CdCopyPriv) "
                          "VALUES (%1, 0, 0, 0, 0)").arg(kVersion);
    return out;
}

bool NeedsMigration(QSqlDatabase &db)
{
    QSqlQuery q(db);
    return count(q, QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE instr(upper(sql), 'QNOCASE') > 0")) > 0;
}

bool Migrate(const QString &path, QString *error)
{
    const QString temp = lib_TempCopyName(path, path);
    QFile::remove(temp);
    const QString name = QStringLiteral("quillet-migrate");
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(temp);
        // The old file's columns name the collation: it must be known to read them.
        if (db.open() && RegisterTextCollation(db))
            ok = copyRows(db, path, error);
        else
            *error = db.lastError().text();
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    // rename() replaces the file in one step: at every moment there is a complete database.
    if (ok && ::rename(QFile::encodeName(temp).constData(), QFile::encodeName(path).constData()) != 0) {
        *error = QString::fromLocal8Bit(std::strerror(errno)) + QStringLiteral(": ") + temp;
        ok = false;
    }
    if (!ok)
        QFile::remove(temp);
    return ok;
}

} // namespace quillet::FamilySchema
