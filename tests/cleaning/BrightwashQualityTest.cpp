#include "cleaning/CleaningFixture.h"
#include "render/tools/SoxFilters.h"

namespace {

// Runs of 10-ms windows under `belowDb` dBFS RMS, at least `minimum` seconds long, in order; the
// end of the file counts as the end of a run.
std::vector<SpeechSpan> silentRuns(const Decoded& d, double minimum, double belowDb) {
    std::vector<SpeechSpan> runs;
    const double w = 0.01;
    double start = -1;
    for (double t = 0; t <= d.seconds(); t += w) {
        const bool silent = t + w <= d.seconds() && d.rmsDb(0, t, t + w) < belowDb;
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

    const double humIn = humDb(noisy_), humOut = humDb(result());
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
    // In the chain, before the dynamics: what the gate makes of the denoised speech against that speech.
    BrightwashSetting s = full_;
    s.doNoiseGate = s.doCompressor = s.doEqualizer = s.doRemoveHum = false;
    ASSERT_EQ(clean(noisy_, s), "");
    const QString denoised = path("denoised.wav");
    ASSERT_TRUE(QFile::rename(result(), denoised));
    s.doNoiseGate = true;
    ASSERT_EQ(clean(noisy_, s), "");
    const Decoded in = decode(denoised), out = decode(result());
    for (const SpeechSpan& span : spans)
        EXPECT_NEAR(out.rmsDb(0, span.from, span.to), in.rmsDb(0, span.from, span.to), 0.5) << span.from;
}

TEST_F(BrightwashQuality, PauseRemovalShortensLongPausesAndKeepsOrder) {
    BrightwashSetting s = allOff();
    s.doDenoiser = s.doNoiseGate = s.doRemovePauses = true;
    ASSERT_EQ(clean(noisy_, s), "");
    const Decoded out = decode(result());
    // A pause is what the pause stage takes for silence: below pausesThreshold as a percentage of full
    // scale, i.e. 40 dB under the number.
    const double silentBelow = s.pausesThreshold - 40.0;
    const std::vector<SpeechSpan> runs = silentRuns(out, 0.1, silentBelow);
    QStringList seen;
    for (const SpeechSpan& r : runs)
        seen << QString("%1-%2").arg(r.from).arg(r.to);
    // The long pauses and the tail (the lead is cut away).
    ASSERT_EQ(runs.size(), pauses.size() + 1) << seen.join(" ").toStdString();
    for (size_t i = 0; i < pauses.size(); ++i)
        EXPECT_NEAR(runs[i].to - runs[i].from, s.pauseLength, 0.05) << seen.join(" ").toStdString();
    // The passages in their order, each as long as before.
    for (size_t i = 0; i < spans.size(); ++i) {
        const double from = i == 0 ? 0.0 : runs[i - 1].to;
        EXPECT_NEAR(runs[i].from - from, spans[i].to - spans[i].from, 0.3)
            << i << ": " << seen.join(" ").toStdString();
    }
}

TEST_F(BrightwashQuality, AllFlagsOffGivesTheMono16Copy) {
    const QString stereo = channels("stereo.wav", {noisy_, noisy_});
    ASSERT_EQ(clean(stereo, allOff()), "");
    const Decoded in = decode(noisy_), out = decode(path("stereo_cln.wav"));
    EXPECT_EQ(out.channels, 1);
    EXPECT_EQ(out.subFormat, SF_FORMAT_PCM_16);
    EXPECT_EQ(out.frames, in.frames);
    EXPECT_LE(in.largestDifference(out), 1.5 / 32768.0);
}
