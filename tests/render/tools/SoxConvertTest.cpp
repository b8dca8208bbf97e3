// Conversions run against the installed tools, their outputs read back.

#include "render/tools/SoxConvert.h"

#include "recording/WorkingFormat.h"
#include "render/tools/ToolFixture.h"
#include "render/tools/ToolPaths.h"

#include <QFileInfo>

class SoxUtConvertTest : public ToolFixture {};

TEST_F(SoxUtConvertTest, ToolsComeFromTheComponentsStore) {
    const QString sox = soxUt_getSoxPath();
    EXPECT_TRUE(sox.endsWith("/ZendrelUtils/sxh"));
    EXPECT_EQ(QFileInfo(sox).canonicalFilePath(), QFileInfo("/usr/bin/sox").canonicalFilePath());
    EXPECT_TRUE(soxUt_getFFMpegPath().endsWith("/ZendrelUtils/" + soxUt_ffmpegName));
    EXPECT_EQ(soxUt_getFFProbePath(), QFileInfo("/usr/bin/ffprobe").canonicalFilePath());
    EXPECT_TRUE(QFileInfo(soxUt_getFFProbePath()).isExecutable());
}

TEST_F(SoxUtConvertTest, ConvertAppliesTheGivenFormatOrTheSourcesAndLeavesMp3Alone) {
    const QString src = tone("in.wav", 1.0, 440.0, 44100, 2, 0.25);
    soxUt_convert(src, path("out.wav"), 22050, 1, 24, true);
    const Decoded out = decode(path("out.wav"));
    ASSERT_TRUE(out.open);
    EXPECT_EQ(out.rate, 22050);
    EXPECT_EQ(out.channels, 1);
    EXPECT_EQ(out.subFormat, SF_FORMAT_PCM_24);
    EXPECT_NEAR(out.seconds(), 1.0, 0.001);
    EXPECT_NEAR(out.peak(0, 0.0, 1.0), 1.0, 0.01);

    // Nothing given: the source's format, its level untouched.
    soxUt_convert(src, path("same.wav"), std::nullopt, std::nullopt, std::nullopt, false);
    const Decoded same = decode(path("same.wav"));
    EXPECT_EQ(same.rate, 44100);
    EXPECT_EQ(same.channels, 2);
    EXPECT_EQ(same.subFormat, SF_FORMAT_PCM_16);
    EXPECT_NEAR(same.peak(1, 0.0, 1.0), 0.25, 0.01);

    // An MP3 is not for the sound tool: no run, and a stale destination goes.
    soxUt_convert(mp3From(src, "t.mp3"), path("out.wav"), 44100, 1, 16, false);
    EXPECT_FALSE(QFileInfo::exists(path("out.wav")));
    EXPECT_TRUE(transcript().isEmpty());
}

TEST_F(SoxUtConvertTest, ConvertToMono16KeepsTheSourceRate) {
    const QString src = tone("in.wav", 0.5, 440.0, 22050, 2);
    soxUt_convertToMono16(src, path("mono.wav"), false);
    const Decoded out = decode(path("mono.wav"));
    EXPECT_EQ(out.rate, 22050);
    EXPECT_EQ(out.channels, 1);
    EXPECT_EQ(out.subFormat, SF_FORMAT_PCM_16);
    EXPECT_NEAR(out.seconds(), 0.5, 0.001);
}

TEST_F(SoxUtConvertTest, DecodesToPlainIntegerWav) {
    const QString mp3 = mp3From(tone("t.wav", 1.0, 440.0, 44100, 2), "t.mp3");
    soxUt_convertMp3ToWav(mp3, path("s16.wav"), true, 2, 16);
    const Decoded s16 = decode(path("s16.wav"));
    EXPECT_EQ(s16.channels, 2);
    EXPECT_EQ(s16.rate, 44100);
    EXPECT_EQ(s16.subFormat, SF_FORMAT_PCM_16);
    EXPECT_NEAR(s16.seconds(), 1.0, 0.06); // the encoder's padding
    // The encoder alone costs this tone almost half a decibel.
    EXPECT_NEAR(s16.rmsDb(0, 0.2, 0.8), 20.0 * std::log10(0.5 / std::sqrt(2.0)), 0.7);
    // Nothing but RIFF, fmt and data: 44 bytes before the samples.
    EXPECT_EQ(QFileInfo(path("s16.wav")).size(), 44 + s16.frames * 2 * 2);

    soxUt_convertMp3ToWavMono16(mp3, path("m16.wav"), std::nullopt, false);
    const Decoded m16 = decode(path("m16.wav"));
    EXPECT_EQ(m16.channels, 1);
    EXPECT_EQ(m16.rate, 44100);
    EXPECT_EQ(QFileInfo(path("m16.wav")).size(), 44 + m16.frames * 2);
}

TEST_F(SoxUtConvertTest, EncodesAacInMp4) {
    soxUt_convertToAAC(tone("t.wav", 1.0, 440.0, 44100, 2), path("t.m4a"), 96000);
    EXPECT_EQ(probe(path("t.m4a"), "codec_name"), "aac");
    EXPECT_EQ(probe(path("t.m4a"), "channels"), "2");
    const int bitrate = probe(path("t.m4a"), "bit_rate").toInt();
    EXPECT_GT(bitrate, 40000);
    EXPECT_LT(bitrate, 110000);
}

TEST_F(SoxUtConvertTest, EncodesMp3AndKeepsAnExistingDestination) {
    const QString src = tone("t.wav", 1.0, 440.0, 44100, 2);
    soxUt_convertToMp3(src, path("mono.mp3"), 64, 1);
    EXPECT_EQ(probe(path("mono.mp3"), "codec_name"), "mp3");
    EXPECT_EQ(probe(path("mono.mp3"), "channels"), "1");
    EXPECT_EQ(probe(path("mono.mp3"), "bit_rate"), "64000");

    const qint64 before = QFileInfo(path("mono.mp3")).size();
    soxUt_convertToMp3(tone("long.wav", 3.0), path("mono.mp3"), 128);
    EXPECT_EQ(QFileInfo(path("mono.mp3")).size(), before);

    EXPECT_EQ(soxUt_convertToMp3InTheSameFolder(src, 96), path("t.mp3"));
    EXPECT_EQ(probe(path("t.mp3"), "bit_rate"), "96000");
    EXPECT_EQ(probe(path("t.mp3"), "channels"), "2");
}
