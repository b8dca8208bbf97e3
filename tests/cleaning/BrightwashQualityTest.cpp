#include "cleaning/CleaningFixture.h"
#include "render/tools/SoxFilters.h"

namespace {

// Runs of samples no louder than 2 LSB, at least `minimum` seconds long, in order.
std::vector<SpeechSpan> silentRuns(const Decoded& d, double minimum) {
    std::vector<SpeechSpan> runs;
    int64_t start = -1;
    const float quiet = 2.5f / 32768.0f;
    for (int64_t i = 0; i <= d.frames; ++i) {
        const bool silent = i < d.frames && std::fabs(d.samples[size_t(i)]) <= quiet;
        if (silent && start < 0) start = i;
        if (!silent && start >= 0) {
            if (double(i - start) / d.rate >= minimum)
                runs.push_back({double(start) / d.rate, double(i) / d.rate});
            start = -1;
        }
    }
    return runs;
}

class BrightwashQuality : public CleaningFixture {
protected:
    void SetUp() override {
        CleaningFixture::SetUp();
        clean_ = cleanSpeech();
        noisy_ = noisy(clean_, "talk.wav");
        before_ = digest(noisy_);
        full_ = Brightwash::loadSettings();
        full_.doDenoiser = full_.doNoiseGate = full_.doCompressor = full_.doEqualizer = full_.doRemoveHum =
            true;
    }

    QString result() const { return path("talk_cln.wav"); }

    QString clean_, noisy_;
    QByteArray before_;
    BrightwashSetting full_;
};

} // namespace

TEST_F(BrightwashQuality, FullChainTakesOutNoiseAndHumAndKeepsTheSpeechLevel) {
    ASSERT_EQ(clean(noisy_, full_), "");
    const Decoded in = decode(noisy_), out = decode(result());
    ASSERT_EQ(out.channels, 1);
    EXPECT_NEAR(out.seconds(), in.seconds(), 0.05); // timing kept without pause removal

    // Noise floor in the middle of the pauses.
    std::vector<SpeechSpan> pauseMiddles;
    for (const SpeechSpan& p : pauses)
        pauseMiddles.push_back({p.from + 1.4, p.to - 0.6});
    const double floorIn = rmsOver(in, pauseMiddles), floorOut = rmsOver(out, pauseMiddles);
    EXPECT_LE(floorOut, floorIn - 20.0) << floorIn << " -> " << floorOut;

    // Hum, in a narrow band around 50 Hz.
    const double humIn = rmsOver(decode(humBand(noisy_, "hum_in.wav")), spans);
    const double humOut = rmsOver(decode(humBand(result(), "hum_out.wav")), spans);
    EXPECT_LE(humOut, humIn - 20.0) << humIn << " -> " << humOut;

    // Speech against the clean speech through the same dynamics.
    const QString reference = path("reference.wav");
    const BWCompressorSetings& c = full_.compressor;
    soxUt_eqComp(clean_, reference, c.ratio, c.gain, c.attack, c.decay, full_.equalizer, 50.0);
    const double speechRef = rmsOver(decode(reference), spans), speechOut = rmsOver(out, spans);
    EXPECT_NEAR(speechOut, speechRef, 1.0);

    EXPECT_EQ(digest(noisy_), before_);
    EXPECT_EQ(leftovers(), QStringList());
}

TEST_F(BrightwashQuality, GateKeepsEverySpokenStretch) {
    BrightwashSetting s = allOff();
    s.doDenoiser = s.doNoiseGate = true;
    ASSERT_EQ(clean(noisy_, s), "");
    const Decoded in = decode(noisy_), out = decode(result());
    for (const SpeechSpan& span : spans)
        EXPECT_NEAR(out.rmsDb(0, span.from, span.to), in.rmsDb(0, span.from, span.to), 0.5) << span.from;
}

TEST_F(BrightwashQuality, PauseRemovalShortensLongPausesAndKeepsOrder) {
    BrightwashSetting s = full_;
    s.doRemovePauses = true;
    ASSERT_EQ(clean(noisy_, s), "");
    const Decoded out = decode(result());
    // The silence left between passages, leading silence apart.
    std::vector<SpeechSpan> runs = silentRuns(out, 0.05);
    if (!runs.empty() && runs.front().from == 0.0) runs.erase(runs.begin());
    ASSERT_GE(runs.size(), pauses.size());
    for (size_t i = 0; i < pauses.size(); ++i)
        EXPECT_NEAR(runs[i].to - runs[i].from, s.pauseLength, 0.05) << i;
    // Each passage keeps its length, in order: what was cut is the pauses' excess.
    const double cut = (pauses[0].to - pauses[0].from) + (pauses[1].to - pauses[1].from);
    EXPECT_LT(out.seconds(), decode(noisy_).seconds() - cut + 4.0);
    const double first = runs[0].from, second = runs[1].from - runs[0].to;
    EXPECT_LT(first, second); // the short sentence before the long one
}

TEST_F(BrightwashQuality, AllFlagsOffGivesTheMono16Copy) {
    const QString stereo = channels("stereo.wav", {noisy_, noisy_});
    ASSERT_EQ(clean(stereo, allOff()), "");
    const Decoded in = decode(noisy_), out = decode(path("stereo_cln.wav"));
    EXPECT_EQ(out.channels, 1);
    EXPECT_EQ(out.subFormat, SF_FORMAT_PCM_16);
    EXPECT_EQ(out.frames, in.frames);
    double worst = 0;
    for (int64_t i = 0; i < in.frames; ++i)
        worst = std::max(worst, double(std::fabs(in.samples[size_t(i)] - out.samples[size_t(i)])));
    EXPECT_LE(worst, 1.5 / 32768.0);
}
