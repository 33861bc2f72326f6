#include "frmdebug.h"

#include "workspacecontroller.h"

#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/userprompt.h"
#include "workspace/maintenancetools.h"
#include "workspace/workspace.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace quillet {

namespace {

// Runs a tool; an unexpected error is reported under the tool's procedure name.
template<typename Tool>
void guarded(const char *procName, Tool tool)
{
    try {
        tool();
    } catch (const Error &e) {
        lib_ErrorHandler(QLatin1String(procName), e);
    } catch (const std::exception &e) {
        lib_ErrorHandler(QLatin1String(procName), 0, QString::fromLocal8Bit(e.what()));
    }
}

} // namespace

frmDebug::frmDebug(Workspace &workspace, WorkspaceController &controller, QWidget *mainWindow)
    : QWidget(mainWindow, Qt::Window)
    , m_ws(workspace)
    , m_controller(controller)
{
    setObjectName(QStringLiteral("frmDebug"));
    setWindowTitle(QStringLiteral("Maintenance"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    const auto add = [&](const char *name, const QString &caption, const QString &tip, void (frmDebug::*slot)()) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(QLatin1String(name));
        b->setToolTip(tip);
        connect(b, &QPushButton::clicked, this, slot);
        layout->addWidget(b);
    };
    add("cmdResetForms", QStringLiteral("&Reset window positions"),
        QStringLiteral("Forget where the windows were and end the program; they open at their usual places next time"),
        &frmDebug::resetForms);
    add("cmdSrcFilesDebug", QStringLiteral("Source scan &debug list"),
        QStringLiteral("Scan the Source Dir again and show what was accepted, including allocated photos"),
        &frmDebug::srcFilesDebug);
    add("cmdSrcFilesToClipboard", QStringLiteral("Source table to &clipboard"),
        QStringLiteral("Copy the table of source photos to the clipboard and show it"), &frmDebug::srcFilesToClipboard);
    add("cmdSyncDatesMfromE", QStringLiteral("Set &modified dates from EXIF dates"),
        QStringLiteral("Set each photo's modified date to the date the camera recorded"), &frmDebug::syncDatesMfromE);
    m_lblMsg = new QLabel(this);
    m_lblMsg->setObjectName(QStringLiteral("lblMsg"));
    m_lblMsg->setWordWrap(true);
    m_lblMsg->setMinimumHeight(m_lblMsg->fontMetrics().lineSpacing() * 2);
    layout->addWidget(m_lblMsg);
    layout->addStretch();
    resize(sizeHint().expandedTo(QSize(320, 0)));
}

void frmDebug::placeBeside(const QWidget *mainWindow)
{
    const QRect main = mainWindow->frameGeometry();
    const QScreen *screen = mainWindow->screen();
    const QRect avail = screen ? screen->availableGeometry() : QRect(0, 0, 1920, 1080);
    const int w = frameGeometry().width();
    int x = main.right() + 8;
    if (x + w > avail.right())
        x = std::max(avail.left(), main.left() - w - 8);
    move(x, std::max(avail.top(), main.top()));
}

void frmDebug::setStatus(const QString &text)
{
    m_lblMsg->setText(text);
    m_lblMsg->repaint();
}

void frmDebug::resetForms()
{
    guarded("cmdResetForms_Click()", [this] {
        if (MaintenanceTools::ResetForms())
            Q_EMIT endRequested();
    });
}

void frmDebug::srcFilesDebug()
{
    guarded("cmdSrcFilesDebug_Click()", [this] {
        BusyPointer busy;
        setStatus(QStringLiteral("Scanning the Source Dir..."));
        m_controller.LoadSource(true);
        // The debug scan lists allocated photos too; the main list goes back to what its
        // "Show allocated" box says.
        if (!m_ws.options().showAllocated)
            m_controller.LoadSource();
        setStatus(QStringLiteral("Debug list written to ") + GetDebugViewPath());
    });
}

void frmDebug::srcFilesToClipboard()
{
    guarded("cmdSrcFilesToClipboard_Click()", [this] {
        if (!MaintenanceTools::ConfirmTableComplete(appState().systemLoaded))
            return;
        BusyPointer busy;
        const QString text = MaintenanceTools::SrcFilesText(m_ws.srcFiles());
        prompt().setClipboardText(text);
        setStatus(QString::number(m_ws.srcFiles().SrcFilesCount()) + QStringLiteral(" rows copied to the clipboard"));
        ShowDebugText(text);
    });
}

void frmDebug::syncDatesMfromE()
{
    guarded("cmdSyncDatesMfromE_Click()", [this] {
        const MaintenanceTools::SyncResult result = MaintenanceTools::SyncDatesMfromE(ReadSetting(QStringLiteral("SrcDir")));
        if (!result.ran)
            return;
        setStatus(result.text());
        lib_MsgInfo(result.text());
    });
}

} // namespace quillet
