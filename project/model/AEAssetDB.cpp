#include "project/model/AEAssetDB.h"

#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEIngest.h"

#include <QHash>
#include <mutex>

namespace {

struct Store {
    std::recursive_mutex mutex; // loading may decode, which may reach the store again
    QHash<QString, std::shared_ptr<AEAsset>> assets;
    std::optional<QString> ingestFolder;
};

Store& store() {
    static Store s;
    return s;
}

std::shared_ptr<AEAsset> findLocked(Store& s, const QString& id) {
    return s.assets.value(id);
}

} // namespace

QString AEAssetDB::ingestFolder() {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    if (!s.ingestFolder) s.ingestFolder = AEIngest::ingestPath;
    return *s.ingestFolder;
}

QString AEAssetDB::zendrelFolder() {
    const QString folder = ingestFolder();
    return folder.left(std::max<qsizetype>(0, folder.size() - QString("/assetIngests").size()));
}

QString AEAssetDB::getPath(const AEAsset& asset) {
    return ingestFolder() + asset.id + ".aeasset";
}

void AEAssetDB::saveAsset(const std::shared_ptr<AEAsset>& asset) {
    KeyedArchiver::archiveRootObject(asset, getPath(*asset));
    Store& s = store();
    std::lock_guard lock(s.mutex);
    s.assets.insert(asset->id, asset);
}

void AEAssetDB::checkAsset(const std::shared_ptr<AEAsset>& asset) {
    if (!asset->ingestedFilePath.isEmpty() || asset->originalFilePath.isEmpty()) return;
    // The copy is made in the background; the record changes on the main thread, without waiting.
    const QString original = asset->originalFilePath;
    Queue::execute([asset, original] {
        const QString copy = AEIngest::ingestMedia(original).value_or("");
        XMain::execute(
            [asset, copy] {
                asset->ingestedFilePath = copy;
                saveAsset(asset);
            },
            true);
    });
}

std::shared_ptr<AEAsset> AEAssetDB::loadAsset(const QString& assetId) {
    Store& s = store();
    {
        std::lock_guard lock(s.mutex);
        if (auto known = findLocked(s, assetId)) {
            checkAsset(known);
            return known;
        }
    }
    if (auto asset = KeyedUnarchiver::unarchive<AEAsset>(ingestFolder() + assetId + ".aeasset")) {
        checkAsset(asset);
        std::lock_guard lock(s.mutex);
        if (auto known = findLocked(s, assetId)) // another thread got there first
            return known;
        s.assets.insert(assetId, asset);
        return asset;
    }
    if (auto asset = KeyedUnarchiver::unarchive<AEAsset>(zendrelFolder() + assetId + ".aeasset")) {
        // A record of the older layout, beside the show: its copy is made before anyone sees it.
        if (asset->ingestedFilePath.isEmpty() && asset->type != AEAssetType::silence) asset->forceIngest();
        checkAsset(asset);
        std::lock_guard lock(s.mutex);
        if (auto known = findLocked(s, assetId)) return known;
        s.assets.insert(assetId, asset);
        return asset;
    }
    Warning("Warning", "Asset " + assetId + " unavailable");
    auto placeholder = AEAsset::makePlaceholder();
    // Keeps the reference, so saving the show does not drop an asset whose record may come back.
    placeholder->id = assetId;
    return placeholder;
}

std::vector<std::shared_ptr<AEAsset>> AEAssetDB::db() {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    return {s.assets.cbegin(), s.assets.cend()};
}
