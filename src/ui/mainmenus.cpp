#include "mainmenus.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace quillet {

namespace {

QAction *entry(QMenu *menu, const char *name, const QString &caption)
{
    QAction *action = menu->addAction(caption);
    action->setObjectName(QLatin1String(name));
    return action;
}

} // namespace

void MainMenus::build(QMainWindow *window)
{
    QMenuBar *bar = window->menuBar();

    QMenu *file = bar->addMenu(QStringLiteral("&File"));
    file->setObjectName(QStringLiteral("mnuFile"));
    mnuExit = entry(file, "mnuExit", QStringLiteral("E&xit"));

    // "A&ction" would share Alt+C with the "&Clear All" button, used on every photo; the menu opens
    // with Alt+N (or F10) instead, and each of its entries has a key of its own.
    QMenu *action = bar->addMenu(QStringLiteral("Actio&n"));
    action->setObjectName(QStringLiteral("mnuAction"));
    mnuSave = entry(action, "mnuSave", QStringLiteral("&Save"));
    mnuRepeatnSave = entry(action, "mnuRepeatnSave", QStringLiteral("Re&peat && Save"));
    mnuRepeatSelect = entry(action, "mnuRepeatSelect", QStringLiteral("Repeat Selec&tion"));
    mnuRotateLeft = entry(action, "mnuRotateLeft", QStringLiteral("Rotate &Left"));
    mnuRotateRight = entry(action, "mnuRotateRight", QStringLiteral("Rotate &Right"));
    mnuUndo = entry(action, "mnuUndo", QStringLiteral("&Undo"));
    mnuMoveToTemp = entry(action, "mnuMoveToTemp", QStringLiteral("Put &Aside (move to temp dir)"));
    mnuDelete = entry(action, "mnuDelete", QStringLiteral("&Delete"));
    action->addSeparator();
    mnuRefresh = entry(action, "mnuRefresh", QStringLiteral("Re&fresh"));
    mnuRefresh->setShortcut(QKeySequence::Refresh);
    mnuFamsBothDays = entry(action, "mnuFamsBothDays", QStringLiteral("List families for both days"));

    QMenu *external = bar->addMenu(QStringLiteral("&External"));
    external->setObjectName(QStringLiteral("mnuExternal"));
    mnuExportUnalloc = entry(external, "mnuExportUnalloc", QStringLiteral("Export &unallocated files"));
    mnuImportUnalloc = entry(external, "mnuImportUnalloc", QStringLiteral("Import unallocated files"));
    mnuExportBatch = entry(external, "mnuExportBatch", QStringLiteral("Export batchfiles"));
    mnuImportBatch = entry(external, "mnuImportBatch", QStringLiteral("Import batchfiles"));
    mnuImportPortable = entry(external, "mnuImportPortable", QStringLiteral("Import From Portable Copy"));
    external->addSeparator();
    mnuPrepWeb = entry(external, "mnuPrepWeb", QStringLiteral("Prep files for &web upload"));
    mnuPrepCD = entry(external, "mnuPrepCD", QStringLiteral("Prep files for copy to &CD"));

    QMenu *settings = bar->addMenu(QStringLiteral("Se&ttings"));
    settings->setObjectName(QStringLiteral("mnuSettings"));
    mnuFamilies = entry(settings, "mnuFamilies", QStringLiteral("&Families"));
    mnuOptions = entry(settings, "mnuOptions", QStringLiteral("&Options"));

    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuHelpMenu"));
    mnuHelp = entry(help, "mnuHelp", QStringLiteral("&Help"));
    mnuHelp->setShortcut(QKeySequence::HelpContents);
    mnuCheckUpdates = entry(help, "mnuCheckUpdates", QStringLiteral("&Check for updates"));
    mnuAbout = entry(help, "mnuAbout", QStringLiteral("&About"));
}

} // namespace quillet
