#include "mainwindowlayout.h"
#include "widgetnames.h"

#include "picturebox.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>

namespace quillet {

namespace {

QPushButton *button(QWidget *parent, const char *name, const QString &caption, const QString &tip)
{
    auto *b = named(new QPushButton(caption, parent), name);
    if (!tip.isEmpty())
        b->setToolTip(tip);
    return b;
}

QPushButton *iconButton(QWidget *parent, const char *name, QStyle::StandardPixmap icon, const QString &tip)
{
    auto *b = button(parent, name, QString(), tip);
    b->setIcon(parent->style()->standardIcon(icon));
    b->setAccessibleName(tip);
    return b;
}

QCheckBox *check(QWidget *parent, const char *name, const QString &caption, const QString &tip = QString())
{
    auto *c = named(new QCheckBox(caption, parent), name);
    if (!tip.isEmpty())
        c->setToolTip(tip);
    return c;
}

} // namespace

void MainWindowLayout::build(QWidget *central)
{
    auto *splitter = new QSplitter(Qt::Horizontal, central);
    splitter->setObjectName(QStringLiteral("splMain"));
    splitter->addWidget(buildSourcePane(splitter));
    splitter->addWidget(buildPicturePane(splitter));
    splitter->addWidget(buildFamilyPane(splitter));
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 4);
    splitter->setStretchFactor(2, 3);
    splitter->setChildrenCollapsible(false);

    auto *status = new QHBoxLayout;
    lblMsg = named(new QLabel(central), "lblMsg");
    lblMsg->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblVersion = named(new QLabel(central), "lblVersion");
    lblVersion->setEnabled(false);
    status->addWidget(lblMsg, 1);
    status->addWidget(lblVersion);

    auto *layout = new QVBoxLayout(central);
    layout->addWidget(splitter, 1);
    layout->addWidget(buildCommandRow(central));
    layout->addLayout(status);
}

QWidget *MainWindowLayout::buildSourcePane(QWidget *parent)
{
    auto *pane = new QWidget(parent);
    lvwSrcFiles = named(new QListView(pane), "lvwSrcFiles");
    lvwSrcFiles->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lvwSrcFiles->setUniformItemSizes(true);
    lvwSrcFiles->setMinimumWidth(220);
    txtSrcfilesBg = named(new QLabel(QStringLiteral("Loading..."), pane), "txtSrcfilesBg");
    txtSrcfilesBg->setAlignment(Qt::AlignCenter);
    txtSrcfilesBg->setAutoFillBackground(true);
    txtSrcfilesBg->hide();

    chkThumbnails = check(pane, "chkThumbnails", QStringLiteral("Show thumbnails"));
    chkUseEXIFdate = check(pane, "chkUseEXIFdate", QStringLiteral("Use EXIF date"),
                           QStringLiteral("Use EXIF date (set by camera) rather than file Modified date.  EXIF will "
                                          "show true date even if you have modified the file, but the list will be "
                                          "slower to load initially"));
    chkShowRemovedPhotos = check(pane, "chkShowRemovedPhotos", QStringLiteral("Show allocated"),
                                 QStringLiteral("Show photos that have already been allocated and removed from the "
                                                "list"));
    lblSrcFilesCnt = named(new QLabel(pane), "lblSrcFilesCnt");

    auto *grid = new QGridLayout(pane);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(lvwSrcFiles, 0, 0, 1, 2);
    grid->addWidget(txtSrcfilesBg, 0, 0, 1, 2);
    grid->addWidget(chkThumbnails, 1, 0);
    grid->addWidget(chkUseEXIFdate, 1, 1);
    grid->addWidget(chkShowRemovedPhotos, 2, 0);
    grid->addWidget(lblSrcFilesCnt, 2, 1);
    grid->setRowStretch(0, 1);
    return pane;
}

