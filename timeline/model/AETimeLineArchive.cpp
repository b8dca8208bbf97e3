#include "foundation/Log.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"

#include <cmath>

namespace {
const bool registered = registerArchiveClass<AETimeLine>();
} // namespace

void AETimeLine::encode(KeyedArchiver& coder) const {
    (void)registered;
    coder.encodeString("id", id);
    coder.encodeObjectArray("mainLane", mainLane);
    coder.encodeObjectArray("attachedItems", attachedItems);
    coder.encodeDouble("currentPHTime", currentPHTime);
    coder.encodeObject("currentViewRange", std::make_shared<AETimeRange>(currentViewRange));
}

std::shared_ptr<AETimeLine> AETimeLine::decode(KeyedUnarchiver& coder) {
    const auto id = coder.decodeString("id");
    // An item that cannot be read is left out (and logged); the rest of the timeline loads.
    auto mainLane = coder.decodeObjectArraySkippingFailures<AETimeLineItem>("mainLane");
    auto attached = coder.decodeObjectArraySkippingFailures<AETimeLineItem>("attachedItems");
    if (!id || !mainLane || !attached) return nullptr;
    for (const auto& item : *mainLane)
        item->lane = 0;
    auto tl = make(*id, std::move(*mainLane), std::move(*attached));
    const double playhead = coder.decodeDouble("currentPHTime").value_or(0);
    // The playhead feeds the time grid and the time code display, which cannot take just any number.
    tl->currentPHTime = simpleRoundAccepts(playhead) ? std::max(0.0, playhead) : 0;
    const auto viewRange = coder.decodeObject<AETimeRange>("currentViewRange");
    tl->currentViewRange = viewRange ? *viewRange : AETimeRange(0, 10.0);
    tl->mustDraw = false;
    // Positions in a file are never trusted: the gapless main lane is laid out again, and once more
    // whenever the repair pass takes a clip away (one of negative length would leave the rest shifted).
    size_t laidOut = 0;
    do {
        laidOut = tl->mainLane.size();
        tl->refillMainLaneInTime();
        tl->getCollectedItems();
        tl->adjustItems();
    } while (tl->mainLane.size() != laidOut);
    tl->getCollectedItems();
    return tl;
}

QString AETimeLine::persistPath(const QString& path, const QString& customId) {
    return path + customId + ".AETimeLine";
}

bool AETimeLine::save(const QString& path) const {
    qxLog("Saving timeline...");
    const bool saved = KeyedArchiver::archiveRootObject(shared_from_this(), path);
    if (!saved) qxLog("PROBLEMS!");
    return saved;
}

std::shared_ptr<AETimeLine> AETimeLine::load(const QString& path) {
    qxLog("Loading timeline: " + path);
    return KeyedUnarchiver::unarchive<AETimeLine>(path);
}
