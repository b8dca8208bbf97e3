#include "cleaning/Uhm.h"

#include "cleaning/CleaningFixture.h"
#include "cleaning/UhmDB.h"
#include "cleaning/UhmMarkers.h"

#include <QTemporaryDir>
#include <cmath>

TEST(UhmDB, DifferenceIsBlindToAConstantOffsetAndTheFileRoundTrips) {
    const std::vector<float> f{0.1f, 0.9f, 0.4f, 1.0f};
    std::vector<float> shifted = f;
    for (float& v : shifted)
        v += 0.3f;
    EXPECT_NEAR(UhmDB::getFingerprintDifference(f, shifted), 0.0f, 1e-6);
    EXPECT_GT(UhmDB::getFingerprintDifference(f, std::vector<float>{1.0f, 0.1f, 0.4f, 1.0f}), 0.3f);
    EXPECT_EQ(UhmDB::normalizeFingerprint(std::vector<float>{0.0f, 0.0f}), (std::vector<float>{0.0f, 0.0f}));
    EXPECT_EQ(UhmDB::normalizeFingerprint(std::vector<float>{1.0f, 4.0f}), (std::vector<float>{0.25f, 1.0f}));

    QTemporaryDir dir;
    UhmDB db(dir.filePath("UhmDB.json"));
    EXPECT_TRUE(db.fingerprintList.empty());
    db.addFingerprint(f);
    db.addFingerprint(shifted);
    ASSERT_TRUE(db.saveToFile());
    EXPECT_EQ(UhmDB(db.dbPath).fingerprintList, db.fingerprintList);
    EXPECT_NEAR(db.getDifferenceFromList(std::vector<float>{0.1f, 0.9f, 0.4f, 1.0f}), 0.0f, 1e-6);
}

TEST(Uhm, IntervalsMergeWithTheLastShrunkAndKeepIntervalsFillTheRest) {
    using I = UhmTimeInterval;
    const double a = 0.25;
    EXPECT_TRUE(Uhm::mergeIntervals({}, a).empty());
    EXPECT_EQ(Uhm::mergeIntervals({{1, 1.25}}, a), (std::vector<I>{{1, 1.25}}));
    // Two runs: only the last loses an interval at each end.
    EXPECT_EQ(Uhm::mergeIntervals({{0, .25}, {.25, .5}, {.5, .75}, {2, 2.25}, {2.25, 2.5}, {2.5, 2.75}}, a),
              (std::vector<I>{{0, .75}, {2.25, 2.5}}));

    struct Case {
        std::vector<I> uhms;
        std::vector<I> keep;
    };
    const double d = 10;
    for (const Case& c : std::vector<Case>{{{}, {{0, d}}},
                                           {{{2, 3}}, {{0, 2}, {3, d}}},
                                           {{{0, 1}, {4, 5}}, {{1, 4}, {5, d}}},
                                           {{{3, 4}, {9, d}}, {{0, 3}, {4, 9}}},
                                           {{{0, d}}, {}}})
        EXPECT_EQ(Uhm::keepIntervals(c.uhms, d), c.keep);
}

// espeak-ng sentences with held sounds spliced between them: the marker pass finds each hold and no
// word, and the chain takes the holds out without clicks.
class UhmSpeech : public CleaningFixture {};

TEST_F(UhmSpeech, MarkerPassFindsEachHoldAndTheChainRemovesThemWithoutClicks) {
    const QStringList sentences{"We looked at the numbers together", "and then we decided to start over",
                                "That was the plan."};
    const QList<double> holds{0.8, 1.3};
    std::vector<SpeechSpan> held;
    QStringList pieces;
    double t = 0;
    for (int i = 0; i < sentences.size(); ++i) {
        pieces << speech(QString("s%1.wav").arg(i), sentences[i]);
        t += decode(pieces.back()).seconds();
        if (i < holds.size()) {
            pieces << heldSound(QString("h%1.wav").arg(i), holds[i]);
            held.push_back({t, t + holds[i]});
            t += holds[i];
        }
    }
    const QString file = join("talk.wav", pieces);

    const auto spans = uhm_probableUhmSpans(file, nullptr, 1.0 / 32.0, 0.5, 0.1f);
    ASSERT_EQ(spans.size(), held.size());
    for (size_t i = 0; i < spans.size(); ++i) {
        EXPECT_NEAR(spans[i].inTime, held[i].from, 0.1) << i;
        EXPECT_NEAR(spans[i].outTime, held[i].to, 0.1) << i;
    }

    BrightwashSetting settings;
    settings.doDenoiser = settings.doNoiseGate = settings.doCompressor = settings.doEqualizer = false;
    settings.doEraseUhm = true;
    settings.uhmPrefs = {16, 0.5, 0.025f, 20};
    const auto run = Brightwash::make(file, settings, nullptr, {});
    run->start();
    ASSERT_EQ(run->error(), "");
    const Decoded source = decode(file);
    const Decoded result = decode(run->resultPath());
    EXPECT_NEAR(source.seconds() - result.seconds(), 0.8 + 1.3, 0.2);
    // The largest sample-to-sample step over the peak: a cut that clicks raises it.
    const auto relativeLargestStep = [](const Decoded& d) {
        double step = 0, peak = 0;
        for (size_t i = 0; i < d.samples.size(); ++i) {
            peak = std::max(peak, double(std::fabs(d.samples[i])));
            if (i > 0) step = std::max(step, double(std::fabs(d.samples[i] - d.samples[i - 1])));
        }
        return step / peak;
    };
    EXPECT_LE(relativeLargestStep(result), relativeLargestStep(source) * 1.05);
}
