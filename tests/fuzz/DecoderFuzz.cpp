#include "DecoderFuzz.h"

#include "foundation/Interaction.h"
#include "foundation/KeyedArchive.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEMarker.h"
#include "project/model/AEShow.h"
#include "support/TestEnvironment.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

// One of archive, show, episode, timeline: which seeds the target starts from.
#ifndef ZENDREL_FUZZ_TARGET
#error "ZENDREL_FUZZ_TARGET must name the decoder"
#endif

namespace {

void fail(const char* what, const QString& detail) {
    std::fprintf(stderr, "fuzz check failed: %s: %s\n", what, detail.toLocal8Bit().constData());
    std::abort();
}

std::shared_ptr<AEAsset> storedAsset(const QString& id, double duration, AEAssetType type) {
    auto asset = AEAsset::makePlaceholder();
    asset->id = id;
    asset->name = id;
    asset->type = type;
    asset->duration = duration;
    AEAssetDB::saveAsset(asset);
    return asset;
}

std::shared_ptr<AETimeLine> seedTimeline() {
    auto talk = storedAsset("fuzz-talk", 30.0, AEAssetType::speech);
    auto sting = storedAsset("fuzz-sting", 2.0, AEAssetType::effect);
    auto bed = storedAsset("fuzz-bed", 60.0, AEAssetType::bgm);
    auto jingle = storedAsset("fuzz-jingle", 4.0, AEAssetType::jingle);
    AEAsset::Args silence;
    silence.type = AEAssetType::silence;
    auto tl = AETimeLine::make("fuzz-timeline");
    auto first = tl->appendItemInMainLane(talk, AETimeRange(1.0, 12.5), false);
    tl->appendItemInMainLane(AEAsset::make(silence), AETimeRange(0, 2.0), false);
    tl->appendItemInMainLane(jingle, std::nullopt, false);
    tl->appendItemInMainLane(talk, AETimeRange(20.0, 30.0), false);
    tl->attachItem(bed, -1, 0.5, std::nullopt, false, false);
    tl->attachItem(sting, 1, 3.0, std::nullopt, false, false);
    tl->attachItem(sting, 1, 3.5, std::nullopt, false, false);
    first->markers.push_back(std::make_shared<AEMarker>(2.0, 4.0, AEMarkerType::chapter, "Intro"));
    tl->muteItem(first);
    return tl;
}

std::shared_ptr<AEEpisode> seedEpisode() {
    auto episode = std::make_shared<AEEpisode>("E7", "A title", "", "/nowhere/");
    episode->notes = "notes";
    episode->assetIDs = {"fuzz-talk", "fuzz-bed", "AESilence"};
    return episode;
}

std::shared_ptr<AEShow> seedShow() {
    auto show = std::make_shared<AEShow>("Fuzz Show");
    show->notes = "notes";
    show->episodes = {seedEpisode(), std::make_shared<AEEpisode>("E8")};
    show->commonAssets = {AEAssetDB::loadAsset("fuzz-sting")};
    return show;
}

// Whatever decodes must hold the model's rules and survive being saved and loaded again: a file
// that loads but cannot be read back after the next save would lose the person's work.
void check(const std::shared_ptr<KeyedObject>& object) {
    if (!object) return;
    if (auto tl = std::dynamic_pointer_cast<AETimeLine>(object)) {
        if (const auto fault = tl->invariantFault()) fail("decoded timeline", *fault);
    }
    const QByteArray again = KeyedArchiver::archivedData(object);
    const auto reread = KeyedUnarchiver::unarchiveObject(again, "fuzz round trip");
    if (!reread) fail("round trip", object->archiveClassName());
    if (auto tl = std::dynamic_pointer_cast<AETimeLine>(reread)) {
        if (const auto fault = tl->invariantFault()) fail("timeline after a round trip", *fault);
        const auto before = std::dynamic_pointer_cast<AETimeLine>(object);
        if (tl->mainLane.size() != before->mainLane.size() ||
            tl->attachedItems.size() != before->attachedItems.size())
            fail("timeline after a round trip", "items lost");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    testenv::isolateUserFolders();
    static QCoreApplication app(*argc, *argv);
    testenv::useStoreWorkFolder();
    setUserInteraction(std::make_shared<ScriptedInteraction>());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    check(KeyedUnarchiver::unarchiveObject(bytes, "fuzz input"));
    // Main-thread completions queued by the decoders run now, not pile up.
    QCoreApplication::processEvents();
    return 0;
}

const char* fuzzTargetName() {
    return ZENDREL_FUZZ_TARGET;
}

std::vector<QByteArray> fuzzSeeds() {
    const QString target = ZENDREL_FUZZ_TARGET;
    std::vector<std::shared_ptr<const KeyedObject>> roots;
    if (target == "timeline" || target == "archive") roots.push_back(seedTimeline());
    if (target == "episode" || target == "archive") roots.push_back(seedEpisode());
    if (target == "show" || target == "archive") roots.push_back(seedShow());
    if (target == "archive") {
        roots.push_back(AEAssetDB::loadAsset("fuzz-bed"));
        roots.push_back(std::make_shared<AEMarker>(1.5, std::nullopt, AEMarkerType::uhm, "uhm"));
    }
    std::vector<QByteArray> seeds;
    for (const auto& root : roots)
        seeds.push_back(KeyedArchiver::archivedData(root));
    return seeds;
}
