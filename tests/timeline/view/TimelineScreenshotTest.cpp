// A real three-lane episode on screen: spoken words (espeak-ng), a jingle, music under it with an
// envelope, effects above, markers and a selection. The summaries are those of the files. The
// picture is saved to $ZENDREL_SCREENSHOT_DIR when set (run under xvfb-run to look at it).
#include "../../render/tools/ToolFixture.h"
#include "WidgetFixture.h"
#include "project/model/AESubsamples.h"
#include "project/model/AssetColors.h"
#include "recording/AudioProbes.h"
#include "timeline/model/AEKeyframeList.h"

#include <QDir>

class TimelineScreenshotTest : public ToolFixture {
protected:
    std::shared_ptr<AEAsset> fileAsset(const QString& file, AEAssetType type, const QString& name) {
        auto a = tlfixture::asset(name, aUt_getAudioDuration(file), type);
        a->originalFilePath = file;
        a->ingestedFilePath = file;
        a->ingested = true;
        a->subsamples = std::make_shared<AESubsamples>();
        a->subsamples->setSamples(AESubsamples::summaryOfFile(file, kAESubsamplesPerSecond));
        a->subsamples->loaded = true;
        return a;
    }
};

TEST_F(TimelineScreenshotTest, ThreeLaneEpisodeShowsItsWaveformsWhereTheSoundIs) {
    AEPreferences::displayVolumeKFs = true;
    AEPreferences::waveFormTypeSingle = false;
    AETimeLineLanesHelper::lanesViewMode = AETimeLineLanesViewMode::complete;
    AETimeLineLanesHelper::lanesViewSetup = AETimeLineLanesViewSetup::normal;
    if (!AETimeLineItem::kfSetup->kfImage) AETimeLineItem::startup();

    // Two phrases with 3 s of silence between them, as one recording.
    const QString first =
        speech("first.wav", "Welcome back to the show. Today we talk about gardens in winter.");
    const QString second = speech("second.wav", "Our guest grows tomatoes on a balcony, all year round.");
    const double gapFrom = aUt_getAudioDuration(first);
    const QString talk = join("talk.wav", {first, silence("gap.wav", 3.0, 22050), second});
    const QString jingle = path("jingle.wav");
    run("/usr/bin/sox", {"-n",    "-r", "22050", "-c", "1",   "-b",  "16",   jingle, "synth", "3",
                         "pluck", "C5", "pluck", "E5", "vol", "0.6", "fade", "0",    "3",     "1"});
    const QString music = path("music.wav");
    run("/usr/bin/sox", {"-n", "-r", "22050", "-c", "1", "-b", "16", music, "synth", "40", "sine", "220",
                         "sine", "330", "tremolo", "2", "60", "vol", "0.4"});
    const QString whoosh = noise("whoosh.wav", 1.5, 0.5);

    auto tl = AETimeLine::make("episode");
    auto talkAsset = fileAsset(talk, AEAssetType::speech, "Interview");
    talkAsset->markers.push_back(std::make_shared<AEMarker>(2.0));
    tl->appendItemInMainLane(talkAsset, std::nullopt, false);
    tl->appendItemInMainLane(fileAsset(jingle, AEAssetType::jingle, "Jingle"), std::nullopt, false);
    auto outro = tl->appendItemInMainLane(talkAsset, AETimeRange(0, gapFrom), false);
    outro->addMarker(1.0, std::nullopt, "Chapter 2", AEMarkerType::chapter);
    auto bed = tl->attachItem(fileAsset(music, AEAssetType::music, "Music bed"), -1, 1.0, AETimeRange(0, 20),
                              false, false);
    for (const auto& [t, db] : {std::pair{2.0, 0.0}, {6.0, -12.0}, {14.0, -12.0}, {18.0, 0.0}})
        bed->volumeKFs->setKeyframe(t, db);
    bed->updateGlobalKFs();
    const auto fx = fileAsset(whoosh, AEAssetType::effect, "Whoosh");
    tl->attachItem(fx, 1, 4.0, std::nullopt, false, false);
    tl->attachItem(fx, 1, tl->mainLane[1]->inTime - 0.5, std::nullopt, false, false);
    tl->mainLane[1]->selected = true;

    TimelineWidget widget(tl);
    widget.resize(1280, 420);
    widget.show();
    tl->setViewportRange(0, tl->getTimelineOutTime() + 1);
    tl->updateViewAfterSomething();
    tl->setPlayheadTime(gapFrom + 1.5);
    widget.redrawNow();
    widget.repaint();

    if (const QString dir = qEnvironmentVariable("ZENDREL_SCREENSHOT_DIR"); !dir.isEmpty()) {
        QDir().mkpath(dir);
        EXPECT_TRUE(widget.snapshot().save(dir + "/timeline-episode.png"));
    }

    // Bars stand where the words are and not in the pause between the phrases.
    const auto& talkItem = tl->mainLane[0];
    const QRectF lane = TimelinePainter::toImage(tl->getItemRect(talkItem), widget.canvasRect().height());
    const QColor wave = AEColors::getAssetColor(AEAssetType::speech, true).foreground;
    const auto barsAt = [&](double t) {
        const int x = static_cast<int>(tl->timeToX(t));
        int lit = 0;
        for (int y = static_cast<int>(lane.top()) + 18; y < lane.bottom() - 18; ++y)
            if (const QColor c = widget.lanesImage().pixelColor(x, y);
                std::abs(c.red() - wave.red()) < 8 && std::abs(c.green() - wave.green()) < 8 &&
                std::abs(c.blue() - wave.blue()) < 8)
                ++lit;
        return lit;
    };
    int spoken = 0;
    for (double t = 0.5; t < gapFrom - 0.5; t += 0.25)
        spoken = std::max(spoken, barsAt(t));
    EXPECT_GT(spoken, 10);
    EXPECT_EQ(barsAt(gapFrom + 1.5), 0);
}
