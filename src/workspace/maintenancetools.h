#pragma once

#include <QString>

namespace quillet {

class SrcFiles;

// The support tools of the maintenance window, without the window. Questions, the folder chooser
// and the progress report go through the user-prompt port.
namespace MaintenanceTools {

// Reset window positions: asks first; on Yes clears the stored rectangles of the main and the
// large picture window and returns true (the caller then ends the program without storing them
// again).
bool ResetForms();
// Clears FormRectMn, FormRectEP1 and FormRectEP2.
void ClearFormRects();

// The source-file table as text: a line break and the header line, then per row a line break and
// path, untagged name and "true"/"false" for its allocated state.
QString SrcFilesText(const SrcFiles &table);
// Asks whether to go on when start-up has not finished (No is the default); true to go on.
bool ConfirmTableComplete(bool systemLoaded);

struct SyncResult
{
    bool ran = false; // false when the folder chooser was cancelled
    int updated = 0;
    int analysed = 0;
    // "3 files updated (out of 40 analysed)"
    QString text() const;
};

// Sets the modified date of every photo and movie in a folder (chosen by the user, starting at
// startDir) to its EXIF date of capture where the two differ in more than the seconds. Stops when
// the progress report is closed. Throws Error when a file's date cannot be set.
SyncResult SyncDatesMfromE(const QString &startDir);

} // namespace MaintenanceTools
} // namespace quillet
