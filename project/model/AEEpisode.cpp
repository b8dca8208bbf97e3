#include "project/model/AEEpisode.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Log.h"
#include "foundation/Slowder.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "project/model/Ingest.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QFile>

namespace {
const bool registered = registerArchiveClass<AEEpisode>();

bool isSameAsset(const std::shared_ptr<AEAsset>& a, const QString& id) {
    return a && a->id == id;
}
} // namespace

AEEpisode::AEEpisode(const QString& episodeId, const QString& title, const QString& imagePath,
                     const QString& pathFolder)
    : episodeId(episodeId), id(hallard_getNewId()), title(title), imagePath(imagePath),
      creationDate(QDateTime::currentDateTime()), modificationDate(creationDate),
      publicationDate(creationDate), timeline(AETimeLine::make(id)) {
    (void)registered;
    timelineDataPath = pathFolder + id + ".AETimeLine";
    if (fu_isRegularFile(imagePath)) image = QImage(imagePath);
}

void AEEpisode::encode(KeyedArchiver& coder) const {
    coder.encodeString("episodeId", episodeId);
    coder.encodeString("id", id);
    coder.encodeString("title", title);
    coder.encodeString("notes", notes);
    coder.encodeString("url", url);
    coder.encodeString("imagePath", AEIngest::savePath(imagePath));
    coder.encodeDate("creationDate", creationDate);
    coder.encodeDate("modificationDate", modificationDate);
    coder.encodeDate("publicationDate", publicationDate);
    coder.encodeString("timelineDataPath", AEIngest::savePath(timelineDataPath));
    coder.encodeInt("nChannels", static_cast<int64_t>(nChannels));
    coder.encodeInt("status", static_cast<int64_t>(status));
    coder.encodeBool("deleted", deleted);
    QStringList ids;
    for (const auto& asset : assets)
        ids.append(asset->id);
    // An episode that was never opened keeps the ids it was read with.
    coder.encodeStringArray("assetIds", assetsLoaded ? ids : assetIDs);
    const double total = duration == 0 && timeline ? timeline->getTimelineOutTime() : duration;
    coder.encodeDouble("duration", total);
    // Saving the show keeps each loaded asset's record up to date with it.
    for (const auto& asset : assets)
        AEAssetDB::saveAsset(asset);
}

std::shared_ptr<AEEpisode> AEEpisode::decode(KeyedUnarchiver& coder) {
    const auto episodeId = coder.decodeString("episodeId");
    const auto id = coder.decodeString("id");
    const auto title = coder.decodeString("title");
    const auto notes = coder.decodeString("notes");
    const auto imagePath = coder.decodeString("imagePath");
    const auto creationDate = coder.decodeDate("creationDate");
    const auto modificationDate = coder.decodeDate("modificationDate");
    const auto timelineDataPath = coder.decodeString("timelineDataPath");
    const auto assetIds = coder.decodeStringArray("assetIds");
    if (!episodeId || !id || !title || !notes || !imagePath || !creationDate || !modificationDate ||
        !timelineDataPath || !assetIds)
        return nullptr;

    auto episode = std::make_shared<AEEpisode>(*episodeId, *title, AEIngest::loadPath(*imagePath));
    episode->notes = *notes;
    episode->duration = coder.decodeDouble("duration").value_or(0);
    episode->url = coder.decodeString("url").value_or("");
    episode->publicationDate = coder.decodeDate("publicationDate").value_or(QDateTime::currentDateTime());
    const auto channels = coder.decodeInt("nChannels");
    episode->nChannels = channels == 1 ? AENChannels::mono : AENChannels::stereo;
    const auto status = coder.decodeInt("status");
    if (status && *status >= 0 && *status <= 2)
        episode->status = static_cast<AEEpisodeStatus>(*status);
    else
        episode->status = episode->publicationDate <= QDateTime::currentDateTime()
                              ? AEEpisodeStatus::published
                              : AEEpisodeStatus::notReady;
    episode->deleted = coder.decodeBool("deleted").value_or(false);
    episode->id = *id;
    episode->creationDate = *creationDate;
    episode->modificationDate = *modificationDate;
    episode->timelineDataPath = AEIngest::loadPath(*timelineDataPath);
    episode->assetIDs = *assetIds;
    if (episode->duration == 0 && episode->timeline)
        episode->duration = episode->timeline->getTimelineOutTime();
    if (slowder) slowder->itemLoaded();
    return episode;
}

void AEEpisode::forceLoadEpisodeAsset(const std::shared_ptr<AEAsset>& asset) {
    if (!asset || asset->type == AEAssetType::silence) return;
    if (zendrelShow) {
        for (const auto& common : zendrelShow->commonAssets)
            if (isSameAsset(common, asset->id)) return;
    }
    if (assetInEpisode(asset->id)) return;
    assets.push_back(asset);
    assetsLoaded = true;
}

