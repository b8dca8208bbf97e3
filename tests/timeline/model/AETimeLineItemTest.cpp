#include "TimelineFixture.h"
#include "playback/RPlayer.h"
#include "timeline/model/AEKeyframeView.h"

using namespace tlfixture;

TEST(AETimeLineItem, OutTimeOfMusicKeepsAtLeastTheAssetEnd) {
    const auto bed = music("bed", 100);
    auto a = AETimeLineItem::make(bed, std::nullopt, -1, 10);
    EXPECT_EQ(a->outTime(), 110.0);
    auto b = AETimeLineItem::make(bed, std::nullopt, -1, 0, AETimeRange(20, 100));
    EXPECT_EQ(b->outTime(), 100.0) << "duration 80, but the asset end wins";
    b->bgmOutTime = 42;
    EXPECT_EQ(b->outTime(), 42.0);
    EXPECT_TRUE(b->getRangeInTimeline().isEqual(AETimeRange(0, 42)));

    auto speech = AETimeLineItem::make(asset("talk", 30), std::nullopt, 0, 100.0001, AETimeRange(10, 30));
    EXPECT_EQ(speech->inTime, 100.0) << "on the grid";
    EXPECT_FALSE(speech->player) << "no file, no player";
    EXPECT_EQ(speech->outTime(), 120.0);
    EXPECT_EQ(speech->globalTimeToAssetTime(105.001), 105.001 - 100 + 10) << "not rounded";
    EXPECT_EQ(speech->getGlobalTime(15.001), 105.0);
    EXPECT_EQ(speech->getLocalTime(105.001), 5.0);
    EXPECT_EQ(speech->assetTimeToGlobalTime(15), 105.0);
}

TEST(AETimeLineItem, DuplicateSharesAssetAndPlayerAndCopiesTheRest) {
    auto item = AETimeLineItem::make(music("bed", 60), std::nullopt, -1, 5, std::nullopt,
                                     std::make_shared<RPlayer>("/some/file.wav"));
    item->bgmOutTime = 40;
    item->volumeKFs->setKeyframe(3.0, -6);
    item->addMarker(2.0, std::nullopt, "m", AEMarkerType::normal);
    item->setFadeOutKFs();
    item->cutOnce = true;
    item->ducked = true;
    item->active = false;
    item->selected = true;

    const auto copy = item->duplicate();
    EXPECT_EQ(copy->id, item->id);
    EXPECT_EQ(copy->asset, item->asset);
    EXPECT_EQ(copy->player, item->player);
    EXPECT_EQ(copy->bgmOutTime, 40.0);
    EXPECT_EQ(copy->active, false);
    EXPECT_TRUE(copy->selected);
    ASSERT_EQ(copy->markers.size(), 1u);
    EXPECT_NE(copy->markers[0], item->markers[0]);
    EXPECT_EQ(copy->markers[0]->id, item->markers[0]->id);
    EXPECT_NE(copy->volumeKFs, item->volumeKFs);
    EXPECT_EQ(copy->volumeKFs->getValue(3.0), -6.0);
    EXPECT_EQ(copy->kfView->keyframes, copy->volumeKFs);
    EXPECT_FALSE(copy->cutOnce);
    EXPECT_FALSE(copy->ducked);
    EXPECT_TRUE(copy->fadeOutKFS->keyframes.empty()) << "the fade comes back with the next repair pass";
    EXPECT_EQ(copy->globalKFS, copy->volumeKFs);

    copy->volumeKFs->setKeyframe(4.0, -1);
    copy->kfView->keyframeListModifiedCallback();
    EXPECT_EQ(copy->globalKFS->getValue(4.0), -1.0) << "the editor's changes reach the applied envelope";
    EXPECT_EQ(item->volumeKFs->keyframes.size(), 1u) << "the copy's editor works on the copy";
}

TEST(AETimeLineItem, FadeOutLivesBesideTheUserEnvelope) {
    auto item = AETimeLineItem::make(music("bed", 100), std::nullopt, -1, 0);
    item->bgmOutTime = 60;
    item->setFadeOutKFs();
    ASSERT_EQ(item->fadeOutKFS->keyframes.size(), 2u);
    EXPECT_EQ(item->fadeOutKFS->keyframes[0]->time, 55.0);
    EXPECT_EQ(item->fadeOutKFS->keyframes[0]->value, 0.0);
    EXPECT_EQ(item->fadeOutKFS->keyframes[1]->time, 60.0);
    EXPECT_EQ(item->globalKFS, item->fadeOutKFS) << "no envelope of the user's: the fade alone";

    item->volumeKFs->setKeyframe(58.0, -6.0);
    item->updateGlobalKFs();
    EXPECT_DOUBLE_EQ(item->globalKFS->getValue(58.0), -6.0 + item->fadeOutKFS->getValue(58.0));
    EXPECT_DOUBLE_EQ(item->globalKFS->getValue(58.0), -42.0);
    EXPECT_EQ(item->volumeKFs->keyframes.size(), 1u) << "the user's envelope is left as it was";

    item->removeFadeOutKFs();
    EXPECT_FALSE(item->fadeOutKFS);
    item->updateGlobalKFs();
    EXPECT_EQ(item->globalKFS, item->volumeKFs);

    auto talk = AETimeLineItem::make(asset("talk", 100), std::nullopt, 0, 0);
    talk->setFadeOutKFs();
    EXPECT_TRUE(talk->fadeOutKFS->keyframes.empty()) << "only music fades by itself";
}

TEST(AETimeLineItem, VisibleMarkersAreCopiesInTimelineTime) {
    auto talk = asset("talk", 100);
    talk->markers.push_back(std::make_shared<AEMarker>(25.0, std::nullopt, AEMarkerType::uhm, "asset's"));
    auto item = AETimeLineItem::make(talk, std::nullopt, 0, 10, AETimeRange(5, 30));
    const auto own = item->addMarker(std::nullopt, 12.0, "note", AEMarkerType::normal);
    item->addMarker(40.0, std::nullopt, "outside", AEMarkerType::normal);
    item->addMarker(30.0, std::nullopt, "on the end", AEMarkerType::normal);
    EXPECT_EQ(own->inTime, 7.0);

    const auto shown = item->getVisibleMarkers();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[0]->inTime, 12.0);
    EXPECT_EQ(shown[1]->inTime, 35.0) << "both ends of the range included";
    EXPECT_EQ(shown[2]->inTime, 30.0) << "then those of the asset";
    EXPECT_EQ(item->markers.size(), 3u);

    item->deleteMarker(*shown[2]);
    EXPECT_TRUE(talk->markers.empty());
    item->deleteMarker(*shown[0]);
    EXPECT_EQ(item->markers.size(), 2u);
}
