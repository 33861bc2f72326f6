#include "frmmain.h"

#include "app/settingsstore.h"
#include "allocationcommands.h"
#include "aboutbox.h"
#include "frmdebug.h"
#include "frmfamilies.h"
#include "frmhelp.h"
#include "frmsettings.h"
#include "keyboardcommands.h"
#include "publishcommands.h"
#include "picturebox.h"
#include "transfercommands.h"
#include "thumbnailfeeder.h"
#include "workspacecontroller.h"
#include "batchfilecommands.h"
#include "sync/batchfilejournal.h"
#include "sync/batchfileprocessing.h"
#include "app/startup.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/deferredsync.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"
#include "lib/versioncheck.h"
#include "workspace/maintenancetools.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QScreen>

namespace quillet {

frmMain::frmMain(QWidget *parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("frmMain"));
    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralWidget"));
    m_ui.build(central);
    setCentralWidget(central);
    m_menus.build(this);
    m_ws = std::make_unique<Workspace>(m_db, PhotoServices::Default());
    m_controller = new WorkspaceController(*m_ws, m_ui, m_menus, this);
    // The photo list's thumbnails are made for what it shows, as it scrolls.
    new ThumbnailFeeder(m_ui.lvwSrcFiles, &m_ws->sourceList());
    m_allocation = new AllocationCommands(*m_ws, m_ui, m_menus, *m_controller, this);
    new KeyboardCommands(m_ui, m_menus, *m_controller, this);
    new PublishCommands(m_db, m_menus, [this](const QString &text) { setStatus(text); }, this);
    // The imports end with the window's Refresh (lists reloaded, waiting batchfiles replayed).
    new TransferCommands(m_db, *m_ws, m_menus, [this] { Refresh(); },
                         [this](const QString &text) { setStatus(text); }, this);
    // The program cannot go on (the thumbnail placeholder is missing): during start-up StartUp
    // reports it, afterwards the event loop ends.
    connect(m_controller, &WorkspaceController::fatal, this, [this] {
        m_fatal = true;
        QCoreApplication::exit(1);
    });
    setWindowTitle(Startup::TitleLine(false));
    resize(1200, 780);
    wireCommands();
}

frmMain::~frmMain()
{
    ShutDown();
}

void frmMain::setStatus(const QString &text)
{
    m_ui.lblMsg->setText(text);
    m_ui.lblMsg->repaint();
}

void frmMain::runStep(const QString &label, const std::function<void()> &step)
{
    try {
        step();
    } catch (const Error &e) {
        lib_ErrorHandler(label, e);
    } catch (const std::exception &e) {
        lib_ErrorHandler(label, 0, QString::fromLocal8Bit(e.what()));
    }
}

bool frmMain::StartUp()
{
    appState().showErrorDetails = true;
    appState().systemLoaded = false;
    lib_Stopwatch(1);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);

    // Relative folder settings resolve against the program's own folder.
    QDir::setCurrent(AppPaths::applicationDir());
    if (Startup::IsFreshInstallation()) {
        // First start on this account: the data folder and an empty family database.
        runStep(QStringLiteral("StartUp: data folder"), [] {
            if (Startup::MakeDataFolder())
                FamilyDatabase::Provision(FamilyDatabase::DbPath());
        });
    }
    appState().startTime = QDateTime::currentDateTime();
    runStep(QStringLiteral("StartUp: debug log"), [] { Startup::DeleteDebugLog(); });
    m_picOriginalSize = m_ui.imgPic->size();
    // Shift at start: the stored window positions are forgotten and the maintenance window opens
    // beside this one.
    const bool shift = prompt().shiftHeld();
    runStep(QStringLiteral("StartUp: window rectangle"), [this, shift] {
        if (shift)
            MaintenanceTools::ClearFormRects();
        else
            restoreWindowRect();
    });
    runStep(QStringLiteral("StartUp: title"), [this] {
        ReadSetting(QStringLiteral("PCname")); // any read notices the administrator file
        setWindowTitle(Startup::TitleLine(IsPortableCopy()));
        m_ui.lblVersion->setText(Startup::VersionLine());
    });
    lib_Stopwatch(1);
    runStep(QStringLiteral("CleanupOldBatchfiles"), [] { BatchfileProcessing::CleanupOldBatchfiles(); });
    DebugLogTiming(QStringLiteral("CleanupOldBatchfiles")); // the log line reads "CleanupOldBatchfiles: " and the time
    lib_Stopwatch(1);
    const bool opened = m_db.OpenDatabase();
    DebugLogTiming(QStringLiteral("OpenDatabase"));
    if (!opened) {
        QGuiApplication::restoreOverrideCursor();
        return false; // the fatal message has been shown
    }
    runStep(QStringLiteral("InitBatchfile"), [this] { Batchfile::InitBatchfile([this] { ProcessBatchfiles(); }); });
    runStep(QStringLiteral("StartUp: buttons"), [this] { InitButtons(); });
    runStep(QStringLiteral("StartUp: undo store"), [this] { m_ws->CreateUndos(); });
    runStep(QStringLiteral("StartUp: large picture"), [this] {
        if (ReadSetting(QStringLiteral("FormOpenEP")) == QLatin1String("1"))
            m_controller->largePictureOpen();
    });
    if (shift)
        showMaintenance();
    runStep(QStringLiteral("InitData()"), [this] { InitData(); });

    QGuiApplication::restoreOverrideCursor();
    if (m_fatal)
        return false;
    // The keys work from the start: the photo list has the focus, its first key shows a photo.
    m_ui.lvwSrcFiles->setFocus(Qt::OtherFocusReason);
    appState().systemLoaded = true;
    return true;
}

