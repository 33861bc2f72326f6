#include "appstate.h"

namespace quillet {

AppState &appState()
{
    static AppState state;
    return state;
}

} // namespace quillet