QWidget *MainWindowLayout::buildPicturePane(QWidget *parent)
{
    auto *pane = new QWidget(parent);
    lblSrcFileDets = named(new QLabel(pane), "lblSrcFileDets");
    lblSrcFileDets->setAlignment(Qt::AlignCenter);
    lblSrcFileDets1 = named(new QLabel(pane), "lblSrcFileDets1");
    lblSrcFileDets1->setAlignment(Qt::AlignCenter);
    imgPic = named(new PictureBox(pane), "imgPic");
    imgPic->setToolTip(QStringLiteral("Dbl-click to open large picture viewer"));
    imgPic->setMinimumSize(240, 240);
    imgPic->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    imgPic->setFrameShape(QFrame::StyledPanel);
    lblPictureMsg = named(new QLabel(pane), "lblPictureMsg");
    lblPictureMsg->setAlignment(Qt::AlignCenter);
    lblPictureMsg->setWordWrap(true);
    lblSizingMsg = named(new QLabel(pane), "lblSizingMsg");
    lblSizingMsg->hide();

    // The photo operations act on the selected photos, so they sit under the picture.
    cmdRotateLeft = button(pane, "cmdRotateLeft", QStringLiteral("\u21BA"), QStringLiteral("Rotate left (anticlockwise)"));
    cmdRotateRight = button(pane, "cmdRotateRight", QStringLiteral("\u21BB"), QStringLiteral("Rotate right (clockwise)"));
    for (QPushButton *rotate : {cmdRotateLeft, cmdRotateRight}) {
        rotate->setAccessibleName(rotate->toolTip());
        rotate->setMaximumWidth(rotate->fontMetrics().height() * 3);
    }
    cmdDelete = button(pane, "cmdDelete", QStringLiteral("&Delete"), QStringLiteral("Delete selected pictures"));
    // "Put &Aside" would share Alt+A with "Select &All", and a shared mnemonic only moves the focus
    // between the two: Select All (used for every group photo) keeps Alt+A, Put aside takes Alt+I
    // (and Ctrl+M).
    cmdMoveToTemp = button(pane, "cmdMoveToTemp", QStringLiteral("Put As&ide"),
                           QStringLiteral("Move selected pictures to a temporary directory (they are put aside rather "
                                          "than deleted)"));
    auto *operations = new QHBoxLayout;
    operations->addWidget(cmdRotateLeft);
    operations->addWidget(cmdRotateRight);
    operations->addStretch(1);
    operations->addWidget(cmdDelete);
    operations->addWidget(cmdMoveToTemp);

    auto *grid = new QGridLayout(pane);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(lblSrcFileDets, 0, 0);
    grid->addWidget(imgPic, 1, 0);
    grid->addWidget(lblPictureMsg, 1, 0);
    grid->addWidget(lblSrcFileDets1, 2, 0);
    grid->addLayout(operations, 3, 0);
    grid->setRowStretch(1, 1);
    return pane;
}

QWidget *MainWindowLayout::buildFamilyPane(QWidget *parent)
{
    auto *pane = new QWidget(parent);
    lstFamilies = named(new QListView(pane), "lstFamilies");
    lstFamilies->setSelectionMode(QAbstractItemView::MultiSelection);
    lstFamilies->setMinimumWidth(200);
    chkShowCurrFamsOnly = check(pane, "chkShowCurrFamsOnly", QStringLiteral("Show current families only"));
    chkShowParent = check(pane, "chkShowParent", QStringLiteral("Show parent"));
    chkAutoFilterFamsByDay = check(pane, "chkAutoFilterFamsByDay", QStringLiteral("Filter families by day"));
    lblFamiliesCnt = named(new QLabel(pane), "lblFamiliesCnt");
    cmdSelectAll = button(pane, "cmdSelectAll", QStringLiteral("Select &All"), QStringLiteral("Select all families"));
    cmdClearAll = button(pane, "cmdClearAll", QStringLiteral("&Clear All"),
                         QStringLiteral("Clear all selected families"));

    // The day/session indicators are set by the program only: shown, never clicked.
    static const char *const names[2][5] = {
        {"chkFilterFamsMam", "chkFilterFamsTam", "chkFilterFamsWam", "chkFilterFamsTHam", "chkFilterFamsFam"},
        {"chkFilterFamsMpm", "chkFilterFamsTpm", "chkFilterFamsWpm", "chkFilterFamsTHpm", "chkFilterFamsFpm"}};
    static const char *const days[5] = {"Mon", "Tue", "Wed", "Thu", "Fri"};
    auto *indicators = new QGridLayout;
    indicators->addWidget(new QLabel(QStringLiteral("am"), pane), 1, 0);
    indicators->addWidget(new QLabel(QStringLiteral("pm"), pane), 2, 0);
    for (int d = 0; d < 5; ++d) {
        auto *day = new QLabel(QLatin1String(days[d]), pane);
        day->setAlignment(Qt::AlignCenter);
        indicators->addWidget(day, 0, d + 1);
        for (int s = 0; s < 2; ++s) {
            QCheckBox *box = check(pane, names[s][d], QString());
            box->setAttribute(Qt::WA_TransparentForMouseEvents);
            box->setFocusPolicy(Qt::NoFocus);
            box->setToolTip(QLatin1String(days[d]) + (s == 0 ? QStringLiteral(" morning") : QStringLiteral(" afternoon")));
            dayIndicators[s][d] = box;
            indicators->addWidget(box, s + 1, d + 1, Qt::AlignCenter);
        }
    }

    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lstFamilies, 1);
    layout->addWidget(lblFamiliesCnt);
    auto *selection = new QHBoxLayout;
    selection->addWidget(cmdSelectAll);
    selection->addWidget(cmdClearAll);
    layout->addLayout(selection);
    layout->addWidget(chkShowCurrFamsOnly);
    layout->addWidget(chkShowParent);
    layout->addWidget(chkAutoFilterFamsByDay);
    layout->addLayout(indicators);
    return pane;
}

