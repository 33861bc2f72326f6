#include "databasetransfer.h"

#include "databasecopycheck.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quillet {

namespace {

QString pcName()
{
    return ReadSetting(QStringLiteral("PCname"));
}

// Parameters hold dates as "yyyy-MM-dd HH:mm:ss" text; Null and unreadable texts count as the
// earliest moment.
QDateTime paramTime(const QVariant &value)
{
    if (value.isNull())
        return QDateTime();
    if (value.canConvert<QDateTime>() && value.typeId() == QMetaType::QDateTime)
        return value.toDateTime();
    return QDateTime::fromString(value.toString(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

bool later(const QDateTime &a, const QDateTime &b)
{
    if (!a.isValid())
        return false;
    return !b.isValid() || a > b;
}

bool localChangesNotExported(FamilyDatabase &db)
{
    return later(paramTime(db.ReadParam(QStringLiteral("LastDBUpdate"))),
                 paramTime(db.ReadParam(QStringLiteral("LastExport"))));
}

void reopen(FamilyDatabase &db)
{
    if (!db.OpenDatabase()) // the fatal message has been shown
        throw Error(kLibErrorNumber, QStringLiteral("OpenDatabase"),
                    QStringLiteral("The family database could not be opened again: ") + db.lastError());
}

void refuse(const QString &copy, const QString &why)
{
    DebugLog(QStringLiteral("ImportFamilyDatabase: refused ") + copy + QStringLiteral(": ") + why);
    lib_MsgWarning(QStringLiteral("The family database in the Batch Transfer Dir cannot be imported: ") + why
                   + QStringLiteral(".\r\n") + copy + QStringLiteral("\r\n")
                   + QStringLiteral("The database on this PC was not changed. Please export the database again on "
                                    "the PC that made this copy."));
}

// Copies the transfer copy beside the local database, checks those bytes and renames them over
// the local file, so that the local database is at every moment the old one or the new one, whole.
// False (after the refusal message) when the bytes beside fail the check; the local database is
// open again afterwards in every case.
bool replaceLocal(FamilyDatabase &db, const QString &copy)
{
    // Beside the local file first, so that the rename below replaces it in one step; checked again
    // there, since those are the bytes that will be used.
    const QString local = FamilyDatabase::DbPath();
    // A name of its own: lib_CopyFile picks a free ".~NN" temporary beside its target, which could
    // be this very name if it were one of those. A leftover of an interrupted import goes first.
    const QString beside = local + QStringLiteral(".import");
    QFile::remove(beside);
    try {
        lib_CopyFile(copy, beside, false);
    } catch (const Error &) {
        QFile::remove(beside);
        throw;
    }
    const QString again = DatabaseCopyCheck::Problem(beside);
    if (!again.isEmpty()) {
        QFile::remove(beside);
        refuse(copy, again);
        return false;
    }
    db.CloseDatabase();
    if (::rename(QFile::encodeName(beside).constData(), QFile::encodeName(local).constData()) != 0) {
        const QString reason = QString::fromLocal8Bit(std::strerror(errno));
        QFile::remove(beside);
        reopen(db);
        throw Error(kErrPathFileAccess, QStringLiteral("ImportFamilyDatabase"),
                    QStringLiteral("Could not replace the family database: ") + reason + QStringLiteral("\r\nDB: ")
                        + local);
    }
    reopen(db);
    return true;
}

} // namespace

QString TransferDatabasePath()
{
    const QString xfr = ReadSetting(QStringLiteral("BatchXfrDir"));
    if (xfr.isEmpty())
        return QString();
    return lib_JoinPath(lib_JoinPath(xfr, QStringLiteral("Database")), lib_FilePart(FamilyDatabase::DbPath()));
}

QVariant ReadTransferParam(const QString &field)
{
    const QString copy = TransferDatabasePath();
    if (copy.isEmpty())
        return QVariant();
    return DatabaseCopyCheck::ReadParamOf(copy, field);
}

bool ExportFamilyDatabase(FamilyDatabase &db)
{
    const QString copy = TransferDatabasePath();
    if (copy.isEmpty() || !localChangesNotExported(db))
        return false;
    const QString me = pcName();
    if (QFileInfo::exists(copy) && ReadTransferParam(QStringLiteral("LastExportFromPC")).toString() != me) {
        if (!lib_MsgYesNo(QStringLiteral("An updated database (family details) from another PC was found but has not "
                                         "yet been imported. Given you have updated the database on this PC, you "
                                         "will need to choose which copy to keep (and the changes in the other copy "
                                         "will be lost).\r\nContinue to export the copy from this PC?"),
                          0, false)) {
            lib_MsgInfo(QStringLiteral("Don't forget to import the other copy by running one of the import functions."));
            return false;
        }
    }
    if (!lib_MakePath(lib_DirPart(copy)))
        throw Error(kErrPathNotFound, QStringLiteral("ExportFamilyDatabase"),
                    QStringLiteral("Path not found: ") + lib_DirPart(copy));
    const QVariant lastExport = db.ReadParam(QStringLiteral("LastExport"));
    const QVariant lastFrom = db.ReadParam(QStringLiteral("LastExportFromPC"));
    db.WriteParam(QStringLiteral("LastExport"), QDateTime::currentDateTime());
    db.WriteParam(QStringLiteral("LastExportFromPC"), me);
    db.CloseDatabase();
    try {
        lib_CopyFile(FamilyDatabase::DbPath(), copy, true);
    } catch (const Error &) {
        // The changes were not exported: the next export must not think they were.
        reopen(db);
        db.WriteParam(QStringLiteral("LastExport"), lastExport);
        db.WriteParam(QStringLiteral("LastExportFromPC"), lastFrom);
        throw;
    }
    reopen(db);
    DebugLog(QStringLiteral("ExportFamilyDatabase: exported to ") + copy);
    return true;
}

bool ImportFamilyDatabase(FamilyDatabase &db)
{
    const QString copy = TransferDatabasePath();
    if (copy.isEmpty() || !QFileInfo::exists(copy))
        return false;
    if (ReadTransferParam(QStringLiteral("LastExportFromPC")).toString() == pcName())
        return false; // this PC's own export, waiting for the others
    const QString problem = DatabaseCopyCheck::Problem(copy);
    if (!problem.isEmpty()) {
        refuse(copy, problem);
        return false;
    }
    if (localChangesNotExported(db)
        && !lib_MsgYesNo(QStringLiteral("An updated database (family details) was found for importing, however the "
                                        "existing one on this computer has been updated since it was last exported. "
                                        "Do you want to continue to import the new database and lose any changes "
                                        "made in the local one?"),
                         0, false))
        return false;

    if (!replaceLocal(db, copy))
        return false;
    // The move is complete only now; a copy that cannot be removed is imported again next time,
    // which changes nothing (it carries the same stamps as the local database).
    if (!QFile::remove(copy))
        DebugLog(QStringLiteral("ImportFamilyDatabase: could not remove ") + copy);
    DebugLog(QStringLiteral("ImportFamilyDatabase: imported ") + copy);
    return true;
}

} // namespace quillet
