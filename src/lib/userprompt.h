#pragma once

#include <QString>

#include <functional>

namespace quillet {

// Message styles of the packed request string: the first character of a request.
enum class MsgStyle : int { Error = 1, Warning = 2, Info = 3, QuestionYes = 4, QuestionNo = 5 };

// Everything the user is asked or shown goes through this port. The windows implement it with the
// application's own message box and progress window; tests use a scripted implementation that
// records every message and answers from a queue. The core never opens a window itself.
class UserPrompt
{
public:
    virtual ~UserPrompt();

    // Shows a packed request (style digit, countdown right-aligned in four characters, text)
    // modally. `answer` is the application-wide answer before the box opens; the result is the
    // answer the box leaves (true for Yes). OK-only boxes return it unchanged.
    virtual bool showMessage(const QString &request, bool answer) = 0;

    // One more button beside a message's own ("Preview...", "Open report"): pressing it runs the
    // action and leaves the message open, so the user still answers it as asked. An action may
    // show messages of its own.
    struct MessageAction
    {
        QString caption;
        std::function<void()> run;
    };
    // showMessage with that button. A port that cannot show it shows the message alone.
    virtual bool showMessageWithAction(const QString &request, bool answer, const MessageAction &action);

    // The progress report: shown with a caption, prepared for a count, advanced, hidden.
    // Closing it raises appState().cancel.
    virtual void progressShow(const QString &caption) = 0;
    virtual void progressInit(int count) = 0;
    virtual void progressUpdate(int position, int done) = 0;
    virtual void progressHide() = 0;

    // Choosers; each returns an empty text when cancelled. `extension` is one extension without
    // the dot ("xlsx"), or several separated by blanks ("xlsx xls ods csv") offered as one type.
    virtual QString browseForFolder(const QString &startDir, const QString &prompt) = 0;
    virtual QString openFileDialog(const QString &description, const QString &extension,
                                   const QString &startDir, const QString &title) = 0;
    virtual QString saveFileDialog(const QString &description, const QString &extension,
                                   const QString &startDir, const QString &title) = 0;
    // Asks the user to type a text (for confirmations that need more than Yes/No).
    virtual QString typedText(const QString &prompt, const QString &initial) = 0;

    // Opens a file or folder with the program the desktop associates with it.
    virtual bool openWithDefaultProgram(const QString &path) = 0;
    // True when a top-level window whose title matches (file-pattern, case-insensitive) appears
    // within the time limit. Without a desktop there is nothing to find.
    virtual bool waitForWindow(const QString &pattern, int timeoutMs) = 0;
    virtual void setClipboardText(const QString &text) = 0;
    virtual void beep() = 0;
    virtual bool shiftHeld() = 0;
    // Restores the active window when it is minimised, so that a message is seen.
    virtual void restoreActiveWindow() = 0;
    // Lets pending window events run once.
    virtual void processEvents() = 0;
    // Busy pointer on and off (nestable).
    virtual void setBusy(bool busy) = 0;
};

// Used where no window exists (command-line tools, early start-up, fuzzing): nobody can answer, so
// every question takes its default, and messages are not lost but written to standard error
// (unless `printMessages` is false). Subclasses change single answers.
class QuietPrompt : public UserPrompt
{
public:
    explicit QuietPrompt(bool printMessages = true);
    bool showMessage(const QString &request, bool answer) override;
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
    void processEvents() override;
    void setBusy(bool) override {}

private:
    bool m_print;
};

// The port in use. Until the application or a test installs one, a quiet implementation answers
// every question with its default and writes messages to standard error.
UserPrompt &prompt();
// Installs a port (not owned); nullptr restores the quiet default.
void setPrompt(UserPrompt *port);

// Keeps the busy pointer on for a scope, also when an error leaves it. On any thread but the
// windows' own it does nothing (file routines used by worker threads keep one).
class BusyPointer
{
public:
    BusyPointer();
    ~BusyPointer();
    BusyPointer(const BusyPointer &) = delete;
    BusyPointer &operator=(const BusyPointer &) = delete;

private:
    bool m_shown;
};

} // namespace quillet
