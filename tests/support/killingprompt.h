#pragma once

#include "lib/userprompt.h"

#include <csignal>

namespace quillet::test {

// The user-prompt port of the crash tests' helper programs: answers Yes to every question, shows
// nothing, and kills the process (SIGKILL, no clean-up) when the progress report reaches
// `killAt` (0: never), so that the test can look at what such a death leaves on disk.
class KillingPrompt final : public UserPrompt
{
public:
    int killAt = 0;
    bool showMessage(const QString &, bool) override { return true; }
    void progressShow(const QString &) override {}
    void progressInit(int) override {}
    void progressUpdate(int position, int) override
    {
        if (killAt > 0 && position == killAt)
            ::raise(SIGKILL);
    }
    void progressHide() override {}
    QString browseForFolder(const QString &, const QString &) override { return {}; }
    QString openFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString saveFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString typedText(const QString &, const QString &) override { return {}; }
    bool openWithDefaultProgram(const QString &) override { return true; }
    bool waitForWindow(const QString &, int) override { return false; }
    void setClipboardText(const QString &) override {}
    void beep() override {}
    bool shiftHeld() override { return false; }
    void restoreActiveWindow() override {}
    void processEvents() override {}
    void setBusy(bool) override {}
};

} // namespace quillet::test
