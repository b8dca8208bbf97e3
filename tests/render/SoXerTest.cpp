#include "RenderFixture.h"
#include "project/model/AEAsset.h"
#include "render/tools/SoxEdit.h"
#include "timeline/model/AEKeyframeView.h"

#include <QDir>

namespace {

constexpr double kOneMs = 0.001;
// SoX dithers every 16-bit result of a mix or a bit-depth reduction (TPDF, a few steps of 1/32768).
constexpr double kDither = 4.0 / 32768;

void expectOnsetsAt(const std::vector<double>& found, const std::vector<double>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(found[i], expected[i], kOneMs) << "click " << i;
}

QStringList entriesOf(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

} // namespace

class SoXerTest : public RenderFixture {
protected:
    std::shared_ptr<AETimeLine> tl = tlfixture::timeline();
    // Results go to their own folder so that what is left beside them can be listed.
    QString out(const QString& name) {
        QDir(dir.path()).mkpath("out");
        return path("out/" + name);
    }
    Decoded musicUnderTwoSeconds(bool loops, double at, const QString& name);
};

TEST_F(SoXerTest, ItemsOnEveryLaneStartAtTheirTimelineTime) {
    const auto c1 = fileAsset(click("c1.wav", 1.0));
    const auto c2 = fileAsset(click("c2.wav", 1.5));
    tl->appendItemInMainLane(c1, std::nullopt, false);
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 0.75), false);
    tl->appendItemInMainLane(c2, std::nullopt, false);
    tl->appendItemInMainLane(c1, std::nullopt, false); // main lane: clicks at 0, 1.75, 3.25
    // Three items that overlap in 2.25…3.25 must sit on three lanes.
    tl->attachItem(fileAsset(click("e1.wav", 3.0), AEAssetType::effect), 1, 0.5, std::nullopt, false, false);
    tl->attachItem(fileAsset(click("j1.wav", 2.0), AEAssetType::jingle), 2, 1.25, std::nullopt, false, false);
    tl->attachItem(fileAsset(click("a1.wav", 1.0), AEAssetType::ad), -1, 2.25, std::nullopt, false, false);
    tl->attachItem(fileAsset(click("e2.wav", 0.5), AEAssetType::effect), 1, 3.75, std::nullopt, false, false);
    const QString dest = out("mix.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    const Decoded d = decode(dest);
    ASSERT_EQ(d.channels, 2);
    EXPECT_EQ(d.rate, 44100);
    // Four files mixed: each is divided by four and the mix gets "gain 8" back.
    expectOnsetsAt(onsets(d), {0.0, 0.5, 1.25, 1.75, 2.25, 3.25, 3.75});
    EXPECT_LE(d.peak(0, 0.76, 1.2), kDither) << "the silence item and the gaps are silent but for the dither";
    EXPECT_EQ(entriesOf(path("out")), QStringList{"mix.wav"}) << "nothing left beside the result";
    EXPECT_NEAR(d.peak(0, 0.0, 0.01), decode(path("c1.wav")).peak(0, 0.0, 0.01) * std::pow(10, 8 / 20.0) / 4,
                0.002)
        << "a quarter of each, gain 8 back";
}

