#include "srcfiles.h"

#include "allocationtag.h"

#include "lib/error.h"

#include <QFileInfo>
#include <algorithm>

namespace quillet {

namespace {

[[noreturn]] void tableFull()
{
    throw Error(kLibErrorNumber, QStringLiteral("SrcFiles"),
                QStringLiteral("Too many photos: the list holds at most ") + QString::number(SrcFiles::kMaxRows)
                    + QStringLiteral(". Please move some photos out of the Source Dir (or allocate them) and "
                                     "refresh."));
}

} // namespace

bool SrcFiles::IsAcceptedName(const QString &name)
{
    const QString ext = name.right(4).toLower();
    return ext == QLatin1String(".jpg") || ext == QLatin1String(".gif") || IsMovieName(name);
}

bool SrcFiles::IsMovieName(const QString &name)
{
    const QString ext = name.right(4).toLower();
    return ext == QLatin1String(".mov") || ext == QLatin1String(".mp4") || ext == QLatin1String(".avi");
}

void SrcFiles::Clear()
{
    m_rows.clear();
    m_undoCount = 0;
}

void SrcFiles::ResetScanZone()
{
    m_rows.resize(m_undoCount);
}

int SrcFiles::AddUndoRow(const QString &fileNoFamIds, const QString &pathFile)
{
    if (m_rows.size() >= kMaxRows)
        tableFull();
    ResetScanZone();
    m_rows.append({fileNoFamIds, pathFile, QStringLiteral("-1")});
    m_undoCount = int(m_rows.size());
    return m_undoCount;
}

int SrcFiles::FindUndoRow(const QString &fileNoFamIds) const
{
    for (int i = 0; i < m_undoCount; ++i) {
        if (m_rows.at(i).FileNoFamIDs.compare(fileNoFamIds, Qt::CaseInsensitive) == 0)
            return i + 1;
    }
    return 0;
}

int SrcFiles::AddScannedFile(const QString &pathFile)
{
    const QString name = QFileInfo(pathFile).fileName();
    const QString untagged = StripFamIDs(name);
    if (const int undoRow = FindUndoRow(untagged))
        return undoRow;
    if (m_rows.size() >= kMaxRows)
        tableFull();
    const bool tagged = name.compare(untagged, Qt::CaseInsensitive) != 0;
    m_rows.append({untagged, pathFile, tagged ? QStringLiteral("-1") : QStringLiteral("0")});
    return int(m_rows.size());
}

const SrcFiles::Row &SrcFiles::row(int index) const
{
    if (index < 1 || index > m_rows.size())
        throw Error(kObjectErrorBase + 1, QStringLiteral("SrcFiles"),
                    QStringLiteral("Invalid Index ") + QString::number(index));
    return m_rows.at(index - 1);
}

SrcFiles::Row &SrcFiles::row(int index)
{
    if (index < 1 || index > m_rows.size())
        throw Error(kObjectErrorBase + 1, QStringLiteral("SrcFiles"),
                    QStringLiteral("Invalid Index ") + QString::number(index));
    return m_rows[index - 1];
}

void SrcFiles::SortScanZone()
{
    std::stable_sort(m_rows.begin() + m_undoCount, m_rows.end(), [](const Row &a, const Row &b) {
        return a.FileNoFamIDs.compare(b.FileNoFamIDs, Qt::CaseInsensitive) < 0;
    });
}

} // namespace quillet
