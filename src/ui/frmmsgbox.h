#pragma once

#include "lib/msgboxrequest.h"
#include "lib/userprompt.h"

#include <QDialog>

class QLabel;
class QTextEdit;
class QPushButton;
class QTimer;

namespace quillet {

// The application's own modal message box. It shows one packed request (style digit, countdown,
// text), may close itself with its default answer when the countdown runs out, grows with its
// text and can print it. Escape stops the countdown but never closes the box: a message with a
// countdown is only dismissed by a button, the close button or the countdown itself.
class frmMsgBox : public QDialog
{
    Q_OBJECT
public:
    // `answer` is the application-wide answer before the box opens. Questions replace it by their
    // default (style 4 Yes, style 5 No); the buttons Yes and No set it, OK leaves it.
    frmMsgBox(const QString &request, bool answer, QWidget *parent = nullptr);
    ~frmMsgBox() override;

    // The answer the box leaves (true for Yes).
    bool answer() const { return m_answer; }

    // Shows a request modally over `parent` and returns the answer it leaves. With an action, a
    // button "cmdAction" beside the answers runs it and leaves the box open.
    static bool ask(const QString &request, bool answer, QWidget *parent,
                    const UserPrompt::MessageAction &action = {});
    void setAction(const UserPrompt::MessageAction &action);

public Q_SLOTS:
    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void buildControls();
    QLayout *buildButtonRow();
    void applyStyle();
    void fitToText();
    void startCountdown();
    void stopCountdown();
    void tick();
    void printMessage();

    MsgBoxRequest m_request;
    bool m_answer = false;
    bool m_arrowPushed = false;
    QTextEdit *m_txtMessage = nullptr;
    QLabel *m_picCritical = nullptr;
    QLabel *m_picExclamation = nullptr;
    QLabel *m_picInformation = nullptr;
    QLabel *m_picQuestion = nullptr;
    QPushButton *m_cmdOk = nullptr;
    QPushButton *m_cmdYes = nullptr;
    QPushButton *m_cmdNo = nullptr;
    QPushButton *m_cmdPrint = nullptr;
    QPushButton *m_cmdAction = nullptr;
    std::function<void()> m_action;
    QLabel *m_lblCountDown = nullptr;
    QTimer *m_timTimer = nullptr;
};

} // namespace quillet
