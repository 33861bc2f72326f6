#pragma once

#include "lib/userprompt.h"

#include <QQueue>
#include <QStringList>

namespace quillet::test {

// A user-prompt port for tests: records every message, answers Yes/No questions from a queue and
// fails the running test on a question nobody expected. Install it in init() and remove it in
// cleanup(); it installs itself on construction.
class ScriptedPrompt final : public UserPrompt
{
public:
    struct Message
    {
        int style = 0;
        int timeout = 0;
        QString text;
    };

    ScriptedPrompt();
    ~ScriptedPrompt() override;

    // Queues answers for the next Yes/No questions, in order.
    void answer(bool yes) { m_answers.enqueue(yes); }
    // Queues results for the next choosers and typed-text requests.
    void choose(const QString &path) { m_choices.enqueue(path); }

    const QList<Message> &messages() const { return m_messages; }
    QStringList texts() const;
    // The last message's text, or an empty text.
    QString lastText() const { return m_messages.isEmpty() ? QString() : m_messages.last().text; }
    void clear() { m_messages.clear(); }

    // What the progress report saw.
    QStringList progressCaptions;
    int progressMax = 0;
    QList<int> progressPositions;
    bool progressVisible = false;
    // Raise the cancel flag when the progress reaches this position (0: never).
    int cancelAtPosition = 0;

    QStringList opened;        // openWithDefaultProgram
    QStringList browseStarts;  // the folder each folder chooser started in
    bool openResult = true;    // what openWithDefaultProgram answers
    QString clipboard;
    int beeps = 0;
    bool shift = false;
    bool windowFound = true;   // answer of waitForWindow
    int unexpectedQuestions = 0;

    bool showMessage(const QString &request, bool answer) override;
    void progressShow(const QString &caption) override;
    void progressInit(int count) override;
    void progressUpdate(int position, int done) override;
    void progressHide() override;
    QString browseForFolder(const QString &startDir, const QString &prompt) override;
    QString openFileDialog(const QString &, const QString &, const QString &, const QString &) override;
    QString saveFileDialog(const QString &, const QString &, const QString &, const QString &) override;
    QString typedText(const QString &prompt, const QString &initial) override;
    bool openWithDefaultProgram(const QString &path) override;
    bool waitForWindow(const QString &, int) override { return windowFound; }
    void setClipboardText(const QString &text) override { clipboard = text; }
    void beep() override { ++beeps; }
    bool shiftHeld() override { return shift; }
    void restoreActiveWindow() override {}
    void processEvents() override {}
    void setBusy(bool) override {}

private:
    QList<Message> m_messages;
    QQueue<bool> m_answers;
    QQueue<QString> m_choices;
};

} // namespace quillet::test