TEST_F(SoXerTest, OnlyTheMainLaneIsRenamedNotMixedAndKeepsTheAssetGain) {
    const auto loud = fileAsset(level("half.wav", 1.0, 0.5f));
    loud->volumeGain = -6.0;
    tl->appendItemInMainLane(loud, std::nullopt, false);
    const QString dest = out("main.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 1, 16, tl)));
    const Decoded d = decode(dest);
    EXPECT_NEAR(d.seconds(), 1.0, kOneMs);
    EXPECT_NEAR(20 * std::log10(d.peak(0, 0.1, 0.9) / 0.5), -6.0, 0.05);
}

TEST_F(SoXerTest, AVolumeEnvelopeIsAppliedSampleBySample) {
    const auto flat = fileAsset(level("flat.wav", 3.0, 0.5f));
    auto item = tl->appendItemInMainLane(flat, std::nullopt, false);
    ASSERT_EQ(item->kfView->keyframes, item->volumeKFs);
    item->volumeKFs->setKeyframe(1.0, -12.0);
    item->volumeKFs->setKeyframe(2.0, 0.0);
    const QString dest = out("env.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 1, 16, tl)));
    const Decoded d = decode(dest);
    const auto at = [&](double t) { return d.samples[static_cast<size_t>(t * 44100)]; };
    const auto db = [&](double t) { return 20 * std::log10(at(t) / 0.5); };
    EXPECT_NEAR(db(0.5), -12.0, 0.1) << "the first level holds from the start";
    EXPECT_NEAR(db(1.0), -12.0, 0.1);
    EXPECT_NEAR(db(2.0), 0.0, 0.1);
    EXPECT_NEAR(db(2.9), 0.0, 0.1) << "the last level holds to the end";
    // Linear in amplitude between the points, not in dB.
    const double mid = 0.5 * (std::pow(10, -12.0 / 20) + 1.0) * 0.5;
    EXPECT_NEAR(at(1.5), mid, 2.0 / 32767);
    EXPECT_NEAR(at(1.25), 0.5 * (std::pow(10, -12.0 / 20) * 0.75 + 0.25), 2.0 / 32767);
}

TEST_F(SoXerTest, LoopingMusicFillsItsSpanAndFadesOut) {
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 4.0), false);
    const auto bgm = fileAsset(tone("loop.wav", 1.0, 440, 44100, 2), AEAssetType::bgm);
    bgm->bgmSettings = std::make_shared<AEBGMSettings>(true, 0.5, false);
    auto item = tl->attachItem(bgm, 1, 0.5, std::nullopt, false, false);
    tl->adjustBGM();
    ASSERT_EQ(item->bgmOutTime, 4.0);
    const QString dest = out("bgm.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    const Decoded d = decode(dest);
    EXPECT_NEAR(d.seconds(), 4.0, kOneMs);
    EXPECT_LE(d.peak(0, 0.0, 0.499), kDither);
    expectOnsetsAt(onsets(d, 0.01), {0.5});
    const double steady = d.rmsDb(0, 1.0, 3.0);
    EXPECT_NEAR(d.rmsDb(0, 2.5, 3.4), steady, 0.2) << "the loop joins without a gap";
    EXPECT_LT(d.rmsDb(0, 3.75, 3.9), steady - 6) << "fading out over the last half second";
    EXPECT_LT(d.peak(0, 3.99, 4.0), 0.01);
}

// Five seconds of music from `at` under two seconds of speech, rendered to `name`.
Decoded SoXerTest::musicUnderTwoSeconds(bool loops, double at, const QString& name) {
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 2.0), false);
    const auto bgm = fileAsset(tone("long.wav", 5.0, 440, 44100, 2), AEAssetType::bgm);
    bgm->bgmSettings = std::make_shared<AEBGMSettings>(loops, 0.25, false);
    tl->attachItem(bgm, 1, at, std::nullopt, false, false);
    tl->adjustBGM();
    const QString dest = out(name);
    EXPECT_TRUE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    return decode(dest);
}

TEST_F(SoXerTest, MusicLongerThanItsSpanIsOnePieceAndEndsOnTime) {
    EXPECT_NEAR(musicUnderTwoSeconds(true, 0.0, "one.wav").seconds(), 2.0, kOneMs);
}

TEST_F(SoXerTest, MusicThatDoesNotLoopStopsWhereTheTimelineEnds) {
    const Decoded d = musicUnderTwoSeconds(false, 0.5, "cut.wav");
    EXPECT_NEAR(d.seconds(), 2.0, kOneMs);
    expectOnsetsAt(onsets(d, 0.01), {0.5});
}

TEST_F(SoXerTest, ShortItemsAreSkippedButTheirLaneKeepsTime) {
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 3.0), false);
    const auto c = fileAsset(click("c.wav", 0.5), AEAssetType::effect);
    tl->attachItem(c, 1, 0.5, std::nullopt, false, false);
    tl->attachItem(c, 1, 1.25, AETimeRange(0, 0.005), false, false);
    tl->attachItem(c, 1, 2.0, std::nullopt, false, false);
    const QString dest = out("short.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    expectOnsetsAt(onsets(decode(dest)), {0.5, 2.0});
}

