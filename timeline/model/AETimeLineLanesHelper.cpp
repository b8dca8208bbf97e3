#include "timeline/model/AETimeLineLanesHelper.h"

#include "foundation/Prefs.h"
#include "project/model/Globals.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <algorithm>
#include <cmath>

std::atomic<AETimeLineLanesViewMode> AETimeLineLanesHelper::lanesViewMode{AETimeLineLanesViewMode::complete};
std::atomic<AETimeLineLanesViewSetup> AETimeLineLanesHelper::lanesViewSetup{AETimeLineLanesViewSetup::normal};
std::atomic<int> AETimeLineLanesHelper::totalH{kDefaultTotalH};
std::atomic<double> AETimeLineLanesHelper::lowerLinkH{0};
std::atomic<double> AETimeLineLanesHelper::upperLinkH{0};
std::weak_ptr<AETimeLine> AETimeLineLanesHelper::timeline;

namespace {
const QString kLanesMode = "LanesMode";
} // namespace

void AETimeLineLanesHelper::loadSetup() {
    switch (prefs_getValueInt(kLanesMode, 0)) {
    case 1:
        lanesViewSetup = AETimeLineLanesViewSetup::bgm;
        break;
    case 3:
        lanesViewSetup = AETimeLineLanesViewSetup::allEquals;
        break;
    default:
        lanesViewSetup = AETimeLineLanesViewSetup::normal;
    }
}

void AETimeLineLanesHelper::setSetup(AETimeLineLanesViewSetup setup) {
    lanesViewSetup = setup;
    const int stored = setup == AETimeLineLanesViewSetup::bgm         ? 1
                       : setup == AETimeLineLanesViewSetup::allEquals ? 3
                                                                      : 0;
    prefs_setValueInt(kLanesMode, stored);
}

AETimeLineLanesHelper::Fractions AETimeLineLanesHelper::setupLanes(const AETimeLine& tl) {
    // An asset's own editor with nothing attached gives its one item the whole height.
    if (tl.timelineEditor == AETimelineEditor::asset && tl.attachedItems.empty()) return {0.0, 1.0, 0.0};
    switch (lanesViewSetup.load()) {
    case AETimeLineLanesViewSetup::bgm:
        return {0.15, 0.65, 0.2};
    case AETimeLineLanesViewSetup::allEquals: {
        const double p = static_cast<double>(getLaneN(tl, true));
        const double q = static_cast<double>(getLaneN(tl, false));
        const double all = p + q + 1;
        return {p / all, 1 / all, q / all};
    }
    case AETimeLineLanesViewSetup::normal:
        break;
    }
    return {0.1, 0.45, 0.45};
}

int64_t AETimeLineLanesHelper::getLaneN(const AETimeLine& tl, bool positive) {
    int64_t n = 0;
    for (const auto& item : tl.attachedItems)
        n = positive ? std::max(n, item->lane) : std::max(n, -item->lane);
    return n;
}

std::vector<AETimeLineLanesHelper::Item>
AETimeLineLanesHelper::getAttachedItemsByLaneSign(const AETimeLine& tl, bool positive) {
    std::vector<Item> out;
    for (const auto& item : tl.attachedItems)
        if (positive ? item->lane > 0 : item->lane < 0) out.push_back(item);
    return out;
}

std::vector<AETimeLineLanesHelper::Item> AETimeLineLanesHelper::getAttachedItemsByLane(const AETimeLine& tl,
                                                                                       int64_t laneN) {
    std::vector<Item> out;
    for (const auto& item : tl.attachedItems)
        if (item->lane == laneN) out.push_back(item);
    return out;
}

bool AETimeLineLanesHelper::itemOverlapping(const AETimeLine& tl, const Item& item, int64_t lane) {
    const AETimeRange span = item->getRangeInTimeline();
    return std::any_of(tl.attachedItems.begin(), tl.attachedItems.end(), [&](const Item& other) {
        return other->lane == lane && other->id != item->id &&
               other->getRangeInTimeline().isOverlapping(span);
    });
}

void AETimeLineLanesHelper::putInFirstClearLane(AETimeLine& tl, const Item& item, bool resize) {
    const int64_t sign = item->lane > 0 ? 1 : -1;
    const int64_t n = getLaneN(tl, sign > 0);
    for (int64_t i = 1; i <= n; ++i) {
        if (!itemOverlapping(tl, item, i * sign)) {
            item->lane = i * sign;
            return;
        }
    }
    item->lane = (n + 1) * sign;
    if (resize) setBGM(tl);
}

void AETimeLineLanesHelper::cleanLanes(AETimeLine& tl) {
    for (const auto& item : tl.attachedItems)
        putInFirstClearLane(tl, item);
    const size_t before = tl.lanes.size();
    const int64_t low = -getLaneN(tl, false);
    const int64_t high = getLaneN(tl, true);
    std::erase_if(tl.lanes,
                  [&](const auto& lane) { return lane->n != 0 && (lane->n < low || lane->n > high); });
    if (tl.lanes.size() != before) setBGM(tl);
}

void AETimeLineLanesHelper::setBGM(AETimeLine& tl, std::optional<int> height) {
    if (height) totalH = *height;
    const double total = totalH.load();
    if (lanesViewMode.load() == AETimeLineLanesViewMode::mainOnly) {
        tl.addLane(0, kBgmBaseline, total);
        mustUpdate = true;
        return;
    }
    const Fractions f = setupLanes(tl);
    const double a = std::floor(total * f.fx) - kGap;
    const double m = std::floor(total * f.main) - kGap;
    const double b = std::floor(total * f.bgm) - kGap;
    const double y0 = kBgmBaseline;
    const double y1 = y0 + b + kGap;
    const double y2 = y1 + m + kGap;
    lowerLinkH = y1 + 10.0;
    upperLinkH = y2 - 15.0;
    tl.addLane(0, y1, m);
    const int64_t q = getLaneN(tl, false);
    for (int64_t i = 1; i <= q; ++i) {
        const double h = b / static_cast<double>(q);
        tl.addLane(-i, y0 + h * static_cast<double>(q - i), h);
    }
    const int64_t p = getLaneN(tl, true);
    for (int64_t i = 1; i <= p; ++i) {
        const double h = a / static_cast<double>(p);
        tl.addLane(i, y2 + h * static_cast<double>(i - 1), h);
    }
    mustUpdate = true;
}
