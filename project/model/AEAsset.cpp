#include "project/model/AEAsset.h"

#include "foundation/FileUtils.h"
#include "foundation/Log.h"

#include <map>
#include <mutex>

void AEAsset::removeIngestedFile() {
    if (ingestedFilePath.isEmpty())
        return;
    qxLog("AEAsset.removeIngestedFile " + ingestedFilePath);
    fu_deleteFile(ingestedFilePath);
}

std::shared_ptr<AEAsset> AEAssetDB::loadAsset(const QString& assetId) {
    static std::mutex mutex;
    static std::map<QString, std::shared_ptr<AEAsset>> db;
    std::lock_guard lock(mutex);
    auto& slot = db[assetId];
    if (!slot)
        slot = std::make_shared<AEAsset>(assetId);
    return slot;
}
