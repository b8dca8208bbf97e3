#include "project/model/AEAsset.h"

#include "foundation/Prefs.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEBGMSettings.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEMarker.h"
#include "project/model/AEShow.h"
#include "project/model/AESubsamples.h"
#include "project/model/AssetDrop.h"
#include "project/model/Globals.h"
#include "support/ArchiveEdit.h"
#include "support/EventWait.h"
#include "support/ScriptedSession.h"
#include "support/TestAudio.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// A working folder of its own, a scripted door, and tones whose content differs test by test, so
// that every test gets asset ids no other test has put in the process-wide store.
class AssetFolder : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        testenv::useStoreWorkFolder();
        folder = AEIngest::workFolder;
    }
    void TearDown() override { testenv::pumpEventsFor(50); }

    QString tone(const QString& name, double seconds = 1.0) {
        static int serial = 0;
        // A distinct gain makes distinct content, hence a distinct id.
        return maker.sine(name, 44100, 2, 16, seconds, -6.0 - 0.01 * ++serial);
    }
    std::shared_ptr<AEAsset> dropped(const QString& path) {
        AEAsset::Args args;
        args.filePath = path;
        args.isNew = true;
        return AEAsset::make(args);
    }
    bool ingestedSoon(const std::shared_ptr<AEAsset>& asset) {
        return testenv::waitUntil([&] { return asset->ingested && QFile::exists(asset->ingestedFilePath); },
                                  10000);
    }

    QTemporaryDir dir;
    TestAudio maker;
    QString folder;
};

} // namespace

TEST_F(AssetFolder, ADroppedFileIsProbedIngestedSummarisedAndStored) {
    const QString source = tone("Intervista ò 2.wav", 2.0);
    auto asset = dropped(source);
    EXPECT_EQ(asset->name, "Intervista ò 2");
    EXPECT_EQ(asset->frequency, 44100);
    EXPECT_EQ(asset->nChannels, 2);
    EXPECT_EQ(asset->bitDepth, 16);
    EXPECT_NEAR(asset->duration, 2.0, 0.001);
    EXPECT_EQ(asset->id.size(), 32);
    ASSERT_TRUE(ingestedSoon(asset));
    EXPECT_EQ(asset->ingestedFilePath,
              AEIngest::ingestPath + "Intervista___2___" + asset->id.left(8) + ".wav");
    EXPECT_TRUE(testenv::waitUntil([&] { return asset->subsamples->loaded.load(); }, 10000));
    EXPECT_NEAR(static_cast<double>(asset->subsamples->samples()->size()), 600.0, 2.0);
    EXPECT_TRUE(QFile::exists(AEAssetDB::getPath(*asset)));
    EXPECT_EQ(AEAssetDB::loadAsset(asset->id), asset);
}

// Silence has no record and never joins an episode's list.
TEST_F(AssetFolder, TheSameFileDroppedTwiceIsOneAssetInTheStoreAndSilenceIsNone) {
    const QString source = tone("twice.wav");
    auto first = dropped(source);
    QFile::copy(source, dir.path() + "/elsewhere.wav");
    auto second = dropped(dir.path() + "/elsewhere.wav");
    EXPECT_EQ(first->id, second->id);
    EXPECT_EQ(AEAssetDB::loadAsset(first->id), second);
    std::vector<std::shared_ptr<AEAsset>> list;
    AEEpisode::appendAsset(list, first);
    AEEpisode::appendAsset(list, second);
    AEAsset::Args args;
    args.type = AEAssetType::silence;
    args.isNew = true;
    auto silence = AEAsset::make(args);
    AEEpisode::appendAsset(list, silence);
    EXPECT_EQ(list.size(), 1u);
    EXPECT_EQ(silence->id, "AESilence");
    EXPECT_FALSE(QFile::exists(AEAssetDB::getPath(*silence)));
}

