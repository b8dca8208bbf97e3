#pragma once
// Process-wide state of the shell. Written on the main thread only (the start-up load publishes the
// show through XMain); read from anywhere.

#include <QString>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

class AEAsset;
class AEEpisode;
class AEShow;
class Slowder;
class UhmDB;

// What the core needs of the episode list window, which the interface library provides.
class EpisodeListController {
public:
    virtual ~EpisodeListController() = default;
    virtual void startTimer() = 0;
    virtual void stopTimer() = 0;
    virtual void update() = 0;
};

enum class AEWindowStatus { closed, open, yetClosed, yetOpen };

extern std::shared_ptr<AEShow> zendrelShow;
extern EpisodeListController* mainVC;
extern std::shared_ptr<AEEpisode> AEEpisodeSelected;
extern std::optional<int> AEEpisodeSelectedId;
extern std::atomic<bool> mustUpdate;
extern std::shared_ptr<Slowder> slowder;
extern std::shared_ptr<UhmDB> uhmDB;
extern AEWindowStatus TimelineWindowStatus;
extern std::vector<std::shared_ptr<AEAsset>> AEAssetListVCGlobal;
extern std::vector<std::shared_ptr<AEAsset>> AEEpisodeAssetListVCGlobal;
extern bool AEAssetListVCDone;
extern bool AEEpisodeAssetListVCDone;
extern bool AEEpisodeAssetListVCMustUpdate;

// Reads the working folder's show (creating the folder and its ingest folder as needed).
std::shared_ptr<AEShow> loadShow();
// Saves zendrelShow into the working folder, with the list's timer held around the write.
void saveShow(bool autoSave = false);
