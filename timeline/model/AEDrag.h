#pragma once
// The range selection of a timeline: a stretch of timeline time on one lane.

#include "timeline/model/AETimeRange.h"

#include <cstdint>
#include <memory>

class AETimeLineItem;

class AEDrag {
public:
    bool dragging = false;
    bool active = false;
    int64_t lane = 0;
    std::shared_ptr<AETimeLineItem> timelineItem;
    AETimeRange range;
    double startDragTime = 0;
    double currentDragTime = 0;

    void startDrag(double t, int64_t lane = 0, std::shared_ptr<AETimeLineItem> timelineItem = nullptr);
    void continueDrag(double t);
    void stopDrag(double t);
    AETimeRange& getRange() { return range; }
    void setRange(const AETimeRange& newRange, int64_t lane = 0);

private:
    void updateRange();
};
