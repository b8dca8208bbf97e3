#include "foundation/Execution.h"
#include "foundation/Hallard.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/SimpleRound.h"

#include <cmath>
#include <set>

namespace {

const bool registered = registerArchiveClass<AETimeLine>();

// The archive gives one shared instance for an object referenced twice; an item may stand in one
// place only, so each further place gets a copy of its own (a main lane listing one clip twice plays
// it twice, as the file says).
void copyRepeatedItems(AETimeLine::Items& mainLane, AETimeLine::Items& attached) {
    std::set<const AETimeLineItem*> seen;
    for (auto* list : {&mainLane, &attached}) {
        for (auto& item : *list) {
            if (seen.insert(item.get()).second) continue;
            auto copy = item->duplicate();
            copy->id = hallard_getNewId(item->asset->name);
            // Each item plays through a player of its own, named by the item.
            copy->player.reset();
            if (XMain::isMain()) copy->makePlayer();
            qxLog("AETimeLine.decode: item " + item->id + " is listed twice; its copy " + copy->id +
                  " takes the second place");
            item = copy;
        }
    }
}

// An attached item without a lane of its own (none in the file, or the main lane's) or on a lane it
// shares with another goes where placing would put it: music below the main lane, the rest above.
void placeStrayAttachedItems(AETimeLine& tl) {
    for (const auto& item : tl.attachedItems) {
        if (item->lane == 0)
            item->lane = item->isBGM() ? -1 : 1;
        else if (!AETimeLineLanesHelper::itemOverlapping(tl, item, item->lane))
            continue;
        AETimeLineLanesHelper::putInFirstClearLane(tl, item, false);
    }
    AETimeLineLanesHelper::setBGM(tl);
}

// Music that starts after the main lane ends has nowhere to play: the repair pass gave it an end
// before its start.
void dropMusicEndingBeforeItStarts(AETimeLine& tl) {
    std::erase_if(tl.attachedItems, [](const AETimeLine::Item& item) {
        if (!item->isBGM() || item->bgmOutTime >= item->inTime) return false;
        qxLog("AETimeLine.decode: music " + item->id + " ends before it starts; left out");
        return true;
    });
}

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
    copyRepeatedItems(*mainLane, *attached);
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
    placeStrayAttachedItems(*tl);
    dropMusicEndingBeforeItStarts(*tl);
    tl->getCollectedItems();
    if (const auto fault = tl->invariantFault()) {
        // Never half-loaded: a model that breaks its own rules would go wrong at the next edit.
        qxLog("AETimeLine.decode: " + *id + " refused, " + *fault);
        Warning("Warning", "The timeline " + *id + " is damaged (" + *fault + ") and was not opened.");
        return nullptr;
    }
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
