#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

bool onGrid(double t) {
    return std::isfinite(t) && simpleRound(t) == t;
}

// Neighbours in start order are enough: any overlap on a lane shows between two of them.
std::optional<QString> overlapOnALane(const AETimeLine::Items& attached) {
    std::map<int64_t, AETimeLine::Items> byLane;
    for (const auto& item : attached)
        byLane[item->lane].push_back(item);
    for (auto& [lane, items] : byLane) {
        std::sort(items.begin(), items.end(),
                  [](const auto& a, const auto& b) { return a->inTime < b->inTime; });
        for (size_t n = 1; n < items.size(); ++n)
            if (items[n - 1]->getRangeInTimeline().isOverlapping(items[n]->getRangeInTimeline()))
                return QString("items overlap on lane %1").arg(lane);
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> AETimeLine::invariantFault() const {
    std::set<const AETimeLineItem*> seen;
    for (const auto* list : {&mainLane, &attachedItems})
        for (const auto& item : *list)
            if (!item || !item->asset || !seen.insert(item.get()).second)
                return QString("an item is listed twice");
    double sum = 0;
    for (size_t n = 0; n < mainLane.size(); ++n) {
        const auto& item = mainLane[n];
        if (item->lane != 0) return QString("a main lane item is on another lane");
        if (item->inTime != (n == 0 ? 0.0 : simpleRound(sum)) || !onGrid(item->inTime))
            return QString("the main lane has a gap");
        if (timelineEditor == AETimelineEditor::normal && !(item->outTime() > item->inTime))
            return QString("a main lane item has no length");
        sum += item->range.duration();
    }
    for (const auto& item : attachedItems) {
        if (item->lane == 0) return QString("an attached item is on the main lane");
        if (!onGrid(item->inTime) || !(item->range.duration() >= 0.01))
            return QString("an attached item has no place or no length");
        if (item->isBGM() && item->bgmOutTime < item->inTime) return QString("music ends before it starts");
    }
    return overlapOnALane(attachedItems);
}
