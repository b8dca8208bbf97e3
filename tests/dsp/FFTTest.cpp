#include "dsp/fft/AUAudioFFTFile.h"
#include "dsp/fft/FFT2.h"
#include "dsp/fft/FFTUtils.h"
#include "dsp/spectral/AUAudioDenoiser.h"
#include "dsp/spectral/AUAudioEq.h"
#include "dsp/spectral/AUAudioSpectralFilters.h"
#include "support/TestAudio.h"

#include <cmath>
#include <numbers>

namespace {

std::vector<float> ramp(size_t n) {
    std::vector<float> v(n);
    for (size_t i = 0; i < n; ++i)
        v[i] = std::sin(0.37f * float(i)) + 0.25f * float(i % 7) - 0.5f;
    return v;
}

} // namespace

TEST(FFT2, RoundTripIsExactToRoundingAndKeepsThePowerOfTwoPrefix) {
    for (size_t n : {2u, 8u, 2048u, 3000u}) {
        const std::vector<float> in = ramp(n);
        const FFTMagPhase mp = FFT2::calculateForward(in);
        const size_t used = FFT2::usableLength(n);
        ASSERT_EQ(mp.mag.size(), used / 2) << n;
        const std::vector<float> back = FFT2::calculateInverse(mp);
        ASSERT_EQ(back.size(), used);
        for (size_t i = 0; i < used; ++i)
            ASSERT_NEAR(back[i], in[i], 1e-5) << n << " at " << i;
    }
    EXPECT_TRUE(FFT2::calculateForward(std::vector<float>{1.0f}).mag.empty());
}

TEST(FFT2, PackedBinZeroHoldsDoubledDcAndNyquistAndBinsAreDoubled) {
    const size_t n = 16;
    std::vector<float> x(n);
    // DC 0.5, Nyquist 0.25 (alternating sign) and a cosine of amplitude 1 on bin 3.
    for (size_t i = 0; i < n; ++i)
        x[i] =
            0.5f + 0.25f * (i % 2 ? -1.0f : 1.0f) + std::cos(2.0f * std::numbers::pi_v<float> * 3.0f * i / n);
    const FFTMagPhase mp = FFT2::calculateForward(x);
    // Textbook: DC sum 8, Nyquist sum 4, bin 3 n/2 = 8; packed doubles each.
    EXPECT_NEAR(mp.mag[0], std::hypot(16.0f, 8.0f), 1e-4);
    EXPECT_NEAR(mp.phase[0], std::atan2(8.0f, 16.0f), 1e-5);
    EXPECT_NEAR(mp.mag[3], 16.0f, 1e-4);
    EXPECT_NEAR(mp.mag[2], 0.0f, 1e-4);
    EXPECT_EQ(mp.getDominantIndex(), 0);
    EXPECT_EQ(mp.getSecondDominantIndex(), 3);
}

TEST(FFTUtils, TransformLengthsOfTheWorkedExamples) {
    struct Case {
        int64_t slice, interval, samplesRange;
    };
    for (const Case c :
         {Case{2756, 2048, 2048}, Case{1024, 1024, 1024}, Case{1378, 1024, 1024}, Case{1448, 1024, 1024},
          Case{1449, 1024, 2048}, Case{2047, 1024, 2048}, Case{0, 0, 0}}) {
        EXPECT_EQ(FFTUtils::intervalLength(c.slice), c.interval) << c.slice;
        EXPECT_EQ(FFTUtils::samplesRangeLength(c.slice), c.samplesRange) << c.slice;
    }
}