// The episode's check and the usable path each make a lost copy again; with both files gone there is
// nothing to use (the person cancels the search).
TEST_F(AssetFolder, CheckAssetsAndUsablePathRepairALostCopyAndGiveNothingWhenBothAreGone) {
    auto episode = std::make_shared<AEEpisode>("E2", "t", "", folder);
    const QString source = tone("lost copy.wav");
    auto asset = dropped(source);
    ASSERT_TRUE(ingestedSoon(asset));
    episode->assets = {asset};
    const QString copy = asset->ingestedFilePath;
    QFile::remove(copy);
    episode->checkAssets();
    EXPECT_TRUE(QFile::exists(copy));
    EXPECT_TRUE(asset->present);

    QFile::remove(copy);
    EXPECT_EQ(asset->getUsableFilePath(), source);
    EXPECT_TRUE(
        testenv::waitUntil([&] { return QFile::exists(copy) && asset->ingestedFilePath == copy; }, 10000));
    EXPECT_EQ(asset->getUsableFilePath(), copy);

    QFile::remove(copy);
    QFile::remove(source);
    EXPECT_FALSE(asset->getUsableFilePath());
    EXPECT_EQ(asset->ingestedFilePath, "");
    EXPECT_FALSE(asset->ingested);
    episode->checkAssets();
    EXPECT_FALSE(asset->present);
}

