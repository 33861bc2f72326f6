#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

namespace quillet {

class Workspace;

// Save, the central command: every selected photo is copied into the folder of every selected
// family under the Target Dir (resized when the settings ask), each copy and each rename is
// journalled, the source is renamed with its allocation tag, and the whole step becomes one undo
// level. Also Repeat select / Repeat and save and the allocation statistics of the session.
//
// Works on the workspace's models, so it runs the same headless as behind the window. Failures
// are reported at this boundary (never thrown to the caller).
class AllocationSave : public QObject
{
    Q_OBJECT
public:
    // Copies `source` to `target` reduced to the size code's maximum dimension and re-encoded at
    // the quality code (0/0: a plain copy). True when written or when the user chose to go on
    // after a failure; false when the user cancelled (appState().cancel is then raised).
    using ResizedCopy = std::function<bool(const QString &source, const QString &target, int sizeCode, int qualityCode)>;

    explicit AllocationSave(Workspace &workspace, QObject *parent = nullptr);
    ~AllocationSave() override;

    // The image service's CopyResizedImage by default; tests may plug in their own.
    void setResizedCopy(ResizedCopy copy) { m_resizedCopy = std::move(copy); }

    void Save();
    // Selects the families of the current undo level (reviewed, last reviewed, else newest).
    void RepeatSelect();
    void RepeatAndSave();

    // The family folder of a family list entry: its trimmed text, or with Show parent the text
    // after the first " - " (the parent's name comes first).
    static QString FamilyFolderName(const QString &entryText, bool showParent);

    // ---- allocation statistics ----
    int SaveCount() const { return m_saveCount; }
    double AllocSeconds() const { return m_allocSeconds; }
    // Mode 1: count and time; 2: time to go; 3: both. Empty while allocated photos are shown.
    QString AllocationStatistics(int mode) const;
    // A click in the family list: adds the time since the previous click when under 10 seconds,
    // restarts the activity timer and shows the statistics.
    void FamilyListClicked();
    // The activity timer ran out (10 seconds without a click): counts the 10 seconds once.
    void ActivityTimeout();
    // The clock the activity is measured with (milliseconds); tests set their own.
    void setClock(std::function<qint64()> clock) { m_clock = std::move(clock); }
    bool activityTimerActive() const { return m_activity.isActive(); }

Q_SIGNALS:
    // The command states need a refresh and the picture is to be cleared (a Save ended).
    void saveEnded();
    // The window should show the selected photo.
    void displaySrcFile();

private:
    struct Run;
    void doSave();
    bool plan(Run &run) const;
    void processPhotos(Run &run);
    bool savePhoto(Run &run, int row);
    bool copyToFamily(Run &run, const QString &source, const QString &targetDir, const QString &target, int familyId);
    bool askCancel(const QString &firstLine, const QString &error) const;
    bool renameSource(Run &run, int row, const QString &newPath);
    void finish(Run &run, int reviewedLevel);
    void keepUndoFile() const;
    static void reportUndelivered(const QStringList &pairs);

    Workspace &m_ws;
    ResizedCopy m_resizedCopy;
    int m_saveCount = 0;
    double m_allocSeconds = 0;
    QTimer m_activity;
    qint64 m_lastClick = -1;
    std::function<qint64()> m_clock;
};

} // namespace quillet
