// Clusters and the noise gate, run against the installed tools.

#include "render/tools/SoxCluster.h"

#include "foundation/Prog.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/ToolFixture.h"
#include "support/EventWait.h"

#include <QDir>
#include <QFileInfo>

class SoxUtClusterTest : public ToolFixture {
protected:
    // Whatever the tools leave behind besides the named files.
    QStringList leftovers(const QStringList& expected) const {
        QStringList names = QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        for (const QString& name : expected)
            names.removeAll(name);
        return names;
    }
};

namespace {
const double quiet = 1e-4; // dither of 16-bit output
const double toneRms = 20.0 * std::log10(0.5 / std::sqrt(2.0));
} // namespace

TEST_F(SoxUtClusterTest, PadFadesNormalizationAndFormat) {
    const QString src = tone("src.wav", 2.0);
    soxUt_createCluster(src, 0.5, 0.0, 1.0, 0.2, 0.3, path("c.wav"), true, 0.0, 22050, 2, 24);
    const Decoded c = decode(path("c.wav"));
    EXPECT_EQ(c.rate, 22050);
    EXPECT_EQ(c.channels, 2);
    EXPECT_EQ(c.subFormat, SF_FORMAT_PCM_24);
    EXPECT_NEAR(c.seconds(), 1.5, 0.001);
    EXPECT_LT(c.peak(1, 0.0, 0.49), quiet);
    EXPECT_LT(c.peak(1, 0.5, 0.51), 0.1);        // fading in
    EXPECT_NEAR(c.peak(1, 0.8, 1.1), 1.0, 0.01); // normalized
    EXPECT_LT(c.peak(1, 1.49, 1.5), 0.1);        // faded out
    EXPECT_GT(c.peak(1, 1.15, 1.19), 0.9);       // but only in its last 0.3 s
    EXPECT_EQ(leftovers({"src.wav", "c.wav"}), QStringList()) << "the shaping step's file is gone";
}

TEST_F(SoxUtClusterTest, CompressedSourcesLeaveADecodedWavBeside) {
    const QString mp3 = mp3From(tone("src.wav", 1.0), "song.mp3");
    soxUt_createCluster(mp3, 0.25, 0.2, 0.7, 0.0, 0.0, path("c.wav"), false, 0.0);
    const Decoded c = decode(path("c.wav"));
    EXPECT_EQ(c.channels, 2);
    EXPECT_NEAR(c.seconds(), 0.75, 0.001);
    const Decoded cache = decode(path("song.wav"));
    EXPECT_EQ(cache.channels, 2);
    EXPECT_EQ(cache.subFormat, SF_FORMAT_PCM_16);
}

TEST_F(SoxUtClusterTest, AMissingSourceAlertsAndLeavesNoDestination) {
    bytes("c.wav", {});
    const QString missing = path("gone.wav");
    soxUt_createCluster(missing, 1.0, 0.0, 1.0, 0.0, 0.0, path("c.wav"), false, 0.0);
    const QString expected = "alert: SHX ERROR | Could not create cluster, file " + missing + " not found.";
    EXPECT_TRUE(testenv::waitUntil([&] { return transcript() == QStringList{expected}; }));
    EXPECT_FALSE(QFileInfo::exists(path("c.wav")));
    EXPECT_FALSE(QFileInfo::exists(path("c-tmp.wav")));
}

TEST_F(SoxUtClusterTest, GateWithoutClustersCopies) {
    const QString src = tone("src.wav", 0.5);
    bytes("out.wav", "old");
    soxUt_clusterGate(src, path("out.wav"), 0.1, 0.1, false, 0.5, {}, false, nullptr);
    QFile a(src), b(path("out.wav"));
    ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
    EXPECT_EQ(a.readAll(), b.readAll());
}

