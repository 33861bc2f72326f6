#include "userprompt.h"

#include <QCoreApplication>
#include <cstdio>

namespace quillet {

UserPrompt::~UserPrompt() = default;

bool UserPrompt::showMessageWithAction(const QString &request, bool answer, const MessageAction &)
{
    return showMessage(request, answer);
}

namespace {

// Used where no window exists (command-line tools, early start-up): nobody can answer, so every
// question takes its default, and messages are not lost but written to standard error.
class QuietPrompt final : public UserPrompt
{
public:
    bool showMessage(const QString &request, bool answer) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(request.mid(5)));
        return answer;
    }
    void progressShow(const QString &) override {}
    void progressInit(int) override {}
    void progressUpdate(int, int) override {}
    void progressHide() override {}
    QString browseForFolder(const QString &, const QString &) override { return {}; }
    QString openFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString saveFileDialog(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    QString typedText(const QString &, const QString &) override { return {}; }
    bool openWithDefaultProgram(const QString &) override { return false; }
    bool waitForWindow(const QString &, int) override { return false; }
    void setClipboardText(const QString &) override {}
    void beep() override {}
    bool shiftHeld() override { return false; }
    void restoreActiveWindow() override {}
    void processEvents() override
    {
        if (QCoreApplication::instance())
            QCoreApplication::processEvents();
    }
    void setBusy(bool) override {}
};

QuietPrompt g_quiet;
UserPrompt *g_port = nullptr;

} // namespace

UserPrompt &prompt()
{
    return g_port ? *g_port : static_cast<UserPrompt &>(g_quiet);
}

void setPrompt(UserPrompt *port)
{
    g_port = port;
}

} // namespace quillet
