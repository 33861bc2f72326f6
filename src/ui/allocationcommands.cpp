#include "allocationcommands.h"

#include "mainmenus.h"
#include "mainwindowlayout.h"
#include "picturebox.h"
#include "workspacecontroller.h"

#include "lib/error.h"
#include "lib/errorhandler.h"
#include "workspace/allocationsave.h"
#include "workspace/workspace.h"

#include <QAction>
#include <QLabel>
#include <QListView>
#include <QPushButton>

namespace quillet {

AllocationCommands::AllocationCommands(Workspace &workspace, MainWindowLayout &ui, MainMenus &menus,
                                       WorkspaceController &controller, QWidget *window)
    : QObject(window)
    , m_ws(workspace)
    , m_ui(ui)
    , m_menus(menus)
    , m_controller(controller)
    , m_save(new AllocationSave(workspace, this))
{
    connect(m_ui.cmdSave, &QPushButton::clicked, m_save, &AllocationSave::Save);
    connect(m_menus.mnuSave, &QAction::triggered, m_save, &AllocationSave::Save);
    auto repeatSelect = [this] {
        try {
            m_save->RepeatSelect();
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("cmdRepeatSelect_Click()"), e);
        }
        m_controller.updateSaveState();
    };
    connect(m_ui.cmdRepeatSelect, &QPushButton::clicked, this, repeatSelect);
    connect(m_menus.mnuRepeatSelect, &QAction::triggered, this, repeatSelect);
    connect(m_ui.cmdRepeatnSave, &QPushButton::clicked, m_save, &AllocationSave::RepeatAndSave);
    connect(m_menus.mnuRepeatnSave, &QAction::triggered, m_save, &AllocationSave::RepeatAndSave);
    m_operations = std::make_unique<PhotoOperations>(m_ws);
    connect(m_ui.cmdRotateLeft, &QPushButton::clicked, this, [this] { rotate(false); });
    connect(m_menus.mnuRotateLeft, &QAction::triggered, this, [this] { rotate(false); });
    connect(m_ui.cmdRotateRight, &QPushButton::clicked, this, [this] { rotate(true); });
    connect(m_menus.mnuRotateRight, &QAction::triggered, this, [this] { rotate(true); });
    connect(m_ui.cmdDelete, &QPushButton::clicked, this, [this] { removePhotos(false); });
    connect(m_menus.mnuDelete, &QAction::triggered, this, [this] { removePhotos(false); });
    connect(m_ui.cmdMoveToTemp, &QPushButton::clicked, this, [this] { removePhotos(true); });
    connect(m_menus.mnuMoveToTemp, &QAction::triggered, this, [this] { removePhotos(true); });
    connect(m_ui.cmdUndo, &QPushButton::clicked, this, &AllocationCommands::onUndo);
    connect(m_menus.mnuUndo, &QAction::triggered, this, &AllocationCommands::onUndo);
    connect(m_ui.cmdReviewUndoL1, &QPushButton::clicked, this, [this] { review(false, false); });
    connect(m_ui.cmdReviewUndoLA, &QPushButton::clicked, this, [this] { review(false, true); });
    connect(m_ui.cmdReviewUndoR1, &QPushButton::clicked, this, [this] { review(true, false); });
    connect(m_ui.cmdReviewUndoRA, &QPushButton::clicked, this, [this] { review(true, true); });
    connect(m_ui.cmdReviewUndoNew, &QPushButton::clicked, this, &AllocationCommands::stopReview);
    m_ui.cmdReviewUndoL1->setToolTip(QStringLiteral("Review previous undo"));
    m_ui.cmdReviewUndoLA->setToolTip(QStringLiteral("Review first undo"));
    m_ui.cmdReviewUndoR1->setToolTip(QStringLiteral("Review next undo"));
    m_ui.cmdReviewUndoRA->setToolTip(QStringLiteral("Review last undo"));
    m_ui.cmdReviewUndoNew->setToolTip(QStringLiteral("Stop reviewing undo list"));
    m_ui.cmdUndo->setToolTip(QStringLiteral("Undo the last command"));

    connect(m_save, &AllocationSave::saveEnded, this, &AllocationCommands::afterSave);
    connect(m_save, &AllocationSave::displaySrcFile, this, &AllocationCommands::displayAndScroll);
    connect(&m_controller, &WorkspaceController::familiesChosen, m_save, &AllocationSave::FamilyListClicked);
    // One double click ticks a family and saves.
    connect(m_ui.lstFamilies, &QListView::doubleClicked, this, [this](const QModelIndex &index) {
        if (m_ui.cmdSave->isEnabled() && index.isValid() && m_ws.familyList().at(index.row()).selected)
            m_save->Save();
    });
    connect(&m_ws, &Workspace::undosReplaced, this, &AllocationCommands::bindUndos);
    showUndoLevels(QStringLiteral("0 undos"), false, false);
}

