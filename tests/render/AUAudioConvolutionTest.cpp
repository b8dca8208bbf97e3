#include "render/AUAudioConvolution.h"

#include "dsp/AUAudio.h"
#include "dsp/Levels.h"
#include "support/TestAudio.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AEKeyframeList.h"

#include <QFile>
#include <cmath>
#include <gtest/gtest.h>

namespace {
using V = std::vector<float>;
using P = AUAudioConvolution::GainPoint;
const float kMinus6 = static_cast<float>(aUt_dbToDouble(-6));
} // namespace

TEST(AUAudioConvolutionEnvelope, OneMoreSampleThanTheInputRepeatingTheLast) {
    // 4 samples at 4 Hz: one second; a single point holds everywhere.
    const V out = AUAudioConvolution::convolutionMonoV2(V{1, 1, 1, 2}, 4, {{0.5, -6}});
    ASSERT_EQ(out.size(), 5u);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_FLOAT_EQ(out[i], kMinus6);
    EXPECT_FLOAT_EQ(out[3], 2 * kMinus6);
    EXPECT_FLOAT_EQ(out[4], 2 * kMinus6) << "the last sample once more at the last level";
}

TEST(AUAudioConvolutionEnvelope, PointsBeforeZeroGoUnlessNoneIsLeft) {
    // Only the point at -1 s is before zero; the one at 0.5 s starts the list and holds back to 0.
    V out = AUAudioConvolution::convolutionMonoV2(V(4, 1.0f), 4, {{-1.0, -40}, {0.5, -6}});
    EXPECT_FLOAT_EQ(out[0], kMinus6);
    // All before zero: the last one alone, moved to zero.
    out = AUAudioConvolution::convolutionMonoV2(V(4, 1.0f), 4, {{-2.0, -40}, {-1.0, -6}});
    EXPECT_FLOAT_EQ(out[0], kMinus6);
    EXPECT_FLOAT_EQ(out[3], kMinus6);
}

TEST(AUAudioConvolutionEnvelope, LinearInAmplitudeBetweenPoints) {
    // 8 samples at 8 Hz, from 0 dB at 0 s to -6 dB at 0.5 s, then held.
    const V out = AUAudioConvolution::convolutionMonoV2(V(8, 1.0f), 8, {{0.0, 0}, {0.5, -6}});
    ASSERT_EQ(out.size(), 9u);
    EXPECT_FLOAT_EQ(out[0], 1.0f);
    EXPECT_FLOAT_EQ(out[2], 1.0f + (kMinus6 - 1.0f) * 0.5f);
    EXPECT_FLOAT_EQ(out[4], kMinus6);
    EXPECT_FLOAT_EQ(out[7], kMinus6);
    EXPECT_TRUE(AUAudioConvolution::convolutionMonoV2(V{}, 8, {{0.0, 0}}).empty());
}

// The streamed, one-pass file envelope gives exactly the samples of the whole-array envelope of each
// channel, across slice boundaries, with points before 0, between slices and past the end, in one file.
TEST(AUAudioConvolutionFile, SliceBySliceEqualsTheWholeArrayEnvelope) {
    TestAudio make;
    constexpr int64_t kFrames = 200001; // a little over three slices
    for (const int channels : {1, 2}) {
        const QString src =
            make.floatWav("src" + QString::number(channels) + ".wav", 44100, channels, kFrames,
                          [](int64_t i, int c) { return std::sin(0.01f * i + c) * 0.8f; });
        auto kfs = std::make_shared<AEKeyframeList>();
        for (const auto& [time, db] : std::vector<std::pair<double, double>>{
                 {-0.5, -30}, {0.3, -12}, {1.4861, 3}, {2.0, -60}, {4.4, 0}, {9.0, -6}})
            kfs->setKeyframe(time, db);
        const QString dst = make.path("dst" + QString::number(channels) + ".wav");
        AUAudioConvolution::convolution(src, dst, kfs);

        std::vector<P> points;
        for (const auto& kf : kfs->keyframes)
            points.push_back({kf->time, kf->value});
        const StereoFloat in = AUAudio::readFileIntoStereoFloat(src);
        const StereoFloat out = AUAudio::readFileIntoStereoFloat(dst);
        const V left = AUAudioConvolution::convolutionMonoV2(in.l, 44100, points);
        EXPECT_EQ(out.l, left) << channels << " channels";
        if (channels == 2) {
            EXPECT_EQ(out.r, AUAudioConvolution::convolutionMonoV2(in.r, 44100, points));
            EXPECT_FALSE(QFile::exists(dst + ".l.wav") || QFile::exists(dst + ".r.wav"));
        }
    }
    // A file that cannot be read leaves no destination.
    auto kfs = std::make_shared<AEKeyframeList>();
    kfs->setKeyframe(0.0, -12.0);
    AUAudioConvolution::convolution(make.path("nothing.wav"), make.path("none.wav"), kfs);
    EXPECT_FALSE(QFile::exists(make.path("none.wav")));
}
