#include "project/model/Globals.h"

#include "foundation/Log.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"

std::shared_ptr<AEShow> zendrelShow;
EpisodeListController* mainVC = nullptr;
std::shared_ptr<AEEpisode> AEEpisodeSelected;
std::optional<int> AEEpisodeSelectedId;
std::atomic<bool> mustUpdate{false};
std::shared_ptr<Slowder> slowder;
std::shared_ptr<UhmDB> uhmDB;
AEWindowStatus TimelineWindowStatus = AEWindowStatus::closed;
std::vector<std::shared_ptr<AEAsset>> AEAssetListVCGlobal;
std::vector<std::shared_ptr<AEAsset>> AEEpisodeAssetListVCGlobal;
bool AEAssetListVCDone = false;
bool AEEpisodeAssetListVCDone = false;
bool AEEpisodeAssetListVCMustUpdate = false;

std::shared_ptr<AEShow> loadShow() {
    const QString folder = AEIngest::getWorkFolder();
    const QString showPath = folder + "show.AEShow";
    AEIngest ingest(folder + "AssetIngests");
    auto show = AEShow::load(showPath);
    AEAssetListVCGlobal = show->commonAssets;
    return show;
}

void saveShow(bool /*autoSave*/) {
    if (!zendrelShow) return;
    if (mainVC) mainVC->stopTimer();
    zendrelShow->save(AEIngest::workFolder + "show.AEShow");
    if (mainVC) {
        mainVC->startTimer();
        mainVC->update();
    }
}
