#include "windowrules.h"

#include <algorithm>
#include <cmath>

namespace quillet {

QSize WindowRules::enforce(const QSize &design, const QSize &previous, const QSize &current) const
{
    if (design.isEmpty() || !previous.isValid())
        return current;
    if (constrainProportion) {
        const double ratio = double(design.width()) / design.height();
        if (current.width() == previous.width())
            return QSize(int(std::lround(current.height() * ratio)), current.height());
        return QSize(current.width(), int(std::lround(current.width() / ratio)));
    }
    if (!allowChgWinWidth && current.width() != design.width())
        return QSize(previous.width(), current.height());
    if (!allowChgWinHeight && current.height() != design.height())
        return QSize(current.width(), previous.height());
    return current;
}

double WindowRules::fontScale(const QSize &design, const QSize &current)
{
    if (design.isEmpty())
        return 1.0;
    const double sx = double(current.width()) / design.width();
    const double sy = double(current.height()) / design.height();
    return (sx < 1.0 || sy < 1.0) ? std::min(sx, sy) : 1.0;
}

} // namespace quillet
