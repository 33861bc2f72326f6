#pragma once

#include <QWidget>

namespace quillet::test {

// The named control of a window. A missing one ends the run, naming it: the tests reach controls
// by the names the program gives them.
template<typename T>
T *child(const QWidget &window, const char *name)
{
    T *found = window.findChild<T *>(QLatin1String(name));
    if (!found)
        qFatal("no control %s", name);
    return found;
}

template<typename T>
T *child(const QWidget *window, const char *name)
{
    return child<T>(*window, name);
}

} // namespace quillet::test
