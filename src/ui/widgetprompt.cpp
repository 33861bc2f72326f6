#include "widgetprompt.h"

#include "applicationwindow.h"
#include "frmmsgbox.h"
#include "frmprogressrpt.h"

#include <QApplication>
#include <QClipboard>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QEventLoop>
#include <QFileDialog>
#include <QInputDialog>
#include <QRegularExpression>
#include <QTimer>
#include <QUrl>
#include <QWindow>

namespace quillet {

namespace {

QString fileFilter(const QString &description, const QString &extensions)
{
    QStringList patterns;
    for (const QString &extension : extensions.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        patterns << QStringLiteral("*.") + extension;
    if (patterns.isEmpty())
        return QString();
    return description + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
}

bool windowTitled(const QRegularExpression &pattern)
{
    const QList<QWindow *> windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(),
                       [&](const QWindow *w) { return pattern.match(w->title()).hasMatch(); });
}

// Waits while letting window events run, so the window being waited for can appear.
void waitWithEvents(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

WidgetPrompt::WidgetPrompt()
{
    setPrompt(this);
}

frmProgressRpt *WidgetPrompt::progressWindow() const
{
    return m_progress;
}

WidgetPrompt::~WidgetPrompt()
{
    if (&prompt() == this)
        setPrompt(nullptr);
    delete m_progress;
    while (m_busyDepth > 0)
        setBusy(false);
}

bool WidgetPrompt::showMessage(const QString &request, bool answer)
{
    return frmMsgBox::ask(request, answer, dialogParent());
}

bool WidgetPrompt::showMessageWithAction(const QString &request, bool answer, const MessageAction &action)
{
    return frmMsgBox::ask(request, answer, dialogParent(), action);
}

frmProgressRpt *WidgetPrompt::progress()
{
    if (!m_progress)
        m_progress = new frmProgressRpt(applicationWindow());
    return m_progress;
}

void WidgetPrompt::progressShow(const QString &caption)
{
    frmProgressRpt *window = progress();
    window->setWindowTitle(caption);
    window->show();
    window->raise();
    QCoreApplication::processEvents();
}

void WidgetPrompt::progressInit(int count)
{
    progress()->ProgressBarInit(count);
}

void WidgetPrompt::progressUpdate(int position, int done)
{
    progress()->ProgressBarUpdate(position, done);
}

void WidgetPrompt::progressHide()
{
    if (m_progress)
        m_progress->hide();
}

QString WidgetPrompt::browseForFolder(const QString &startDir, const QString &prompt)
{
    return QFileDialog::getExistingDirectory(dialogParent(), prompt, startDir);
}

QString WidgetPrompt::openFileDialog(const QString &description, const QString &extension,
                                     const QString &startDir, const QString &title)
{
    return QFileDialog::getOpenFileName(dialogParent(), title.isEmpty() ? QStringLiteral("Open") : title,
                                        startDir, fileFilter(description, extension));
}

QString WidgetPrompt::saveFileDialog(const QString &description, const QString &extension,
                                     const QString &startDir, const QString &title)
{
    return QFileDialog::getSaveFileName(dialogParent(), title.isEmpty() ? QStringLiteral("Save As") : title,
                                        startDir, fileFilter(description, extension));
}

QString WidgetPrompt::typedText(const QString &prompt, const QString &initial)
{
    bool ok = false;
    const QString text = QInputDialog::getText(dialogParent(), applicationWindowTitle(), prompt,
                                               QLineEdit::Normal, initial, &ok);
    return ok ? text : QString();
}

bool WidgetPrompt::openWithDefaultProgram(const QString &path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool WidgetPrompt::waitForWindow(const QString &pattern, int timeoutMs)
{
    const QRegularExpression title(QRegularExpression::wildcardToRegularExpression(pattern),
                                   QRegularExpression::CaseInsensitiveOption);
    const QDeadlineTimer deadline(qMax(0, timeoutMs));
    const int step = qMax(1, timeoutMs / 10);
    while (true) {
        if (windowTitled(title))
            return true;
        if (deadline.hasExpired())
            return false;
        waitWithEvents(int(qMin<qint64>(step, qMax<qint64>(1, deadline.remainingTime()))));
    }
}

void WidgetPrompt::setClipboardText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void WidgetPrompt::beep()
{
    QApplication::beep();
}

bool WidgetPrompt::shiftHeld()
{
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier);
}

void WidgetPrompt::restoreActiveWindow()
{
    QWidget *window = QApplication::activeWindow();
    if (!window)
        window = applicationWindow();
    if (window && window->isMinimized())
        window->showNormal();
    QCoreApplication::processEvents();
}

void WidgetPrompt::processEvents()
{
    QCoreApplication::processEvents();
}

void WidgetPrompt::setBusy(bool busy)
{
    if (busy) {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        ++m_busyDepth;
    } else if (m_busyDepth > 0) {
        QGuiApplication::restoreOverrideCursor();
        --m_busyDepth;
    }
}

} // namespace quillet
