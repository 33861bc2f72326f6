#pragma once

#include <QString>
#include <optional>

namespace quillet {

class Workspace;

// Rotate, delete and put aside the selected source photos, keeping the list in step and
// journalling one record per photo (RSL/RSR, DS, MS) when batchfiles are on.
class PhotoOperations
{
public:
    explicit PhotoOperations(Workspace &workspace);

    // The fixed put-aside folder (~/Temp/QLtemp/).
    static QString PutAsideDir();

    // Turns every selected photo a quarter turn; their thumbnails are made again. False when
    // nothing was selected.
    bool RotateSelected(bool clockwise);
    // After the user's Yes: removes the selected photos from the Source Dir (to the trash, or into
    // the put-aside folder). Returns the list position to select next (-1 when the list is now
    // empty), or nothing when nothing was done (no selection, or the user said No).
    std::optional<int> DeleteSelected();
    std::optional<int> PutAsideSelected();

private:
    enum class Removal { Delete, PutAside };
    int removeSelected(Removal how);
    void journal(const char *opcode, const QString &pathFile) const;

    Workspace &m_ws;
};

} // namespace quillet
