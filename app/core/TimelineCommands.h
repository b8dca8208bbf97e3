#pragma once
// The editing window's actions as a command layer over the open episode's timeline: insert, append,
// attach, clipboard, undo and redo, markers, keyframes, autosave, statistics. The window wires its
// buttons, keys and menus here; tests drive it without pixels.
//
// Owns the one handle on "the current timeline": after an undo or redo it is also written into the
// episode and the lanes helper, so that nothing else has to follow the swap. Main thread.

#include "project/model/AEMarker.h"
#include "timeline/model/Undo.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AEAsset;
class AEEpisode;
class AETimeLine;

struct AETimelineStats {
    double duration = 0;
    int64_t commonAssetUsed = 0;
    int64_t episodeAssetUsed = 0;
    int64_t totalItems = 0;
};

class TimelineCommands {
public:
    using AssetList = std::vector<std::shared_ptr<AEAsset>>;

    // Gain that brings an asset's RMS level here (the volume slider's Auto button).
    static constexpr double kAutoGainTargetDb = -12.0;

    std::shared_ptr<AEEpisode> episode;
    std::shared_ptr<AETimeLine> timeline;
    Undo undoQueue;
    // Row of the asset chosen in each list, −1 for none; the common list wins.
    int selectedCommonAssetIndex = -1;
    int selectedEpisodeAssetIndex = -1;
    // The lists the window shows (the show's common assets, the episode's own).
    AssetList commonAssets;
    AssetList episodeAssets;
    // Told after undo/redo put another timeline in place, so the view can follow.
    std::function<void()> timelineSwapped;
    // An undoable change happened since the last save: the episode's modified date moves on save.
    bool changed = false;
    // Told after every action, for the statistics and the lists.
    std::function<void()> afterAction;

    // The episode's timeline is there: undo snapshots are taken from now on.
    void tlLoaded(const std::shared_ptr<AEEpisode>& openEpisode, const AssetList& common);

    std::shared_ptr<AEAsset> selectedAsset() const;
    void performInsert(int64_t lane = 0);
    void performInsertAtPlayhead();
    void performAppend();
    // Places `asset` as the insert buttons would (the lists' double click).
    void insertAsset(const std::shared_ptr<AEAsset>& asset, int64_t lane = 0);

    void copy();
    void cut();
    void paste();
    void undo();
    void redo();
    void addStatus();

    void addMarker(bool openInspector, AEMarkerType type = AEMarkerType::normal);
    // Turns the keyframes on and sets one at the playhead on the lane of the item there.
    void addVolumeKeyframe();
    void goToMarker(bool next);
    void insertSilence(double seconds);

    // Stores the lists and the timeline in the episode and saves both.
    void autoSave();
    AETimelineStats getStats() const;
    // Sets the asset's gain so its RMS lands on kAutoGainTargetDb; false when it cannot be measured.
    static bool autoVolume(const std::shared_ptr<AEAsset>& asset);

private:
    void setTimeline(const std::shared_ptr<AETimeLine>& next);
    void done();
};
