#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QProgressBar;

namespace quillet {

// The progress window of long operations: a bar, "Processing n of m" and an estimate of the time
// to completion. The caller shows it before ProgressBarInit and hides it after the last update.
// When the user closes it (close button or Escape) the application-wide cancel flag is raised;
// the caller's loop sees it before its next item and stops.
class frmProgressRpt : public QDialog
{
    Q_OBJECT
public:
    explicit frmProgressRpt(QWidget *parent = nullptr);

    // Prepares the window for `count` items (the bar's range only for two or more), starts the
    // clock, clears both lines and lets the window paint for half a second before the work
    // starts.
    void ProgressBarInit(int count);
    // Shows item `position`; `done` items have been processed since ProgressBarInit. With done 0
    // there is nothing to estimate from and the estimate line keeps its text.
    void ProgressBarUpdate(int position, int done);

public Q_SLOTS:
    // The user's close: raises the cancel flag, then closes.
    void reject() override;

private:
    QProgressBar *m_pbr1 = nullptr;
    QLabel *m_lblMsg1 = nullptr;
    QLabel *m_lblMsg2 = nullptr;
    QElapsedTimer m_started;
    QElapsedTimer m_painted; // since the labels were last painted
    QElapsedTimer m_served;  // since pending events last ran

};

} // namespace quillet
