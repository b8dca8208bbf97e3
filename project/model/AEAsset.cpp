#include "project/model/AEAsset.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/Slowder.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEAssetDucking.h"
#include "project/model/AEBGMSettings.h"
#include "project/model/AECache.h"
#include "project/model/AEIngest.h"
#include "project/model/AEMarker.h"
#include "project/model/AESubsamples.h"
#include "project/model/AssetColors.h"
#include "project/model/Globals.h"
#include "recording/AudioProbes.h"
#include "recording/MediaCheck.h"
#include "render/tools/SoxUt.h"

#include <QFileInfo>
#include <mutex>

namespace {

const bool registered = registerArchiveClass<AEAsset>();

constexpr double kSilenceDuration = 123456789.0;
const QString kSilenceId = "AESilence";

std::mutex globalListMutex;
std::vector<std::shared_ptr<AEAsset>> globalAssets;

// Background completions change the record on the main thread only.
void onMain(std::function<void()> change) {
    XMain::execute(std::move(change), true);
}

QString colorText(const QColor& c) {
    return c.name(QColor::HexArgb);
}

} // namespace

std::shared_ptr<AEAsset> AEAsset::make(const Args& a) {
    (void)registered;
    const bool fromFile = a.type != AEAssetType::silence && !a.recording;
    if (fromFile && !mediaAcceptedOrTold(a.filePath)) return nullptr;
    std::shared_ptr<AEAsset> asset(new AEAsset());
    asset->recording = a.recording;
    asset->subsamples = std::make_shared<AESubsamples>();
    const bool silence = a.type == AEAssetType::silence;
    asset->name = !a.name.isEmpty() ? a.name : silence ? "Silence" : QFileInfo(a.filePath).completeBaseName();
    asset->type = a.type;
    const auto colors = AEColors::getAssetColor(a.type, true);
    asset->plotBGColor = colors.background;
    asset->plotFGColor = colors.foreground;
    asset->originalFilePath = a.filePath;
    asset->ingestedFilePath = a.isIngestedCopy ? a.filePath : a.ingestedFilePath;
    asset->ingested = a.isIngestedCopy;
    const bool ingest = a.ingest && !a.isIngestedCopy;
    if (silence) {
        asset->duration = kSilenceDuration; // a silence can be cut to any length
    } else if (!a.recording) {
        asset->duration = a.duration != 0 ? a.duration : aUt_getAudioDuration(a.filePath);
        asset->fileSize = a.fileSize != 0 ? a.fileSize : fu_getFileSize(a.filePath);
        asset->frequency = a.frequency != 0 ? a.frequency : aUt_getAudioFrequency(a.filePath);
        asset->nChannels = a.nChannels != 0 ? a.nChannels : aUt_getAudioNChannels(a.filePath);
        asset->bitDepth = a.bitDepth != 0 ? a.bitDepth : aUt_getAudioBitsPerSample(a.filePath);
    }
    asset->subsamples->samplesPerSecond = a.subsamplesPerSecond;
    asset->subsamples->samplesPerSecondD = a.subsamplesPerSecond;
    asset->temporary = a.temporary;
    asset->userString = a.userString;
    asset->id = silence ? kSilenceId : hallard_fileMd5(a.filePath);
    if (!a.recording && !silence) {
        if (a.generateSubsamples && !ingest) {
            asset->performSubasmples();
        } else if (ingest) {
            const QString copyName = AEIngest::ingestedName(a.filePath, asset->id);
            if (AEIngest::isIngested(copyName)) {
                // Dropped before: the copy is there already.
                asset->ingestedFilePath = AEIngest::ingestPath + copyName;
                asset->ingested = true;
                asset->performSubasmples();
            } else {
                asset->startIngest(asset->id);
            }
        }
    }
    appendToGlobalList(asset);
    asset->originalAsset = a.originalAsset;
    asset->bgmSettings = a.bgmSettings ? a.bgmSettings : std::make_shared<AEBGMSettings>();
    asset->bwStatus = a.bwStatus;
    if (a.isNew && !silence) AEAssetDB::saveAsset(asset);
    return asset;
}

std::shared_ptr<AEAsset> AEAsset::makePlaceholder() {
    std::shared_ptr<AEAsset> asset(new AEAsset());
    asset->subsamples = std::make_shared<AESubsamples>();
    asset->bgmSettings = std::make_shared<AEBGMSettings>();
    return asset;
}

void AEAsset::startIngest(const QString& knownMd5) {
    std::weak_ptr<AEAsset> weak = shared_from_this();
    AEIngest::asyncIngest(
        originalFilePath,
        [weak](const QString& original, const std::optional<QString>& copy) {
            onMain([weak, original, copy] {
                if (auto self = weak.lock()) self->ingestCallback(original, copy);
            });
        },
        knownMd5);
}

void AEAsset::ingestCallback(const QString& /*originalPath*/, const std::optional<QString>& ingestedPath) {
    if (!ingestedPath) {
        ingestedFilePath = "";
        return;
    }
    ingested = true;
    ingestedFilePath = AEIngest::loadPath(*ingestedPath);
    performSubasmples();
    present = true;
}

