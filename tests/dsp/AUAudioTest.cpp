#include "dsp/AUAudio.h"

#include "dsp/ArrayUtils.h"
#include "dsp/ProgressProtocol.h"
#include "dsp/SndFile.h"
#include "support/TestAudio.h"

#include <gtest/gtest.h>

namespace {

struct ProgressLog : ProgressProtocol {
    std::vector<std::pair<QString, double>> calls;
    void progress(const QString& label, double fraction) override { calls.emplace_back(label, fraction); }
};

// Channel 0 holds its own frame index scaled into ±1; channel 1 the negative, so a mix-up shows.
float staircase(int64_t i, int channel) {
    const float v = static_cast<float>(i % 100000) / 100000.0f;
    return channel == 0 ? v : -v;
}

} // namespace

// Exactly one slice reads in one pass; one frame more takes a second pass and keeps the order.
TEST(AUAudioRead, SliceBySliceWithProgressAtEachSlice) {
    TestAudio make;
    for (const int64_t frames : {AUAudio::kSliceFrames, AUAudio::kSliceFrames + 1}) {
        const QString path = make.floatWav(QString::number(frames) + ".wav", 44100, 3, frames, staircase);
        ProgressLog log;
        const auto values = AUAudio::readFileIntoFloatArray(path, &log);
        ASSERT_EQ(values.size(), static_cast<size_t>(frames));
        ASSERT_EQ(log.calls.size(), frames == AUAudio::kSliceFrames ? 1u : 2u);
        EXPECT_EQ(log.calls[0], std::make_pair(QString("Progressive Read into Buffer"), 0.0));
        EXPECT_DOUBLE_EQ(log.calls.back().second, frames == AUAudio::kSliceFrames
                                                      ? 0.0
                                                      : static_cast<double>(AUAudio::kSliceFrames) / frames);
        for (const int64_t i : {int64_t{0}, int64_t{123457}, AUAudio::kSliceFrames - 1, frames - 1})
            EXPECT_EQ(values[static_cast<size_t>(i)], staircase(i, 0)) << frames << " at " << i;
    }
}

TEST(AUAudioRead, OtherChannelsAndMissingOnes) {
    TestAudio make;
    const QString path = make.floatWav("two.wav", 48000, 2, 1000, staircase);
    SndFile file(path);
    const auto right = AUAudio::progressiveReadIntoBuffer(file, 300, 1);
    ASSERT_EQ(right.size(), 1000u);
    EXPECT_EQ(right[999], staircase(999, 1));
    SndFile again(path);
    EXPECT_TRUE(AUAudio::progressiveReadIntoBuffer(again, 300, 2).empty());
}

TEST(AUAudioSubsample, ReducesSliceBySliceWithASeamAtEachBoundary) {
    TestAudio make;
    const int64_t frames = AUAudio::kSliceFrames + 1000;
    const QString path = make.floatWav("long.wav", 44100, 1, frames, [](int64_t i, int) {
        return (i % 2 == 0 ? 1.0f : -1.0f) * static_cast<float>(i % 1000) / 1000.0f;
    });
    ProgressLog log;
    const auto means = AUAudio::readFileIntoFloatArrayByURLAndSubsample(path, 147, false, &log);
    const auto all = ArrayUtils::getAbs(AUAudio::readFileIntoFloatArray(path));
    const auto first = ArrayUtils::downsample(std::span(all).first(AUAudio::kSliceFrames), 147);
    const auto second = ArrayUtils::downsample(std::span(all).subspan(AUAudio::kSliceFrames), 147);
    ASSERT_EQ(means.size(), first.size() + second.size());
    EXPECT_EQ(means.size(), 7133u + 6u);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), means.begin()));
    EXPECT_TRUE(std::equal(second.begin(), second.end(), means.begin() + static_cast<long>(first.size())));
    ASSERT_FALSE(log.calls.empty());
    EXPECT_EQ(log.calls[0].first, "Progressive Read into Buffer and Subsample");

    const auto maxima = AUAudio::readFileIntoFloatArrayByURLAndSubsample(path, 147, true);
    const auto firstMax = ArrayUtils::subsampleMax(std::span(all).first(AUAudio::kSliceFrames), 147);
    ASSERT_EQ(maxima.size(), means.size());
    EXPECT_TRUE(std::equal(firstMax.begin(), firstMax.end(), maxima.begin()));

    // By URL: 1 or less is the plain read.
    EXPECT_EQ(AUAudio::readFileIntoFloatArrayByURL(path, 1).size(), static_cast<size_t>(frames));
    EXPECT_EQ(AUAudio::readFileIntoFloatArrayByURL(path, 147).size(), means.size());
}