QWidget *MainWindowLayout::buildCommandRow(QWidget *parent)
{
    auto *row = new QWidget(parent);
    cmdSave = button(row, "cmdSave", QStringLiteral("&Save"),
                     QStringLiteral("Save selected pictures to the relevant family directories"));
    cmdRepeatSelect = button(row, "cmdRepeatSelect", QStringLiteral("Re&peat Sel"),
                             QStringLiteral("Repeat the same family selections"));
    cmdRepeatnSave = button(row, "cmdRepeatnSave", QStringLiteral("&Rep && Save"),
                            QStringLiteral("Repeat the same family selections and Save"));
    cmdUndo = button(row, "cmdUndo", QStringLiteral("&Undo"), QStringLiteral("Undo the last command"));
    cmdReviewUndoLA = iconButton(row, "cmdReviewUndoLA", QStyle::SP_MediaSkipBackward, QStringLiteral("Review first undo"));
    cmdReviewUndoL1 = iconButton(row, "cmdReviewUndoL1", QStyle::SP_MediaSeekBackward, QStringLiteral("Review previous undo"));
    cmdReviewUndoNew = iconButton(row, "cmdReviewUndoNew", QStyle::SP_MediaStop, QStringLiteral("Stop reviewing undo list"));
    cmdReviewUndoR1 = iconButton(row, "cmdReviewUndoR1", QStyle::SP_MediaSeekForward, QStringLiteral("Review next undo"));
    cmdReviewUndoRA = iconButton(row, "cmdReviewUndoRA", QStyle::SP_MediaSkipForward, QStringLiteral("Review last undo"));
    lblUndoLevelsCnt = named(new QLabel(row), "lblUndoLevelsCnt");
    cmdExit = button(row, "cmdExit", QStringLiteral("E&xit"), QString());

    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *w : {static_cast<QWidget *>(cmdSave), static_cast<QWidget *>(cmdRepeatSelect),
                       static_cast<QWidget *>(cmdRepeatnSave)})
        layout->addWidget(w);
    layout->addSpacing(12);
    for (QWidget *w : {static_cast<QWidget *>(cmdUndo), static_cast<QWidget *>(cmdReviewUndoLA),
                       static_cast<QWidget *>(cmdReviewUndoL1), static_cast<QWidget *>(cmdReviewUndoNew),
                       static_cast<QWidget *>(cmdReviewUndoR1), static_cast<QWidget *>(cmdReviewUndoRA),
                       static_cast<QWidget *>(lblUndoLevelsCnt)})
        layout->addWidget(w);
    layout->addStretch(1);
    layout->addWidget(cmdExit);
    return row;
}

} // namespace quillet
