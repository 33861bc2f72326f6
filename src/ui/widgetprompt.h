#pragma once

#include "lib/userprompt.h"

#include <QPointer>

namespace quillet {

class frmProgressRpt;

// The interactive user-prompt port: messages in frmMsgBox, progress in one frmProgressRpt, the
// desktop's file choosers, clipboard, pointer and keyboard. Constructing it installs it as the
// port; destroying it puts the quiet default back. Create it once the QApplication exists and
// destroy it before the QApplication goes.
class WidgetPrompt final : public UserPrompt
{
public:
    WidgetPrompt();
    ~WidgetPrompt() override;
    WidgetPrompt(const WidgetPrompt &) = delete;
    WidgetPrompt &operator=(const WidgetPrompt &) = delete;

    bool showMessage(const QString &request, bool answer) override;
    bool showMessageWithAction(const QString &request, bool answer, const MessageAction &action) override;

    void progressShow(const QString &caption) override;
    void progressInit(int count) override;
    void progressUpdate(int position, int done) override;
    void progressHide() override;
    // The progress window, nullptr until the first progress call.
    frmProgressRpt *progressWindow() const;

    QString browseForFolder(const QString &startDir, const QString &prompt) override;
    QString openFileDialog(const QString &description, const QString &extension, const QString &startDir,
                           const QString &title) override;
    QString saveFileDialog(const QString &description, const QString &extension, const QString &startDir,
                           const QString &title) override;
    QString typedText(const QString &prompt, const QString &initial) override;

    bool openWithDefaultProgram(const QString &path) override;
    bool waitForWindow(const QString &pattern, int timeoutMs) override;
    void setClipboardText(const QString &text) override;
    void beep() override;
    bool shiftHeld() override;
    void restoreActiveWindow() override;
    void processEvents() override;
    void setBusy(bool busy) override;

private:
    frmProgressRpt *progress();

    QPointer<frmProgressRpt> m_progress;
    int m_busyDepth = 0;
};

} // namespace quillet
