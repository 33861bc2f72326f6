#pragma once

#include "lib/userprompt.h"

#include <csignal>

namespace quillet::test {

// The user-prompt port of the crash tests' helper programs: answers Yes to every question, shows
// nothing, and kills the process (SIGKILL, no clean-up) when the progress report reaches
// `killAt` (0: never), so that the test can look at what such a death leaves on disk.
class KillingPrompt final : public QuietPrompt
{
public:
    KillingPrompt()
        : QuietPrompt(false)
    {
    }
    int killAt = 0;
    bool showMessage(const QString &, bool) override { return true; }
    void progressUpdate(int position, int) override
    {
        if (killAt > 0 && position == killAt)
            ::raise(SIGKILL);
    }
    bool openWithDefaultProgram(const QString &) override { return true; }
    void processEvents() override {}
};

} // namespace quillet::test
