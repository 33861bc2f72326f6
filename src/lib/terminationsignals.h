#pragma once

#include <QObject>

class QSocketNotifier;

namespace quillet {

// Turns SIGTERM and SIGINT into a Qt signal delivered on the event loop, so that a session logout
// or Ctrl+C runs the same orderly shutdown as the window's close button. Only the async-signal-safe
// write() happens inside the handler.
class TerminationSignals : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void terminationRequested(int signalNumber);

private:
    void onReadable();

    QSocketNotifier *m_notifier = nullptr;
};

} // namespace quillet