TEST(FFTUtils, BandsKeep200To4000HzAndTheLastFrameIsShorter) {
    TestAudio audio;
    const QString file = audio.tone("t.wav", 1.0, 1000.0);
    const FFTUtils fft(file);
    ASSERT_EQ(fft.frequency, 44100);
    // 2048 points: bins of 21.53 Hz; 10...185 lie in [200, 4000].
    const std::vector<float> bands = fft.getBandsInInterval(0.0, 1.0 / 16.0);
    EXPECT_EQ(bands.size(), 176u);
    const auto peak = std::max_element(bands.begin(), bands.end()) - bands.begin();
    EXPECT_NEAR((peak + 10) * 44100.0 / 2048.0, 1000.0, 22.0);
    // The last 1/16 s starts 2756 samples before the end but 2048 are asked for: fewer remain only when
    // the frame runs past the end.
    const std::vector<float> tail = fft.getBandsInInterval(1.0 - 0.02, 1.0 + 0.0425);
    EXPECT_LT(tail.size(), bands.size());
}

// A tone on a bin centre, so that the rectangular windows hold whole periods.
class SpectralFilterTest : public ::testing::Test {
protected:
    static constexpr int kWindow = 4096;
    static constexpr int kRate = 44100;
    static float binTone(int bin) { return float(bin) * kRate / kWindow; }
    QString twoTones(float low, float high) {
        return audio.floatWav("two.wav", kRate, 1, kRate * 2, [=](int64_t i, int) {
            const float t = float(i) / kRate;
            return 0.3f * std::sin(2 * std::numbers::pi_v<float> * low * t) +
                   0.3f * std::sin(2 * std::numbers::pi_v<float> * high * t);
        });
    }
    // Level in dB of the tone `f` in `path` (Goertzel-style correlation over the whole file).
    static double toneDb(const QString& path, float f) {
        const Decoded d = TestAudio::decode(path);
        double re = 0, im = 0;
        for (int64_t i = 0; i < d.frames; ++i) {
            const double a = 2 * std::numbers::pi * f * double(i) / d.rate;
            re += d.samples[size_t(i)] * std::cos(a);
            im += d.samples[size_t(i)] * std::sin(a);
        }
        return 20 * std::log10(2 * std::hypot(re, im) / double(d.frames));
    }
    TestAudio audio;
};

// A low pass keeps the tone below and removes the one above, with overlapping windows too; a band
// pass and a gain act on their bins only.
TEST_F(SpectralFilterTest, FiltersAndGainActOnTheirBinsOnly) {
    const float low = binTone(93), high = binTone(600); // 1001 Hz and 6460 Hz
    const QString src = twoTones(low, high);
    for (const int run : {0, 1, 2}) {
        auto file = std::make_shared<AUAudioFFTFile>(src, kWindow, run == 1);
        ASSERT_TRUE(file->readSamples());
        file->performFFT();
        if (run < 2) {
            AUAudioLowPass(file, 3000.0f).lowPass();
        } else {
            AUAudioBandPass(file, 5000.0f, 8000.0f).bandPass();
            AUAudioGain(file, -6.0f).gain();
        }
        const QString out = audio.path(QString::number(run) + ".wav");
        ASSERT_TRUE(file->performFFTInverse(true, out));
        EXPECT_EQ(TestAudio::decode(out).frames, kRate * 2);
        const float kept = run < 2 ? low : high, cut = run < 2 ? high : low;
        EXPECT_NEAR(toneDb(out, kept), toneDb(src, kept) - (run < 2 ? 0.0 : 6.0), 0.5) << run;
        EXPECT_LT(toneDb(out, cut), toneDb(src, cut) - 40.0) << run;
    }
}

