#pragma once

#include <QSet>
#include <QString>
#include <functional>

namespace quillet {

class FamilyDatabase;

// External > Import From Portable Copy: brings a portable copy's work back to its PC. The device
// folder PortableCopyXfrDir holds the portable copy's settings file, its batchfiles and undo
// files; the allocated originals lie in the device's PortCopyOrigCopyDir. The originals move flat
// into the Source Dir, the batchfiles journalled under this PC's name become this PC's (to be sent
// on with the next batchfile export), and the device's undo files are deleted.
//
// Those batchfiles carry this PC's name, so the replay never carries them out here; yet this PC
// must end as the portable copy did (the copies in its Target Dir, the tags in its Source Dir).
// Each taken batchfile is therefore carried out here once, before it leaves the device, skipping
// the rotations of the originals that came back turned.
//
// Everything on the device is input from another machine: PortCopyOrigCopyDir must lie on the
// device, names are checked before anything is written, links are refused, and a refusal is
// reported, never silently skipped.
class PortableCopyImport
{
public:
    // `refresh` is the main window's Refresh: reload the lists and replay waiting batchfiles.
    // `db` is the open family database (for the excluded family's folder), or nullptr.
    explicit PortableCopyImport(std::function<void()> refresh, FamilyDatabase *db = nullptr);

    // Runs the command; returns the summary shown, empty when nothing was done.
    QString ImportFromPortableCopy();

    // The device settings file: join(PortableCopyXfrDir, executable base name + ".ini").
    static QString DeviceSettingsFile(const QString &xfrDir);
    // Where a device batchfile is adopted in the data folder: its own name, or, when that would
    // replace a batchfile of this PC (the device's current batchfile has the same name as this PC's
    // current one), the first free closed name stamped from `now` on. Empty when `name` is no
    // batchfile of `pcName`.
    static QString AdoptedName(const QString &name, const QString &pcName, const QDateTime &now);

private:
    QString originalsFolder(const QString &xfrDir, const QString &deviceIni);
    int moveOriginals(const QString &folder, const QString &srcDir, QSet<QString> &movedNames);
    int adoptBatchfiles(const QString &xfrDir, const QSet<QString> &movedNames);
    void deleteUndoFiles(const QString &xfrDir);

    std::function<void()> m_refresh;
    FamilyDatabase *m_db;
};

} // namespace quillet
