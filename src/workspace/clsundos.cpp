// The undo store: its item table, its levels and its file.
#include "clsundos.h"
#include "lib/atomicwrite.h"

#include "workspace.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"

#include <QFile>
#include <QTextStream>

namespace quillet {

namespace {

constexpr qint32 kInternalError = 1000;
const QString kVersion = QStringLiteral("v1");

// The next line of the undo file as a number; throws when it is missing or not a number.
int readNumber(QTextStream &in)
{
    bool ok = false;
    const QString line = in.readLine();
    const int value = line.trimmed().toInt(&ok);
    if (line.isNull() || !ok)
        throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - bad number"));
    return value;
}

QString readText(QTextStream &in)
{
    const QString line = in.readLine();
    if (line.isNull())
        throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - file ends early"));
    return line;
}

} // namespace

clsUndos::clsUndos(Workspace &workspace, QObject *parent)
    : QObject(parent)
    , m_ws(workspace)
    , m_items(kCapacity + 1)
{
}

clsUndos::~clsUndos() = default;

void clsUndos::internalError(const QString &what)
{
    throw Error(kInternalError, QStringLiteral("clsUndos"), QStringLiteral("Internal err - ") + what);
}

const clsUndos::Item &clsUndos::item(int i) const
{
    if (i < 0 || i > kCapacity)
        internalError(QStringLiteral("Attempt to read undo item ") + QString::number(i));
    return m_items.at(i);
}

int clsUndos::LevelIndexLower(int level) const
{
    for (int i = 1; i <= m_top; ++i) {
        if (m_items.at(i).level >= level)
            return i;
    }
    return 0;
}

int clsUndos::LevelIndexUpper(int level) const
{
    const int lower = LevelIndexLower(level);
    if (lower == 0)
        return 0;
    const int found = m_items.at(lower).level;
    int i = lower;
    while (i < m_top && m_items.at(i + 1).level == found)
        ++i;
    return i;
}

int clsUndos::UndoLevelCurrExtPM() const
{
    const int level = m_levelCurr != 0 ? m_levelCurr : m_levelPrevReview != 0 ? m_levelPrevReview : m_levelMax;
    return level > m_levelMax ? 0 : level;
}

void clsUndos::CreateUndoInit()
{
    ++m_levelMax;
    m_levelPrevReview = m_levelCurr;
    m_levelCurr = 0;
}

void clsUndos::CreateUndoFill(int fileCntToCopy, const QString &filename, int srcFilesIndex,
                              const QString &srcPathfile, const QString &tgtPathfile, int familyId,
                              const QString &thumbnailKey)
{
    // Older levels go first; the level being recorded (always the newest) is kept.
    while (kCapacity - m_top < fileCntToCopy && m_top > 0 && m_items.at(1).level < m_levelMax)
        DeleteUndoLevel(m_items.at(1).level);
    if (m_top >= kCapacity)
        return;
    ++m_top;
    m_items[m_top] = {m_levelMax, filename, srcFilesIndex, tgtPathfile, familyId, thumbnailKey, srcPathfile};
}

void clsUndos::CreateUndoFin()
{
    SetUndoLevelsCntLbl();
}

void clsUndos::DeleteUndoLevel(int level)
{
    if (level > m_levelMax)
        internalError(QStringLiteral("Attempt to delete non-existent undo level"));
    if (level == 0)
        level = m_levelMax;
    if (level == m_levelMax) {
        while (m_top > 0 && m_items.at(m_top).level == level)
            m_items[m_top--] = Item();
        --m_levelMax;
    } else {
        const int lower = LevelIndexLower(level);
        if (lower == 0 || m_items.at(lower).level != level)
            internalError(QStringLiteral("Attempt to delete non-existent undo level"));
        const int upper = LevelIndexUpper(level);
        const int gap = upper - lower + 1;
        for (int i = upper + 1; i <= m_top; ++i) {
            m_items[i - gap] = m_items.at(i);
            m_items[i - gap].level -= 1;
        }
        for (int i = m_top - gap + 1; i <= m_top; ++i)
            m_items[i] = Item();
        m_top -= gap;
        --m_levelMax;
    }
    if (level == m_levelCurr) {
        m_levelPrevReview = level;
        m_levelCurr = 0;
    }
    SetUndoLevelsCntLbl();
}

QString clsUndos::FilePath()
{
    return AppPaths::dataFile(QStringLiteral("_Undos_") + ReadSetting(QStringLiteral("PCname")) + QStringLiteral(".log"));
}

void clsUndos::Clear()
{
    lib_KillFile(FilePath(), true);
}

void clsUndos::SaveToFile() const
{
    if (!m_fileRead)
        return;
    QString text = kVersion + QStringLiteral("\r\n") + QString::number(m_levelMax) + QStringLiteral("\r\n")
        + QString::number(m_top) + QStringLiteral("\r\n");
    for (int i = 1; i <= m_top; ++i) {
        const Item &it = m_items.at(i);
        text += QString::number(it.level) + QStringLiteral("\r\n") + it.filename + QStringLiteral("\r\n")
            + it.srcPathfile + QStringLiteral("\r\n") + it.tgtPathfile + QStringLiteral("\r\n")
            + QString::number(it.familyId) + QStringLiteral("\r\n");
    }
    // Whole-file rewrite through a temporary and a rename: a crash leaves the old file or the new.
    const QString failure = WriteFileAtomically(FilePath(), text.toUtf8());
    if (!failure.isEmpty())
        throw Error(kLibErrorNumber, QStringLiteral("clsUndo.SaveToFile"),
                    QStringLiteral("Could not write the undo file ") + FilePath() + QStringLiteral(": ") + failure);
}

void clsUndos::LoadFromFile()
{
    const bool thumbnails = ReadSettingBool(QStringLiteral("Thumbnails"));
    const bool reloadThumbs = ReadSettingBool(QStringLiteral("ReloadUndoThumbs"));
    m_ws.srcFiles().ResetUndoZone();
    std::fill(m_items.begin(), m_items.end(), Item());
    m_top = m_levelMax = m_levelCurr = m_levelPrevReview = 0;
    m_fileRead = true;
    const QString path = FilePath();
    if (!QFile::exists(path))
        return;
    try {
        readFile(path);
    } catch (const Error &e) {
        // Nothing is lost by starting without levels; a half-read table would be worse.
        lib_KillFile(path, true);
        const bool version = e.description().endsWith(QLatin1String("version"));
        DebugLog(QStringLiteral("clsUndo.LoadFromFile: \tundos file deleted as ")
                 + (version ? QStringLiteral("version different") : QStringLiteral("unreadable: ") + e.description()));
        m_ws.srcFiles().ResetUndoZone();
        std::fill(m_items.begin(), m_items.end(), Item());
        m_top = m_levelMax = 0;
        return;
    }
    if (thumbnails && reloadThumbs)
        reloadThumbnails(ReadSettingInt(QStringLiteral("MaxReloadUndoThumbs")));
}

void clsUndos::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - cannot open"));
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Utf8);
    if (in.readLine() != kVersion)
        throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - version"));
    const int levelMax = readNumber(in);
    const int top = readNumber(in);
    if (top < 0 || top > kCapacity || levelMax < 0 || levelMax > top)
        throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - bad counts"));
    const bool thumbKeys = ReadSettingBool(QStringLiteral("Thumbnails")) && ReadSettingBool(QStringLiteral("ReloadUndoThumbs"));
    SrcFiles &rows = m_ws.srcFiles();
    QString previous;
    int previousLevel = 1;
    for (int i = 1; i <= top; ++i) {
        Item it;
        it.level = readNumber(in);
        it.filename = readText(in);
        it.srcPathfile = readText(in);
        it.tgtPathfile = readText(in);
        it.familyId = readNumber(in);
        if (it.level < previousLevel || it.level > levelMax || it.level > previousLevel + 1 || it.filename.isEmpty())
            throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - bad level"));
        if (i == 1 || it.filename != previous)
            rows.AddUndoRow(it.filename, it.srcPathfile);
        it.srcFilesIndex = rows.SrcFilesUndoCnt();
        it.thumbKey = thumbKeys ? QStringLiteral("K") + QString::number(it.srcFilesIndex) : QString();
        previous = it.filename;
        previousLevel = it.level;
        m_items[i] = it;
    }
    if (top > 0 && previousLevel != levelMax)
        throw Error(kInternalError, QStringLiteral("clsUndo.LoadFromFile"), QStringLiteral("Internal err - bad level count"));
    m_top = top;
    m_levelMax = levelMax;
}

void clsUndos::reloadThumbnails(int maxPhotos)
{
    const int undoCount = m_ws.srcFiles().SrcFilesUndoCnt();
    const int n = std::clamp(maxPhotos, 0, undoCount);
    const int firstQualifying = undoCount - n + 1;
    UserPrompt &port = prompt();
    port.progressShow(QStringLiteral("Loading thumbnails for undos..."));
    port.progressInit(n);
    int done = 0;
    for (int i = m_top; i >= 1; --i) {
        const int index = m_items.at(i).srcFilesIndex;
        if (i < m_top && m_items.at(i + 1).srcFilesIndex == index)
            continue; // once per photo
        QImage thumb;
        if (index >= firstQualifying && QFile::exists(m_items.at(i).srcPathfile))
            thumb = m_ws.makeThumbnail(m_items.at(i).srcPathfile);
        if (!thumb.isNull()) {
            m_ws.thumbnails().put(index, thumb);
            ++done;
            port.progressUpdate(done, done);
        } else {
            for (int k = 1; k <= m_top; ++k) {
                if (m_items.at(k).srcFilesIndex == index)
                    m_items[k].thumbKey.clear();
            }
        }
    }
    port.progressHide();
}

} // namespace quillet
