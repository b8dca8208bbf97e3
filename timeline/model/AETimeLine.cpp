#include "timeline/model/AETimeLine.h"

#include "foundation/Hallard.h"
#include "foundation/QXTimer.h"
#include "project/model/AEAsset.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/DragAreaView.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/VirtualScroller.h"

#include <algorithm>
#include <mutex>

namespace {

std::mutex tlListMutex;
std::vector<std::weak_ptr<AETimeLine>> constructed;

AETimeLine::Items sortedByInTime(AETimeLine::Items items) {
    std::stable_sort(items.begin(), items.end(),
                     [](const auto& a, const auto& b) { return a->inTime < b->inTime; });
    return items;
}

template <class Pred> AETimeLine::Items select(const AETimeLine::Items& items, Pred pred) {
    AETimeLine::Items out;
    std::copy_if(items.begin(), items.end(), std::back_inserter(out), pred);
    return out;
}

} // namespace

std::shared_ptr<AETimeLine> AETimeLine::make(const QString& id, Items mainLane, Items attachedItems) {
    std::shared_ptr<AETimeLine> tl(new AETimeLine());
    tl->id = id;
    tl->SIGLA = hallard_getNewId("SIGLA");
    tl->mainLane = std::move(mainLane);
    tl->attachedItems = std::move(attachedItems);
    tl->drag = std::make_shared<AEDrag>();
    tl->dragAreaView = std::make_shared<DragAreaView>();
    std::lock_guard lock(tlListMutex);
    std::erase_if(constructed, [](const auto& weak) { return weak.expired(); });
    constructed.push_back(tl);
    return tl;
}

AETimeLine::~AETimeLine() {
    for (const auto& timer : {playIdleTimer, lowPriorityIdleTimer, commonIdleTimer, commonFastIdleTimer})
        if (timer) timer->stop();
}

std::vector<std::shared_ptr<AETimeLine>> AETimeLine::tlList() {
    std::lock_guard lock(tlListMutex);
    std::vector<std::shared_ptr<AETimeLine>> alive;
    for (const auto& weak : constructed)
        if (auto tl = weak.lock()) alive.push_back(std::move(tl));
    return alive;
}

double AETimeLine::getMainLaneItemOutTime(int64_t n) const {
    double sum = 0;
    for (int64_t k = 0; k <= n && k < static_cast<int64_t>(mainLane.size()); ++k)
        sum += mainLane[static_cast<size_t>(k)]->range.duration();
    return sum;
}

double AETimeLine::getMainLaneItemInTime(int64_t n) const {
    return n == 0 ? 0 : simpleRound(getMainLaneItemOutTime(n - 1));
}

double AETimeLine::getMainLaneOutTime() const {
    if (mainLane.empty()) return 0;
    return simpleRound(getMainLaneItemOutTime(static_cast<int64_t>(mainLane.size()) - 1));
}

double AETimeLine::getTimelineOutTime() const {
    double end = getMainLaneOutTime();
    for (const auto& item : attachedItems)
        end = std::max(end, item->outTime());
    return simpleRound(end);
}

int64_t AETimeLine::getAssetInMainLane(double t) const {
    for (size_t n = 0; n < mainLane.size(); ++n)
        if (mainLane[n]->inTime <= t && mainLane[n]->outTime() > t) return static_cast<int64_t>(n);
    if (t >= getTimelineOutTime()) return static_cast<int64_t>(mainLane.size()) - 1;
    return -1;
}

AETimeLine::Item AETimeLine::getItemAtTime(double t) const {
    const int64_t n = getAssetInMainLane(t);
    return n < 0 ? nullptr : mainLane[static_cast<size_t>(n)];
}

AETimeLine::Item AETimeLine::getAttachedItem(double t, int64_t lane) const {
    for (const auto& item : attachedItems) {
        const double end = item->isBGM() ? item->bgmOutTime : item->outTime();
        if (item->lane == lane && item->inTime <= t && end > t) return item;
    }
    return nullptr;
}

AETimeLine::Items AETimeLine::getLaneItemSubset(int64_t lane) const {
    return sortedByInTime(select(attachedItems, [&](const Item& i) { return i->lane == lane; }));
}

AETimeLine::Items AETimeLine::getMainLaneSubset(AEAssetType type) const {
    return sortedByInTime(select(mainLane, [&](const Item& i) { return i->asset->type == type; }));
}

AETimeLine::Items AETimeLine::getAttachedSubset(AEAssetType type) const {
    return sortedByInTime(select(attachedItems, [&](const Item& i) { return i->asset->type == type; }));
}

AETimeLine::Items AETimeLine::getBGMs() const {
    return getAttachedSubset(AEAssetType::bgm);
}

AETimeLine::Item AETimeLine::getNextJingle(double t) const {
    const auto jingles = sortedByInTime(select(mainLane, [](const Item& i) {
        return i->asset->type == AEAssetType::jingle || i->asset->type == AEAssetType::ad;
    }));
    for (const auto& item : jingles)
        if (item->inTime > t) return item;
    return nullptr;
}

AETimeLine::Item AETimeLine::getNextBGM(double t) const {
    for (const auto& item : getBGMs())
        if (item->inTime > t) return item;
    return nullptr;
}