void AllocationCommands::bindUndos()
{
    if (!m_ws.hasUndos())
        return;
    clsUndos &undos = m_ws.undos();
    connect(&undos, &clsUndos::undoLevelsChanged, this, &AllocationCommands::showUndoLevels);
    connect(&undos, &clsUndos::displaySrcFile, this, &AllocationCommands::displayAndScroll);
    undos.SetUndoLevelsCntLbl();
}

void AllocationCommands::showUndoLevels(const QString &text, bool reviewing, bool undoEnabled)
{
    m_ui.lblUndoLevelsCnt->setText(text);
    // Red while reviewing, the normal button-text colour otherwise.
    m_ui.lblUndoLevelsCnt->setStyleSheet(reviewing ? QStringLiteral("color: red;") : QString());
    for (QPushButton *b : {m_ui.cmdUndo, m_ui.cmdReviewUndoNew, m_ui.cmdReviewUndoLA, m_ui.cmdReviewUndoL1,
                           m_ui.cmdReviewUndoR1, m_ui.cmdReviewUndoRA})
        b->setEnabled(undoEnabled);
    m_menus.mnuUndo->setEnabled(undoEnabled);
}

void AllocationCommands::onUndo()
{
    try {
        m_ws.undos().UndoLastLevel(false);
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("UndoLastLevel"), e);
    }
    m_controller.updatePhotoCommands();
}

void AllocationCommands::review(bool next, bool toEnd)
{
    try {
        clsUndos &undos = m_ws.undos();
        const QList<int> rows = m_ws.sourceList().selectedRows();
        m_rememberedRow = rows.isEmpty() ? 0 : rows.first();
        // Every family of a level must be selectable, so the day filter is lifted for review.
        if (!undos.ReviewingUndo() && m_ws.options().filterByDay)
            m_ws.LoadFamilies(std::nullopt, std::nullopt, false, false, false);
        if (next)
            undos.ReviewUndoLevelNext(toEnd);
        else
            undos.ReviewUndoLevelPrev(toEnd);
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdReviewUndo_Click()"), e);
    }
    m_controller.updateSaveState();
}

void AllocationCommands::stopReview()
{
    try {
        m_ws.undos().JumpToNewUndoLevel();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdReviewUndoNew_Click()"), e);
    }
    ReselectSrcFile();
}

void AllocationCommands::ReselectSrcFile()
{
    SourceListModel &list = m_ws.sourceList();
    const int position = m_rememberedRow > 0 ? list.positionOfRow(m_rememberedRow) : -1;
    if (position < 0)
        return;
    list.clearSelection();
    list.setSelected(position, true);
    displayAndScroll();
}

void AllocationCommands::clearPhotoDisplay()
{
    m_ui.imgPic->clearPicture();
    m_ui.lblPictureMsg->hide();
    m_ui.lblSrcFileDets->clear();
    m_ui.lblSrcFileDets1->clear();
    if (m_controller.largePicture())
        m_controller.largePicture()->clearPicture();
}

void AllocationCommands::afterSave()
{
    m_controller.setSaveMade(true);
    clearPhotoDisplay();
    m_controller.updatePhotoCommands();
}

void AllocationCommands::rotate(bool clockwise)
{
    try {
        if (m_operations->RotateSelected(clockwise))
            m_controller.DisplaySrcFile();
    } catch (const Error &e) {
        lib_ErrorHandler(clockwise ? QStringLiteral("cmdRotateRight_Click()") : QStringLiteral("cmdRotateLeft_Click()"), e);
    }
}

void AllocationCommands::removePhotos(bool putAside)
{
    std::optional<int> next;
    try {
        next = putAside ? m_operations->PutAsideSelected() : m_operations->DeleteSelected();
    } catch (const Error &e) {
        lib_ErrorHandler(putAside ? QStringLiteral("cmdMoveToTemp_Click()") : QStringLiteral("cmdDelete_Click()"), e);
        next = -1; // part may have been done: show the list as it now is
    }
    if (!next)
        return;
    clearPhotoDisplay();
    if (m_rememberedRow > 0 && m_ws.sourceList().positionOfRow(m_rememberedRow) >= 0) {
        ReselectSrcFile();
        m_rememberedRow = 0;
    } else if (*next >= 0) {
        m_ws.sourceList().clearSelection();
        m_ws.sourceList().setSelected(*next, true);
        displayAndScroll();
    }
    m_controller.updatePhotoCommands();
}

void AllocationCommands::displayAndScroll()
{
    const QList<int> positions = m_ws.sourceList().selectedPositions();
    if (!positions.isEmpty())
        m_ui.lvwSrcFiles->scrollTo(m_ws.sourceList().index(positions.first()));
    m_controller.DisplaySrcFile();
}

} // namespace quillet