void AEEpisode::forceLoadAssets() {
    assets.clear();
    for (const auto& assetId : assetIDs)
        assets.push_back(AEAssetDB::loadAsset(assetId));
    assetsLoaded = true;
}

void AEEpisode::loadImage(const QString& path) {
    image = fu_isRegularFile(path) ? QImage(path) : QImage();
    modified();
}

void AEEpisode::modified() {
    modificationDate = QDateTime::currentDateTime();
}

void AEEpisode::removeEpisodeAssets() {
    for (const auto& asset : assets)
        asset->removeIngestedFile();
}

void AEEpisode::appendAsset(std::vector<std::shared_ptr<AEAsset>>& list,
                            const std::shared_ptr<AEAsset>& asset) {
    if (!asset || asset->type == AEAssetType::silence) return;
    for (const auto& present : list)
        if (isSameAsset(present, asset->id)) return;
    list.push_back(asset);
}

std::vector<std::shared_ptr<AEAsset>> AEEpisode::getAllAssets() const {
    auto all = assets;
    if (timeline) {
        for (const auto& item : timeline->attachedItems)
            appendAsset(all, item->asset);
        for (const auto& item : timeline->mainLane)
            appendAsset(all, item->asset);
    }
    return all;
}

void AEEpisode::loadTimelineAssets() {
    if (!timeline) return;
    for (const auto& item : timeline->mainLane)
        forceLoadEpisodeAsset(item->asset);
}

namespace {
// A refused file is renamed, not left where the new empty timeline's first save would overwrite it.
void keepDamagedTimelineAside(const QString& path) {
    if (!QFile::exists(path)) return;
    QString aside = path + ".damaged";
    for (int n = 2; QFile::exists(aside); ++n)
        aside = path + ".damaged-" + QString::number(n);
    if (QFile::rename(path, aside))
        qxLog("AEEpisode: the unreadable timeline is kept as " + aside);
    else
        qxLog("AEEpisode: the unreadable timeline " + path + " could not be set aside");
}

std::shared_ptr<AETimeLine> loadOrSetAside(const QString& path) {
    auto loaded = AETimeLine::load(path);
    if (!loaded) keepDamagedTimelineAside(path);
    return loaded;
}
} // namespace

void AEEpisode::loadTimeline() {
    auto loaded = loadOrSetAside(timelineDataPath);
    timeline = loaded ? loaded : AETimeLine::make(id);
}

void AEEpisode::loadTimelineAsync(std::function<void()> callback) {
    const QString path = timelineDataPath;
    const QString fallbackId = id;
    std::weak_ptr<AEEpisode> weak = weak_from_this();
    Queue::execute([weak, path, fallbackId, callback] {
        auto loaded = loadOrSetAside(path);
        XMain::execute(
            [weak, loaded, fallbackId, callback] {
                if (loaded) {
                    for (const auto& item : loaded->getCollectedItems())
                        if (!item->player) item->makePlayer();
                }
                if (auto self = weak.lock()) self->timeline = loaded ? loaded : AETimeLine::make(fallbackId);
                if (callback) callback();
            },
            true);
    });
}

void AEEpisode::saveTimeline() const {
    if (timeline) timeline->save(timelineDataPath);
}

bool AEEpisode::assetInTimeline(const std::shared_ptr<AEAsset>& asset) {
    if (!timeline) return false;
    for (const auto& item : timeline->getCollectedItems()) {
        if (item->asset->type == AEAssetType::silence) continue;
        if (item->asset->id == asset->id) return true;
    }
    return false;
}

bool AEEpisode::assetInEpisode(const QString& assetId) const {
    for (const auto& asset : assets)
        if (isSameAsset(asset, assetId)) return true;
    return false;
}

bool AEEpisode::assetInEpisodeByFilePath(const QString& filePath) const {
    for (const auto& asset : assets)
        if (asset && asset->ingestedFilePath == filePath) return true;
    return false;
}

void AEEpisode::checkAssets() {
    qxLog("checkAssets");
    for (const auto& asset : getAllAssets()) {
        if (asset->type == AEAssetType::silence) continue;
        const bool wasThere = Ingest::ingested(asset->ingestedFilePath);
        const auto result = Ingest::check(asset->originalFilePath, asset->ingestedFilePath);
        if (!result.ingested) {
            asset->present = false;
            continue;
        }
        asset->originalFilePath = result.originalPath.value_or(asset->originalFilePath);
        asset->ingestedFilePath = result.ingestedPath.value_or(asset->ingestedFilePath);
        asset->ingested = true;
        asset->present = true;
        if (!wasThere) {
            asset->regenerateSubsamples();
            AEAssetDB::saveAsset(asset);
            saveShow();
        }
    }
}
