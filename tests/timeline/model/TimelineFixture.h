#pragma once
// Timelines for tests: assets that need no file, a timeline with a view of 1000 × 400 pixels over
// its first 100 s, and the checks of the model's invariants.

#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEAssetDucking.h"
#include "project/model/AEBGMSettings.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/VirtualScroller.h"

#include <gtest/gtest.h>
#include <memory>

namespace tlfixture {

// An asset of that type and length with no file behind it; its id is its name.
inline std::shared_ptr<AEAsset> asset(const QString& name, double duration,
                                      AEAssetType type = AEAssetType::speech) {
    auto a = AEAsset::makePlaceholder();
    a->name = name;
    a->id = name;
    a->type = type;
    a->duration = duration;
    return a;
}

// The same, kept in the process-wide store so that a loaded timeline finds it by id.
inline std::shared_ptr<AEAsset> stored(const QString& id, double duration,
                                       AEAssetType type = AEAssetType::speech) {
    auto a = asset(id, duration, type);
    AEAssetDB::saveAsset(a);
    return a;
}

inline std::shared_ptr<AEAsset> silence() {
    AEAsset::Args args;
    args.type = AEAssetType::silence;
    return AEAsset::make(args);
}

// The ids of items or assets, in order.
template <typename List> QStringList idsOf(const List& list) {
    QStringList ids;
    for (const auto& element : list)
        ids << element->id;
    return ids;
}

inline std::shared_ptr<AEAsset> music(const QString& name, double duration, bool autoduck = false) {
    auto a = asset(name, duration, AEAssetType::bgm);
    a->bgmSettings = std::make_shared<AEBGMSettings>(true, 5.0, autoduck);
    return a;
}

// A speech asset whose analysis has the given on-spans (asset time).
inline std::shared_ptr<AEAsset> speech(const QString& name, double duration,
                                       std::vector<QXOnOffCluster> spans,
                                       AEAssetType type = AEAssetType::speech) {
    auto a = asset(name, duration, type);
    a->assetDucking = AEAssetDucking::make(name, nullptr);
    QXOnOffList list;
    list.clusters = std::move(spans);
    list.clustersToEvents();
    a->assetDucking->setDuckingClusters(list);
    return a;
}

// A timeline attached to a headless view showing 0…100 s on 1000 pixels.
inline std::shared_ptr<AETimeLine> timeline(const QString& id = "tl") {
    auto tl = AETimeLine::make(id);
    tl->setView(1000, 400, QPointF(0, 0));
    tl->setInsetViewSize();
    tl->virtualScroller->setTotalRange(0, 100000);
    tl->setViewportRange(0, 100);
    return tl;
}

// Scrolls the view to show i…o on its 1000 pixels, whatever the length of the material.
inline void showSeconds(AETimeLine& tl, double i, double o) {
    tl.virtualScroller->setTotalRange(0, std::max(o, tl.getRightBound()));
    tl.setViewportRange(i, o);
}

// Main-lane clips of the given lengths, appended in order, named c0, c1, …
inline void fillMainLane(AETimeLine& tl, const std::vector<double>& lengths) {
    for (size_t n = 0; n < lengths.size(); ++n)
        tl.appendItemInMainLane(asset("c" + QString::number(n), lengths[n]), std::nullopt, false);
}

// The archived form of the document alone: the view's range follows the scroller, not the edits.
inline QString documentForm(AETimeLine& tl) {
    const AETimeRange viewRange = tl.currentViewRange;
    tl.currentViewRange = AETimeRange();
    const QString form = QString::fromUtf8(KeyedArchiver::archivedData(tl.shared_from_this()));
    tl.currentViewRange = viewRange;
    return form;
}

inline bool onGrid(double t) {
    return simpleRound(t) == t;
}

// The invariants every operation must leave behind.
inline void expectInvariants(AETimeLine& tl) {
    double sum = 0;
    for (size_t n = 0; n < tl.mainLane.size(); ++n) {
        const auto& item = tl.mainLane[n];
        EXPECT_EQ(item->lane, 0);
        EXPECT_EQ(item->inTime, n == 0 ? 0.0 : simpleRound(sum)) << "main lane item " << n << " out of place";
        EXPECT_TRUE(onGrid(item->inTime));
        if (tl.timelineEditor == AETimelineEditor::normal) {
            EXPECT_GT(item->outTime() - item->inTime, 0.0);
        }
        sum += item->range.duration();
    }
    for (const auto& item : tl.attachedItems) {
        EXPECT_NE(item->lane, 0);
        EXPECT_TRUE(onGrid(item->inTime));
        EXPECT_GE(item->range.duration(), 0.01);
        for (const auto& other : tl.attachedItems) {
            if (other == item || other->lane != item->lane) continue;
            EXPECT_FALSE(other->getRangeInTimeline().isOverlapping(item->getRangeInTimeline()))
                << "overlap on lane " << item->lane;
        }
    }
    for (const auto& item : tl.getCollectedItems()) {
        // The applied envelope is always derived from the user's and the fade-out.
        if (item->fadeOutKFS && !item->fadeOutKFS->keyframes.empty()) {
            for (const auto& kf : item->globalKFS->keyframes)
                EXPECT_DOUBLE_EQ(kf->value,
                                 item->volumeKFs->getValue(kf->time) + item->fadeOutKFS->getValue(kf->time));
        } else {
            EXPECT_EQ(item->globalKFS, item->volumeKFs);
        }
    }
    const double mainEnd = tl.getMainLaneOutTime();
    for (const auto& bgm : tl.getBGMs()) {
        EXPECT_LE(bgm->bgmOutTime, mainEnd);
        if (auto next = tl.getNextBGM(bgm->inTime)) {
            EXPECT_LE(bgm->bgmOutTime, next->inTime);
        }
        if (auto jingle = tl.getNextJingle(bgm->inTime)) {
            EXPECT_LE(bgm->bgmOutTime, jingle->inTime);
        }
    }
}

} // namespace tlfixture
