#include "render/SelectionToAsset.h"

#include "foundation/Execution.h"
#include "foundation/FUName.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "render/SoXer.h"
#include "timeline/model/AETimeLine.h"

#include <QFileInfo>

namespace {

std::shared_ptr<AEAsset> assetOfRender(const QString& path, const QString& name, AEAssetType type) {
    AEAsset::Args args;
    args.filePath = path;
    args.name = name;
    args.type = type;
    // The render already lies in the ingest folder.
    args.isIngestedCopy = true;
    args.isNew = true;
    return AEAsset::make(args);
}

} // namespace

void selectionToAssetDone(const QString& name, AEAssetType type, AESelectionToAssetWhere where,
                          const std::shared_ptr<AETimeLine>& timeline,
                          const std::shared_ptr<AEEpisode>& episode,
                          std::function<void(const std::shared_ptr<AEAsset>&)> completion) {
    const QString path = AEIngest::ingestPath + "selection_" + FUName::newId() + ".wav";
    const int channels = episode ? static_cast<int>(episode->nChannels) : 2;
    auto soxer = SoXer::make(path, 44100, channels, 16, timeline);
    // The render works on its own copy; the timers are held only so the window stays still meanwhile.
    timeline->stopTimers();
    XMain::queue([soxer] { soxer->perform(true); },
                 [soxer, timeline, path, name, type, where, episode, completion] {
                     timeline->startTimers();
                     if (!QFileInfo::exists(path)) {
                         qxLog("selectionToAssetDone: nothing rendered to " + path);
                         if (completion) completion(nullptr);
                         return;
                     }
                     auto asset = assetOfRender(path, name, type);
                     if (!asset) {
                         if (completion) completion(nullptr);
                         return;
                     }
                     if (where == AESelectionToAssetWhere::episode) {
                         AEEpisodeAssetListVCGlobal.push_back(asset);
                         if (episode) episode->assets = AEEpisodeAssetListVCGlobal;
                     } else {
                         AEAssetListVCGlobal.push_back(asset);
                         if (zendrelShow) zendrelShow->commonAssets = AEAssetListVCGlobal;
                     }
                     saveShow();
                     if (completion) completion(asset);
                 });
}
