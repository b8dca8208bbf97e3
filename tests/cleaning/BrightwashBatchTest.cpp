#include "cleaning/BrightwashBatch.h"

#include "cleaning/BrightwashMC.h"
#include "cleaning/CleaningFixture.h"
#include "support/EventWait.h"

#include <QDirIterator>
#include <unistd.h>

namespace {

// Processes whose parent is this test process (the tools a run starts).
int childProcesses() {
    int n = 0;
    for (QDirIterator it("/proc", QDir::Dirs | QDir::NoDotAndDotDot); it.hasNext();) {
        QFile stat(it.next() + "/stat");
        if (!stat.open(QIODevice::ReadOnly)) continue;
        const QString line = QString::fromUtf8(stat.readAll());
        const QStringList fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 1 && fields[1].toInt() == getpid()) ++n;
    }
    return n;
}

} // namespace

class BrightwashBatchTest : public CleaningFixture {
protected:
    // Runs the batch to its end, sampling each job's progress meanwhile.
    std::vector<std::vector<double>> runToEnd(BrightwashBatch& batch, std::function<void()> meanwhile = {}) {
        std::vector<std::vector<double>> samples(batch.count());
        bool ended = false;
        batch.start([&ended] { ended = true; });
        EXPECT_TRUE(testenv::waitUntil(
            [&] {
                for (size_t i = 0; i < batch.count(); ++i)
                    samples[i].push_back(batch.progress(i));
                if (meanwhile) meanwhile();
                return ended;
            },
            180000));
        return samples;
    }
};

TEST_F(BrightwashBatchTest, FilesCleanSideBySideAndABadOneFailsAlone) {
    const QString noisyTalk = noisy(cleanSpeech(), "talk.wav");
    const QString copy = path("talk2.wav");
    QFile::copy(noisyTalk, copy);
    const QString junk = bytes("junk.wav", QByteArray("RIFF not a sound at all", 23));
    BrightwashSetting s = allOff();
    s.doDenoiser = s.doNoiseGate = true;
    auto batch = BrightwashBatch::make({{noisyTalk, s}, {junk, s}, {copy, s}});
    const auto samples = runToEnd(*batch);

    EXPECT_EQ(batch->getCompleted(), 3);
    EXPECT_DOUBLE_EQ(batch->getPercentage(), 1.0);
    for (size_t job : {0u, 2u}) {
        EXPECT_EQ(batch->jobError(job), "") << job;
        EXPECT_GT(TestAudio::decode(batch->jobResultPath(job)).frames, 0) << job;
        // Each bar only moves forward, and was seen between its ends.
        EXPECT_TRUE(std::is_sorted(samples[job].begin(), samples[job].end())) << job;
        EXPECT_TRUE(
            std::any_of(samples[job].begin(), samples[job].end(), [](double p) { return p > 0 && p < 1; }));
    }
    EXPECT_TRUE(batch->jobError(1).contains("junk_ingest.wav")) << batch->jobError(1).toStdString();
    EXPECT_FALSE(QFileInfo::exists(batch->jobResultPath(1)));
    EXPECT_EQ(leftovers(), QStringList());
}

TEST_F(BrightwashBatchTest, CancelStopsEveryToolAndLeavesNothing) {
    const QString talk = noisy(cleanSpeech(), "talk.wav");
    std::vector<BWBatchData> data;
    for (int i = 0; i < 3; ++i) {
        const QString copy = path(QString("talk%1.wav").arg(i));
        QFile::copy(talk, copy);
        data.push_back({copy, Brightwash::loadSettings()});
    }
    data[0].settings.doDenoiser = true;
    auto batch = BrightwashBatch::make(data);
    bool cancelled = false;
    runToEnd(*batch, [&] {
        if (!cancelled && childProcesses() > 0) {
            batch->cancel();
            cancelled = true;
        }
    });
    ASSERT_TRUE(cancelled);
    EXPECT_EQ(childProcesses(), 0);
    for (size_t i = 0; i < batch->count(); ++i) {
        EXPECT_EQ(batch->jobError(i), "Cancelled.") << i;
        EXPECT_FALSE(QFileInfo::exists(batch->jobResultPath(i))) << i;
    }
    EXPECT_EQ(leftovers(), QStringList());
}

TEST_F(BrightwashBatchTest, StereoFileHasItsChannelsCleanedApart) {
    // Left: speech, a second of held buzz, speech. Right: the same speech, then a second of hiss. Only
    // the left loses its second; joined again, it ends in the padding the shorter channel gets.
    const QString buzz = heldSound("buzz.wav", 1);
    const QString hiss = path("hiss.wav");
    run("/usr/bin/sox", {"-R", "-n", "-r", QString::number(kRate), "-c", "1", "-b", "16", hiss, "synth", "1",
                         "whitenoise", "vol", "0.3"});
    const QString s1 = speech("s1.wav", "We looked at the numbers together");
    const QString s2 = speech("s2.wav", "and then we decided to start over");
    const QString stereo =
        channels("stereo.wav", {join("left.wav", {s1, buzz, s2}), join("right.wav", {s1, s2, hiss})});
    BrightwashSetting s = allOff();
    s.doEraseUhm = true;
    s.uhmPrefs = {16, 0.5, 0.025f, 20};

    std::atomic<bool> done{false};
    auto mc = BrightwashMC::make(stereo, s, [&done](const QString&) { done = true; });
    mc->start();
    ASSERT_TRUE(testenv::waitUntil([&done] { return done.load(); }, 120000));
    ASSERT_EQ(mc->error(), "");
    const Decoded out = decode(mc->dstPath);
    ASSERT_EQ(out.channels, 2);
    const double end = out.seconds();
    EXPECT_NEAR(end, decode(stereo).seconds(), 0.1);
    EXPECT_LT(out.rmsDb(0, end - 0.8, end), -60.0);
    EXPECT_GT(out.rmsDb(1, end - 0.8, end), -30.0);
    EXPECT_EQ(leftovers(), QStringList());
    EXPECT_FALSE(QFileInfo::exists(path("stereo_cln_1.wav")));
}
