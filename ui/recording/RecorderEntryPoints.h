#pragma once
// What the editing window calls to record: the menu "Recorder Settings…" and the record button
// (shown in the episode's assets area when "AEPreferences.recButtonInEpisodeAssetsArea" is on).

#include <functional>
#include <memory>

class AEAsset;
class AEAssetRecorderVC;
class AEEpisode;
class AEShow;
class AudioRecorderSetupVC;
class QWidget;

// Opens the setup panel over `window` on the show's settings; OK stores them in the show and calls
// saveShow.
AudioRecorderSetupVC* menu_recorderSettings(QWidget* window, const std::shared_ptr<AEShow>& show,
                                            std::function<void()> saveShow);
// Opens the asset recorder sheet over `window`; assetAdded runs for each finished take.
AEAssetRecorderVC* openAssetRecorder(QWidget* window, const std::shared_ptr<AEShow>& show,
                                     const std::shared_ptr<AEEpisode>& episode,
                                     std::function<void(const std::shared_ptr<AEAsset>&)> assetAdded);
bool recButtonInEpisodeAssetsArea();
