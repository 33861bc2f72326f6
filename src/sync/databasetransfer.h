#pragma once

#include <QString>
#include <QVariant>

namespace quillet {

class FamilyDatabase;

// The family database travels between PCs as a whole file in join(BatchXfrDir, "Database"). Which
// copy wins is decided by three parameters: LastDBUpdate (last change of this copy), LastExport
// and LastExportFromPC (when and by which PC it was last exported). A PC's own export is never
// imported back, and each side asks before discarding the other side's changes, with No (keep
// what is there) as the default answer.

// join(BatchXfrDir, "Database", the local database's file name); empty when BatchXfrDir is not set.
QString TransferDatabasePath();

// A field of the parameter row of the transfer copy, or Null when there is no copy. The copy is
// opened read-only on a connection of its own and closed again before this returns.
QVariant ReadTransferParam(const QString &field);

// Copies the local database into the transfer folder when it changed since its last export.
// True when it was copied. The database is closed for the copy and reopened (with its integrity
// check) afterwards. Throws Error when the copy fails; the export stamps are then put back, so
// the next export tries again.
bool ExportFamilyDatabase(FamilyDatabase &db);

// Replaces the local database by the transfer copy when there is one from another PC (asking
// first when the local one has unexported changes). True when it was replaced. The copy is
// checked (read-only open, integrity, schema) before anything local changes; a copy that fails is
// refused with a warning and stays where it is. The replacement is copied beside the local file,
// checked again and renamed over it, so the local database is at every moment the old one or the
// new one, whole. The transfer copy is deleted once the local database has been replaced.
bool ImportFamilyDatabase(FamilyDatabase &db);

} // namespace quillet
