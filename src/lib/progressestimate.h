#pragma once

#include <QString>

namespace quillet {

// The texts of the progress report, kept apart from the window so the arithmetic is tested
// without one.
class ProgressEstimate
{
public:
    // "Processing <position> of <maximum>".
    static QString processingText(int position, int maximum);
    // Seconds still to go when `done` items took `elapsedMs` and the bar stands at `position` of
    // `maximum`, rounded to the second; never negative. Only meaningful for done >= 1.
    static qint64 remainingSeconds(int maximum, int position, int done, qint64 elapsedMs);
    // Minutes and seconds of a duration as "nn:ss"; whole hours are dropped, so 75 minutes read
    // "15:00".
    static QString minutesSeconds(qint64 seconds);
    // "Expected completion in nn:ss", or an empty text when done < 1: nothing has been timed yet
    // and the window keeps what it shows.
    static QString completionText(int maximum, int position, int done, qint64 elapsedMs);
};

} // namespace quillet
