#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"

#include <cmath>

namespace {

const bool registered = registerArchiveClass<AETimeLineItem>();

// Times in a file beyond this are damage, not material: sums of them must stay on the time grid.
constexpr double kLongestTimeInFile = 1.0e9;

// Lanes are numbered outwards from the main lane without gaps and every lane up to the farthest is
// built, so a number beyond this is damage, not layout.
constexpr int64_t kFarthestLaneInFile = 1000;

bool usableTime(double t) {
    return std::isfinite(t) && t >= 0 && t <= kLongestTimeInFile;
}

std::shared_ptr<AETimeLineItem> failed() {
    qxLog("Decoding TimeLine Item: FAILED!");
    return nullptr;
}

std::shared_ptr<AEAsset> resolveAsset(const std::optional<QString>& assetId, const QString& itemId) {
    if (!assetId) {
        Warning("Warning", "Asset " + itemId + " unavailable");
        return AEAsset::makePlaceholder();
    }
    if (*assetId == "AESilence") {
        AEAsset::Args silence;
        silence.type = AEAssetType::silence;
        return AEAsset::make(silence);
    }
    return AEAssetDB::loadAsset(*assetId);
}

} // namespace

void AETimeLineItem::encode(KeyedArchiver& coder) const {
    (void)registered;
    coder.encodeString("assetId", asset->id);
    coder.encodeString("asset.originalFilePath", asset->originalFilePath);
    coder.encodeInt("lane", lane);
    coder.encodeDouble("inTime", inTime);
    coder.encodeDouble("bgmOutTime", bgmOutTime);
    coder.encodeObject("range", std::make_shared<AETimeRange>(range));
    coder.encodeString("id", id);
    coder.encodeObjectArray("markers", markers);
    coder.encodeBool("cutOnce", cutOnce);
    coder.encodeObject("volumeKFs", volumeKFs);
    coder.encodeObject("fadeOutKFS", fadeOutKFS);
    coder.encodeObject("globalKFS", globalKFS);
    if (active) coder.encodeBool("active", *active);
    if (solo) coder.encodeBool("solo", *solo);
    coder.encodeBool("ducked", ducked);
}

std::shared_ptr<AETimeLineItem> AETimeLineItem::decode(KeyedUnarchiver& coder) {
    const auto assetId = coder.decodeString("assetId");
    if (coder.containsKey("assetId") && !assetId) return failed();
    const auto id = coder.decodeString("id");
    const auto range = coder.decodeObject<AETimeRange>("range");
    auto markers = coder.decodeObjectArray<AEMarker>("markers");
    if (!id || !range || !markers) return failed();
    const double inTime = coder.decodeDouble("inTime").value_or(0);
    const double bgmOutTime = coder.decodeDouble("bgmOutTime").value_or(0);
    if (!usableTime(inTime) || !usableTime(bgmOutTime) || !usableTime(range->i) || !usableTime(range->o))
        return failed();
    const int64_t lane = coder.decodeInt("lane").value_or(0);
    if (lane < -kFarthestLaneInFile || lane > kFarthestLaneInFile) return failed();

    std::shared_ptr<AETimeLineItem> item(new AETimeLineItem());
    const auto asset = resolveAsset(assetId, *id);
    item->initialise(asset, lane, inTime, *range);
    item->id = *id;
    // Off the main thread the player waits: finding the file may change the shared asset record.
    if (XMain::isMain()) item->makePlayer();
    item->markers = std::move(*markers);
    item->bgmOutTime = simpleRound(bgmOutTime);
    item->cutOnce = coder.decodeBool("cutOnce").value_or(false);
    const auto volumeKFs = coder.decodeObject<AEKeyframeList>("volumeKFs");
    if (volumeKFs) item->volumeKFs = volumeKFs;
    item->fadeOutKFS = coder.decodeObject<AEKeyframeList>("fadeOutKFS");
    // A flag of another kind is no flag: it takes its default, which the next save writes.
    item->active = coder.decodeBool("active").value_or(true);
    item->solo = coder.decodeBool("solo").value_or(false);
    item->ducked = coder.decodeBool("ducked").value_or(false);
    // The editor shows the list that was read (it sorts it, as a file may hold any order).
    item->attachKeyframeView();
    item->updateGlobalKFs();
    return item;
}