void AEAsset::performSubasmples(std::function<void()> callback) {
    std::weak_ptr<AEAsset> weak = weak_from_this();
    subsamples->loadFromCache(true, originalFilePath, ingestedFilePath, [weak, callback] {
        onMain([weak, callback] {
            if (auto self = weak.lock()) self->createDucking();
            if (callback) callback();
        });
    });
}

void AEAsset::regenerateSubsamples() {
    std::weak_ptr<AEAsset> weak = weak_from_this();
    subsamples->generate(originalFilePath, ingestedFilePath, true, [weak] {
        onMain([weak] {
            if (auto self = weak.lock()) self->createDucking();
        });
    });
}

void AEAsset::createDucking() {
    assetDucking = AEAssetDucking::make(id, subsamples);
}

void AEAsset::forceIngest() {
    qxLog("forceIngest");
    if (!originalFilePath.isEmpty()) ingestedFilePath = AEIngest::ingestMedia(originalFilePath).value_or("");
}

void AEAsset::encode(KeyedArchiver& coder) const {
    coder.encodeString("name", name);
    coder.encodeString("originalFilePath", AEIngest::savePath(originalFilePath));
    coder.encodeString("ingestedFilePath", AEIngest::savePath(ingestedFilePath));
    coder.encodeBool("ingested", ingested);
    coder.encodeString("proxyFilePath", AEIngest::savePath(proxyFilePath));
    coder.encodeInt("type", static_cast<int64_t>(type));
    coder.encodeDouble("duration", duration);
    coder.encodeInt("frequency", frequency);
    coder.encodeInt("nChannels", nChannels);
    coder.encodeInt("bitDepth", bitDepth);
    coder.encodeInt("fileSize", fileSize);
    coder.encodeObjectArray("markers", markers);
    coder.encodeDouble("volumeGain", volumeGain);
    coder.encodeObject("subsamples", subsamples);
    coder.encodeObject("bgmSettings", bgmSettings);
    coder.encodeString("id", id);
    coder.encodeFloat("bgmStart", static_cast<float>(bgmStart));
    coder.encodeString("bgmId", bgmId);
    coder.encodeInt("bwStatus", static_cast<int64_t>(bwStatus));
    if (customColor) coder.encodeString("customColor", colorText(*customColor));
}

std::shared_ptr<AEAsset> AEAsset::decode(KeyedUnarchiver& coder) {
    const auto name = coder.decodeString("name");
    const auto original = coder.decodeString("originalFilePath");
    const auto copy = coder.decodeString("ingestedFilePath");
    const auto typeNumber = coder.decodeInt("type").value_or(0);
    if (!name || !original || !copy || typeNumber < 0 || typeNumber > 6) return nullptr;
    const auto type = static_cast<AEAssetType>(typeNumber);

    // Built from what the archive says, so no file is read here.
    std::shared_ptr<AEAsset> asset(new AEAsset());
    asset->name = *name;
    asset->type = type;
    const auto colors = AEColors::getAssetColor(type, true);
    asset->plotBGColor = colors.background;
    asset->plotFGColor = colors.foreground;
    asset->ingested = coder.decodeBool("ingested").value_or(false);
    asset->proxyFilePath = AEIngest::loadPath(coder.decodeString("proxyFilePath").value_or(""));
    asset->bgmSettings = coder.decodeObject<AEBGMSettings>("bgmSettings");
    if (!asset->bgmSettings) asset->bgmSettings = std::make_shared<AEBGMSettings>();
    asset->markers =
        coder.decodeObjectArray<AEMarker>("markers").value_or(std::vector<std::shared_ptr<AEMarker>>{});
    asset->duration =
        type == AEAssetType::silence ? kSilenceDuration : coder.decodeDouble("duration").value_or(0);
    asset->fileSize = coder.decodeInt("fileSize").value_or(0);
    asset->frequency = static_cast<int>(coder.decodeInt("frequency").value_or(0));
    asset->nChannels = static_cast<int>(coder.decodeInt("nChannels").value_or(0));
    asset->bitDepth = static_cast<int>(coder.decodeInt("bitDepth").value_or(0));
    asset->volumeGain = coder.decodeDouble("volumeGain").value_or(0);
    asset->subsamples = coder.decodeObject<AESubsamples>("subsamples");
    if (!asset->subsamples) asset->subsamples = std::make_shared<AESubsamples>();
    asset->originalFilePath = AEIngest::loadPath(*original);
    asset->ingestedFilePath = AEIngest::loadPath(*copy);
    asset->id = coder.decodeString("id").value_or("");
    if (asset->id.isEmpty())
        asset->id = type == AEAssetType::silence ? kSilenceId : hallard_fileMd5(asset->originalFilePath);
    const auto bw = coder.decodeInt("bwStatus").value_or(0);
    asset->bwStatus = bw >= 0 && bw <= 5 ? static_cast<BWStatus>(bw) : BWStatus::none;
    asset->bgmStart = coder.decodeFloat("bgmStart").value_or(0);
    asset->bgmId = coder.decodeString("bgmId").value_or("");
    if (const auto color = coder.decodeString("customColor"); color && QColor::isValidColorName(*color))
        asset->customColor = QColor::fromString(*color);
    appendToGlobalList(asset);

    if (!asset->ingested) asset->ingested = fu_fileExists(asset->ingestedFilePath);
    asset->present = true;
    if (type != AEAssetType::silence) {
        if (!asset->ingested) {
            asset->startIngest();
        } else {
            std::weak_ptr<AEAsset> weak = asset;
            const QString copyName = QFileInfo(asset->ingestedFilePath).fileName();
            Queue::execute([weak, copyName] {
                const bool copyThere = AEIngest::isIngested(copyName);
                onMain([weak, copyThere] {
                    auto self = weak.lock();
                    if (!self) return;
                    if (copyThere) {
                        self->performSubasmples();
                        return;
                    }
                    // The copy went behind our back: make it again.
                    self->ingested = false;
                    self->startIngest();
                });
            });
        }
    }
    if (slowder) slowder->itemLoaded();
    return asset;
}

