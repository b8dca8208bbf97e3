#pragma once
// What a timeline shows and how its view behaves, without the widgets: the view reads this state to
// place its overlays and fill its labels. Main thread.

#include "timeline/model/AERuler.h"
#include "timeline/model/VirtualScroller.h"

#include <QImage>
#include <QString>
#include <memory>
#include <optional>

// An overlay drawn over the lanes: the playhead, its hover twin, the nearest cut.
struct AEPlayHead {
    QImage image;
    // Where in the image the marked time falls.
    double originX = 0;
    // Where the overlay is placed while shown.
    double x = 0;
    double currentTime = 0;
    bool hidden = true;
    double y = 0;
    double height = 0;
};

enum class AEZoomTo { playhead, viewportCenter, playheadIfVisible };

class AETimeLineView {
public:
    // End of the time that can be scrolled to.
    double viewRightBound = 10.0;
    double viewportWidth = 0;
    double viewportHeight = 0;
    bool redrawViewport = true;
    std::optional<AEPlayHead> playhead;
    std::optional<AEPlayHead> ephemeralPlayhead;
    std::optional<AEPlayHead> nearestCut;
    // The view follows the playhead.
    bool autoScroll = true;
    double autoScrollSlidePercentage = 0.5;
    double rightMaxBoundPercentage = 0.05;
    double rightMaxBoundMaxTime = 30.0;
    // Seconds shown at the deepest zoom.
    double viewPortMinDuration = 1.0;
    double keyLeftRightSlidePercentage = 0.2;
    double keyZoomInOutPercentage = 0.5;
    // The two time displays; the view copies them into its labels.
    QString mainTimecodeText;
    QString durationText;
    // The meters: sums of the playing items' linear levels.
    double meterLevel = 0;
    double meterLeft = 0;
    double meterRight = 0;
    std::shared_ptr<VirtualScroller> vScroller;
    std::shared_ptr<AERuler> ruler;
};
