#include "databasecopycheck.h"

#include "app/sqlitecollation.h"

#include <QAtomicInt>
#include <QFileInfo>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <functional>

namespace quillet::DatabaseCopyCheck {

namespace {

QAtomicInt g_serial;

const char *const kFamilyFields[] = {
    "FamilyID", "FirstName", "LastName", "Parent", "Current", "NoUploadToWeb", "NoCopyToCd",
    "FamDaysMam", "FamDaysTam", "FamDaysWam", "FamDaysTHam", "FamDaysFam",
    "FamDaysMpm", "FamDaysTpm", "FamDaysWpm", "FamDaysTHpm", "FamDaysFpm",
    "FamDaysOverride", "StartDate", "EndDate",
};
const char *const kParamFields[] = {
    "DBversion", "PrivacyText", "MorningSessEnd", "AfternoonSessEnd", "WebAllowPriv", "WebCopyPriv",
    "CdAllowPriv", "CdCopyPriv", "LastDBUpdate", "LastExport", "LastExportFromPC",
};

QString sqlText(const QSqlError &e)
{
    return e.databaseText().isEmpty() ? e.text() : e.databaseText();
}

// Runs `work` on a read-only connection of its own to `path`; the connection is closed and
// removed afterwards whatever `work` did, so the file is never left open or locked.
template<typename Result>
Result withReadOnly(const QString &path, const std::function<Result(QSqlDatabase &)> &work)
{
    const QString name = QStringLiteral("quillet-copy-") + QString::number(g_serial.fetchAndAddOrdered(1));
    Result result;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        result = work(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return result;
}

QString missingField(QSqlDatabase &db, const QString &table, const char *const *fields, int count)
{
    const QSqlRecord record = db.record(table);
    if (record.isEmpty())
        return QStringLiteral("it has no table ") + table;
    for (int i = 0; i < count; ++i) {
        if (record.indexOf(QLatin1String(fields[i])) < 0)
            return QStringLiteral("its table ") + table + QStringLiteral(" has no field ") + QLatin1String(fields[i]);
    }
    return QString();
}

QString check(QSqlDatabase &db)
{
    if (!db.open() || !RegisterTextCollation(db))
        return sqlText(db.lastError());
    QSqlQuery q(db);
    // A file that is not a database fails here with "file is not a database"; a cut-off or
    // damaged one with a list of damaged pages.
    if (!q.exec(QStringLiteral("PRAGMA integrity_check")))
        return sqlText(q.lastError());
    QStringList damage;
    // The first findings say enough (a damaged file can list thousands).
    while (q.next() && damage.size() < 2) {
        if (q.value(0).toString() != QLatin1String("ok"))
            damage << q.value(0).toString().simplified().left(160);
    }
    if (!damage.isEmpty())
        return QStringLiteral("it is damaged (") + damage.join(QStringLiteral("; ")) + QLatin1Char(')');
    QString why = missingField(db, QStringLiteral("tblFamilies"), kFamilyFields, int(std::size(kFamilyFields)));
    if (why.isEmpty())
        why = missingField(db, QStringLiteral("_tblParams"), kParamFields, int(std::size(kParamFields)));
    if (!why.isEmpty())
        return why;
    QSqlQuery rows(db);
    if (!rows.exec(QStringLiteral("SELECT COUNT(*) FROM _tblParams")) || !rows.next())
        return sqlText(rows.lastError());
    if (rows.value(0).toInt() != 1)
        return QStringLiteral("its parameter table holds ") + rows.value(0).toString()
            + QStringLiteral(" rows instead of one");
    return QString();
}

} // namespace

QString Problem(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile())
        return QStringLiteral("the file does not exist");
    if (info.size() == 0)
        return QStringLiteral("the file is empty");
    return withReadOnly<QString>(path, check);
}

QVariant ReadParamOf(const QString &path, const QString &field)
{
    if (!QFileInfo(path).isFile())
        return QVariant();
    return withReadOnly<QVariant>(path, [&field](QSqlDatabase &db) -> QVariant {
        if (!db.open())
            return QVariant();
        QSqlQuery q(db);
        if (!q.exec(QStringLiteral("SELECT * FROM _tblParams")) || !q.next())
            return QVariant();
        const int i = q.record().indexOf(field);
        return i < 0 ? QVariant() : q.value(i);
    });
}

} // namespace quillet::DatabaseCopyCheck
