#include "workspacecontroller.h"

#include "frmlargepic.h"
#include "mainmenus.h"
#include "mainwindowlayout.h"
#include "picturebox.h"
#include "selectionmirror.h"
#include "thumbnaildelegate.h"

#include "app/settingsstore.h"
#include "lib/appstate.h"
#include "lib/errorhandler.h"
#include "lib/userprompt.h"

#include <QAction>
#include <QCheckBox>
#include <QDate>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QStyledItemDelegate>

namespace quillet {

WorkspaceController::WorkspaceController(Workspace &workspace, MainWindowLayout &ui, MainMenus &menus, QWidget *window)
    : QObject(window)
    , m_ws(workspace)
    , m_ui(ui)
    , m_menus(menus)
    , m_window(window)
{
    m_ui.lvwSrcFiles->setModel(&m_ws.sourceList());
    m_thumbnailDelegate = new ThumbnailDelegate(this);
    m_textDelegate = new QStyledItemDelegate(this);
    m_ui.lstFamilies->setModel(&m_ws.familyList());
    m_sourceMirror = new SelectionMirror(m_ui.lvwSrcFiles, SourceListModel::SelectedRole,
                                         [this](int p, bool on) { m_ws.sourceList().setSelected(p, on); });
    m_familyMirror = new SelectionMirror(m_ui.lstFamilies, FamilyListModel::SelectedRole,
                                         [this](int p, bool on) { m_ws.familyList().setSelected(p, on); });

    // A click and the keys (arrows, Home/End, Page keys, Shift/Ctrl for several) select alike and
    // show alike: the viewer follows every change of the selection the user makes.
    connect(m_sourceMirror, &SelectionMirror::userChanged, this, &WorkspaceController::onSourceSelectionChanged);
    connect(m_ui.lvwSrcFiles, &QListView::clicked, this, [this](const QModelIndex &index) {
        // The press that selected this entry has shown it already.
        if (QPersistentModelIndex(index) == m_shownBySelection) {
            m_shownBySelection = QPersistentModelIndex();
            return;
        }
        onSourceClicked(index);
    });
    connect(m_ui.lvwSrcFiles, &QListView::doubleClicked, this, &WorkspaceController::openLargePicture);
    connect(m_ui.imgPic, &PictureBox::doubleClicked, this, [this] {
        if (m_ui.imgPic->hasPicture())
            openLargePicture();
    });
    connect(&m_ws.sourceList(), &SourceListModel::selectionChanged, this, &WorkspaceController::updatePhotoCommands);
    connect(&m_ws, &Workspace::sourceCountChanged, this,
            [this](int n) { m_ui.lblSrcFilesCnt->setText(QString::number(n) + (n == 1 ? QStringLiteral(" photo") : QStringLiteral(" photos"))); });
    connect(&m_ws, &Workspace::familyCountChanged, this,
            [this](int n) { m_ui.lblFamiliesCnt->setText(QString::number(n) + (n == 1 ? QStringLiteral(" family") : QStringLiteral(" families"))); });
    connect(&m_ws, &Workspace::indicatorsChanged, this, &WorkspaceController::showIndicators);
    connect(&m_ws, &Workspace::statusText, this, [this](const QString &text) {
        m_ui.lblMsg->setText(text);
        m_ui.lblMsg->repaint();
    });

    connect(m_ui.chkShowRemovedPhotos, &QCheckBox::clicked, this, [this] { onSourceOptionToggled(nullptr, true); });
    connect(m_ui.chkUseEXIFdate, &QCheckBox::clicked, this, [this] { onSourceOptionToggled("UseEXIFdate", true); });
    connect(m_ui.chkThumbnails, &QCheckBox::clicked, this, [this] { onSourceOptionToggled("Thumbnails", false); });
    connect(m_ui.chkShowCurrFamsOnly, &QCheckBox::clicked, this, [this] { onFamilyOptionToggled("CurrFamsOnly"); });
    connect(m_ui.chkShowParent, &QCheckBox::clicked, this, [this] { onFamilyOptionToggled("ShowParent"); });
    connect(m_ui.chkAutoFilterFamsByDay, &QCheckBox::clicked, this, [this] { onFamilyOptionToggled("AutoFilterFams"); });
    m_ui.chkShowCurrFamsOnly->setToolTip(QStringLiteral("Show only those families marked as Current in Family setup"));
    m_ui.chkAutoFilterFamsByDay->setToolTip(
        QStringLiteral("Automatically filter the families shown according to the days they are expected on session, "
                       "matching the date/time of the photo"));

    // Ticking a family with the mouse or with Space counts the same.
    connect(m_familyMirror, &SelectionMirror::userChanged, this, &WorkspaceController::onFamilyClicked);
    connect(&m_ws.familyList(), &FamilyListModel::selectionChanged, this, &WorkspaceController::updateSaveState);
    connect(m_ui.cmdSelectAll, &QPushButton::clicked, this, [this] {
        m_ws.SelectAllFamilies();
        updateSaveState();
    });
    connect(m_ui.cmdClearAll, &QPushButton::clicked, this, [this] { m_ws.ClearSelectedFamilies(); });
    connect(m_menus.mnuFamsBothDays, &QAction::triggered, this, &WorkspaceController::showFamiliesBothDays);
    m_ui.cmdSelectAll->setEnabled(true);
    m_ui.cmdClearAll->setEnabled(true);
    configureSourceView();
}

void WorkspaceController::configureSourceView()
{
    QListView *view = m_ui.lvwSrcFiles;
    if (m_ws.options().thumbnails) {
        view->setViewMode(QListView::IconMode);
        view->setIconSize(QSize(ThumbnailDelegate::kPicture, ThumbnailDelegate::kPicture));
        // Cells touch, so that a group's band runs on from one photo to the next.
        view->setSpacing(0);
        view->setGridSize(ThumbnailDelegate::cellSize(view->fontMetrics()));
        view->setItemDelegate(m_thumbnailDelegate);
        view->setResizeMode(QListView::Adjust);
        view->setMovement(QListView::Static);
        view->setWordWrap(false);
    } else {
        view->setViewMode(QListView::ListMode);
        view->setIconSize(QSize(12, 12));
        view->setGridSize(QSize());
        view->setItemDelegate(m_textDelegate);
    }
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
}

void WorkspaceController::showOptions()
{
    const Workspace::Options &o = m_ws.options();
    m_ui.chkThumbnails->setChecked(o.thumbnails);
    m_ui.chkUseEXIFdate->setChecked(o.useExifDate);
    m_ui.chkShowParent->setChecked(o.showParent);
    m_ui.chkShowCurrFamsOnly->setChecked(o.currentOnly);
    m_ui.chkAutoFilterFamsByDay->setChecked(o.filterByDay);
}

bool WorkspaceController::LoadSource()
{
    m_loading = true;
    configureSourceView();
    // The cover hides the list while it is rebuilt, so a half-filled list is never clicked.
    m_ui.txtSrcfilesBg->show();
    m_ui.txtSrcfilesBg->raise();
    m_ui.lblSrcFilesCnt->hide();
    const Workspace::LoadResult result = m_ws.LoadSource(!m_ws.options().showAllocated, false);
    m_ui.txtSrcfilesBg->hide();
    m_ui.lblSrcFilesCnt->show();
    m_loading = false;
    m_ui.imgPic->clearPicture();
    m_ui.lblSrcFileDets->clear();
    m_ui.lblSrcFileDets1->clear();
    updatePhotoCommands();
    if (result == Workspace::LoadResult::PlaceholderMissing) {
        Q_EMIT fatal();
        return false;
    }
    m_loadNote = result == Workspace::LoadResult::Cancelled
        ? QStringLiteral("Loading was stopped: the list shows only the photos loaded so far. Choose Refresh (F5) to "
                         "load them all.")
        : QString();
    m_ui.lblMsg->setText(m_loadNote);
    return true;
}

void WorkspaceController::onSourceOptionToggled(const char *key, bool keepSelection)
{
    if (!appState().systemLoaded)
        return;
    BusyPointer busy;
    Workspace::Options &o = m_ws.options();
    o.showAllocated = m_ui.chkShowRemovedPhotos->isChecked();
    o.useExifDate = m_ui.chkUseEXIFdate->isChecked();
    o.thumbnails = m_ui.chkThumbnails->isChecked();
    if (key && QLatin1String(key) == QLatin1String("UseEXIFdate"))
        WriteSetting(QStringLiteral("UseEXIFdate"), o.useExifDate);
    if (key && QLatin1String(key) == QLatin1String("Thumbnails"))
        WriteSetting(QStringLiteral("Thumbnails"), o.thumbnails);
    const QList<int> rows = m_ws.sourceList().selectedRows();
    if (!LoadSource())
        return;
    if (keepSelection && !rows.isEmpty()) {
        const int position = m_ws.sourceList().positionOfRow(rows.first());
        if (position >= 0) {
            m_ws.sourceList().setSelected(position, true);
            m_ui.lvwSrcFiles->scrollTo(m_ws.sourceList().index(position));
            DisplaySrcFile();
        }
    }
}

void WorkspaceController::onFamilyOptionToggled(const char *key)
{
    if (!appState().systemLoaded)
        return;
    BusyPointer busy;
    Workspace::Options &o = m_ws.options();
    o.currentOnly = m_ui.chkShowCurrFamsOnly->isChecked();
    o.showParent = m_ui.chkShowParent->isChecked();
    o.filterByDay = m_ui.chkAutoFilterFamsByDay->isChecked();
    const bool dayFilter = QLatin1String(key) == QLatin1String("AutoFilterFams");
    try {
        m_ws.LoadFamilies(std::nullopt, std::nullopt, dayFilter, dayFilter, std::nullopt);
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("LoadFamilies"), e);
    }
    const bool on = QLatin1String(key) == QLatin1String("CurrFamsOnly") ? o.currentOnly
        : QLatin1String(key) == QLatin1String("ShowParent")           ? o.showParent
                                                                       : o.filterByDay;
    WriteSetting(QLatin1String(key), on);
}

