#include "../../recording/RecordingFixture.h"
#include "foundation/KeyedArchive.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEMarker.h"
#include "project/model/AEShow.h"
#include "project/model/AESubsamples.h"
#include "recording/Recorder.h"
#include "support/ScriptedSession.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "ui/recording/AEAssetRecorderVC.h"
#include "ui/recording/AudioRecorderSetupVC.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>

using namespace recordingtest;

namespace {

class AssetRecorderTest : public RecordingServerTest, protected ScriptedSession {};

TEST_F(AssetRecorderTest, TheSetupPanelWritesBothKeySetsAndTheChoiceSurvivesARestart) {
    auto stored = std::make_shared<AudioRecorderSettings>();
    stored->device = AudioDeviceMetadata("gone", "A Microphone Since Unplugged");
    struct Delegate : AudioRecorderSetupDelegate {
        std::shared_ptr<AudioRecorderSettings> got;
        void audioRecordingSetupUpdate(const std::shared_ptr<AudioRecorderSettings>& s) override { got = s; }
    } delegate;
    AudioRecorderSetupVC panel(nullptr, &delegate, stored);
    // The stored input has gone: the first one is shown, the system's default.
    ASSERT_GE(panel.devicePopup->count(), 1);
    EXPECT_EQ(panel.devicePopup->currentData().toString(), PulseNullSink::kSource);
    EXPECT_EQ(panel.channelsPopup->count(), 5);
    panel.frequencyRadio->button(48000)->click();
    panel.bitDepthRadio->button(24)->click();
    panel.channelsPopup->setCurrentIndex(panel.channelsPopup->findData(2));
    panel.accept();

    ASSERT_TRUE(delegate.got);
    EXPECT_EQ(delegate.got->device.id, PulseNullSink::kSource);
    prefs_reload();
    EXPECT_EQ(prefs_getValueString("AudioRecorderSettings.device.id", ""), PulseNullSink::kSource);
    EXPECT_EQ(prefs_getValueString("SCSetup.device", ""), delegate.got->device.name);
    EXPECT_EQ(prefs_getValueInt("SCSetup.frequency", 0), 48000);
    EXPECT_EQ(prefs_getValueInt("SCSetup.bitDepth", 0), 24);
    EXPECT_EQ(prefs_getValueInt("SCSetup.nChannels", 0), 2);
    const auto loaded = AudioRecorderSettings::loadFromDefaults();
    EXPECT_EQ(loaded->device.name, delegate.got->device.name);
    EXPECT_EQ(loaded->frequency, 48000);
    EXPECT_EQ(loaded->bps, 24);
    EXPECT_EQ(loaded->nChannels, 2);

    // And in the show's archive.
    auto show = std::make_shared<AEShow>("Show");
    show->recorderSettings = delegate.got;
    const QByteArray data = KeyedArchiver::archivedData(show);
    const auto back = std::dynamic_pointer_cast<AEShow>(KeyedUnarchiver::unarchiveObject(data, "test"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->recorderSettings->device.id, PulseNullSink::kSource);
    EXPECT_EQ(back->recorderSettings->frequency, 48000);
    EXPECT_EQ(back->recorderSettings->bps, 24);
    EXPECT_EQ(back->recorderSettings->nChannels, 2);
}

TEST_F(AssetRecorderTest, TwoTakesMakeTwoAssetsWithTheirMarkers) {
    const auto tone = playTone();
    auto show = std::make_shared<AEShow>("Show");
    auto episode = std::make_shared<AEEpisode>("episode-rec", "Recorded");
    std::vector<std::shared_ptr<AEAsset>> added;
    AEAssetRecorderVC sheet(nullptr, show, episode, [&](const auto& asset) { added.push_back(asset); });

    std::vector<std::vector<double>> markedAt(2);
    std::vector<QString> takePaths;
    for (int take = 0; take < 2; ++take) {
        takePaths.push_back(sheet.recordingPath);
        sheet.recordButton->click();
        ASSERT_TRUE(sheet.recording);
        for (const int ms : {400, 500}) {
            testenv::pumpEventsFor(ms);
            markedAt[take].push_back(sheet.audioRecorder->getLength());
            sheet.markerButton->click();
        }
        testenv::pumpEventsFor(400);
        // The item has grown with the take, and the view holds its end.
        ASSERT_EQ(sheet.assetTimeline->mainLane.size(), 1u);
        const auto& item = sheet.assetTimeline->mainLane.front();
        EXPECT_NEAR(item->range.o - item->range.i, sheet.audioRecorder->getLength(), 0.2);
        EXPECT_EQ(sheet.assetTimeline->currentViewRange.o, 10.0);
        EXPECT_FALSE(sheet.recordingAsset->subsamples->samplesT.empty());
        sheet.recordButton->click();
        EXPECT_FALSE(sheet.recording);
    }

    ASSERT_EQ(added.size(), 2u);
    EXPECT_NE(takePaths[0], takePaths[1]);
    for (int take = 0; take < 2; ++take) {
        const auto& asset = added[static_cast<size_t>(take)];
        EXPECT_TRUE(QFileInfo(asset->originalFilePath).fileName().startsWith("recording_"));
        EXPECT_EQ(asset->originalFilePath, takePaths[static_cast<size_t>(take)]);
        EXPECT_GT(asset->duration, 1.1);
        ASSERT_EQ(asset->markers.size(), 2u);
        for (size_t m = 0; m < 2; ++m)
            EXPECT_NEAR(asset->markers[m]->inTime, markedAt[static_cast<size_t>(take)][m], 0.1);
        EXPECT_TRUE(episode->assetInEpisode(asset->id));
    }
    EXPECT_EQ(sheet.currentAssetN, 2);
}

TEST_F(AssetRecorderTest, SetupWhileRecordingOnlyWarnsAndANamedTakeIsCalledSo) {
    auto show = std::make_shared<AEShow>("Show");
    auto episode = std::make_shared<AEEpisode>("episode-named", "Named");
    std::shared_ptr<AEAsset> added;
    AEAssetRecorderVC sheet(nullptr, show, episode, [&](const auto& asset) { added = asset; });
    sheet.nameField->setText("Intro take");
    EXPECT_EQ(sheet.windowTitle(), "Asset Recorder: Intro take");
    sheet.setAssetType(AEAssetType::jingle);
    sheet.recordButton->click();
    testenv::pumpEventsFor(300);
    sheet.setupButton->click();
    ASSERT_FALSE(door->transcript().empty());
    EXPECT_TRUE(door->transcript().back().contains("You Cannot Change Recording Settings while Recording!"));
    EXPECT_TRUE(sheet.recording);
    sheet.recordButton->click();

    ASSERT_TRUE(added);
    EXPECT_EQ(QFileInfo(added->originalFilePath).fileName(), "Intro take.wav");
    EXPECT_EQ(added->name, "Intro take");
    EXPECT_EQ(added->type, AEAssetType::jingle);
    EXPECT_TRUE(QFileInfo::exists(added->originalFilePath));
}

} // namespace
