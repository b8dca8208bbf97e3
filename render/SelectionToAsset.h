#pragma once
// Rendering the selected stretch of a timeline into a new asset of the show or of the episode.

#include "project/model/AEAssetType.h"

#include <QString>
#include <functional>
#include <memory>

class AEAsset;
class AEEpisode;
class AETimeLine;

enum class AESelectionToAssetWhere { common, episode };

// Main thread. Renders the selection (and the whole of every other lane over it) to
// "selection_<id>.wav" in the ingest folder off the main thread, then, on the main thread, makes an
// asset of it with that name and type, adds it to the common or the episode's list and saves the
// show. The timeline is not changed. `completion` gets the asset, or null when nothing was rendered.
void selectionToAssetDone(const QString& name, AEAssetType type, AESelectionToAssetWhere where,
                          const std::shared_ptr<AETimeLine>& timeline,
                          const std::shared_ptr<AEEpisode>& episode,
                          std::function<void(const std::shared_ptr<AEAsset>&)> completion = {});
