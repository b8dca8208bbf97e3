#include "playback/engine/StreamingFile.h"

#include "dsp/AUAudio.h"
#include "support/TestAudio.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

// Frame i holds i / 100000: every position can be told from its value.
QString rampFile(TestAudio& make, const QString& name, int64_t frames) {
    std::vector<float> values(static_cast<size_t>(frames));
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(i) / 100000.0f;
    AUAudio::saveArrayIntoAudioFile(values, 44100, 32, make.path(name));
    return make.path(name);
}

// Pulls `frames` frames at about ten times real time, as an output would but faster.
std::vector<float> pullAll(StreamingFile& file, int64_t frames, int64_t& delivered) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::vector<float> out(static_cast<size_t>(frames * 2), -1.0f);
    delivered = 0;
    while (delivered < frames) {
        const int64_t n = std::min<int64_t>(1024, frames - delivered);
        const int64_t got = file.pull(out.data() + delivered * 2, n);
        delivered += got;
        if (got < n) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return out;
}

float at(int64_t frame) {
    return static_cast<float>(frame) / 100000.0f;
}

// Frequency from the zero crossings of the left channel.
double frequencyOf(const std::vector<float>& stereo, int64_t frames) {
    int crossings = 0;
    for (int64_t i = 1; i < frames; ++i)
        if ((stereo[static_cast<size_t>(2 * (i - 1))] < 0) != (stereo[static_cast<size_t>(2 * i)] < 0))
            ++crossings;
    return crossings / 2.0 / (static_cast<double>(frames) / 44100);
}

} // namespace

TEST(StreamingFile, PlaysFromItsStartToTheEndOnBothChannels) {
    TestAudio make;
    const QString path = rampFile(make, "ramp.wav", 3 * 44100);
    auto file = StreamingFile::open(path, {1.0, std::nullopt, false});
    ASSERT_TRUE(file);
    int64_t delivered = 0;
    const auto out = pullAll(*file, 3 * 44100, delivered);
    EXPECT_EQ(delivered, 2 * 44100) << "short at the end: the source has ended";
    EXPECT_EQ(file->underrunFrames(), 0);
    EXPECT_EQ(out[0], at(44100));
    EXPECT_EQ(out[1], at(44100)) << "mono on both channels";
    EXPECT_EQ(out[2 * 50000], at(44100 + 50000));
    EXPECT_EQ(out[2 * (delivered - 1)], at(3 * 44100 - 1));
    EXPECT_DOUBLE_EQ(file->positionSeconds(), 3.0);
}

TEST(StreamingFile, LoopsBackToTheFileStartAtItsStop) {
    TestAudio make;
    const QString path = rampFile(make, "loop.wav", 44100);
    auto file = StreamingFile::open(path, {0.25, 0.5, true});
    ASSERT_TRUE(file);
    int64_t delivered = 0;
    const int64_t firstPass = 22050 - 11025;
    const auto out = pullAll(*file, firstPass + 22050 + 100, delivered);
    ASSERT_EQ(delivered, firstPass + 22050 + 100) << "a loop does not end";
    EXPECT_EQ(out[0], at(11025));
    EXPECT_EQ(out[2 * (firstPass - 1)], at(22049));
    EXPECT_EQ(out[2 * firstPass], at(0)) << "the second pass starts at the file's start";
    EXPECT_EQ(out[2 * (firstPass + 22050)], at(0)) << "and so does the third";
    EXPECT_NEAR(file->positionSeconds(), 100.0 / 44100, 1e-9);
}

TEST(StreamingFile, NothingToPlayGivesNoSource) {
    TestAudio make;
    const QString path = rampFile(make, "short.wav", 1000);
    EXPECT_FALSE(StreamingFile::open(make.path("missing.wav"), {}));
    EXPECT_FALSE(StreamingFile::open(path, {1.0, std::nullopt, false})) << "a start past the end";
    EXPECT_FALSE(StreamingFile::open(path, {0.01, 0.005, false})) << "a stop before the start";
    // Dropped at once, while the worker may still be decoding: it stops and joins.
    EXPECT_TRUE(StreamingFile::open(path, {}));
}

TEST(StreamingFile, FasterKeepsThePitchAndTheFilePosition) {
    TestAudio make;
    const QString tone = make.sine("tone.wav", 44100, 1, 16, 6.0, -6.0);
    auto normal = StreamingFile::open(tone, {});
    auto faster = StreamingFile::open(tone, {0.0, std::nullopt, false, 1.5});
    ASSERT_TRUE(normal && faster);
    int64_t delivered = 0;
    const auto plain = pullAll(*normal, 44100, delivered);
    const std::vector<float> file = AUAudio::readFileIntoFloatArray(tone);
    int differing = 0;
    for (size_t i = 0; i < 44100; ++i)
        differing += plain[2 * i] != file[i];
    EXPECT_EQ(differing, 0) << "at 1.0 the samples pass untouched";
    const auto quick = pullAll(*faster, 2 * 44100, delivered);
    ASSERT_EQ(delivered, 2 * 44100);
    // Past the stretcher's start-up, the same pitch.
    const std::vector<float> steady(quick.begin() + 2 * 22050, quick.end());
    EXPECT_NEAR(frequencyOf(steady, static_cast<int64_t>(steady.size() / 2)), 440.0, 5.0);
    EXPECT_NEAR(faster->positionSeconds(), 3.0, 0.001) << "two seconds heard are three of the file";
    // Six seconds at 1.5 end after about four.
    pullAll(*faster, 3 * 44100, delivered);
    EXPECT_NEAR(static_cast<double>(delivered) / 44100, 2.0, 0.1);
}

TEST(StreamingFile, AFileOfAnotherRateKeepsItsPitchAndLength) {
    TestAudio make;
    const QString tone = make.sine("tone48k.wav", 48000, 2, 16, 2.0, -6.0);
    auto file = StreamingFile::open(tone, {});
    ASSERT_TRUE(file);
    int64_t delivered = 0;
    const auto out = pullAll(*file, 3 * 44100, delivered);
    EXPECT_NEAR(static_cast<double>(delivered) / 44100, 2.0, 0.01) << "two seconds at the engine's rate";
    const std::vector<float> steady(out.begin() + 2 * 4410, out.begin() + 2 * 44100);
    EXPECT_NEAR(frequencyOf(steady, static_cast<int64_t>(steady.size() / 2)), 440.0, 2.0);
    EXPECT_NEAR(file->positionSeconds(), 2.0, 0.01);
}
