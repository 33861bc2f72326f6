#pragma once

// The crash tests' way to run their helper programs.
#include <QProcess>
#include <QTest>

namespace quillet::test {

// Runs a helper program to its end or its death, killing it from outside `killAfterMs` after its
// start (-1: never). Answers -2 when it died, -1 when it did not start or end, else its exit code.
inline int runHelper(const QString &program, const QStringList &args, int killAfterMs = -1)
{
    QProcess helper;
    helper.start(program, args);
    if (!helper.waitForStarted())
        return -1;
    if (killAfterMs >= 0) {
        QTest::qWait(killAfterMs);
        helper.kill();
    }
    if (helper.state() != QProcess::NotRunning && !helper.waitForFinished(120000))
        return -1;
    return helper.exitStatus() == QProcess::CrashExit ? -2 : helper.exitCode();
}

} // namespace quillet::test
