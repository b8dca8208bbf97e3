#include "dsp/AUAudio.h"
#include "dsp/Levels.h"
#include "dsp/RawAudio.h"
#include "dsp/SndFile.h"
#include "support/TestAudio.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {
using V = std::vector<float>;

V readInterleaved(const QString& path, int& channels, int& subFormat) {
    SndFile file(path);
    channels = file.channels();
    subFormat = file.subFormat();
    V values(static_cast<size_t>(file.frames() * file.channels()));
    file.readFrames(values.data(), file.frames());
    return values;
}
} // namespace

TEST(AUAudioWrite, FloatKeepsValuesAndSixteenBitsClipsInsteadOfWrapping) {
    TestAudio make;
    const V values{0.0f, 0.25f, -0.5f, 1.5f, -2.0f};
    int channels = 0, sub = 0;
    AUAudio::saveArrayIntoAudioFile(values, 22050, 32, make.path("f.wav"));
    EXPECT_EQ(readInterleaved(make.path("f.wav"), channels, sub), values) << "float is exact, beyond ±1 too";
    EXPECT_EQ(sub, SF_FORMAT_FLOAT);
    EXPECT_EQ(SndFile(make.path("f.wav")).sampleRate(), 22050);

    AUAudio::saveArrayIntoAudioFile(values, 44100, 16, make.path("i.wav"));
    const V ints = readInterleaved(make.path("i.wav"), channels, sub);
    EXPECT_EQ(sub, SF_FORMAT_PCM_16);
    ASSERT_EQ(ints.size(), values.size());
    EXPECT_NEAR(ints[1], 0.25f, 1.0f / 32767);
    EXPECT_GT(ints[3], 0.99f) << "clipped at full scale";
    EXPECT_LT(ints[4], -0.99f);
}

TEST(AUAudioWrite, StereoSixteenBitsAndTheJoinedFloatHalves) {
    TestAudio make;
    const V l{0.5f, 0.25f, 0.0f}, r{-0.5f, -0.25f, 0.125f};
    int channels = 0, sub = 0;
    AUAudio::saveStereoArrayIntoAudioFile16(l, r, 44100, make.path("s16.wav"));
    const V s16 = readInterleaved(make.path("s16.wav"), channels, sub);
    EXPECT_EQ(channels, 2);
    ASSERT_EQ(s16.size(), 6u);
    EXPECT_NEAR(s16[1], -0.5f, 1e-4);

    AUAudio::saveStereoFloatToAudioFile({l, r}, 48000, make.path("sf.wav"));
    const StereoFloat back = AUAudio::readFileIntoStereoFloat(make.path("sf.wav"));
    EXPECT_EQ(back.l, l);
    EXPECT_EQ(back.r, r);
    EXPECT_FALSE(QFile::exists(make.path("sf.wav.l.wav")));
    EXPECT_FALSE(QFile::exists(make.path("sf.wav.r.wav")));
}

TEST(AUAudioWrite, AnUnwritablePathIsReportedNotThrown) {
    AUAudio::saveArrayIntoAudioFile(V{0.1f}, 44100, 32, "/nonexistent-folder/x.wav");
    EXPECT_FALSE(QFile::exists("/nonexistent-folder/x.wav"));
    AUAudio::saveArrayIntoAudioFile(V{0.1f}, 0, 32, "/tmp/zero-rate.wav");
    EXPECT_FALSE(QFile::exists("/tmp/zero-rate.wav"));
}

TEST(AUAudioStereoRead, MonoGivesItsChannelTwiceAndMissingFilesNothing) {
    TestAudio make;
    const QString mono = make.sine("m.wav", 44100, 1, 16, 0.1);
    const StereoFloat s = AUAudio::readFileIntoStereoFloat(mono);
    ASSERT_EQ(s.l.size(), 4410u);
    EXPECT_EQ(s.l, s.r);
    EXPECT_TRUE(AUAudio::readFileIntoStereoFloat(make.path("none.wav")).l.empty());
}

TEST(RawAudio, HeaderIncludedAndLeftChannelOfStereo) {
    TestAudio make;
    const QString path = make.path("raw.wav");
    AUAudio::saveStereoArrayIntoAudioFile16(V{0.5f, 0.25f}, V{-0.5f, -0.25f}, 44100, path);
    const auto all = readAudioFile(path, 1);
    EXPECT_EQ(all.size(), static_cast<size_t>(QFileInfo(path).size() / 2));
    EXPECT_EQ(all[0], 0x4952) << "\"RI\" of RIFF, read as a sample";
    EXPECT_EQ(all[all.size() - 4], 16384);
    EXPECT_EQ(all[all.size() - 3], -16384);
    const auto left = readAudioFile(path, 2);
    EXPECT_EQ(left.size(), (all.size() + 1) / 2);
    EXPECT_TRUE(readAudioFile(make.path("missing.wav"), 1).empty());
}

TEST(Levels, PercentToDecibelsAndBack) {
    EXPECT_DOUBLE_EQ(aUt_percToDb(1.0), 0.0);
    EXPECT_NEAR(aUt_percToDb(0.5), -6.0206, 1e-4);
    EXPECT_NEAR(aUt_dbToDouble(aUt_percToDb(0.3)), 0.3, 1e-12);
    EXPECT_NEAR(aUt_log10(1000.0), 3.0, 1e-12);
}
