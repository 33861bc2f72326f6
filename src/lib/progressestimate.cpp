#include "progressestimate.h"

#include <cmath>

namespace quillet {

QString ProgressEstimate::processingText(int position, int maximum)
{
    return QStringLiteral("Processing ") + QString::number(position) + QStringLiteral(" of ")
        + QString::number(maximum);
}

qint64 ProgressEstimate::remainingSeconds(int maximum, int position, int done, qint64 elapsedMs)
{
    if (done < 1)
        return 0;
    const double msPerItem = double(elapsedMs) / done;
    const double seconds = (double(maximum) - position) * msPerItem / 1000.0;
    return seconds > 0 ? qint64(std::llround(seconds)) : 0;
}

QString ProgressEstimate::minutesSeconds(qint64 seconds)
{
    const qint64 s = qMax<qint64>(0, seconds);
    return QString::number((s / 60) % 60).rightJustified(2, QLatin1Char('0')) + QLatin1Char(':')
        + QString::number(s % 60).rightJustified(2, QLatin1Char('0'));
}

QString ProgressEstimate::completionText(int maximum, int position, int done, qint64 elapsedMs)
{
    if (done < 1)
        return QString();
    return QStringLiteral("Expected completion in ")
        + minutesSeconds(remainingSeconds(maximum, position, done, elapsedMs));
}

} // namespace quillet
