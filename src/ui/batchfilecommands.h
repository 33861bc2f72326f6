#pragma once

#include <QObject>

namespace quillet {

class frmMain;

// External > "Export batchfiles" and "Import batchfiles": the main window's menu entries bound to
// the batchfile transfer, with the summary in the status line and any error reported at this
// boundary.
class BatchfileCommands : public QObject
{
    Q_OBJECT
public:
    explicit BatchfileCommands(frmMain &window);

    void mnuExportBatchfiles();
    void mnuImportBatchfiles();

private:
    frmMain &m_window;
};

} // namespace quillet
