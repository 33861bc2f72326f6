#include "workspace.h"

#include "allocationtag.h"
#include "sessionrules.h"

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"

#include <QFileInfo>

namespace quillet {

Workspace::Workspace(FamilyDatabase &db, PhotoServices services, QObject *parent)
    : QObject(parent)
    , m_db(db)
    , m_services(std::move(services))
    , m_thumbnailStore(m_services.thumbnail)
{
    m_sourceList.setThumbnailSource(&m_thumbnailStore, [this](int row) { return m_srcFiles.row(row).PathFile; });
}

Workspace::~Workspace() = default;

void Workspace::CreateUndos()
{
    m_undos = std::make_unique<clsUndos>(*this);
    Q_EMIT undosReplaced();
}

void Workspace::ClearUndos()
{
    if (m_undos)
        m_undos->Clear();
    CreateUndos();
    m_undos->SetUndoLevelsCntLbl();
}

clsUndos &Workspace::undos()
{
    if (!m_undos)
        throw Error(1000, QStringLiteral("Workspace"), QStringLiteral("Internal err - no undo store"));
    return *m_undos;
}

QImage Workspace::makeThumbnail(const QString &path) const
{
    return m_services.thumbnail ? m_services.thumbnail(path) : QImage();
}

void Workspace::ReadSessionSettings()
{
    m_options.thumbnails = ReadSetting(QStringLiteral("Thumbnails")) == QLatin1String("1");
    m_options.useExifDate = ReadSetting(QStringLiteral("UseEXIFdate")) == QLatin1String("1");
    m_options.showParent = ReadSetting(QStringLiteral("ShowParent")) == QLatin1String("1");
    m_options.currentOnly = ReadSetting(QStringLiteral("CurrFamsOnly")) == QLatin1String("1");
    m_options.filterByDay = ReadSetting(QStringLiteral("AutoFilterFams")) == QLatin1String("1");
    m_options.autoReselPriv = ReadSetting(QStringLiteral("AutoReselPriv")) == QLatin1String("1");
    m_options.beepOnDateChange = ReadSetting(QStringLiteral("BeepOnDtChg")) == QLatin1String("1");
    auto time = [this](const char *name, const QTime &fallback) {
        const QTime t = lib_ParseTimeOfDay(m_db.ReadParam(QLatin1String(name)).toString());
        return t.isValid() ? t : fallback;
    };
    m_options.morningEnd = time("MorningSessEnd", QTime(12, 30));
    m_options.afternoonEnd = time("AfternoonSessEnd", QTime(15, 30));
}

QDateTime Workspace::SelectedPhotoDate() const
{
    const QList<int> rows = m_sourceList.selectedRows();
    if (rows.isEmpty())
        return QDateTime();
    return PhotoDate(m_services, m_srcFiles.row(rows.first()).PathFile, m_options.useExifDate);
}

bool Workspace::SrcItemClicked(int position)
{
    if (m_sourceList.selectedPositions().size() >= 2)
        return false;
    const int row = m_sourceList.at(position).row;
    const SrcFiles::Row &photo = m_srcFiles.row(row);
    if (photo.isAllocated()) {
        // Every family of the tag is selected, also one the day filter would hide.
        if (m_options.filterByDay && !reviewing())
            LoadFamilies(std::nullopt, std::nullopt, false, false, false);
        m_familyList.clearSelection();
        for (int id : ParseAllocationTag(QFileInfo(photo.PathFile).fileName()).familyIds())
            m_familyList.setSelected(m_familyList.positionOfId(id), true);
        m_familiesFromTag = true;
    } else if (m_familiesFromTag) {
        // Those families were another photo's tag, not a choice for this one.
        m_familyList.clearSelection();
        m_familiesFromTag = false;
    }
    return true;
}

void Workspace::FollowPhotoWithFamilies()
{
    if (!m_options.filterByDay || reviewing())
        return;
    const QList<int> positions = m_sourceList.selectedPositions();
    // An allocated photo keeps the unfiltered list that shows all of its families.
    if (!positions.isEmpty() && m_sourceList.at(positions.first()).tag == QLatin1String("BLUE"))
        return;
    LoadFamilies(std::nullopt, std::nullopt, true, true, std::nullopt);
}

Workspace::PhotoView Workspace::ViewSelectedPhoto()
{
    PhotoView view;
    const QList<int> rows = m_sourceList.selectedRows();
    if (rows.isEmpty())
        return view;
    view.row = rows.first();
    view.path = m_srcFiles.row(view.row).PathFile;
    view.nameText = QLatin1Char(' ') + ExpandSpecialDir(view.path, true);
    const QDateTime taken = PhotoDate(m_services, view.path, m_options.useExifDate);
    view.dateText = SessionRules::DateCaption(taken);
    const int session = SessionRules::SessionCode(taken.time(), m_options.morningEnd, m_options.afternoonEnd);
    view.beep = m_options.beepOnDateChange && (taken.date() != m_lastDay || session != m_lastSession);
    m_lastDay = taken.date();
    m_lastSession = session;
    view.kind = SrcFiles::IsMovieName(view.path) ? PhotoView::Movie : PhotoView::Picture;
    return view;
}

bool Workspace::ReviewAllowsView(bool ignoreReviewingUndo)
{
    if (ignoreReviewingUndo || !reviewing())
        return true;
    for (int p : m_sourceList.selectedPositions()) {
        if (m_sourceList.at(p).tag != QLatin1String("RED")) {
            lib_MsgInfo(QStringLiteral("You cannot view new photos when in Review mode. Click the * button to leave "
                                       "Review mode."));
            return false;
        }
    }
    return true;
}

bool Workspace::SaveAllowed() const
{
    const QList<int> photos = m_sourceList.selectedPositions();
    if (photos.isEmpty())
        return false;
    for (int p : photos) {
        if (m_sourceList.at(p).tag == QLatin1String("BLUE"))
            return false;
    }
    return m_familyList.anyRealFamilySelected();
}

} // namespace quillet
