#include "frmmain.h"

#include "app/settingsstore.h"
#include "allocationcommands.h"
#include "frmfamilies.h"
#include "frmsettings.h"
#include "keyboardcommands.h"
#include "picturebox.h"
#include "thumbnailfeeder.h"
#include "workspacecontroller.h"
#include "sync/batchfilejournal.h"
#include "app/startup.h"
#include "lib/apppaths.h"
#include "lib/appstate.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/deferredsync.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
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
    runStep(QStringLiteral("StartUp: window rectangle"), [this] { restoreWindowRect(); });
    runStep(QStringLiteral("StartUp: title"), [this] {
        ReadSetting(QStringLiteral("PCname")); // any read notices the administrator file
        setWindowTitle(Startup::TitleLine(IsPortableCopy()));
        m_ui.lblVersion->setText(Startup::VersionLine());
    });
    lib_Stopwatch(1);
    const bool opened = m_db.OpenDatabase();
    DebugLogTiming(QStringLiteral("OpenDatabase"));
    if (!opened) {
        QGuiApplication::restoreOverrideCursor();
        return false; // the fatal message has been shown
    }
    runStep(QStringLiteral("InitBatchfile"), [] { Batchfile::InitBatchfile(); });
    runStep(QStringLiteral("StartUp: buttons"), [this] { InitButtons(); });
    runStep(QStringLiteral("StartUp: undo store"), [this] { m_ws->CreateUndos(); });
    runStep(QStringLiteral("StartUp: large picture"), [this] {
        if (ReadSetting(QStringLiteral("FormOpenEP")) == QLatin1String("1"))
            m_controller->largePictureOpen();
    });
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
        Batchfile::InitBatchfile();
        InitButtons();
    });
    // The dialog closes after this signal; the lists follow the new settings once it has gone.
    QMetaObject::invokeMethod(this, [this] { runStep(QStringLiteral("InitData()"), [this] { InitData(); }); },
                              Qt::QueuedConnection);
}

void frmMain::InitButtons()
{
    for (QPushButton *b : {m_ui.cmdRotateRight, m_ui.cmdRotateLeft, m_ui.cmdRepeatSelect, m_ui.cmdRepeatnSave,
                           m_ui.cmdDelete, m_ui.cmdMoveToTemp}) {
        if (b->hasFocus())
            m_ui.cmdExit->setFocus();
        b->setEnabled(false);
    }
    m_menus.mnuRotateRight->setEnabled(false);
    m_menus.mnuRotateLeft->setEnabled(false);
    m_menus.mnuRepeatSelect->setEnabled(false);
    m_menus.mnuRepeatnSave->setEnabled(false);
    m_menus.mnuDelete->setEnabled(false);
    m_menus.mnuMoveToTemp->setEnabled(false);
    m_menus.mnuFamsBothDays->setEnabled(false);

    const bool batchXfr = !ReadSetting(QStringLiteral("BatchXfrDir")).isEmpty();
    m_menus.mnuPrepWeb->setEnabled(!ReadSetting(QStringLiteral("WebTgtDir")).isEmpty());
    m_menus.mnuPrepCD->setEnabled(!ReadSetting(QStringLiteral("CdTgtDir")).isEmpty());
    for (QAction *a : {m_menus.mnuExportUnalloc, m_menus.mnuImportUnalloc, m_menus.mnuExportBatch,
                       m_menus.mnuImportBatch})
        a->setEnabled(batchXfr);
    m_menus.mnuImportPortable->setEnabled(!ReadSetting(QStringLiteral("PortableCopyXfrDir")).isEmpty());
}

void frmMain::wireCommands()
{
    connect(m_menus.mnuExit, &QAction::triggered, this, &QWidget::close);
    connect(m_ui.cmdExit, &QPushButton::clicked, this, &frmMain::onExitClicked);
    connect(m_menus.mnuAbout, &QAction::triggered, this, &frmMain::showAbout);
    connect(m_menus.mnuHelp, &QAction::triggered, this, [] {
        if (!prompt().openWithDefaultProgram(AppPaths::helpPage()))
            lib_MsgWarning(QStringLiteral("Could not open the help page ") + AppPaths::helpPage());
    });
    connect(m_menus.mnuOptions, &QAction::triggered, this, &frmMain::openSettings);
    connect(m_menus.mnuFamilies, &QAction::triggered, this, &frmMain::openFamilies);
    // Refresh: new photos in the Source Dir, changed settings and families are read again.
    connect(m_menus.mnuRefresh, &QAction::triggered, this, [this] {
        runStep(QStringLiteral("mnuRefresh_Click()"), [this] {
            InitButtons();
            InitData();
        });
    });
    // Commands whose work is not part of this build stay unavailable rather than pretending.
    for (QAction *a : {m_menus.mnuCheckUpdates})
        a->setEnabled(false);
    // Save follows the selections, Undo and review the undo levels.
    m_ui.cmdSave->setEnabled(false);
    m_menus.mnuSave->setEnabled(false);
}

void frmMain::onExitClicked()
{
    close();
}

void frmMain::showAbout()
{
    QMessageBox::about(this, QStringLiteral("About ") + QLatin1String(AppPaths::kTitle),
                       QLatin1String(AppPaths::kTitle) + QLatin1Char(' ') + Startup::VersionLine()
                           + QStringLiteral("\n\nAllocates the day's photos to the families of the children in "
                                            "them.\n\nData folder: ")
                           + AppPaths::dataDir());
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
        if (!rect.isEmpty())
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
    m_db.CloseDatabase();
    DeferredSync::waitForPending();
}

} // namespace quillet
