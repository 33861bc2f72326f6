#include "userprompt.h"

#include <QCoreApplication>
#include <QThread>
#include <cstdio>

namespace quillet {

UserPrompt::~UserPrompt() = default;

bool UserPrompt::showMessageWithAction(const QString &request, bool answer, const MessageAction &)
{
    return showMessage(request, answer);
}

QuietPrompt::QuietPrompt(bool printMessages)
    : m_print(printMessages)
{
}

bool QuietPrompt::showMessage(const QString &request, bool answer)
{
    if (m_print)
        std::fprintf(stderr, "%s\n", qPrintable(request.mid(5)));
    return answer;
}

void QuietPrompt::processEvents()
{
    if (QCoreApplication::instance())
        QCoreApplication::processEvents();
}

namespace {

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

BusyPointer::BusyPointer()
    : m_shown(!QCoreApplication::instance() || QThread::currentThread() == QCoreApplication::instance()->thread())
{
    if (m_shown)
        prompt().setBusy(true);
}

BusyPointer::~BusyPointer()
{
    if (m_shown)
        prompt().setBusy(false);
}

} // namespace quillet
