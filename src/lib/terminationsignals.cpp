#include "terminationsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace quillet {

namespace {

int g_fds[2] = {-1, -1};

void onSignal(int number)
{
    const char byte = char(number);
    [[maybe_unused]] const auto written = ::write(g_fds[0], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    if (g_fds[0] < 0 && ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_fds) != 0)
        return;
    m_notifier = new QSocketNotifier(g_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::onReadable);

    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
}

void TerminationSignals::onReadable()
{
    char byte = 0;
    if (::read(g_fds[1], &byte, 1) == 1)
        Q_EMIT terminationRequested(int(byte));
}

} // namespace quillet
