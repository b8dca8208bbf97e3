// The inspector's own player: the asset alone on a timeline that plays, zooms and goes to its ends
// beside the episode's, the music start set at the playhead, and a close that stops and frees it.
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "playback/RPlayer.h"
#include "project/panels/AEAssetVC.h"
#include "support/EventWait.h"
#include "support/TestAudio.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/TimelineFixture.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QToolButton>

namespace {

void press(AEAssetVC& panel, const QString& tip) {
    for (auto* button : panel.findChildren<QToolButton*>())
        if (button->toolTip() == tip) return button->click();
    ADD_FAILURE() << "no button " << tip.toStdString();
}

TEST(AssetInspectorPlayer, TheAssetPlaysAndZoomsBesideTheEpisodeAndStopsWithTheInspector) {
    const TestAudio audio;
    const auto asset = tlfixture::asset("tone", 20);
    asset->ingestedFilePath = audio.tone("tone.wav", 20);
    asset->ingested = true;
    const auto episode = AETimeLine::make("episode");
    episode->startTimers();
    const int lanesHeight = AETimeLineLanesHelper::totalH;
    AEAssetVC panel(asset);
    panel.show();
    const auto& tl = panel.assetTimeline;
    ASSERT_EQ(tl->mainLane.size(), 1u);
    EXPECT_EQ(tl->mainLane.front()->asset, asset);
    const std::weak_ptr<RPlayer> player = tl->mainLane.front()->player;
    ASSERT_FALSE(player.expired());

    const double all = tl->virtualScroller->visibleRange.length();
    press(panel, "Zoom in");
    EXPECT_LT(tl->virtualScroller->visibleRange.length(), all);
    press(panel, "Go to the end");
    EXPECT_EQ(panel.timecode->text(), tc_getFloatTimecode(20));
    press(panel, "Go to the beginning");
    press(panel, "Play / pause");
    EXPECT_TRUE(testenv::waitUntil([&] { return player.lock()->playing(); }));
    EXPECT_EQ(panel.playButton->text(), "Pause");
    panel.volumeGainSlider->setValue(-60);
    EXPECT_NEAR(player.lock()->getVolumeDB(), -6.0, 1e-9) << "the gain is heard as the slider moves";
    testenv::pumpEventsFor(300);
    EXPECT_GT(tl->getPlayHeadTime(), 0.1);

    panel.reject();
    EXPECT_FALSE(tl->playing);
    EXPECT_TRUE(player.expired()) << "closing frees the player";
    EXPECT_DOUBLE_EQ(asset->volumeGain, 0.0) << "Cancel takes the gain back";
    EXPECT_EQ(AETimeLineLanesHelper::totalH, lanesHeight) << "the lanes are the episode's again";
    EXPECT_TRUE(episode->commonIdleTimer->isRunning())
        << "the inspector ticks beside the episode, not instead";
    episode->stopTimers();
}

TEST(AssetInspectorPlayer, MusicStartsAtThePlayheadOnTheMarkerThereOrOnANewOne) {
    const auto asset = tlfixture::music("theme", 20);
    const auto drop = std::make_shared<AEMarker>(12.5, std::nullopt, AEMarkerType::normal, "Drop");
    asset->markers = {drop};
    AEAssetVC panel(asset);
    EXPECT_GT(panel.assetTimeline->getItemRect(panel.assetTimeline->mainLane.front()).width(), 100)
        << "music shows over its whole length";
    for (const auto& [at, onDrop] : {std::pair{12.5, true}, std::pair{4.0, false}}) {
        panel.assetTimeline->setPlayheadTime(at);
        panel.bgmAtPlayheadButton->click();
        EXPECT_DOUBLE_EQ(panel.bgmStart, at);
        EXPECT_EQ(panel.bgmId == drop->id, onDrop) << at;
        EXPECT_EQ(panel.bgmPopUp->currentData().toString(), panel.bgmId) << at;
    }
    EXPECT_EQ(asset->markers.size(), 1u) << "a new marker waits for OK";
    panel.okButton->click();
    ASSERT_EQ(asset->markers.size(), 2u);
    EXPECT_EQ(asset->markers.back()->id, asset->bgmId);
    EXPECT_EQ(asset->markers.back()->type, AEMarkerType::bgmStart);
    EXPECT_DOUBLE_EQ(asset->bgmStart, 4.0);
}

} // namespace