std::shared_ptr<AEAsset> AEAsset::duplicate() const {
    Args args;
    args.filePath = originalFilePath;
    args.name = name;
    args.type = type;
    args.subsamplesPerSecond = subsamples->samplesPerSecond;
    args.duration = duration;
    args.fileSize = fileSize;
    args.frequency = frequency;
    args.nChannels = nChannels;
    args.bitDepth = bitDepth;
    args.ingestedFilePath = ingestedFilePath;
    args.ingest = false;
    args.generateSubsamples = false;
    auto copy = make(args);
    copy->bgmSettings = bgmSettings;
    copy->subsamples = subsamples;
    copy->plotBGColor = plotBGColor;
    copy->plotFGColor = plotFGColor;
    copy->drawOverlay = drawOverlay;
    copy->plotOverlayColor = plotOverlayColor;
    copy->volumeGain = volumeGain;
    copy->id = id;
    for (const auto& marker : markers)
        copy->markers.push_back(marker->copy());
    return copy;
}

void AEAsset::removeIngestedFile() {
    qxLog("AEAsset.removeIngestedFile " + ingestedFilePath);
    if (!ingestedFilePath.isEmpty()) fu_deleteFile(ingestedFilePath);
    AECache::removeSubsamplesFromCache(originalFilePath);
}

QString AEAsset::fileName() const {
    return QFileInfo(originalFilePath).fileName();
}

std::optional<QString> AEAsset::getUsableFilePath() {
    qxLog("AEAsset.getUsableFilePath " + name);
    if (subsamples->recording) return originalFilePath;
    const bool hasCopy = ingested && QFileInfo(ingestedFilePath).fileName() != "_.wav";
    if (hasCopy && fu_fileExists(ingestedFilePath)) return ingestedFilePath;
    ingestedFilePath = "";
    ingested = false;
    if (!fu_fileExists(originalFilePath)) return std::nullopt;
    startIngest();
    return originalFilePath;
}

void AEAsset::autoGain(bool async) {
    std::weak_ptr<AEAsset> weak = shared_from_this();
    const auto path = getUsableFilePath();
    if (!path) return;
    auto measure = [weak, path = *path] {
        const double gain = -12.0 - soxUt_getRMSLevel(path);
        onMain([weak, gain] {
            if (auto self = weak.lock()) self->volumeGain = gain;
        });
    };
    if (async)
        Queue::execute(measure);
    else
        measure();
}

bool AEAsset::relink(const QString& newPath) {
    qxLog("relink");
    if (!mediaAcceptedOrTold(newPath)) return false;
    originalFilePath = newPath;
    ingestedFilePath = AEIngest::ingestMedia(newPath).value_or("");
    performSubasmples();
    ingested = !ingestedFilePath.isEmpty();
    return true;
}

void AEAsset::chooseAndRelink() {
    const QString chosen =
        fu_selectFile("Relink Asset", "Choose path to relink " + name, {QFileInfo(originalFilePath).suffix()},
                      QFileInfo(originalFilePath).path());
    if (!chosen.isEmpty()) relink(chosen);
}

void AEAsset::appendToGlobalList(const std::shared_ptr<AEAsset>& asset) {
    std::lock_guard lock(globalListMutex);
    globalAssets.push_back(asset);
}

std::shared_ptr<AEAsset> AEAsset::getAssetByOriginalFilePath(const QString& path) {
    std::lock_guard lock(globalListMutex);
    for (const auto& asset : globalAssets)
        if (asset->originalFilePath == path) return asset;
    return nullptr;
}

std::vector<std::shared_ptr<AEAsset>> AEAsset::globalList() {
    std::lock_guard lock(globalListMutex);
    return globalAssets;
}
