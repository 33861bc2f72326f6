#include "familydatabase.h"
#include "lib/atomicwrite.h"

#include "familyschema.h"
#include "jetsql.h"
#include "settingsstore.h"
#include "sqlitecollation.h"

#include "lib/apppaths.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"

#include <QAtomicInt>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quillet {

namespace {

QAtomicInt g_connections;

QString sqlError(const QSqlError &e)
{
    return e.databaseText().isEmpty() ? e.text() : e.databaseText();
}

// Values as the database stores them: booleans -1/0, times and dates as ISO text.
QVariant toStored(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? -1 : 0;
    case QMetaType::QTime:
    case QMetaType::QDate:
    case QMetaType::QDateTime: {
        const QString text = storedDateText(value);
        return text.isEmpty() ? QVariant() : QVariant(text);
    }
    default:
        return value;
    }
}

QString csvField(const QVariant &v, bool text)
{
    if (v.isNull())
        return QStringLiteral("#NULL#");
    return text ? QLatin1Char('"') + v.toString() + QLatin1Char('"') : v.toString();
}

} // namespace

FamilyDatabase::FamilyDatabase()
    : m_connectionName(QStringLiteral("quillet-families-") + QString::number(g_connections.fetchAndAddOrdered(1)))
{
}

FamilyDatabase::~FamilyDatabase()
{
    CloseDatabase();
}

QString FamilyDatabase::DbPath()
{
    return AppPaths::databaseFile();
}

QSqlDatabase FamilyDatabase::connection() const
{
    return QSqlDatabase::database(m_connectionName, false);
}

bool FamilyDatabase::Provision(const QString &path)
{
    // Built beside the target and moved into place whole, so an interrupted first start leaves no
    // half-made database behind; an existing database is never replaced.
    if (QFileInfo::exists(path))
        return false;
    const QString temp = lib_TempCopyName(path, path);
    const QString name = QStringLiteral("quillet-provision");
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(temp);
        ok = db.open() && RegisterTextCollation(db);
        QSqlQuery q(db);
        for (const QString &statement : FamilySchema::CreateStatements())
            ok = ok && q.exec(statement);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    ok = ok && !QFileInfo::exists(path) && QFile::rename(temp, path);
    if (!ok)
        QFile::remove(temp);
    return ok;
}

bool FamilyDatabase::isOpen() const
{
    return connection().isOpen();
}

bool FamilyDatabase::tryOpen(const QString &path)
{
    CloseDatabase();
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    db.setDatabaseName(path);
    if (!db.open() || !RegisterTextCollation(db)) {
        m_lastError = sqlError(db.lastError());
        return false;
    }
    QSqlQuery check(db);
    if (!check.exec(QStringLiteral("PRAGMA integrity_check")) || !check.next()
        || check.value(0).toString() != QLatin1String("ok")) {
        m_lastError = check.lastError().isValid() ? sqlError(check.lastError())
                                                  : QStringLiteral("Integrity check: ") + check.value(0).toString();
        return false;
    }
    QSqlQuery params(db);
    if (!params.exec(QStringLiteral("SELECT * FROM _tblParams")) || !params.next()) {
        m_lastError = params.lastError().isValid() ? sqlError(params.lastError())
                                                   : QStringLiteral("The parameter row is missing");
        return false;
    }
    m_params = params.record();
    m_dbVersion = m_params.value(QStringLiteral("DBversion")).toInt();
    return true;
}

