#include "hometest.h"

#include "lib/appstate.h"
#include "sync/batchfilejournal.h"

namespace quillet::test {

namespace {
void resetGlobals()
{
    Batchfile::SetCurrentPath(QString());
    appState().isPortableCopy = false;
    appState().cancel = false;
}
} // namespace

void HomeTest::init()
{
    resetGlobals();
    m_env = std::make_unique<TestEnv>();
    m_port = std::make_unique<ScriptedPrompt>();
}

void HomeTest::cleanup()
{
    m_port.reset();
    m_env.reset();
    resetGlobals();
}

} // namespace quillet::test
