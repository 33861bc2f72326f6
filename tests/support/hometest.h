#pragma once

#include "support/scriptedprompt.h"
#include "support/testenv.h"

#include <QObject>

#include <memory>

namespace quillet::test {

// The base of a test object whose every test function starts afresh: a home of its own (m_env),
// a scripted user prompt (m_port), and none of the global state an earlier function left behind
// (the journal path, the Portable Copy mark, the cancel flag). A test object that needs more
// declares its own init() or cleanup() and calls these first.
class HomeTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<TestEnv> m_env;
    std::unique_ptr<ScriptedPrompt> m_port;

protected Q_SLOTS:
    void init();
    void cleanup();
};

} // namespace quillet::test
