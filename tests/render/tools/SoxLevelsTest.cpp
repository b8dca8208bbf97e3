// Levels read from SoX's statistics and levels set from them.

#include "render/tools/SoxLevels.h"

#include "render/tools/ToolFixture.h"

#include <QFileInfo>

class SoxUtLevelsTest : public ToolFixture {};

namespace {
const QString monoStats = "DC offset   0.000000\n"
                          "Pk lev dB      -6.02\n"
                          "RMS lev dB    -23.41\n"
                          "RMS Pk dB      -8.98\n";
const QString stereoStats = "             Overall     Left      Right\n"
                            "Pk lev dB      -6.00     -6.00     -6.00\n"
                            "RMS lev dB     -9.01     -7.50    -12.25\n"
                            "RMS Pk dB      -8.98     -8.99     -8.98\n";
} // namespace

// The last column of the RMS row with its sign; -12 when there is no number, logged when there was
// something else.
TEST_F(SoxUtLevelsTest, ReadsTheLastColumnOfTheRmsRowOrFallsBackToMinus12) {
    const std::pair<QString, double> rows[] = {
        {monoStats, -23.41},
        {stereoStats, -12.25},
        {"RMS lev dB      3.5\n", 3.5},
        {"RMS lev dB     -inf\n", -INFINITY},
        {"RMS lev dB  -1.25", -1.25}, // last line without a newline
        {"", -12.0},
        {"sox FAIL formats: can't open input file", -12.0},
        {"RMS lev dB   \nRMS Pk dB  -3.0\n", -12.0},
    };
    for (const auto& [stats, level] : rows)
        EXPECT_EQ(soxUt_rmsLevelFromStats(stats), level) << stats.toStdString();
    EXPECT_TRUE(logged().isEmpty());
    EXPECT_EQ(soxUt_rmsLevelFromStats("RMS lev dB   n/a\n"), -12.0);
    EXPECT_EQ(logged(), QStringList({"soxUt_getRMSLevel: \"n/a\" is not a level; -12 instead"}));
}

TEST_F(SoxUtLevelsTest, MeasuresRealFilesAndMp3ThroughATemporaryWav) {
    const QString t = tone("t.wav", 1.0);
    EXPECT_NEAR(soxUt_getRMSLevel(t), 20.0 * std::log10(0.5 / std::sqrt(2.0)), 0.02);
    const QString st = channels(
        "st.wav", {tone("l.wav", 1.0, 440.0, 44100, 1, 0.5), tone("r.wav", 1.0, 440.0, 44100, 1, 0.125)});
    EXPECT_NEAR(soxUt_getRMSLevel(st), 20.0 * std::log10(0.125 / std::sqrt(2.0)), 0.02);
    // Digital silence: 32-bit, so not even dither.
    run("/usr/bin/sox", {"-n", "-r", "44100", "-c", "1", path("zero.wav"), "trim", "0", "0.5"});
    EXPECT_EQ(soxUt_getRMSLevel(path("zero.wav")), -INFINITY);
    EXPECT_EQ(soxUt_getRMSLevel(path("missing.wav")), -12.0);
    const QString mp3 = mp3From(t, "t.mp3");
    EXPECT_NEAR(soxUt_getRMSLevel(mp3), 20.0 * std::log10(0.5 / std::sqrt(2.0)), 0.7);
    EXPECT_FALSE(QFileInfo::exists(mp3 + ".wav"));
}

TEST_F(SoxUtLevelsTest, AutoRmsBringsSpeechToTheTarget) {
    const QString talk = speech("talk.wav", "Welcome back to the show. Today we talk about sound.");
    const double before = soxUt_getRMSLevel(talk);
    ASSERT_GT(before, -40.0);
    soxUt_autoRMS(talk, path("levelled.wav"), before - 7.5);
    const Decoded out = decode(path("levelled.wav"));
    EXPECT_NEAR(out.rmsDb(0, 0.0, out.seconds()), before - 7.5, 0.1);
    EXPECT_NEAR(out.seconds(), decode(talk).seconds(), 1e-9);
}
