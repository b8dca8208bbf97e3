#include "project/model/AESubsamples.h"

#include "dsp/ArrayUtils.h"
#include "foundation/QXTimer.h"
#include "project/model/AECache.h"
#include "recording/AudioProbes.h"
#include "support/EventWait.h"
#include "support/TestAudio.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using testenv::waitUntil;

namespace {

class AESubsamplesTest : public ::testing::Test {
protected:
    void SetUp() override { AECache::clearCache(); }
    void TearDown() override { AECache::clearCache(); }

    // Runs generate and waits for its callback.
    static bool generateAndWait(const std::shared_ptr<AESubsamples>& s, const QString& original,
                                const QString& ingested, bool saveToCache = true) {
        auto done = std::make_shared<std::atomic<bool>>(false);
        s->generate(original, ingested, saveToCache, [done] { *done = true; });
        return waitUntil([done] { return done->load(); }, 20000);
    }

    // What the summary is defined as: block means of the magnitudes of the whole channel.
    static std::vector<float> reference(const QString& path, size_t amount) {
        return ArrayUtils::downsample(ArrayUtils::getAbs(aUt_readFileIntoFloatArray(path)), amount);
    }

    TestAudio make;
};

struct ScriptedMeter : AERecordingMeter {
    std::vector<float> powers;
    size_t next = 0;
    int updates = 0;
    bool enabled = false;
    void setMeteringEnabled(bool on) override { enabled = on; }
    void updateMeters() override { ++updates; }
    float averagePowerForChannel(int channel) override {
        return channel == 0 && next < powers.size() ? powers[next++] : -160.0f;
    }
};

} // namespace

// Value k stands for time k / 300 s at every rate, whole-frame blocks or not: a tone that starts after
// 6 s of silence shows at value 1800, and 10 s of audio give 3000 values.
TEST_F(AESubsamplesTest, ThreeHundredValuesASecondAtEveryRate) {
    for (int rate : {8000, 11025, 22050, 32000, 44100, 48000, 96000}) {
        SCOPED_TRACE(rate);
        const QString name = QString("onset%1.wav").arg(rate);
        const QString file = make.run("sox",
                                      {"-n", "-r", QString::number(rate), "-c", "1", "-b", "16",
                                       make.path(name), "synth", "4", "sine", "440", "pad", "6", "0"},
                                      name);
        ASSERT_FALSE(file.isEmpty());
        ASSERT_DOUBLE_EQ(aUt_getAudioDuration(file), 10.0);
        const auto summary = AESubsamples::summaryOfFile(file, kAESubsamplesPerSecond);
        EXPECT_EQ(summary.size(), 3000u);
        const auto onset = std::find_if(summary.begin(), summary.end(), [](float v) { return v > 1000.0f; });
        EXPECT_NEAR(static_cast<double>(onset - summary.begin()), 1800.0, 1.0);
    }
}

// More than one read slice, one to three channels: no seam at slice or piece boundaries, no channel mix-up.
TEST_F(AESubsamplesTest, SummaryAcrossReadSlicesMatchesTheOnePassReduction) {
    const int64_t frames = 1048576 + 70001;
    for (int channels : {1, 2, 3}) {
        SCOPED_TRACE(channels);
        const QString file =
            make.floatWav(QString("long%1.wav").arg(channels), 44100, channels, frames, [](int64_t i, int c) {
                return c == 0 ? static_cast<float>((i * 7919) % 2001 - 1000) / 1000.0f : 0.9f;
            });
        const auto summary = AESubsamples::summaryOfFile(file, kAESubsamplesPerSecond);
        EXPECT_EQ(summary.size(), static_cast<size_t>(frames / 147));
        EXPECT_EQ(summary, reference(file, 147));
    }
}

TEST_F(AESubsamplesTest, AverageCountsOnlyPartsAboveMinus25Decibels) {
    EXPECT_NEAR(AESubsamples::kAverageThreshold, 1842.68f, 0.01f);
    auto quiet = std::make_shared<AESubsamples>();
    ASSERT_TRUE(generateAndWait(quiet, make.sine("quiet.wav", 44100, 1, 16, 1.0, -30.0), "", false));
    EXPECT_FALSE(quiet->samples()->empty());
    EXPECT_EQ(quiet->average, 0.0f);

    // A -6 dB sine: the mean magnitude is 2/π of its peak.
    auto loud = std::make_shared<AESubsamples>();
    ASSERT_TRUE(generateAndWait(loud, make.sine("loud.wav", 44100, 1, 16, 1.0, -6.0), "", false));
    const double expected = 32767.0 * std::pow(10.0, -6.0 / 20.0) * 2.0 / M_PI;
    EXPECT_NEAR(loud->average, expected, expected * 0.03);
}

TEST_F(AESubsamplesTest, GetSampleWrapsOnlyWhenLooping) {
    auto s = std::make_shared<AESubsamples>();
    EXPECT_EQ(s->getSample(0.0, true), 0.0f); // empty
    s->setSamples({10, 20, 30});
    EXPECT_EQ(s->getSample(0.0, false), 10.0f);
    EXPECT_EQ(s->getSample(2.5 / 300.0, false), 30.0f);
    EXPECT_EQ(s->getSample(3.0 / 300.0, false), 0.0f);
    EXPECT_EQ(s->getSample(3.0 / 300.0, true), 10.0f);
    EXPECT_EQ(s->getSample(7.5 / 300.0, true), 20.0f);

    // While recording the meter list is read at 15 a second.
    s->samplesT = {1, 2};
    s->recording = true;
    EXPECT_EQ(s->getSample(1.5 / 15.0, false), 2.0f);
    EXPECT_EQ(s->getSample(2.0 / 15.0, false), 0.0f);
    EXPECT_EQ(s->getSample(2.0 / 15.0, true), 1.0f);
}

