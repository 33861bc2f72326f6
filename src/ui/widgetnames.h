#pragma once

#include <QWidget>

namespace quillet {

// Gives a control its object name (the name the program's rules and the tests know it by) as it is
// created: `auto *b = named(new QPushButton(...), "cmdSave");`.
template<typename W>
W *named(W *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace quillet
