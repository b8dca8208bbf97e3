// Filters and noise reduction, run against the installed SoX and measured.

#include "render/tools/SoxFilters.h"

#include "render/tools/ToolFixture.h"

#include <QFileInfo>

class SoxUtFiltersTest : public ToolFixture {
protected:
    double levelOf(const QString& file, double from = 0.3, double to = 0.9) const {
        return decode(file).rmsDb(0, from, to);
    }
};

TEST_F(SoxUtFiltersTest, BandPassKeepsTheBandAndForSyncIsMono16LiftingFiveHundredHertz) {
    const QString inBand = tone("mid.wav", 1.0, 1500.0);
    const QString low = tone("low.wav", 1.0, 100.0);
    const QString high = tone("high.wav", 1.0, 6000.0);
    soxUt_bandPass(inBand, path("mid-bp.wav"), 1000.0, 2000.0, false);
    soxUt_bandPass(low, path("low-bp.wav"), 1000.0, 2000.0, false);
    soxUt_bandPass(high, path("high-bp.wav"), 1000.0, 2000.0, false);
    EXPECT_GT(levelOf(path("mid-bp.wav")), levelOf(inBand) - 3.0);
    EXPECT_LT(levelOf(path("low-bp.wav")), levelOf(low) - 30.0);
    EXPECT_LT(levelOf(path("high-bp.wav")), levelOf(high) - 15.0);
    // For sync: mono, 16-bit, the source's rate, and 500 Hz lifted.
    const QString src = tone("st.wav", 1.0, 500.0, 48000, 2, 0.05);
    soxUt_bandPass(src, path("sync.wav"), 100.0, 4000.0, true);
    const Decoded out = decode(path("sync.wav"));
    EXPECT_EQ(out.channels, 1);
    EXPECT_EQ(out.subFormat, SF_FORMAT_PCM_16);
    EXPECT_EQ(out.rate, 48000);
    EXPECT_NEAR(out.rmsDb(0, 0.3, 0.9), levelOf(src) + 24.0, 1.5);
}

TEST_F(SoxUtFiltersTest, EqualizerBandsAndHumRemoval) {
    const QString k1 = tone("1k.wav", 1.0, 1000.0);
    soxUt_equalize(k1, path("cut.wav"), {{1000.0, -12.0}}, 0.0);
    EXPECT_NEAR(levelOf(path("cut.wav")), levelOf(k1) - 12.0, 0.5);

    // Off by frequency 0 whatever its gain; and a hum filter far away changes nothing.
    soxUt_equalize(k1, path("off.wav"), {{0.0, -12.0}}, 50.0);
    EXPECT_NEAR(levelOf(path("off.wav")), levelOf(k1), 0.2);

    const QString hum = tone("hum.wav", 1.0, 50.0);
    soxUt_equalize(hum, path("dehum.wav"), {}, 50.0);
    EXPECT_LT(levelOf(path("dehum.wav")), levelOf(hum) - 20.0);
}

TEST_F(SoxUtFiltersTest, CompressorNarrowsTheDistanceBetweenLevels) {
    // Points (-30, -30/ratio) and (0, 0): quiet parts come up much more than loud ones.
    const QString quietTone = tone("q.wav", 1.0, 440.0, 44100, 1, 0.0316);
    const QString loudTone = tone("l.wav", 1.0, 440.0, 44100, 1, 0.5);
    soxUt_compressor(quietTone, path("qc.wav"), 4.0, 0.0, 0.01, 0.2);
    soxUt_compressor(loudTone, path("lc.wav"), 4.0, 0.0, 0.01, 0.2);
    const double before = levelOf(loudTone) - levelOf(quietTone);
    const double after = levelOf(path("lc.wav")) - levelOf(path("qc.wav"));
    EXPECT_NEAR(before, 24.0, 0.2);
    EXPECT_NEAR(after, 6.0, 1.5);

    // Gain is added on top.
    soxUt_compressor(quietTone, path("qg.wav"), 4.0, -3.0, 0.01, 0.2);
    EXPECT_NEAR(levelOf(path("qg.wav")), levelOf(path("qc.wav")) - 3.0, 0.3);
}

TEST_F(SoxUtFiltersTest, StandardEqualizerBands) {
    const std::vector<BWEqBandSettings> bands = soxUt_getStandardEq({1, 2, 3, 4, 5, 6, 7, 8});
    const std::vector<double> frequencies{62.5, 125, 250, 500, 1000, 2000, 4000, 8000};
    ASSERT_EQ(bands.size(), 8u);
    for (size_t i = 0; i < bands.size(); ++i) {
        EXPECT_EQ(bands[i].frequency, frequencies[i]);
        EXPECT_EQ(bands[i].gain, static_cast<double>(i + 1));
    }
    const std::vector<BWEqBandSettings> partial = soxUt_getStandardEq({-3.0});
    ASSERT_EQ(partial.size(), 8u);
    EXPECT_EQ(partial[0].gain, -3.0);
    EXPECT_EQ(partial[7].gain, 0.0);
}

TEST_F(SoxUtFiltersTest, NoiseProfileAndDenoise) {
    const QString hiss = noise("hiss.wav", 1.0, 0.05);
    const QString src =
        join("src.wav", {hiss, mix("speech.wav", {tone("t.wav", 1.0), noise("n2.wav", 1.0, 0.05)})});
    soxUt_getNoiseProfile(hiss, path("hiss.prof"));
    ASSERT_GT(QFileInfo(path("hiss.prof")).size(), 0);
    soxUt_denoise(src, path("hiss.prof"), path("clean.wav"), 0.5);
    const Decoded clean = decode(path("clean.wav"));
    EXPECT_NEAR(clean.seconds(), 2.0, 0.03); // noisered drops part of its last window
    EXPECT_LT(clean.rmsDb(0, 0.2, 0.8), decode(src).rmsDb(0, 0.2, 0.8) - 10.0);
    EXPECT_NEAR(clean.rmsDb(0, 1.2, 1.8), decode(src).rmsDb(0, 1.2, 1.8), 1.0);

    // An old profile never survives a failed run.
    soxUt_getNoiseProfile(path("missing.wav"), path("hiss.prof"));
    EXPECT_FALSE(QFileInfo::exists(path("hiss.prof")));
}
