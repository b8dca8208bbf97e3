#include "cleaning/BrightwashAssets.h"

#include "cleaning/Brightwash.h"
#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEMarker.h"
#include "project/model/AssetDrop.h"
#include "project/model/Globals.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QFileInfo>
#include <algorithm>

BrightwashAssets::BrightwashAssets(Assets& assets) : assets_(assets) {
    makeAsset = [](const QString& path) {
        AEAsset::Args args;
        args.filePath = path;
        args.isNew = true;
        return AEAsset::make(args);
    };
}

void BrightwashAssets::refresh() {
    if (refreshList) refreshList();
}

void BrightwashAssets::assetInspectorVCBrightwash(int row, bool mustRemove) {
    if (row < 0 || row >= int(assets_.size())) return;
    const std::shared_ptr<AEAsset> asset = assets_[size_t(row)];
    switch (asset->bwStatus) {
    case BWStatus::none:
        brightwashAsset(asset, mustRemove);
        break;
    case BWStatus::sourceBusy:
    case BWStatus::destinationBusy:
    case BWStatus::brightwashedVersion:
        Warning("Warning", "This Asset is already being Brightwashed.");
        break;
    case BWStatus::sourceDone:
    case BWStatus::destinationDone:
        Warning("Warning", "This Asset has been already Brightwashed.");
        break;
    }
}

void BrightwashAssets::brightwashAsset(const std::shared_ptr<AEAsset>& asset, bool mustRemove, bool) {
    const BrightwashSetting settings = Brightwash::loadSettings();
    std::weak_ptr<bool> alive = alive_;
    auto run = Brightwash::make(asset->originalFilePath, settings, nullptr, {});
    // The run calls back on its own thread; the list is the main thread's.
    run->callbackHandler = [this, alive, weakRun = std::weak_ptr<Brightwash>(run)](const QString& path) {
        const auto self = weakRun.lock();
        const QString error = self ? self->error() : QString();
        XMain::execute(
            [this, alive, path, error] {
                if (alive.lock()) runEnded(path, error);
            },
            true);
    };
    asset->bwStatus = BWStatus::sourceBusy;
    if (starting) starting(run);
    run->startAsync();

    const QFileInfo info(asset->originalFilePath);
    const QString cleanedPath =
        info.path() + "/" + info.completeBaseName() + "_" + settings.suffix + "." + info.suffix();
    AEAsset::Args args;
    args.filePath = asset->originalFilePath;
    args.name = "[" + asset->name + "]";
    args.temporary = true;
    args.userString = cleanedPath;
    args.bwStatus = BWStatus::destinationBusy;
    args.originalAsset = mustRemove ? asset : nullptr;
    args.ingest = false;
    args.generateSubsamples = false;
    auto placeholder = AEAsset::make(args);
    placeholder->doAutoGain = asset->doAutoGain;
    assets_.push_back(placeholder);
    refresh();
    brightwashingList.push_back({asset, placeholder, cleanedPath, settings.doRemovePauses});
}

void BrightwashAssets::removeFromList(const std::shared_ptr<AEAsset>& asset) {
    assets_.erase(std::remove(assets_.begin(), assets_.end(), asset), assets_.end());
}

void BrightwashAssets::moveTimelineItems(const std::shared_ptr<AEAsset>& from,
                                         const std::shared_ptr<AEAsset>& to) {
    const auto timeline = this->timeline ? this->timeline : currentTimeline ? currentTimeline() : nullptr;
    if (!timeline) return;
    std::vector<std::shared_ptr<AETimeLineItem>> moving;
    for (const auto* lane : {&timeline->mainLane, &timeline->attachedItems})
        for (const auto& item : *lane)
            if (item->asset == from) moving.push_back(item);
    if (moving.empty()) return;
    if (timeline->undoDoCallback) timeline->undoDoCallback(); // the snapshot undo goes back to
    for (const auto& item : moving) {
        item->asset = to;
        item->player.reset();
        item->makePlayer();
    }
}

void BrightwashAssets::runEnded(const QString& path, const QString& error) {
    if (error.isEmpty()) {
        brightwasherDone(path);
        return;
    }
    // A failed run loses nothing: the placeholder goes, the source stays and may be cleaned again.
    const auto item = std::find_if(brightwashingList.begin(), brightwashingList.end(),
                                   [&](const BrightwashingItem& i) { return i.cleanedPath == path; });
    if (item == brightwashingList.end()) return; // a missing source reports twice
    item->srcAsset->bwStatus = BWStatus::none;
    removeFromList(item->dstAsset);
    brightwashingList.erase(item);
    refresh();
    Warning("Warning", error);
    if (ended) ended(path);
}

void BrightwashAssets::brightwasherDone(const QString& path) {
    bool doAutoGain = false;
    std::shared_ptr<AEAsset> replaced;
    for (const auto& asset : Assets(assets_)) {
        if (!asset->temporary || asset->userString != path) continue;
        doAutoGain = asset->doAutoGain;
        replaced = asset->originalAsset;
        if (replaced) replaced->bwStatus = BWStatus::sourceDone;
        removeFromList(asset);
        break;
    }
    if (replaced) {
        replaced->bwStatus = BWStatus::sourceDone;
        removeFromList(replaced);
    }
    const auto item = std::find_if(brightwashingList.begin(), brightwashingList.end(),
                                   [&](const BrightwashingItem& i) { return i.cleanedPath == path; });
    std::shared_ptr<AEAsset> cleaned;
    if (QFileInfo(path).isFile()) cleaned = makeAsset(path);
    if (cleaned) {
        cleaned->bwStatus = BWStatus::destinationDone;
        assets_.push_back(cleaned);
        if (doAutoGain) {
            cleaned->doAutoGain = true;
            cleaned->autoGain(true);
        }
    }
    if (item != brightwashingList.end()) {
        item->srcAsset->bwStatus = BWStatus::sourceDone;
        if (cleaned && !item->removePauses) {
            for (const auto& marker : item->srcAsset->markers)
                cleaned->markers.push_back(marker->duplicate());
            if (replaced) moveTimelineItems(replaced, cleaned);
        }
        brightwashingList.erase(item);
    }
    refresh();
    if (ended) ended(path);
}

BrightwashAssets& episodeBrightwash() {
    static BrightwashAssets controller(AEEpisodeAssetListVCGlobal);
    return controller;
}

void installIngestBrightwash() {
    episodeBrightwash().refreshList = [] { AEEpisodeAssetListVCMustUpdate = true; };
    episodeBrightwash().currentTimeline = [] {
        return AEEpisodeSelected ? AEEpisodeSelected->timeline : nullptr;
    };
    assetDropBrightwash = [](const std::shared_ptr<AEAsset>& asset) {
        episodeBrightwash().brightwashAsset(asset, false);
    };
}
