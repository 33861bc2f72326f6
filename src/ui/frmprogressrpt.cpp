#include "frmprogressrpt.h"

#include "lib/appstate.h"
#include "lib/progressestimate.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>

namespace quillet {

namespace {

// Long enough for the window manager to map and paint the window before work blocks the loop.
constexpr int kSettleMs = 500;
// How often the labels are painted while the caller's loop runs.
constexpr int kPaintEveryMs = 40;
// How often the caller's loop lets pending events run.
constexpr int kServeEveryMs = 10;

} // namespace

frmProgressRpt::frmProgressRpt(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setObjectName(QStringLiteral("frmProgressRpt"));
    m_pbr1 = new QProgressBar(this);
    m_pbr1->setObjectName(QStringLiteral("pbr1"));
    m_pbr1->setTextVisible(false);
    m_lblMsg1 = new QLabel(this);
    m_lblMsg1->setObjectName(QStringLiteral("lblMsg1"));
    m_lblMsg2 = new QLabel(this);
    m_lblMsg2->setObjectName(QStringLiteral("lblMsg2"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_pbr1);
    layout->addWidget(m_lblMsg1);
    layout->addWidget(m_lblMsg2);
    // Room for "Expected completion in nn:ss" and large counts without the window jumping.
    setMinimumWidth(fontMetrics().averageCharWidth() * 48);
    m_started.start();
}

void frmProgressRpt::ProgressBarInit(int count)
{
    setCursor(Qt::WaitCursor);
    if (count >= 2)
        m_pbr1->setRange(1, count);
    m_started.restart();
    m_painted.invalidate();
    m_served.invalidate();
    m_lblMsg1->clear();
    m_lblMsg2->clear();

    QEventLoop settle;
    QTimer::singleShot(kSettleMs, &settle, &QEventLoop::quit);
    settle.exec();
}

void frmProgressRpt::ProgressBarUpdate(int position, int done)
{
    m_pbr1->setValue(position);
    m_lblMsg1->setText(ProgressEstimate::processingText(position, m_pbr1->maximum()));
    const QString estimate =
        ProgressEstimate::completionText(m_pbr1->maximum(), position, done, m_started.elapsed());
    if (!estimate.isEmpty())
        m_lblMsg2->setText(estimate);
    // Painting at once is what shows progress while the caller's loop holds the thread, but a
    // loop over 20,000 photos would spend seconds painting; a few times a second is enough to
    // be seen moving. The last item is always shown.
    if (!m_painted.isValid() || m_painted.elapsed() >= kPaintEveryMs || position >= m_pbr1->maximum()) {
        m_lblMsg1->repaint();
        m_lblMsg2->repaint();
        m_painted.start();
    }
    // Pending events (the user's close among them) are let in every few milliseconds, not on
    // every item: asking the window system on each of 20,000 items costs seconds.
    if (!m_served.isValid() || m_served.elapsed() >= kServeEveryMs) {
        QCoreApplication::processEvents();
        m_served.start();
    }
}

void frmProgressRpt::reject()
{
    appState().cancel = true;
    QDialog::reject();
}

} // namespace quillet