TEST_F(SoXerTest, SixLanesAreMixedWithoutGain) {
    tl->appendItemInMainLane(fileAsset(level("m.wav", 1.0, 0.6f)), std::nullopt, false);
    for (int lane = 1; lane <= 5; ++lane)
        tl->attachItem(fileAsset(level("l" + QString::number(lane) + ".wav", 1.0, 0.6f), AEAssetType::effect),
                       lane, 0.0, std::nullopt, false, false);
    const QString dest = out("six.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 1, 16, tl)));
    // Six inputs of 0.6, each divided by six by the mixer and nothing added back.
    EXPECT_NEAR(decode(dest).peak(0, 0.1, 0.9), 0.6, 0.002);
}

// The stream against the former way, one WAV per item from timeLineItem2Cluster, concatenated per lane
// and mixed by the sound tool: a gained item, silence, an envelope on part of an asset, a source at
// another rate, a looping bed with an envelope and a fade, a missing effect, six lanes in all.
TEST_F(SoXerTest, TheStreamedMixIsTheSoundOfTheItemFilesMixed) {
    const auto a = fileAsset(tone("a.wav", 1.0, 440));
    a->volumeGain = -4.0;
    tl->appendItemInMainLane(a, std::nullopt, false);
    tl->appendItemInMainLane(tlfixture::silence(), AETimeRange(0, 0.5), false);
    auto b = tl->appendItemInMainLane(fileAsset(tone("b.wav", 2.0, 550)), AETimeRange(0.25, 1.75), false);
    b->volumeKFs->setKeyframe(0.3, -10.0);
    b->volumeKFs->setKeyframe(1.2, 0.0);
    tl->appendItemInMainLane(fileAsset(tone("c48.wav", 1.0, 660, 48000, 2)), std::nullopt, false);
    const auto bed = fileAsset(tone("bed.wav", 0.7, 330, 44100, 2, 0.3), AEAssetType::bgm);
    bed->bgmSettings = std::make_shared<AEBGMSettings>(true, 0.5, false);
    auto loop = tl->attachItem(bed, -1, 0.3, std::nullopt, false, false);
    loop->volumeKFs->setKeyframe(0.5, -6.0);
    loop->volumeKFs->setKeyframe(2.0, -20.0);
    auto gone = fileAsset(click("gone.wav", 0.5), AEAssetType::effect);
    QFile::remove(gone->originalFilePath);
    tl->attachItem(fileAsset(tone("e.wav", 0.4, 880), AEAssetType::effect), 1, 0.2, std::nullopt, false,
                   false);
    tl->attachItem(gone, 1, 1.0, std::nullopt, false, false);
    tl->attachItem(fileAsset(tone("f.wav", 0.3, 990), AEAssetType::effect), 1, 2.2, std::nullopt, false,
                   false);
    for (int lane = 2; lane <= 4; ++lane)
        tl->attachItem(
            fileAsset(tone("l" + QString::number(lane) + ".wav", 0.5, 200.0 * lane), AEAssetType::jingle),
            lane, 0.7 + 0.05 * lane, std::nullopt, false, false);
    tl->adjustBGM();
    ASSERT_TRUE(render(SoXer::make(out("new.wav"), 44100, 2, 16, tl)));

    auto former = SoXer::make(out("former.wav"), 44100, 2, 16, tl);
    QStringList laneFiles;
    const auto laneFile = [&](const AETimeLine::Items& items, bool attached, const QString& name) {
        QStringList list;
        double cursor = 0;
        for (const auto& item : items) {
            if (item->range.duration() <= 0.01) continue;
            const double gap = attached ? item->inTime - cursor : 0;
            list << path(item->id + ".wav");
            former->timeLineItem2Cluster(*item, list.back(), gap);
            const bool loops = item->asset->type == AEAssetType::bgm;
            cursor += (item->asset->type == AEAssetType::silence || gap <= 0.01 ? 0 : gap) +
                      (loops ? item->bgmOutTime - item->inTime : item->range.duration());
        }
        soxUt_concatenate(list, path(name), 44100, 2, 16, 0, 0);
        if (QFileInfo::exists(path(name))) laneFiles << path(name);
    };
    laneFile(former->timeline->mainLane, false, "main.wav");
    for (const int lane : {1, 2, 3, 4, -1})
        laneFile(former->timeline->getLaneItemSubset(lane), true, "lane" + QString::number(lane) + ".wav");
    ASSERT_EQ(laneFiles.size(), 6);
    soxUt_mixdown(laneFiles, path("former.wav"));

    const Decoded streamed = decode(out("new.wav"));
    const Decoded mixed = decode(path("former.wav"));
    ASSERT_EQ(streamed.frames, mixed.frames);
    EXPECT_LE(streamed.largestDifference(mixed), kDither);
    EXPECT_GT(mixed.peak(0, 0.0, 4.0), 0.05) << "not two silences";
}

TEST_F(SoXerTest, AMissingSourceWarnsAndTheRenderStillFinishes) {
    const auto c = fileAsset(click("c.wav", 1.0));
    tl->appendItemInMainLane(c, std::nullopt, false);
    tl->appendItemInMainLane(c, std::nullopt, false);
    auto gone = fileAsset(click("gone.wav", 0.5), AEAssetType::effect);
    QFile::remove(gone->originalFilePath);
    tl->attachItem(gone, 1, 0.25, std::nullopt, false, false);
    tl->attachItem(c, 1, 1.5, AETimeRange(0, 0.5), false, false);
    const QString dest = out("missing.wav");
    ASSERT_TRUE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    EXPECT_FALSE(transcript().filter("SHX ERROR").isEmpty());
    // The lane closes up over the missing item and the silence before it: the next click comes early.
    expectOnsetsAt(onsets(decode(dest)), {0.0, 0.75, 1.0});
}

TEST_F(SoXerTest, AnEmptyTimelineGivesNoFileAndLeavesNothing) {
    const QString dest = out("empty.wav");
    EXPECT_FALSE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    EXPECT_TRUE(entriesOf(path("out")).isEmpty());
}

TEST_F(SoXerTest, ARenderNeverPerformedLeavesNoTemporaryFolder) {
    tl->appendItemInMainLane(fileAsset(click("c.wav", 1.0)), std::nullopt, false);
    auto soxer = SoXer::make(out("never.wav"), 44100, 2, 16, tl);
    EXPECT_FALSE(entriesOf(path("out")).isEmpty()) << "the job's folder exists while it is pending";
    soxer.reset();
    EXPECT_TRUE(entriesOf(path("out")).isEmpty());
}

TEST_F(SoXerTest, AFolderThatCannotBeWrittenFailsCleanly) {
    tl->appendItemInMainLane(fileAsset(click("c.wav", 1.0)), std::nullopt, false);
    // A file where the folder should be: refused even to root.
    bytes("out", {});
    const QString dest = path("out/x.wav");
    EXPECT_FALSE(render(SoXer::make(dest, 44100, 2, 16, tl)));
    EXPECT_FALSE(QFileInfo::exists(dest));
    EXPECT_TRUE(QFileInfo(path("out")).isFile());
    EXPECT_FALSE(transcript().filter("Export Error").isEmpty()) << "the person is told";
}

TEST_F(SoXerTest, ADestinationWithBlanksAndNonAsciiAndAnMp3WithChapters) {
    QDir(dir.path()).mkpath("out/Épisode 1 «été»");
    const QString mine = bytes("out/Épisode 1 «été»/Show #1; \"final\".wav", "the user's own file");
    tl->appendItemInMainLane(fileAsset(tone("t.wav", 3.0)), std::nullopt, false);
    tl->attachItem(fileAsset(click("c.wav", 0.5), AEAssetType::effect), 1, 1.0, std::nullopt, false, false);
    const QString dest = path("out/Épisode 1 «été»/Show #1; \"final\".mp3");
    auto soxer = SoXer::make(dest, 44100, 2, 16, tl, "Title = \"one\"; #1", "notes");
    soxer->chapters = {QXMp3Chapter{0.0f, 1.49f, "Intro"}, QXMp3Chapter{1.5f, 3.0f, "Main"}};
    ASSERT_TRUE(render(soxer));
    EXPECT_EQ(entriesOf(path("out/Épisode 1 «été»")),
              (QStringList{"Show #1; \"final\".mp3", "Show #1; \"final\".wav"}));
    EXPECT_EQ(QFileInfo(mine).size(), 19) << "a WAV of the same name is not the encoder's input";
    EXPECT_EQ(probe(dest, "codec_name"), "mp3");
    QProcess ffprobe;
    ffprobe.start("/usr/bin/ffprobe", {"-v", "error", "-show_chapters", "-show_entries", "format_tags=title",
                                       "-of", "compact", dest});
    ffprobe.waitForFinished(30000);
    const QString report = QString::fromUtf8(ffprobe.readAllStandardOutput());
    EXPECT_TRUE(report.contains("start_time=1.500000")) << report.toStdString();
    EXPECT_TRUE(report.contains("Title = \"one\"; #1")) << report.toStdString();
}

TEST(SoXerProgress, TheEncoderBarCreepsPastNinety) {
    EXPECT_DOUBLE_EQ(SoXer::encodingPercentage(0, 100), 30.0);
    EXPECT_DOUBLE_EQ(SoXer::encodingPercentage(10, 100), 65.0); // half of the expected 20 s
    EXPECT_DOUBLE_EQ(SoXer::encodingPercentage(20, 100), 90.0 + (100.0 - 90.0) / 10);
    EXPECT_LT(SoXer::encodingPercentage(40, 100), 100.0);
}