bool FamilyDatabase::repair(const QString &path)
{
    CloseDatabase();
    // First rebuild every index from its table (the usual damage after a crash), then rebuild the
    // whole file into a fresh one that replaces the original only when it was written completely.
    // The integrity check of the next open decides whether this was enough.
    const QString temp = lib_TempCopyName(path, path);
    const QString name = QStringLiteral("quillet-repair");
    bool reindexed = false;
    bool rebuilt = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        if (db.open() && RegisterTextCollation(db)) {
            QSqlQuery q(db);
            reindexed = q.exec(QStringLiteral("REINDEX"));
            rebuilt = q.exec(QStringLiteral("VACUUM INTO '") + QString(temp).replace(QLatin1Char('\''), QStringLiteral("''"))
                             + QLatin1Char('\''));
            if (!reindexed && !rebuilt)
                m_lastError = sqlError(q.lastError());
        } else {
            m_lastError = sqlError(db.lastError());
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    if (rebuilt && QFileInfo::exists(temp)) {
        // rename() replaces the damaged file in one step: at every moment there is a database.
        if (::rename(QFile::encodeName(temp).constData(), QFile::encodeName(path).constData()) == 0)
            return true;
        m_lastError = QString::fromLocal8Bit(std::strerror(errno)) + QStringLiteral(": ") + temp;
    }
    QFile::remove(temp);
    return reindexed;
}

bool FamilyDatabase::OpenDatabase()
{
    const QString path = DbPath();
    if (!QFileInfo::exists(path)) {
        lib_MsgError(QStringLiteral("Fatal Error: database file not found\r\n") + path);
        return false;
    }
    if (tryOpen(path))
        return migrateOnce(path);
    if (repair(path) && tryOpen(path))
        return migrateOnce(path);
    CloseDatabase();
    lib_MsgError(QStringLiteral("Fatal Error: could not establish database integrity, repair failed\r\nError: ")
                 + m_lastError + QStringLiteral("\r\nDB: ") + path);
    return false;
}

bool FamilyDatabase::migrateOnce(const QString &path)
{
    QSqlDatabase db = connection();
    if (!FamilySchema::NeedsMigration(db))
        return true;
    CloseDatabase();
    QString error;
    if (FamilySchema::Migrate(path, &error))
        DebugLog(QStringLiteral("Family database rebuilt without the program-only collation: ") + path);
    else // the old layout still works for the program; the next start tries again
        DebugLog(QStringLiteral("Family database not rebuilt: ") + error);
    if (tryOpen(path))
        return true;
    CloseDatabase();
    lib_MsgError(QStringLiteral("Fatal Error: could not establish database integrity, repair failed\r\nError: ")
                 + m_lastError + QStringLiteral("\r\nDB: ") + path);
    return false;
}

void FamilyDatabase::CloseDatabase()
{
    m_params = QSqlRecord();
    if (QSqlDatabase::contains(m_connectionName)) {
        {
            QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(m_connectionName);
    }
}

QList<QSqlRecord> FamilyDatabase::select(const QString &jetSql, const QVariantList &values) const
{
    QSqlQuery q(connection());
    q.setForwardOnly(true);
    run(q, jetSql, values);
    QList<QSqlRecord> rows;
    while (q.next())
        rows << q.record();
    return rows;
}

void FamilyDatabase::run(QSqlQuery &q, const QString &jetSql, const QVariantList &values)
{
    bool ok = q.prepare(translateJetSql(jetSql));
    for (const QVariant &v : values)
        q.addBindValue(toStored(v));
    ok = ok && q.exec();
    if (!ok)
        throw Error(kObjectErrorBase + 1, QStringLiteral("FamilyDatabase"),
                    sqlError(q.lastError()) + QStringLiteral("\r\nSQL: ") + jetSql);
}

void FamilyDatabase::exec(const QString &jetSql, const QVariantList &values) const
{
    QSqlQuery q(connection());
    run(q, jetSql, values);
}

void FamilyDatabase::checkParamName(const QString &name) const
{
    // A misspelt parameter is a program fault: say so rather than read Null or write SQL around it.
    if (m_params.indexOf(name) < 0)
        throw Error(kObjectErrorBase + 1, QStringLiteral("FamilyDatabase"),
                    (m_params.isEmpty() ? QStringLiteral("The family database is not open; parameter: ")
                                        : QStringLiteral("No such parameter: "))
                        + name);
}

qint64 FamilyDatabase::insert(const QString &jetSql, const QVariantList &values) const
{
    QSqlQuery q(connection());
    run(q, jetSql, values);
    return q.lastInsertId().toLongLong();
}

QVariant FamilyDatabase::ReadParam(const QString &name)
{
    checkParamName(name);
    return m_params.value(name);
}

void FamilyDatabase::WriteParam(const QString &name, const QVariant &value)
{
    checkParamName(name);
    const QVariant stored = toStored(value);
    const QString before = m_params.value(name).isNull() ? QString() : m_params.value(name).toString();
    const QString after = stored.isNull() ? QString() : stored.toString();
    if (before == after)
        return;
    const bool stamp = name.left(10) != QLatin1String("LastExport");
    const QString now = storedDateText(QDateTime::currentDateTime());
    QString sql = QStringLiteral("UPDATE _tblParams SET [") + name + QStringLiteral("]=?");
    QVariantList values{stored};
    if (stamp) {
        sql += QStringLiteral(", LastDBUpdate=?");
        values << now;
    }
    exec(sql, values);
    m_params.setValue(name, stored);
    if (stamp)
        m_params.setValue(QStringLiteral("LastDBUpdate"), now);
}

void FamilyDatabase::TouchLastDBUpdate()
{
    const QString now = storedDateText(QDateTime::currentDateTime());
    exec(QStringLiteral("UPDATE _tblParams SET LastDBUpdate=?"), {now});
    m_params.setValue(QStringLiteral("LastDBUpdate"), now);
}

QList<QPair<QString, int>> FamilyDatabase::CurrentFamilies()
{
    QList<QPair<QString, int>> out;
    const auto rows = select(QStringLiteral("SELECT * FROM tblFamilies WHERE [Current]=True ORDER BY "
                                            "IIf([FirstName] LIKE '(%','zzz'&[FirstName],[FirstName]) & [LastName]"));
    for (const QSqlRecord &r : rows) {
        QString name = r.value(QStringLiteral("FirstName")).toString();
        if (!r.value(QStringLiteral("LastName")).isNull())
            name += QLatin1Char(' ') + r.value(QStringLiteral("LastName")).toString();
        out.append({name, r.value(QStringLiteral("FamilyID")).toInt()});
    }
    return out;
}

QString FamilyDatabase::ReadPrivacyText()
{
    if (m_privacyTextCache.isEmpty())
        m_privacyTextCache = ReadParam(QStringLiteral("PrivacyText")).toString();
    return m_privacyTextCache;
}

void FamilyDatabase::WriteFamilyIDsCsv()
{
    const QString srcDir = ReadSetting(QStringLiteral("SrcDir"));
    const QString path = lib_JoinPath(srcDir, QStringLiteral("_FamilyIDs.csv"));
    if (srcDir.isEmpty()) // the list would land in whatever folder is current
        throw Error(kErrPathNotFound, QStringLiteral("WriteFamilyIDsCsv"),
                    QStringLiteral("Path not found: the Source Dir is not set\r\nFile: ") + path);
    QString text;
    for (const QSqlRecord &r : select(QStringLiteral("SELECT * FROM tblFamilies"))) {
        text += csvField(r.value(QStringLiteral("FamilyID")), false) + QLatin1Char(',')
            + csvField(r.value(QStringLiteral("FirstName")), true) + QLatin1Char(',')
            + csvField(r.value(QStringLiteral("LastName")), true) + QLatin1Char(',')
            + csvField(r.value(QStringLiteral("Parent")), true) + QLatin1Char(',')
            + (r.value(QStringLiteral("Current")).toInt() != 0 ? QStringLiteral("\"Current\"")
                                                                : QStringLiteral("\"Not Current\""))
            + QStringLiteral("\r\n");
    }
    // A list the user has made read-only stays as it is (the save-and-rename would replace it,
    // and would for an administrator in any case).
    if (QFileInfo::exists(path) && !(QFile::permissions(path) & QFileDevice::WriteOwner))
        throw Error(kErrPathFileAccess, QStringLiteral("WriteFamilyIDsCsv"),
                    QStringLiteral("Path/File access error: the file is read-only\r\nFile: ") + path);
    const QString failure = WriteFileAtomically(path, text.toUtf8());
    if (!failure.isEmpty())
        throw Error(kErrPathFileAccess, QStringLiteral("WriteFamilyIDsCsv"), failure + QStringLiteral("\r\nFile: ") + path);
}

} // namespace quillet