TEST_F(AssetFolder, ArchiveRoundTripKeepsTheStoredFields) {
    auto asset = dropped(tone("stored.wav"));
    ASSERT_TRUE(ingestedSoon(asset));
    asset->volumeGain = -3.5;
    asset->bgmStart = 1.25;
    asset->bgmId = "bgm";
    asset->bwStatus = BWStatus::sourceDone;
    asset->customColor = QColor(1, 2, 3, 4);
    asset->bgmSettings = std::make_shared<AEBGMSettings>(false, 2.5, false);
    asset->markers.push_back(std::make_shared<AEMarker>(0.5, 0.75, AEMarkerType::chapter, "Intro"));
    const auto back = std::dynamic_pointer_cast<AEAsset>(
        KeyedUnarchiver::unarchiveObject(KeyedArchiver::archivedData(asset), "test"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->id, asset->id);
    EXPECT_EQ(back->originalFilePath, asset->originalFilePath);
    EXPECT_EQ(back->ingestedFilePath, asset->ingestedFilePath);
    EXPECT_TRUE(back->ingested);
    EXPECT_EQ(back->volumeGain, -3.5);
    EXPECT_EQ(back->bgmStart, 1.25);
    EXPECT_EQ(back->bgmId, "bgm");
    EXPECT_EQ(back->bwStatus, BWStatus::sourceDone);
    EXPECT_EQ(back->customColor, QColor(1, 2, 3, 4));
    EXPECT_FALSE(back->bgmSettings->loopable);
    EXPECT_EQ(back->bgmSettings->fadeOut, 2.5);
    ASSERT_EQ(back->markers.size(), 1u);
    EXPECT_EQ(back->markers[0]->notes, "Intro");
    EXPECT_EQ(back->frequency, 44100);
    testenv::pumpEventsFor(100);
}

TEST_F(AssetFolder, UnknownTypeIntegerLeavesAPlaceholderAndAWarning) {
    auto asset = dropped(tone("odd type.wav"));
    const QString path = AEAssetDB::getPath(*asset);
    ASSERT_TRUE(testenv::editArchiveFile(path, "AEAsset", [](QJsonObject& keys) {
        keys["type"] = QJsonObject{{"int", 9}};
    }));

    const QString fakeId = "0123456789abcdef0123456789abcdef";
    QFile::copy(path, AEIngest::ingestPath + fakeId + ".aeasset");
    const auto placeholder = AEAssetDB::loadAsset(fakeId);
    ASSERT_TRUE(placeholder);
    EXPECT_EQ(placeholder->name, "");
    EXPECT_EQ(placeholder->type, AEAssetType::speech);
    const auto lines = door->transcript();
    EXPECT_NE(std::find(lines.begin(), lines.end(), "alert: Warning | Asset " + fakeId + " unavailable"),
              lines.end());
}

TEST_F(AssetFolder, ARecordInTheOlderPlaceIsFoundAndIngested) {
    const QString source = tone("old layout.wav");
    AEAsset::Args args;
    args.filePath = source;
    args.ingest = false;
    args.generateSubsamples = false;
    auto old = AEAsset::make(args);
    // Written by hand under an id the store has never seen, beside the show, without a copy.
    old->id = "fedcba9876543210fedcba9876543210";
    ASSERT_TRUE(KeyedArchiver::archiveRootObject(old, AEAssetDB::zendrelFolder() + old->id + ".aeasset"));
    const auto found = AEAssetDB::loadAsset(old->id);
    ASSERT_TRUE(found);
    EXPECT_NE(found, old);
    EXPECT_EQ(found->originalFilePath, source);
    EXPECT_TRUE(found->ingestedFilePath.startsWith(AEIngest::ingestPath));
    EXPECT_TRUE(QFile::exists(found->ingestedFilePath));
}

TEST_F(AssetFolder, DropOnAnEpisodeRemembersTheAnswersAndSavesTheShow) {
    zendrelShow = std::make_shared<AEShow>("Dropped");
    auto episode = std::make_shared<AEEpisode>("E1", "t", "", folder);
    zendrelShow->episodes = {episode};
    const auto made = AEAssetIngestDone(episode, {tone("one.wav"), tone("two.wav")}, false, false, true);
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(episode->assets.size(), 2u);
    EXPECT_TRUE(prefs_getValueBool("AEIngest.DontAskAtDrag", false));
    EXPECT_FALSE(prefs_getValueBool("AEIngest.Normalize", true));
    for (const auto& asset : made)
        EXPECT_TRUE(QFile::exists(AEAssetDB::getPath(*asset)));
    const auto back = AEShow::load(folder + "show.AEShow");
    ASSERT_EQ(back->episodes.size(), 1u);
    EXPECT_EQ(back->episodes[0]->assetIDs, (QStringList{made[0]->id, made[1]->id}));
    zendrelShow.reset();
}

TEST_F(AssetFolder, CommonAssetsComeBackThroughTheStoreAfterALoad) {
    zendrelShow = std::make_shared<AEShow>("Common");
    const auto made = ingestCommonAssets({tone("jingle.wav")});
    ASSERT_EQ(made.size(), 1u);
    const auto back = AEShow::load(folder + "show.AEShow");
    ASSERT_EQ(back->commonAssets.size(), 1u);
    EXPECT_EQ(back->commonAssets[0], made[0]);
    zendrelShow.reset();
}

TEST_F(AssetFolder, AutoGainTargetsMinusTwelveDecibels) {
    auto asset = dropped(tone("gain.wav"));
    ASSERT_TRUE(ingestedSoon(asset));
    asset->autoGain(false);
    // A full-scale sine is 3 dB below its peak; this one peaks near -6 dB, so RMS about -9 dB.
    EXPECT_NEAR(asset->volumeGain, -3.0, 0.3);
}

TEST_F(AssetFolder, ACopyDeletedWhileTheProgramWasClosedIsMadeAgainOnLoad) {
    auto asset = dropped(tone("reload.wav"));
    ASSERT_TRUE(ingestedSoon(asset));
    const QString copy = asset->ingestedFilePath;
    // The record as a later run finds it: under an id this process has not loaded yet.
    asset->id = "00112233445566778899aabbccddeeff";
    ASSERT_TRUE(KeyedArchiver::archiveRootObject(asset, AEAssetDB::getPath(*asset)));
    QFile::remove(copy);
    const auto reloaded = AEAssetDB::loadAsset(asset->id);
    ASSERT_NE(reloaded, asset);
    EXPECT_TRUE(testenv::waitUntil([&] { return reloaded->ingested && QFile::exists(copy); }, 10000));
    EXPECT_EQ(reloaded->ingestedFilePath, copy);
}

TEST_F(AssetFolder, SavingTheShowRewritesTheRecordsOfLoadedEpisodeAssets) {
    auto asset = dropped(tone("resaved.wav"));
    ASSERT_TRUE(ingestedSoon(asset));
    QFile::remove(AEAssetDB::getPath(*asset));
    AEShow show("S");
    auto episode = std::make_shared<AEEpisode>("E", "t", "", folder);
    AEEpisode::appendAsset(episode->assets, asset);
    episode->assetsLoaded = true;
    show.episodes = {episode};
    ASSERT_TRUE(show.save(folder + "show.AEShow"));
    EXPECT_TRUE(QFile::exists(AEAssetDB::getPath(*asset)));
}
