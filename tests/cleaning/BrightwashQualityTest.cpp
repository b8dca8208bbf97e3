#include "cleaning/CleaningFixture.h"
#include "render/tools/SoxFilters.h"

namespace {

// Runs of 10-ms windows under −60 dBFS RMS, at least `minimum` seconds long, in order.
std::vector<SpeechSpan> silentRuns(const Decoded& d, double minimum) {
    std::vector<SpeechSpan> runs;
    const double w = 0.01;
    double start = -1;
    for (double t = 0; t <= d.seconds(); t += w) {
        const bool silent = t + w <= d.seconds() && d.rmsDb(0, t, t + w) < -60.0;
        if (silent && start < 0) start = t;
        if (!silent && start >= 0) {
            if (t - start >= minimum) runs.push_back({start, t});
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
    // Timing kept without pause removal; the file ends with the last passage's fade.
    EXPECT_LE(out.seconds(), in.seconds() + 0.01);
    EXPECT_GT(out.seconds(), spans.back().to);

    // Noise floor in the middle of the pauses.
    std::vector<SpeechSpan> pauseMiddles;
    for (const SpeechSpan& p : pauses)
        pauseMiddles.push_back({p.from + 1.4, p.to - 0.6});
    const double floorIn = rmsOver(in, pauseMiddles), floorOut = rmsOver(out, pauseMiddles);
    EXPECT_LE(floorOut, floorIn - 20.0) << floorIn << " -> " << floorOut;

    const double humIn = humDb(in), humOut = humDb(out);
    EXPECT_NEAR(humIn, -48.0, 1.0);
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
    s.doNoiseGate = true;
    ASSERT_EQ(clean(noisy_, s), "");
    const Decoded in = decode(noisy_), out = decode(result());
    for (const SpeechSpan& span : spans)
        EXPECT_NEAR(out.rmsDb(0, span.from, span.to), in.rmsDb(0, span.from, span.to), 0.5) << span.from;
}

TEST_F(BrightwashQuality, PauseRemovalShortensLongPausesAndKeepsOrder) {
    // Without dynamics the gaps the gate leaves are digital silence, which can be measured exactly.
    BrightwashSetting s = allOff();
    s.doDenoiser = s.doNoiseGate = s.doRemovePauses = true;
    ASSERT_EQ(clean(noisy_, s), "");
    const Decoded out = decode(result());
    // The quiet left between passages: the gap of pauseLength plus the quietest ends of the fades of
    // denoised noise (0.02...0.16 s, varying with the noise)
    // around it; the fade at the end of the file makes the last run.
    // A blip of denoised noise shorter than 0.1 s can split one gap in two: it is still one gap.
    std::vector<SpeechSpan> runs;
    std::vector<double> quiet;
    for (const SpeechSpan& r : silentRuns(out, 0.1)) {
        if (!runs.empty() && r.from - runs.back().to < 0.1) {
            runs.back().to = r.to;
            quiet.back() += r.to - r.from;
        } else {
            runs.push_back(r);
            quiet.push_back(r.to - r.from);
        }
    }
    ASSERT_EQ(runs.size(), pauses.size() + 1);
    for (size_t i = 0; i < pauses.size(); ++i) {
        EXPECT_GE(quiet[i], s.pauseLength - 0.01) << i;
        EXPECT_LE(quiet[i], s.pauseLength + 0.2) << i;
    }
    // Each passage keeps its length, in order: what was cut is the pauses' excess.
    const double cut = (pauses[0].to - pauses[0].from) + (pauses[1].to - pauses[1].from);
    EXPECT_LT(out.seconds(), decode(noisy_).seconds() - cut + 4.0);
    const double first = runs[1].from - runs[0].to, second = runs[2].from - runs[1].to;
    // The passages in their order: the second sentence is the longer one.
    EXPECT_GT(first, second);
    EXPECT_GT(spans[1].to - spans[1].from, spans[2].to - spans[2].from);
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