TEST_F(SoxUtClusterTest, GateKeepsClustersInPlaceAndSilencesTheRest) {
    const QString src = tone("src.wav", 3.0);
    const std::vector<cluster> clusters{{0.0, 0.5}, {1.0, 1.5}, {2.0, 2.8}};
    auto prog = Prog::make(ProgType::double_, {}, 0.25, 1);
    soxUt_clusterGate(src, path("gated.wav"), 0.1, 0.1, false, 0.0, clusters, false, prog);
    const Decoded out = decode(path("gated.wav"));
    EXPECT_NEAR(out.seconds(), 2.8, 0.002);
    // The first cluster starts the file: no room for a fade-in.
    EXPECT_NEAR(out.peak(0, 0.0, 0.01), 0.5, 0.01);
    EXPECT_NEAR(out.rmsDb(0, 0.05, 0.35), toneRms, 0.05);
    EXPECT_LT(out.peak(0, 0.51, 0.99), quiet);
    // The second one fades in.
    EXPECT_LT(out.peak(0, 1.0, 1.01), 0.1);
    EXPECT_NEAR(out.rmsDb(0, 1.15, 1.35), toneRms, 0.05);
    EXPECT_LT(out.peak(0, 1.49, 1.5), 0.05); // and out
    EXPECT_LT(out.peak(0, 1.51, 1.99), quiet);
    EXPECT_NEAR(out.rmsDb(0, 2.15, 2.6), toneRms, 0.05);

    const ProgState state = prog->state();
    EXPECT_EQ(state.subPhaseTitle, "Creating Clusters...");
    EXPECT_EQ(state.subNPhases, 3);
    EXPECT_EQ(state.subPhaseCounter, 3);
    EXPECT_EQ(leftovers({"src.wav", "gated.wav"}), QStringList());
}

TEST_F(SoxUtClusterTest, GateCanShortenPauses) {
    const QString src = tone("src.wav", 3.0);
    soxUt_clusterGate(src, path("gated.wav"), 0.0, 0.0, true, 0.2, {{1.0, 1.5}, {2.5, 3.0}}, true, nullptr);
    const Decoded out = decode(path("gated.wav"));
    // Leading and middle silence capped at 0.2 s each.
    EXPECT_NEAR(out.seconds(), 0.2 + 0.5 + 0.2 + 0.5, 0.002);
    EXPECT_LT(out.peak(0, 0.0, 0.19), quiet);
    EXPECT_NEAR(out.peak(0, 0.25, 0.65), 1.0, 0.01); // each cluster normalized
    EXPECT_LT(out.peak(0, 0.71, 0.89), quiet);
    EXPECT_NEAR(out.peak(0, 0.95, 1.35), 1.0, 0.01);
}

// One run over the repeated source makes the sound the former way made from a cluster per pass and
// their concatenation (kept here as the reference), within the dither of the gain.
TEST_F(SoxUtClusterTest, LoopInOneRunSoundsAsClustersPerPassConcatenated) {
    const QString src = tone("bed.wav", 1.3, 330.0, 44100, 2, 0.6);
    // From 0.2 s in the asset, 4.1 s: 1.1 + 1.3 + 1.3 + 0.4, after 0.75 s of silence, faded over 0.5 s.
    const double gain = -3.0;
    QStringList pieces;
    const auto piece = [&](double silence, double from, double to) {
        pieces << path("piece" + QString::number(pieces.size()) + ".wav");
        soxUt_createCluster(src, silence, from, to, 0, 0, pieces.back(), false, gain, 44100, 2, 16);
    };
    piece(0.75, 0.2, 1.3);
    piece(0, 0, 1.3);
    piece(0, 0, 1.3);
    piece(0, 0, 0.4);
    soxUt_concatenate(pieces, path("former.wav"), 44100, 2, 16, 0, 0.5);
    soxUt_createLoopCluster(src, 0.75, 0.2, 4.1, 4, 0.5, path("one.wav"), gain, 44100, 2, 16);

    const Decoded former = decode(path("former.wav"));
    const Decoded one = decode(path("one.wav"));
    ASSERT_EQ(one.frames, former.frames);
    EXPECT_LE(one.largestDifference(former), 3.0 / 32768) << "only the dither differs";
    EXPECT_NEAR(one.seconds(), 4.85, 1e-3);
}
