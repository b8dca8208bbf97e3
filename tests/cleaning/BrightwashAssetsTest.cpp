#include "cleaning/BrightwashAssets.h"

#include "cleaning/CleaningFixture.h"
#include "project/model/AEAsset.h"
#include "project/model/AEMarker.h"
#include "support/EventWait.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/Undo.h"

namespace {

std::shared_ptr<AEAsset> fileAsset(const QString& path) {
    AEAsset::Args args;
    args.filePath = path;
    args.generateSubsamples = false;
    args.isIngestedCopy = true;
    return AEAsset::make(args);
}

class BrightwashAssetsTest : public CleaningFixture {
protected:
    void SetUp() override {
        CleaningFixture::SetUp();
        source = fileAsset(speech("voice.wav", "A voice to clean, with a pause.   And more words."));
        source->name = "voice";
        source->markers.push_back(
            std::make_shared<AEMarker>(1.0, std::nullopt, AEMarkerType::normal, "m", std::nullopt));
        assets.push_back(source);
        timeline = AETimeLine::make("T", {AETimeLineItem::make(source, std::nullopt, 0, 0)});
        timeline->undoDoCallback = [this] { undo.addStatus(timeline->getStatus()); };
        controller.timeline = timeline;
        controller.makeAsset = fileAsset;
        controller.ended = [this](const QString&) { ++ended; };
    }

    QStringList names() const {
        QStringList out;
        for (const auto& a : assets)
            out << a->name;
        return out;
    }

    std::vector<std::shared_ptr<AEAsset>> assets;
    std::shared_ptr<AEAsset> source;
    std::shared_ptr<AETimeLine> timeline;
    Undo undo;
    BrightwashAssets controller{assets};
    int ended = 0;
};

} // namespace

TEST_F(BrightwashAssetsTest, ReplacingMovesTheItemsAndUndoBringsThemBack) {
    controller.assetInspectorVCBrightwash(0, true);
    EXPECT_EQ(source->bwStatus, BWStatus::sourceBusy);
    ASSERT_EQ(assets.size(), 2u);
    EXPECT_EQ(assets[1]->name, "[voice]");
    EXPECT_EQ(assets[1]->bwStatus, BWStatus::destinationBusy);
    controller.assetInspectorVCBrightwash(0, true); // while it runs
    EXPECT_TRUE(transcript().join("\n").contains("This Asset is already being Brightwashed."));
    controller.assetInspectorVCBrightwash(-1, true); // nothing

    ASSERT_TRUE(testenv::waitUntil([&] { return ended == 1; }, 60000));
    ASSERT_EQ(assets.size(), 1u);
    const auto cleaned = assets[0];
    EXPECT_EQ(cleaned->originalFilePath, path("voice_cln.wav"));
    EXPECT_EQ(cleaned->bwStatus, BWStatus::destinationDone);
    EXPECT_EQ(source->bwStatus, BWStatus::sourceDone);
    EXPECT_EQ(cleaned->markers.size(), 1u); // kept: no pause removal
    EXPECT_EQ(timeline->mainLane.front()->asset, cleaned);
    EXPECT_TRUE(controller.brightwashingList.empty());

    const auto back = undoTimeline(timeline, undo);
    EXPECT_EQ(back->mainLane.front()->asset, source);
}

TEST_F(BrightwashAssetsTest, LeavingDoublesTheSourceWhichCannotBeCleanedAgain) {
    controller.assetInspectorVCBrightwash(0, false);
    ASSERT_TRUE(testenv::waitUntil([&] { return ended == 1; }, 60000));
    ASSERT_EQ(assets.size(), 2u);
    EXPECT_EQ(assets[0], source);
    EXPECT_EQ(source->bwStatus, BWStatus::sourceDone);
    EXPECT_EQ(timeline->mainLane.front()->asset, source);
    controller.assetInspectorVCBrightwash(0, false);
    EXPECT_TRUE(transcript().join("\n").contains("This Asset has been already Brightwashed."));
}

TEST_F(BrightwashAssetsTest, AFailedRunLosesNothing) {
    QFile::remove(source->originalFilePath);
    controller.brightwashAsset(source, true);
    ASSERT_TRUE(testenv::waitUntil([&] { return ended >= 1; }, 60000));
    EXPECT_EQ(names(), QStringList{"voice"});
    EXPECT_EQ(source->bwStatus, BWStatus::none);
    EXPECT_EQ(timeline->mainLane.front()->asset, source);
    EXPECT_TRUE(transcript().join("\n").contains("no such file"));
}