void WorkspaceController::onSourceSelectionChanged()
{
    if (m_loading)
        return;
    QListView *view = m_ui.lvwSrcFiles;
    QModelIndex index = view->currentIndex();
    if (!view->selectionModel()->isSelected(index)) {
        const QList<int> positions = m_ws.sourceList().selectedPositions();
        index = positions.isEmpty() ? QModelIndex() : m_ws.sourceList().index(positions.first());
    }
    m_shownBySelection = index;
    if (index.isValid())
        onSourceClicked(index);
    else
        updatePhotoCommands();
}

void WorkspaceController::onSourceClicked(const QModelIndex &index)
{
    if (!index.isValid() || !m_ws.SrcItemClicked(index.row()))
        return;
    QListView *view = m_ui.lvwSrcFiles;
    view->scrollTo(index);
    if (index.row() + 2 < m_ws.sourceList().rowCount())
        view->scrollTo(m_ws.sourceList().index(index.row() + 2));
    DisplaySrcFile();
}

QString WorkspaceController::fitName(const QString &text) const
{
    // The end of a path (the file name) matters most: drop characters from the start until it fits.
    const QFontMetrics metrics = m_ui.lblSrcFileDets->fontMetrics();
    const int width = std::max(40, m_ui.lblSrcFileDets->width() - 4);
    QString shown = text;
    while (shown.size() > 1 && metrics.horizontalAdvance(shown) > width)
        shown.remove(0, 1);
    return shown;
}