void frmMain::restoreWindowRect()
{
    const QRect stored = Startup::ParseFormRect(ReadSetting(QStringLiteral("FormRectMn")));
    if (!stored.isValid())
        return;
    // A rectangle from a larger or disconnected screen is kept only where it can be seen.
    const QScreen *screen = QGuiApplication::screenAt(stored.center());
    if (!screen)
        return;
    setGeometry(stored);
}

bool frmMain::ValidateSettings()
{
    setStatus(QStringLiteral("Validating settings..."));
    // The dialog's data load writes the default of every missing setting.
    frmSettings check(m_db, this);
    check.LoadData();
    if (check.ValidateSettings())
        return true;
    openSettings();
    return false;
}

bool frmMain::InitData()
{
    if (!ValidateSettings()) {
        setStatus(QString());
        return false;
    }
    m_ws->ReadSessionSettings();
    m_controller->showOptions();
    for (const auto &[box, key] : {std::pair{m_ui.chkShowParent, "ShowParent"},
                                   std::pair{m_ui.chkAutoFilterFamsByDay, "AutoFilterFams"},
                                   std::pair{m_ui.chkShowCurrFamsOnly, "CurrFamsOnly"},
                                   std::pair{m_ui.chkThumbnails, "Thumbnails"},
                                   std::pair{m_ui.chkUseEXIFdate, "UseEXIFdate"}})
        box->setEnabled(!ReadSettingEx(QLatin1String(key)).locked);
    if (!m_controller->LoadSource())
        return false;
    m_ws->ReloadFamilyCollections();
    m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, std::nullopt);
    if (IsPortableCopy() && ReadSetting(QStringLiteral("CreateBatchs")) == QLatin1String("1"))
        lib_MakePath(ReadSetting(QStringLiteral("PortCopyOrigCopyDir")));
    setStatus(m_controller->loadNote()); // a stopped load keeps saying that the list is incomplete
    return true;
}

void frmMain::openSettings()
{
    if (m_settings) {
        m_settings->raise();
        m_settings->activateWindow();
        return;
    }
    m_settings = new frmSettings(m_db, this);
    m_settings->setAttribute(Qt::WA_DeleteOnClose);
    m_settings->setWindowModality(Qt::ApplicationModal);
    connect(m_settings, &frmSettings::settingsSaved, this, &frmMain::afterSettingsSaved);
    connect(m_settings, &QObject::destroyed, this, [this] { m_settings = nullptr; });
    m_settings->LoadData();
    m_settings->show();
}

void frmMain::openFamilies()
{
    auto *editor = new frmFamilies(m_db, this);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->setWindowModality(Qt::ApplicationModal);
    // Emptied and built again, no selection kept: a selected family may have gone or changed name.
    const auto rebuild = [this] {
        runStep(QStringLiteral("mnuFamilies_Click()"), [this] {
            m_ws->ReloadFamilyCollections();
            m_ws->LoadFamilies(std::nullopt, std::nullopt, false, false, std::nullopt);
        });
    };
    connect(editor, &frmFamilies::familiesChanged, this, rebuild);
    connect(editor, &QDialog::finished, this, rebuild);
    editor->LoadList();
    editor->show();
}

