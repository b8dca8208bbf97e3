#pragma once
// What a drop of files onto an episode or onto the common list does once the person has said how:
// the answers are remembered, each file the media check accepts becomes a new speech asset (the
// person is told about each refused one), and the show is saved when anything was added.
// Main thread.

#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

class AEAsset;
class AEEpisode;

// Cleans a dropped asset when the drop asked for it; the cleaning layer installs it at start-up.
extern std::function<void(const std::shared_ptr<AEAsset>&)> assetDropBrightwash;

std::vector<std::shared_ptr<AEAsset>> AEAssetIngestDone(const std::shared_ptr<AEEpisode>& episode,
                                                        const QStringList& paths, bool brightwash,
                                                        bool normalize, bool dontAsk);
// The same for the show's common assets.
std::vector<std::shared_ptr<AEAsset>> ingestCommonAssets(const QStringList& paths);