TEST_F(SpectralFilterTest, DenoiserClosesNoiseBinsAndKeepsATone) {
    // Fingerprint from a second of hiss alone; then the same hiss with a tone over its second half.
    const QString hiss = audio.path("hiss.wav"), toned = audio.path("toned.wav");
    TestAudio::run("/usr/bin/sox",
                   {"-R", "-n", "-r", "44100", "-b", "16", hiss, "synth", "2", "whitenoise", "vol", "0.05"});
    const float f = binTone(200);
    const Decoded noise = TestAudio::decode(hiss);
    audio.floatWav("toned.wav", kRate, 1, noise.frames, [&](int64_t i, int) {
        return noise.samples[size_t(i)] +
               (i >= kRate ? 0.3f * std::sin(2 * std::numbers::pi_v<float> * f * float(i) / kRate) : 0.0f);
    });
    auto profile = std::make_shared<AUAudioFFTFile>(hiss, kWindow);
    auto file = std::make_shared<AUAudioFFTFile>(toned, kWindow);
    ASSERT_TRUE(profile->readSamples() && file->readSamples());
    profile->performFFT();
    file->performFFT();
    AUAudioDenoiser(file, profile->getFingerprintList(1.0f), 0.0f, 0.0f, 0.1f, 1, 1).denoise();
    const QString out = audio.path("denoised.wav");
    ASSERT_TRUE(file->performFFTInverse(true, out));
    const Decoded before = TestAudio::decode(toned), after = TestAudio::decode(out);
    EXPECT_LT(after.rmsDb(0, 0.1, 0.9), before.rmsDb(0, 0.1, 0.9) - 15.0);
    EXPECT_NEAR(toneDb(out, f), toneDb(toned, f), 1.0);
}

TEST(AUAudioEqShape, CurveIsFlatBeyondItsEndsAndLinearInDbBetween) {
    const AUAudioEqShape shape({{1000.0f, 6.0f}, {100.0f, -6.0f}});
    const std::vector<float> got = shape.getShape({50.0f, 100.0f, 550.0f, 1000.0f, 5000.0f});
    const std::vector<float> dB{-6.0f, -6.0f, 0.0f, 6.0f, 6.0f};
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(20 * std::log10(got[i]), dB[i], 1e-4) << i;
}

TEST(AUAudioEq, MatchFingerprintTiltsPinkTowardsWhiteInsideTheBandOnly) {
    TestAudio audio;
    const QString pink = audio.path("pink.wav"), white = audio.path("white.wav");
    TestAudio::run("/usr/bin/sox",
                   {"-R", "-n", "-r", "44100", "-b", "16", pink, "synth", "3", "pinknoise", "vol", "0.3"});
    TestAudio::run("/usr/bin/sox",
                   {"-R", "-n", "-r", "44100", "-b", "16", white, "synth", "3", "whitenoise", "vol", "0.3"});
    auto file = std::make_shared<AUAudioFFTFile>(pink, 2048);
    auto target = std::make_shared<AUAudioFFTFile>(white, 2048);
    ASSERT_TRUE(file->readSamples() && target->readSamples());
    file->performFFT();
    target->performFFT();
    // Mean magnitude of the bins in [f0, f1] over all windows.
    const auto bandLevel = [](const AUAudioFFTFile& f, float f0, float f1) {
        const std::vector<float> freqs = f.getFrequencies();
        double sum = 0;
        int n = 0;
        for (const FFTMagPhase& w : f.magPhaseList[0])
            for (size_t k = 0; k < freqs.size(); ++k)
                if (freqs[k] >= f0 && freqs[k] <= f1) sum += w.mag[k], ++n;
        return 20 * std::log10(sum / n);
    };
    const double tiltBefore = bandLevel(*file, 400, 600) - bandLevel(*file, 3500, 4500);
    const double outsideBefore = bandLevel(*file, 10000, 12000);
    AUAudioEq eq(file, AUAudioEqShape({}));
    eq.matchFingerprint(*target, 200.0f, 300.0f, 5000.0f, 6000.0f, 1.0f);
    const double tiltAfter = bandLevel(*file, 400, 600) - bandLevel(*file, 3500, 4500);
    EXPECT_GT(tiltBefore, 6.0); // pink: about 9 dB over that span
    EXPECT_LT(std::fabs(tiltAfter), 3.0);
    EXPECT_NEAR(bandLevel(*file, 10000, 12000), outsideBefore, 1e-3);
}