void WorkspaceController::DisplaySrcFile(bool ignoreReviewingUndo)
{
    if (!m_ws.ReviewAllowsView(ignoreReviewingUndo))
        return; // the previous photo stays on view
    const Workspace::PhotoView view = m_ws.ViewSelectedPhoto();
    if (view.kind == Workspace::PhotoView::Nothing) {
        updatePhotoCommands();
        return;
    }
    if (!m_ws.reviewing())
        m_ws.sourceList().HighlightSourceSelections(true);
    m_ui.lblSrcFileDets->setText(fitName(view.nameText));
    m_ui.lblSrcFileDets->setToolTip(view.path);
    m_ui.lblSrcFileDets1->setText(view.dateText);
    if (view.beep)
        prompt().beep();
    if (view.kind == Workspace::PhotoView::Movie) {
        m_ui.imgPic->clearPicture();
        m_ui.lblPictureMsg->setText(QStringLiteral("Cannot display movies, but you can still allocate them"));
        m_ui.lblPictureMsg->show();
    } else if (!m_ui.imgPic->showFile(view.path)) {
        m_ui.lblPictureMsg->setText(QStringLiteral("Cannot read file"));
        m_ui.lblPictureMsg->show();
    } else {
        m_ui.lblPictureMsg->hide();
    }
    if (m_largePic && m_largePic->isVisible()) {
        if (view.kind == Workspace::PhotoView::Picture)
            m_largePic->showFile(view.path);
        else
            m_largePic->clearPicture();
    }
    updatePhotoCommands();
    try {
        m_ws.FollowPhotoWithFamilies();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("LoadFamilies"), e);
    }
}

