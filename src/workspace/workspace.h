#pragma once

#include "app/colfamilies.h"
#include "clsundos.h"
#include "familylistmodel.h"
#include "photoservices.h"
#include "sourcelistmodel.h"
#include "srcfiles.h"
#include "thumbnailstore.h"

#include <QImage>
#include <QObject>
#include <QTime>
#include <memory>
#include <optional>

namespace quillet {

class FamilyDatabase;

// The main window's workspace without the window: the source file table, the source photo list,
// the family list with its day/session filter and the state of the photo on view. The window shows
// the two models and these signals; every rule lives here, so it runs the same headless.
class Workspace : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        bool thumbnails = true;       // chkThumbnails
        bool useExifDate = false;     // chkUseEXIFdate
        bool showAllocated = false;   // chkShowRemovedPhotos
        bool showParent = false;      // chkShowParent
        bool currentOnly = false;     // chkShowCurrFamsOnly
        bool filterByDay = true;      // chkAutoFilterFamsByDay
        bool beepOnDateChange = true; // BeepOnDtChg
        bool autoReselPriv = true;    // AutoReselPriv
        QTime morningEnd{12, 30};
        QTime afternoonEnd{15, 30};
    };

    enum class LoadResult { Done, Cancelled, PlaceholderMissing };

    // What the viewer shows for the selected photo.
    struct PhotoView
    {
        enum Kind { Nothing, Picture, Movie };
        Kind kind = Nothing;
        int row = 0;
        QString path;
        QString nameText;  // " " + path with the Pictures/Documents placeholder
        QString dateText;  // "ddd dd-MMM-yy - HH:mm"
        bool beep = false; // a new day or session began
    };

    Workspace(FamilyDatabase &db, PhotoServices services, QObject *parent = nullptr);
    ~Workspace() override;

    Options &options() { return m_options; }
    // Reads the options kept in settings and parameters (at start and on Refresh).
    void ReadSessionSettings();

    SrcFiles &srcFiles() { return m_srcFiles; }
    SourceListModel &sourceList() { return m_sourceList; }
    FamilyListModel &familyList() { return m_familyList; }
    const QImage &placeholder() const { return m_placeholder; }

    // The undo store of the session: created once at start-up; ClearUndos deletes its file and
    // replaces it by an empty one. Until it exists, LoadSource runs without undo levels.
    void CreateUndos();
    void ClearUndos();
    bool hasUndos() const { return bool(m_undos); }
    clsUndos &undos();

    // The thumbnails by table row ("K" + row), made when the list shows their rows.
    ThumbnailStore &thumbnails() { return m_thumbnailStore; }
    // Makes a thumbnail at once, on this thread (null when none can be made).
    QImage makeThumbnail(const QString &path) const;
    // Announces the photo count and a status line (for the window's labels).
    void ReportSourceCount() { Q_EMIT sourceCountChanged(m_sourceList.rowCount()); }
    void ShowStatus(const QString &text) { Q_EMIT statusText(text); }

    // Rebuilds the source file table and the photo list from the Source Dir.
    LoadResult LoadSource(bool removeAllocated, bool debug);
    // Rebuilds the family list; an omitted option takes the check box's value.
    void LoadFamilies(std::optional<bool> currentOnly, std::optional<bool> showParent, bool keepSelection,
                      bool warnLost, std::optional<bool> filterByDay);
    // Forgets the family collections so the next build reads the database again (after the family
    // editor changed it).
    void ReloadFamilyCollections() { m_collectionsLoaded = false; }

    // One photo clicked: selects the families in its tag when it is allocated. False when several
    // photos are selected (the user is building a selection): nothing is shown then.
    bool SrcItemClicked(int position);
    // After a photo is shown: with "Filter families by day" (and no review) the family list follows
    // the photo's day and session, keeping the selection; an allocated photo keeps the full list.
    void FollowPhotoWithFamilies();
    // The photo to show, and the beep rule; updates the day and session remembered.
    PhotoView ViewSelectedPhoto();
    // While a level is reviewed only its ("RED") photos can be shown: false after telling the user
    // so when a selected photo is another one.
    bool ReviewAllowsView(bool ignoreReviewingUndo);
    bool reviewing() const { return m_undos && m_undos->ReviewingUndo(); }
    // The date of the first selected photo, invalid when none is selected.
    QDateTime SelectedPhotoDate() const;

    void SelectAllFamilies() { m_familyList.selectAll(); }
    void ClearSelectedFamilies() { m_familyList.clearSelection(); }
    // Save is possible: a real family selected and no allocated (BLUE) photo selected.
    bool SaveAllowed() const;
    // The text of "List families for both days", empty when either day is a weekend day or no
    // photo is selected.
    QString FamiliesForBothDays(const QDate &today) const;

    // The indicator boxes: [session 0 am, 1 pm][weekday 0 Monday ... 4 Friday].
    bool indicator(int session, int weekday) const { return m_indicators[session][weekday]; }
    int privacyMarkerPosition() const { return m_familyList.privacyMarkerPosition(); }

Q_SIGNALS:
    // A new undo store replaced the old one (the window rebinds its label and buttons).
    void undosReplaced();
    void statusText(const QString &text);
    void sourceCountChanged(int count);
    void familyCountChanged(int count);
    void indicatorsChanged();

private:
    bool scanSourceDir(bool debug, QStringList &debugLines);
    void fillList(bool removeAllocated);
    // Opens the progress report when the list shows thumbnails or EXIF dates; true when it did.
    bool showFillProgress(bool useExif, int count);
    void loadUndoLevels();
    void loadCollections();
    QList<FamilyListModel::Entry> familyEntries(const colFamilies &families, bool currentOnly, bool showParent,
                                                const QString &dayFlag) const;
    void writeDebugList(const QStringList &lines, bool removeAllocated);

    FamilyDatabase &m_db;
    PhotoServices m_services;
    Options m_options;
    SrcFiles m_srcFiles;
    SourceListModel m_sourceList;
    FamilyListModel m_familyList;
    colFamilies m_byParent;
    colFamilies m_byName;
    bool m_collectionsLoaded = false;
    QImage m_placeholder;
    ThumbnailStore m_thumbnailStore;
    std::unique_ptr<clsUndos> m_undos;
    bool m_indicators[2][5] = {};
    QDate m_lastDay;
    int m_lastSession = -1;
    bool m_familiesFromTag = false; // the family selection was read from an allocated photo's tag
};

} // namespace quillet
