#include "project/model/AssetDrop.h"

#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"

std::function<void(const std::shared_ptr<AEAsset>&)> assetDropBrightwash;

namespace {
std::shared_ptr<AEAsset> newSpeechAsset(const QString& path) {
    AEAsset::Args args;
    args.filePath = path;
    args.type = AEAssetType::speech;
    args.isNew = true;
    return AEAsset::make(args);
}
} // namespace

std::vector<std::shared_ptr<AEAsset>> AEAssetIngestDone(const std::shared_ptr<AEEpisode>& episode,
                                                        const QStringList& paths, bool brightwash,
                                                        bool normalize, bool dontAsk) {
    prefs_setValueBool("AEIngest.DontAskAtDrag", dontAsk);
    if (dontAsk) {
        prefs_setValueBool("AEIngest.Brightwash", brightwash);
        prefs_setValueBool("AEIngest.Normalize", normalize);
    }
    std::vector<std::shared_ptr<AEAsset>> made;
    for (const auto& path : paths) {
        auto asset = newSpeechAsset(path);
        if (!asset) continue;
        if (normalize) {
            asset->doAutoGain = true;
            asset->autoGain(true);
        }
        AEEpisode::appendAsset(episode->assets, asset);
        episode->assetsLoaded = true;
        AEEpisode::appendAsset(AEEpisodeAssetListVCGlobal, asset);
        if (brightwash && assetDropBrightwash)
            assetDropBrightwash(asset);
        else if (brightwash)
            qxLog("AEAssetIngestDone: no cleaning available, " + path + " stays as it is");
        made.push_back(asset);
    }
    if (!made.empty()) saveShow();
    return made;
}

std::vector<std::shared_ptr<AEAsset>> ingestCommonAssets(const QStringList& paths) {
    std::vector<std::shared_ptr<AEAsset>> made;
    for (const auto& path : paths) {
        auto asset = newSpeechAsset(path);
        if (!asset) continue;
        AEAssetListVCGlobal.push_back(asset);
        if (zendrelShow) zendrelShow->commonAssets.push_back(asset);
        made.push_back(asset);
    }
    if (!made.empty()) saveShow();
    return made;
}
