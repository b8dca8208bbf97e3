#pragma once
// The time ruler above the lanes: a bar of the view's width with minor ticks, and major ticks that
// carry a timecode. Ticks fall on round units chosen so that they stay a readable distance apart.
// Main thread.

#include "timeline/model/AETimeRange.h"

#include <QImage>
#include <vector>

class AERuler {
public:
    AETimeRange range;
    double height = 24;
    double width = 0;

    // 0 while the ruler has no width.
    double timeUnitPerPixel() const;
    // The first round unit of at least d × dist seconds; the largest when none is.
    static double timeUnit(double d, double dist);
    // From the unit at or below range.i, in steps of one unit, to before range.o.
    std::vector<double> getMeaningfulTimesList(bool minor) const;
    double timeToX(double t) const;
    void setRange(const AETimeRange& r);

    // Timecodes are drawn only when a QGuiApplication provides fonts.
    QImage draw() const;
};
