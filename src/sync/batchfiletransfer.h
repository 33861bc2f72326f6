#pragma once

#include <QString>
#include <functional>

namespace quillet {

// The External menu's "Export batchfiles" and "Import batchfiles": carrying batchfiles between
// PCs through join(BatchXfrDir, "Batchfiles").
//
// Export closes this PC's current batchfile, keeps an archive copy of each of this PC's batchfiles
// in "Batchfiles Done" and moves them into the transfer folder. Import moves the other PCs'
// batchfiles from there into the data folder and refreshes, which replays them. Neither ever
// overwrites a file. What the transfer folder holds is untrusted: only regular files named as
// batchfiles are taken, never a folder-sync tool's conflict copy or a file still being written.
class BatchfileTransfer
{
public:
    // The family database travels with the batchfiles (ExportFamilyDatabase and
    // ImportFamilyDatabase); each returns true when the database went across.
    std::function<bool()> exportDatabase;
    std::function<bool()> importDatabase;
    // The main window's Refresh (reloads the lists and replays waiting batchfiles).
    std::function<void()> refresh;
    // Shows the summary in the main window's message line.
    std::function<void(const QString &)> status;

    // Both return the summary shown, or an empty text when the command stopped early (no Batch
    // Transfer Dir set, a missing folder, the user declined).
    QString ExportBatchfiles();
    QString ImportBatchfiles();

    // The Source-Dir-change flag file in `folder`: when present, reads its two lines, deletes it
    // and returns the warning to show; else an empty text.
    static QString TakeSrcDirChangeWarning(const QString &folder);

    static QString transferFolder();

private:
    void summarise(const QString &summary);
};

} // namespace quillet