void WorkspaceController::updatePhotoCommands()
{
    const bool any = !m_ws.sourceList().selectedRows().isEmpty();
    for (QPushButton *b : {m_ui.cmdDelete, m_ui.cmdRotateLeft, m_ui.cmdRotateRight, m_ui.cmdMoveToTemp}) {
        if (!any && b->hasFocus())
            m_ui.cmdExit->setFocus();
        b->setEnabled(any);
    }
    for (QAction *a : {m_menus.mnuDelete, m_menus.mnuRotateLeft, m_menus.mnuRotateRight, m_menus.mnuMoveToTemp,
                       m_menus.mnuFamsBothDays})
        a->setEnabled(any);
    m_ui.cmdRepeatSelect->setEnabled(m_saveMade);
    m_menus.mnuRepeatSelect->setEnabled(m_saveMade);
    m_ui.cmdRepeatnSave->setEnabled(m_saveMade && any);
    m_menus.mnuRepeatnSave->setEnabled(m_saveMade && any);
    updateSaveState();
}

void WorkspaceController::updateSaveState()
{
    const bool allowed = m_ws.SaveAllowed();
    m_ui.cmdSave->setEnabled(allowed);
    m_menus.mnuSave->setEnabled(allowed);
}

void WorkspaceController::onFamilyClicked()
{
    if (!m_ws.reviewing())
        m_ws.sourceList().HighlightSourceSelections(true);
    updateSaveState();
    Q_EMIT familiesChosen();
}

void WorkspaceController::showFamiliesBothDays()
{
    try {
        const QString text = m_ws.FamiliesForBothDays(QDate::currentDate());
        if (!text.isEmpty())
            lib_MsgInfo(text);
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("mnuFamsBothDays_Click()"), e);
    }
}

void WorkspaceController::showIndicators()
{
    for (int s = 0; s < 2; ++s)
        for (int d = 0; d < 5; ++d)
            m_ui.dayIndicators[s][d]->setChecked(m_ws.indicator(s, d));
}

void WorkspaceController::openLargePicture()
{
    if (!m_largePic)
        m_largePic = new frmLargePic(m_window);
    if (!m_largePic->isVisible())
        m_largePic->open();
    if (!m_ui.imgPic->path().isEmpty())
        m_largePic->showFile(m_ui.imgPic->path());
}

void WorkspaceController::closeLargePicture(bool shuttingDown)
{
    if (!m_largePic)
        return;
    if (shuttingDown)
        m_largePic->closeForShutdown();
    else
        m_largePic->close();
}

} // namespace quillet
