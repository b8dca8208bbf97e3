#pragma once
// Cleaning an asset of the episode: the run goes to the pool with a placeholder "[name]" in the asset
// list; when it ends the placeholder gives way to the cleaned asset, which doubles the source or, when
// the user chose so, replaces it. On a replacement with timing kept (no pause removal) the timeline's
// items of the source move onto the cleaned asset, after an undo snapshot, so undo brings them back.
//
// Main thread only; the run's completion hops there. The window sets the hooks.

#include "project/model/AEAssetType.h"

#include <QString>
#include <functional>
#include <memory>
#include <vector>

class AEAsset;
class AETimeLine;
class Brightwash;

class BrightwashingItem {
public:
    std::shared_ptr<AEAsset> srcAsset;
    std::shared_ptr<AEAsset> dstAsset;
    QString cleanedPath;
    bool removePauses = false;
};

class BrightwashAssets {
public:
    using Assets = std::vector<std::shared_ptr<AEAsset>>;

    // `assets` is the episode's list as the window shows it; it must outlive this object.
    explicit BrightwashAssets(Assets& assets);

    std::shared_ptr<AETimeLine> timeline; // items of a replaced source follow; may be null
    std::function<std::shared_ptr<AETimeLine>()> currentTimeline; // asked when `timeline` is null
    std::function<void()> refreshList;                            // the asset list changed
    std::function<void(const QString&)> ended; // after brightwasherDone, with the result path
    // Just before a run goes to the pool: the window may give it a Prog and show its progress.
    std::function<void(const std::shared_ptr<Brightwash>&)> starting;
    std::vector<BrightwashingItem> brightwashingList;

    // Row −1 does nothing; a busy or cleaned asset gets a warning instead.
    void assetInspectorVCBrightwash(int row, bool mustRemove);
    // normalize is accepted and has no effect.
    void brightwashAsset(const std::shared_ptr<AEAsset>& asset, bool mustRemove, bool normalize = false);
    void brightwasherDone(const QString& path);

    // How an asset is made for a cleaned file; AEAsset::make with the path by default.
    std::function<std::shared_ptr<AEAsset>(const QString& path)> makeAsset;

private:
    void runEnded(const QString& path, const QString& error);
    void removeFromList(const std::shared_ptr<AEAsset>& asset);
    void moveTimelineItems(const std::shared_ptr<AEAsset>& from, const std::shared_ptr<AEAsset>& to);
    void refresh();

    Assets& assets_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

// The controller over the selected episode's asset list (AEEpisodeAssetListVCGlobal), which asks the
// list to redraw through AEEpisodeAssetListVCMustUpdate. Installing it also makes ingest with
// "Brightwash" ticked clean each dropped asset, keeping the source.
BrightwashAssets& episodeBrightwash();
void installIngestBrightwash();
