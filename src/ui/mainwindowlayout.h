#pragma once

class QWidget;
class QLabel;
class QListView;
class QCheckBox;
class QPushButton;

namespace quillet { class PictureBox; }

namespace quillet {

// The controls of the main window, created with their fixed object names, captions and tooltips
// and placed by layouts: source photos on the left, the current photo in the middle, the families
// on the right, the commands below. Only layout lives here; behaviour is wired by frmMain.
struct MainWindowLayout
{
    QListView *lvwSrcFiles = nullptr;
    QLabel *txtSrcfilesBg = nullptr;
    QCheckBox *chkThumbnails = nullptr;
    QCheckBox *chkUseEXIFdate = nullptr;
    QCheckBox *chkShowRemovedPhotos = nullptr;
    QLabel *lblSrcFilesCnt = nullptr;

    QLabel *lblSrcFileDets = nullptr;
    QLabel *lblSrcFileDets1 = nullptr;
    PictureBox *imgPic = nullptr;
    QLabel *lblPictureMsg = nullptr;
    QLabel *lblSizingMsg = nullptr;

    QListView *lstFamilies = nullptr;
    QCheckBox *chkShowCurrFamsOnly = nullptr;
    QCheckBox *chkShowParent = nullptr;
    QCheckBox *chkAutoFilterFamsByDay = nullptr;
    // Monday to Friday, morning then afternoon: chkFilterFamsMam ... chkFilterFamsFpm.
    QCheckBox *dayIndicators[2][5] = {};
    QLabel *lblFamiliesCnt = nullptr;
    QPushButton *cmdSelectAll = nullptr;
    QPushButton *cmdClearAll = nullptr;

    QPushButton *cmdSave = nullptr;
    QPushButton *cmdRepeatSelect = nullptr;
    QPushButton *cmdRepeatnSave = nullptr;
    QPushButton *cmdUndo = nullptr;
    QPushButton *cmdReviewUndoNew = nullptr;
    QPushButton *cmdReviewUndoLA = nullptr;
    QPushButton *cmdReviewUndoL1 = nullptr;
    QPushButton *cmdReviewUndoR1 = nullptr;
    QPushButton *cmdReviewUndoRA = nullptr;
    QLabel *lblUndoLevelsCnt = nullptr;
    QPushButton *cmdRotateLeft = nullptr;
    QPushButton *cmdRotateRight = nullptr;
    QPushButton *cmdDelete = nullptr;
    QPushButton *cmdMoveToTemp = nullptr;
    QPushButton *cmdExit = nullptr;

    QLabel *lblMsg = nullptr;
    QLabel *lblVersion = nullptr;

    // Builds every control inside `central`.
    void build(QWidget *central);

private:
    QWidget *buildSourcePane(QWidget *parent);
    QWidget *buildPicturePane(QWidget *parent);
    QWidget *buildFamilyPane(QWidget *parent);
    QWidget *buildCommandRow(QWidget *parent);
};

} // namespace quillet