TEST_F(AESubsamplesTest, AppendReducesByThreeHundredAndRecomputesTheAverage) {
    auto s = std::make_shared<AESubsamples>();
    s->setSamples({5000});
    std::vector<float> stream(650, 3000.0f);
    std::fill(stream.begin() + 300, stream.end(), 100.0f);
    s->appendSamples(stream);
    EXPECT_EQ(*s->samples(), (std::vector<float>{5000, 3000, 100}));
    EXPECT_EQ(s->average, 4000.0f);
}

TEST_F(AESubsamplesTest, RecordingMeterFeedsSamplesTOnItsTimer) {
    auto s = std::make_shared<AESubsamples>();
    auto meter = std::make_shared<ScriptedMeter>();
    meter->powers = {-60.0f, 0.0f, -70.0f, -30.0f};
    s->startRecording(meter);
    EXPECT_TRUE(s->recording);
    EXPECT_TRUE(QXTimer::getTimerNameList().contains("AESubsamples.recordingIdle"));
    ASSERT_TRUE(waitUntil([&] { return s->samplesT.size() >= 4; }));
    s->stopRecording();
    EXPECT_FALSE(s->recording);
    EXPECT_FALSE(QXTimer::getTimerNameList().contains("AESubsamples.recordingIdle"));
    EXPECT_EQ(std::vector<float>(s->samplesT.begin(), s->samplesT.begin() + 4),
              (std::vector<float>{0.0f, 15360.0f, 0.0f, 7680.0f}));
    EXPECT_TRUE(meter->enabled);
    EXPECT_EQ(meter->updates, static_cast<int>(s->samplesT.size()));
}

TEST_F(AESubsamplesTest, GeneratedSummaryGoesToTheCacheAndComesBackWithoutReading) {
    const QString file = make.sine("cached.wav", 48000, 2, 16, 1.0);
    auto first = std::make_shared<AESubsamples>();
    ASSERT_TRUE(generateAndWait(first, file, ""));
    EXPECT_EQ(AECache::loadSubsamplesFromCache(file), *first->samples());

    // A hit calls back at once on this thread.
    auto second = std::make_shared<AESubsamples>();
    bool calledBack = false;
    second->loadFromCache(true, file, "", [&] { calledBack = true; });
    EXPECT_TRUE(calledBack);
    EXPECT_TRUE(second->loaded);
    EXPECT_EQ(*second->samples(), *first->samples());

    // A miss generates, here from the ingested copy since the original has gone.
    AECache::clearCache();
    const QString ingested = make.path("ingested.wav");
    ASSERT_TRUE(QFile::rename(file, ingested));
    auto third = std::make_shared<AESubsamples>();
    std::atomic<bool> done{false};
    third->loadFromCache(true, file, ingested, [&] { done = true; });
    ASSERT_TRUE(waitUntil([&] { return done.load(); }, 20000));
    EXPECT_EQ(*third->samples(), *first->samples());
    EXPECT_TRUE(AECache::loadSubsamplesFromCache(file).has_value());
}

// Nothing is cached for a file that cannot be read, so audio written there later gets its own summary.
TEST_F(AESubsamplesTest, UnreadableAudioGivesAnEmptyLoadedSummaryThatIsNotCached) {
    const QString file = make.bytes("later.wav", "not audio");
    auto s = std::make_shared<AESubsamples>();
    ASSERT_TRUE(generateAndWait(s, file, make.path("missing.wav")));
    EXPECT_TRUE(s->loaded);
    EXPECT_TRUE(s->samples()->empty());
    EXPECT_EQ(s->average, 0.0f);

    ASSERT_TRUE(QFile::remove(file));
    ASSERT_EQ(make.sine("later.wav", 48000, 1, 16, 1.0), file);
    auto again = std::make_shared<AESubsamples>();
    std::atomic<bool> done{false};
    again->loadFromCache(true, file, "", [&] { done = true; });
    ASSERT_TRUE(waitUntil([&] { return done.load(); }, 20000));
    EXPECT_EQ(again->samples()->size(), 300u);
}

// Drawing reads while the queue writes; run under the sanitizers this catches a torn or freed array.
TEST_F(AESubsamplesTest, ReadersSeeWholeSnapshotsWhileGenerateWrites) {
    const QString file = make.sine("race.wav", 44100, 1, 16, 20.0);
    auto s = std::make_shared<AESubsamples>();
    s->setSamples(std::vector<float>(100, 1.0f));
    std::atomic<bool> done{false};
    s->generate(file, "", false, [&] { done = true; });
    float sink = 0.0f;
    while (!done) {
        const auto snapshot = s->samples();
        ASSERT_TRUE(snapshot->size() == 100u || snapshot->size() == 20u * 300u);
        sink += s->getSample(0.1, true);
    }
    EXPECT_GE(sink, 0.0f);
    EXPECT_EQ(s->samples()->size(), 6000u);
}

TEST_F(AESubsamplesTest, ArchiveKeepsOnlyTheAverage) {
    auto s = std::make_shared<AESubsamples>();
    s->setSamples({5000, 6000});
    s->average = 5500.0f;
    const QByteArray data = KeyedArchiver::archivedData(s);
    const QJsonObject keys =
        QJsonDocument::fromJson(data).object()["objects"].toArray()[0].toObject()["keys"].toObject();
    EXPECT_EQ(keys.keys(), QStringList{"average"});
    const auto back = std::dynamic_pointer_cast<AESubsamples>(KeyedUnarchiver::unarchiveObject(data, "test"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->average, 5500.0f);
    EXPECT_TRUE(back->samples()->empty());
    EXPECT_FALSE(back->loaded);
}
