#pragma once

#include <QSize>

namespace quillet {

// The size rules a window may impose on itself when the user resizes it: a fixed width, a fixed
// height, or a constant aspect ratio; and the font rule that lets text shrink with a window made
// smaller than its design size but never grow beyond it.
struct WindowRules
{
    bool allowChgWinWidth = true;
    bool allowChgWinHeight = true;
    bool constrainProportion = false;

    // The size the window must take after the user made it `current` (it was `previous`); equal to
    // `current` when no rule applies. Rules are tried in the order above, the first one wins.
    QSize enforce(const QSize &design, const QSize &previous, const QSize &current) const;

    // The factor for every font: the smaller of the two scales when either is below 1, else 1.
    static double fontScale(const QSize &design, const QSize &current);
};

} // namespace quillet
