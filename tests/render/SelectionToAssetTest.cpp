#include "render/SelectionToAsset.h"

#include "RenderFixture.h"
#include "foundation/QXTimer.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "support/TestEnvironment.h"

class SelectionToAssetTest : public RenderFixture {
protected:
    void SetUp() override {
        RenderFixture::SetUp();
        testenv::useStoreWorkFolder();
        zendrelShow = std::make_shared<AEShow>("Selection");
        episode = std::make_shared<AEEpisode>("S1", "t", "", AEIngest::workFolder);
        episode->nChannels = AENChannels::mono;
        zendrelShow->episodes = {episode};
        AEAssetListVCGlobal.clear();
        AEEpisodeAssetListVCGlobal.clear();
    }
    void TearDown() override {
        zendrelShow.reset();
        AEAssetListVCGlobal.clear();
        AEEpisodeAssetListVCGlobal.clear();
        RenderFixture::TearDown();
    }

    std::shared_ptr<AEAsset> run(AESelectionToAssetWhere where) {
        std::shared_ptr<AEAsset> made;
        bool called = false;
        selectionToAssetDone("Best bit", AEAssetType::jingle, where, tl, episode,
                             [&](const std::shared_ptr<AEAsset>& asset) {
                                 made = asset;
                                 called = true;
                             });
        EXPECT_TRUE(testenv::waitUntil([&] { return called; }, 120000));
        return made;
    }

    std::shared_ptr<AETimeLine> tl = tlfixture::timeline();
    std::shared_ptr<AEEpisode> episode;
};

TEST_F(SelectionToAssetTest, TheSelectionAndTheLanesOverItBecomeACommonAsset) {
    const auto c = fileAsset(click("c.wav", 1.0));
    for (int i = 0; i < 4; ++i)
        tl->appendItemInMainLane(c, std::nullopt, false);
    // The lanes render whole, whatever the selection: this click lands 2.5 s into the new asset.
    tl->attachItem(fileAsset(click("e.wav", 0.5), AEAssetType::effect), 1, 2.5, std::nullopt, false, false);
    tl->drag->setRange(AETimeRange(1.0, 3.0));
    const QString before = QString::fromUtf8(KeyedArchiver::archivedData(tl));

    const auto asset = run(AESelectionToAssetWhere::common);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->name, "Best bit");
    EXPECT_EQ(asset->type, AEAssetType::jingle);
    EXPECT_TRUE(QFileInfo(asset->originalFilePath).fileName().startsWith("selection_"));
    EXPECT_EQ(QFileInfo(asset->originalFilePath).absolutePath() + "/", AEIngest::ingestPath);
    EXPECT_EQ(asset->getUsableFilePath(), asset->originalFilePath) << "its own copy: no second ingest";
    ASSERT_EQ(zendrelShow->commonAssets.size(), 1u);
    EXPECT_EQ(zendrelShow->commonAssets[0], asset);
    EXPECT_TRUE(episode->assets.empty());

    const Decoded d = decode(asset->originalFilePath);
    EXPECT_EQ(d.channels, 1) << "the episode's channels";
    EXPECT_NEAR(d.seconds(), 3.0, 0.002) << "two clips of the main lane mixed with a lane of 3 s";
    const auto found = onsets(d);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_NEAR(found[0], 0.0, 0.001);
    EXPECT_NEAR(found[1], 1.0, 0.001);
    EXPECT_NEAR(found[2], 2.5, 0.001);
    EXPECT_EQ(QString::fromUtf8(KeyedArchiver::archivedData(tl)), before) << "the timeline is unchanged";
    EXPECT_TRUE(QXTimer::getTimerNameList().contains("AETimeLine.commonIdle"))
        << "timers back after the render";
}

TEST_F(SelectionToAssetTest, AnEpisodeAssetJoinsTheEpisodesList) {
    tl->appendItemInMainLane(fileAsset(click("c.wav", 2.0)), std::nullopt, false);
    tl->drag->setRange(AETimeRange(0.5, 1.5));
    const auto asset = run(AESelectionToAssetWhere::episode);
    ASSERT_TRUE(asset);
    ASSERT_EQ(episode->assets.size(), 1u);
    EXPECT_EQ(episode->assets[0], asset);
    EXPECT_TRUE(zendrelShow->commonAssets.empty());
    EXPECT_NEAR(decode(asset->originalFilePath).seconds(), 1.0, 0.002);
}