AETimeLine::Items AETimeLine::getAssetInRange(const AETimeRange& range) const {
    return select(mainLane, [&](const Item& i) { return i->inTime < range.o && i->outTime() > range.i; });
}

const AETimeLine::Items& AETimeLine::getCollectedItems() {
    collectedItems = mainLane;
    collectedItems.insert(collectedItems.end(), attachedItems.begin(), attachedItems.end());
    return collectedItems;
}

double AETimeLine::getSelectionDuration() const {
    return drag->getRange().duration();
}

std::shared_ptr<AETimeLine> AETimeLine::duplicate() const {
    const auto copyItems = [](const Items& items) {
        Items out;
        out.reserve(items.size());
        for (const auto& item : items)
            out.push_back(item->duplicate());
        return out;
    };
    auto copy = make(id, copyItems(mainLane), copyItems(attachedItems));
    copy->view = view;
    copy->virtualScroller = virtualScroller;
    copy->lanes = lanes;
    copy->drag = drag;
    copy->undoDoCallback = undoDoCallback;
    copy->hideEphemeralCallback = hideEphemeralCallback;
    copy->keyframeDragDelegate = keyframeDragDelegate;
    copy->triangleDelegate = triangleDelegate;
    copy->drawDelegate = drawDelegate;
    copy->markerInspectorPresenter = markerInspectorPresenter;
    copy->markerListUpdater = markerListUpdater;
    copy->deltaOrigin = deltaOrigin;
    copy->editorMode = editorMode;
    copy->cursorCallback = cursorCallback;
    copy->showVolumeKFs = showVolumeKFs;
    copy->timelineEditor = timelineEditor;
    copy->currentViewRange = currentViewRange.duplicate();
    copy->currentPHTime = currentPHTime;
    copy->playSpeedRate = playSpeedRate;
    copy->playStartedAt = playStartedAt;
    copy->playStartedAtPos = playStartedAtPos;
    copy->mustDraw = mustDraw;
    copy->markeriInspectorOpen = markeriInspectorOpen;
    copy->playing = false;
    return copy;
}

std::shared_ptr<AETimeLine> AETimeLine::detachedDuplicate() const {
    auto copy = duplicate();
    copy->view = nullptr;
    copy->virtualScroller = nullptr;
    copy->drag = std::make_shared<AEDrag>(*drag);
    copy->lanes.clear();
    for (const auto& lane : lanes)
        copy->lanes.push_back(std::make_shared<AELane>(*lane));
    copy->undoDoCallback = nullptr;
    copy->hideEphemeralCallback = nullptr;
    copy->keyframeDragDelegate = nullptr;
    copy->triangleDelegate = nullptr;
    copy->drawDelegate = nullptr;
    copy->markerInspectorPresenter = nullptr;
    copy->markerListUpdater = nullptr;
    copy->cursorCallback = nullptr;
    for (const Items* items : {&copy->mainLane, &copy->attachedItems})
        for (const auto& item : *items)
            if (item->kfView) item->kfView->keyframeDragDelegate = nullptr;
    return copy;
}

std::shared_ptr<AETimeLine> AETimeLine::getStatus() {
    // No idle routine may change the lists while they are copied.
    stopTimers();
    auto snapshot = duplicate();
    startTimers();
    if (playing) startPlayIdle();
    return snapshot;
}

void AETimeLine::muteItem(const Item& item) {
    item->active = false;
}

void AETimeLine::unMuteItem(const Item& item) {
    item->active = true;
}

void AETimeLine::toggleMuteItem(const Item& item) {
    item->active = !itemActive(item);
}

bool AETimeLine::itemActive(const Item& item) {
    return item->active == true;
}

void AETimeLine::soloItem(const Item& item) {
    item->solo = true;
    const bool listed =
        std::any_of(soloItems.begin(), soloItems.end(), [&](const Item& s) { return s->id == item->id; });
    if (!listed) soloItems.push_back(item);
}

void AETimeLine::unSoloItem(const Item& item) {
    item->solo = false;
    std::erase_if(soloItems, [&](const Item& s) { return s->id == item->id; });
}

void AETimeLine::toggleSoloItem(const Item& item) {
    if (item->solo == true)
        unSoloItem(item);
    else
        soloItem(item);
}

void AETimeLine::muteLane(int64_t n) {
    for (const auto& item : collectedItems)
        if (item->lane == n) muteItem(item);
}

void AETimeLine::unMuteLane(int64_t n) {
    for (const auto& item : collectedItems)
        if (item->lane == n) unMuteItem(item);
}

void AETimeLine::soloLane(int64_t n) {
    for (const auto& item : collectedItems)
        if (item->lane == n) soloItem(item);
}

void AETimeLine::unSoloLane(int64_t n) {
    for (const auto& item : collectedItems)
        if (item->lane == n) unSoloItem(item);
}

bool AETimeLine::itemCanBePlayed(const Item& item) const {
    if (item->solo == true) return true;
    if (item->active != true) return false;
    return soloItems.empty() ||
           std::any_of(soloItems.begin(), soloItems.end(), [&](const Item& s) { return s->id == item->id; });
}