void frmMain::afterSettingsSaved()
{
    runStep(QStringLiteral("cmdSave_Click()"), [this] {
        m_db.WriteFamilyIDsCsv();
        Batchfile::InitBatchfile([this] { ProcessBatchfiles(); });
        InitButtons();
    });
    // The dialog closes after this signal; the lists follow the new settings once it has gone.
    QMetaObject::invokeMethod(this, [this] { runStep(QStringLiteral("InitData()"), [this] { InitData(); }); },
                              Qt::QueuedConnection);
}

void frmMain::InitButtons()
{
    m_controller->commands().InitButtons();
}

void frmMain::wireCommands()
{
    connect(m_menus.mnuExit, &QAction::triggered, this, &QWidget::close);
    connect(m_ui.cmdExit, &QPushButton::clicked, this, &frmMain::onExitClicked);
    connect(m_menus.mnuAbout, &QAction::triggered, this, [this] { AboutBox(this).exec(); });
    connect(m_menus.mnuCheckUpdates, &QAction::triggered, this, [] {
        CheckVersionOnline(QLatin1String(AppPaths::kTitle), QStringLiteral(QUILLET_VERSION), false, true);
    });
    connect(m_menus.mnuHelp, &QAction::triggered, this, [this] {
        if (prompt().openWithDefaultProgram(AppPaths::helpPage()))
            return;
        // No program to show it (no browser installed): the program shows the page itself.
        if (!QFileInfo::exists(AppPaths::helpPage())) {
            lib_MsgWarning(QStringLiteral("Could not open the help page ") + AppPaths::helpPage());
            return;
        }
        auto *help = new frmHelp(AppPaths::helpPage(), this);
        help->show();
    });
    connect(m_menus.mnuOptions, &QAction::triggered, this, &frmMain::openSettings);
    connect(m_menus.mnuFamilies, &QAction::triggered, this, &frmMain::openFamilies);
    // Refresh: new photos in the Source Dir, changed settings and families are read again.
    connect(m_menus.mnuRefresh, &QAction::triggered, this, &frmMain::Refresh);
    new BatchfileCommands(*this);
    // Until start-up has run InitButtons, only what needs no session is offered.
    m_controller->commands().apply(false, false, false);
}

void frmMain::Refresh()
{
    runStep(QStringLiteral("mnuRefresh_Click()"), [this] {
        InitButtons();
        ProcessBatchfiles();
        InitData();
    });
}

void frmMain::ProcessBatchfiles()
{
    BatchfileProcessing(&m_db).ProcessBatchfiles();
}

void frmMain::onExitClicked()
{
    // Shift + Exit is the way into the maintenance window; it never ends the program.
    if (prompt().shiftHeld()) {
        showMaintenance();
        return;
    }
    close();
}

frmDebug *frmMain::maintenanceWindow() const
{
    return m_maintenance;
}

void frmMain::showMaintenance()
{
    if (!m_maintenance) {
        m_maintenance = new frmDebug(*m_ws, *m_controller, this);
        connect(m_maintenance, &frmDebug::endRequested, this, [this] {
            m_discardWindowRects = true;
            close();
        });
    }
    m_maintenance->show();
    m_maintenance->placeBeside(this);
    m_maintenance->raise();
}

void frmMain::closeEvent(QCloseEvent *event)
{
    ShutDown();
    event->accept();
}

void frmMain::ShutDown()
{
    if (m_shutDown)
        return;
    m_shutDown = true;
    try {
        const QString rect = Startup::RectToStore(geometry(), isMinimized());
        if (!rect.isEmpty() && !m_discardWindowRects)
            WriteSetting(QStringLiteral("FormRectMn"), rect);
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("ShutDown()"), e);
    }
    try {
        // Only a session that finished starting has levels worth keeping (a failed start must not
        // overwrite the file with an empty table).
        if (m_ws->hasUndos() && appState().systemLoaded)
            m_ws->undos().SaveToFile();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("ShutDown()"), e);
    }
    // The large picture window remembers that it was open; every other window just closes.
    m_controller->closeLargePicture(true);
    for (QWidget *w : QApplication::topLevelWidgets()) {
        if (w != this && w->isVisible())
            w->close();
    }
    if (m_discardWindowRects) {
        // The large picture window stored its rectangle as it closed: forget it again.
        runStep(QStringLiteral("ShutDown()"), [] { MaintenanceTools::ClearFormRects(); });
    }
    m_db.CloseDatabase();
    DeferredSync::waitForPending();
}

} // namespace quillet
