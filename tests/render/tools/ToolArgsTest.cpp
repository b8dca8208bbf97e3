// The exact vectors handed to SoX and ffmpeg: flag order, literal spellings and number printing.

#include "render/tools/ToolArgs.h"

#include "render/tools/ToolFilePaths.h"

#include <QDir>
#include <gtest/gtest.h>

namespace {
using L = QStringList;
const QString a = "/a b/in.wav";
const QString b = "/a b/out.wav";
} // namespace

TEST(SoxUtArgsTest, ConvertPassesOnlyTheFormatValuesGivenInBitsChannelsRateOrder) {
    EXPECT_EQ(soxArgs::convert(a, b, std::nullopt, std::nullopt, std::nullopt, false), L({"-V0", a, b}));
    EXPECT_EQ(soxArgs::convert(a, b, 22050, 1, 16, true),
              L({"-V0", a, "-b", "16", "-c", "1", "-r", "22050", b, "norm"}));
    EXPECT_EQ(soxArgs::convert(a, b, 48000, std::nullopt, std::nullopt, false),
              L({"-V0", a, "-r", "48000", b}));
}

TEST(SoxUtArgsTest, NumbersAreThePlainDecimalPrint) {
    // The second trim number is a length, not the end.
    EXPECT_EQ(soxArgs::trim(a, 1.5, 4.0, b), L({"-V0", a, b, "trim", "1.5", "2.5"}));
    EXPECT_EQ(soxArgs::trim(a, 0.0, 1.0, b), L({"-V0", a, b, "trim", "0.0", "1.0"}));
    EXPECT_EQ(soxArgs::pad(a, b, 0.25), L({"-V0", a, b, "pad", "0.25"}));
    EXPECT_EQ(soxArgs::gain(a, b, -24.0), L({a, b, "gain", "-24.0"}));
    EXPECT_EQ(soxArgs::denoise(a, "/p.prof", b, 0.21), L({"-V0", a, b, "noisered", "/p.prof", "0.21"}));
}

TEST(SoxUtArgsTest, SilenceGeneratorDefaults) {
    EXPECT_EQ(soxArgs::generateSilence(b, std::nullopt, std::nullopt, std::nullopt),
              L({"-n", "-r", "44100", "-c", "2", b, "trim", "0.0", "1.0"}));
    EXPECT_EQ(soxArgs::generateSilence(b, 16000, 1, 2.5),
              L({"-n", "-r", "16000", "-c", "1", b, "trim", "0.0", "2.5"}));
}

TEST(SoxUtArgsTest, ConcatenationHasNoQuietFlagAndAlwaysFades) {
    EXPECT_EQ(
        soxArgs::concatenate({"/1.wav", "/2.wav"}, b, std::nullopt, std::nullopt, std::nullopt, 0.0, 0.0),
        L({"/1.wav", "/2.wav", b, "fade", "0.0", "0", "0.0"}));
    EXPECT_EQ(soxArgs::concatenate({"/1.wav"}, b, 44100, 2, 24, 0.5, 1.0),
              L({"/1.wav", "-b", "24", "-c", "2", "-r", "44100", b, "fade", "0.5", "0", "1.0"}));
}

TEST(SoxUtArgsTest, SilenceThresholdIsTheRatioWithAPercentSign) {
    for (const auto& [db, ratio] :
         {std::pair{-25.0, "0.05623413251903491%"}, {-40.0, "0.01%"}, {0.0, "1.0%"}})
        EXPECT_EQ(soxArgs::silenceThreshold(db), ratio);
    EXPECT_EQ(soxArgs::removePauses(a, b, 0.5, -40.0),
              L({a, b, "silence", "-l", "1", "0.5", "0.01%", "-1", "0.5", "0.01%"}));
}

TEST(SoxUtArgsTest, MixdownGainFollowsTheNumberOfSources) {
    const auto gainOf = [](int n) {
        QStringList srcs;
        for (int i = 0; i < n; ++i)
            srcs << "/s" + QString::number(i) + ".wav";
        const QStringList args = soxArgs::mixdown(srcs, b, false, 0.25, -25.0, std::nullopt, std::nullopt);
        const qsizetype at = args.indexOf("gain");
        EXPECT_EQ(args.mid(0, n + 2), L({"-m"}) + srcs + L({b}));
        return at < 0 ? QString("none") : args.mid(at + 1).join(' ');
    };
    const QStringList gains{"none", "4", "6", "8", "10", "none"};
    for (int n = 1; n <= 6; ++n)
        EXPECT_EQ(gainOf(n), gains[n - 1]) << n;
}

TEST(SoxUtArgsTest, MixdownPauseRemovalAndTrailingFormatFlags) {
    EXPECT_EQ(soxArgs::mixdown({"/1.wav", "/2.wav"}, b, true, 0.25, -25.0, std::nullopt, std::nullopt),
              L({"-m", "/1.wav", "/2.wav", b, "silence", "1", "0.25", "0.05623413251903491%", "-1", "0.25",
                 "0.05623413251903491%", "gain", "4"}));
    EXPECT_EQ(soxArgs::mixdown({"/1.wav"}, b, false, 0.25, -25.0, 1, 44100),
              L({"-m", "/1.wav", b, "-c", "1", "-r", "44100"}));
}

TEST(SoxUtArgsTest, ClusterShapeBoundsGainAndPadsAboveOneHundredth) {
    EXPECT_EQ(soxArgs::clusterShape(a, "/t-tmp.wav", 1.0, 3.5, 0.1, 0.2, false, 0.0, std::nullopt,
                                    std::nullopt, std::nullopt),
              L({"-V0", a, "/t-tmp.wav", "trim", "1.0", "2.5", "fade", "0.1", "2.5", "0.2"}));
    EXPECT_EQ(soxArgs::clusterShape(a, "/t.wav", 0.0, 1.0, 0.0, 0.0, true, 25.0, 44100, 2, 16),
              L({"-V0", a, "-b", "16", "-c", "2", "-r", "44100", "/t.wav", "trim", "0.0", "1.0", "fade",
                 "0.0", "1.0", "0.0", "norm", "gain", "20.0"}));
    for (const auto& [asked, given] : {std::pair{-50.0, "-40.0"}, {-3.5, "-3.5"}, {25.0, "20.0"}})
        EXPECT_EQ(soxArgs::clusterShape(a, "/t.wav", 0, 1, 0, 0, false, asked, 44100, 2, 16).mid(12),
                  L({"fade", "0.0", "1.0", "0.0", "gain", given}));

    EXPECT_EQ(soxArgs::clusterPad("/t.wav", b, 0.01), L({"/t.wav", b}));
    EXPECT_EQ(soxArgs::clusterPad("/t.wav", b, 0.02), L({"/t.wav", b, "pad", "0.02"}));

    EXPECT_EQ(soxArgs::loopCluster(a, 3, 0.5, 7.25, 2.0, -3.5, 1.5, b, 44100, 2, 16),
              L({"-V0",  a,     a,      a,      "-b",   "16",  "-c",  "2",    "-r",  "44100", b,
                 "trim", "0.5", "7.25", "gain", "-3.5", "pad", "2.0", "fade", "0.0", "0",     "1.5"}));
    EXPECT_EQ(
        soxArgs::loopCluster(a, 1, 0.0, 1.0, 0.01, 0.0, 0.0, b, std::nullopt, std::nullopt, std::nullopt),
        L({"-V0", a, b, "trim", "0.0", "1.0", "fade", "0.0", "0", "0.0"}));
}

TEST(SoxUtArgsTest, FilterChains) {
    EXPECT_EQ(soxArgs::bandPass(a, b, 100.0, 3000.0, false),
              L({"-V0", a, b, "lowpass", "3000.0", "highpass", "100.0"}));
    EXPECT_EQ(soxArgs::bandPass(a, b, 100.0, 3000.0, true),
              L({"-V0", a, "-b", "16", "-c", "1", b, "lowpass", "3000.0", "highpass", "100.0", "equalizer",
                 "500", "10q", "24"}));

    // A band is off by its frequency, not its gain.
    const std::vector<BWEqBandSettings> bands{{62.5, 0.0}, {0.0, 6.0}, {1000.0, -3.5}};
    EXPECT_EQ(soxArgs::equalize(a, b, bands, 0.0),
              L({"-V0", a, b, "equalizer", "62.5", "0.7q", "0.0", "equalizer", "1000.0", "0.7q", "-3.5"}));
    EXPECT_EQ(soxArgs::equalize(a, b, {}, 50.0), L({"-V0", a, b, "equalizer", "50.0", "10q", "-24"}));

    EXPECT_EQ(soxArgs::compressor(a, b, 4.0, 2.0, 0.01, 0.2),
              L({"-V0", a, b, "compand", "0.01,0.2", "-90,-90,-70,-70,-30,-7.5,0,0", "2.0", "-90", "0.1"}));
    EXPECT_EQ(soxArgs::eqComp(a, b, 3.0, 0.0, 0.1, 0.5, {{125.0, 2.0}}, 60.0),
              L({"-V0", a, b, "equalizer", "125.0", "0.7q", "2.0", "equalizer", "60.0", "10q", "-24",
                 "compand", "0.1,0.5", "-90,-90,-70,-70,-30,-10.0,0,0", "0.0", "-90", "0.1"}));
}

TEST(SoxUtArgsTest, ChannelsNoiseAndStats) {
    EXPECT_EQ(soxArgs::noiseProfile(a, "/n.prof"), L({"-V0", a, "-n", "noiseprof", "/n.prof"}));
    EXPECT_EQ(soxArgs::combineLRChannels("/l.wav", "/r.wav", b), L({"-M", "/l.wav", "/r.wav", b}));
    EXPECT_EQ(soxArgs::joinChannels({"/1.wav", "/2.wav", "/3.wav"}, b),
              L({"-M", "/1.wav", "/2.wav", "/3.wav", b}));
    EXPECT_EQ(soxArgs::extractChannel(a, b, 2), L({a, b, "remix", "2"}));
    EXPECT_EQ(soxArgs::stats(a), L({a, "-n", "stats"}));
    EXPECT_EQ(soxArgs::channelCount(a), L({"--i", "-c", a}));
    EXPECT_EQ(soxArgs::splitAtSilence(a, "/a b/in_part.wav", 0.3),
              L({a, "/a b/in_part.wav", "silence", "1", "0.1", "0.1%", "1", "0.3", "0.1%", ":", "newfile",
                 ":", "restart"}));
}

TEST(SoxUtArgsTest, FFmpegVectors) {
    EXPECT_EQ(ffArgs::decodeToWav("/x.mp3", b, 2, 16, std::nullopt),
              L({"-nostdin", "-v", "error", "-y", "-i", "/x.mp3", "-vn", "-map_metadata", "-1", "-fflags",
                 "+bitexact", "-c:a", "pcm_s16le", "-ac", "2", b}));
    EXPECT_EQ(ffArgs::decodeToWav("/x.mp3", b, 1, 16, 16000).mid(11),
              L({"-c:a", "pcm_s16le", "-ac", "1", "-ar", "16000", b}));
    for (const auto& [bits, codec] : {std::pair{24, "pcm_s24le"}, {32, "pcm_s32le"}, {8, "pcm_u8"}})
        EXPECT_EQ(ffArgs::decodeToWav("/x.mp3", b, 2, bits, std::nullopt).mid(12, 1), L({codec}));
    EXPECT_EQ(ffArgs::encodeAAC(a, "/o.m4a", 128000), L({"-nostdin", "-v", "error", "-y", "-i", a, "-vn",
                                                         "-c:a", "aac", "-b:a", "128000", "/o.m4a"}));
    EXPECT_EQ(ffArgs::encodeMp3(a, "/o.mp3", 64, std::nullopt), L({"-i", a, "-b:a", "64k", "/o.mp3"}));
    EXPECT_EQ(ffArgs::encodeMp3(a, "/o.mp3", 128, 1), L({"-i", a, "-b:a", "128k", "-ac", "1", "/o.mp3"}));
    EXPECT_EQ(ffArgs::encodeMp3Filtered(a, "/o.mp3", 128, "volume=2dB"),
              L({"-i", a, "-af", "volume=2dB", "-b:a", "128k", "/o.mp3"}));
    EXPECT_EQ(ffArgs::encodeMp3Filtered(a, "/o.mp3", 128, ""), L({"-i", a, "-b:a", "128k", "/o.mp3"}));
    EXPECT_EQ(ffArgs::describe(a), L({"-i", a}));
    EXPECT_EQ(ffArgs::decodeToFloatWav("-in.m4a", b),
              L({"-nostdin", "-v", "error", "-i", "file:-in.m4a", "-map", "0:a:0", "-c:a", "pcm_f32le",
                 "-rf64", "auto", "-f", "wav", "-y", "file:" + b}));
    EXPECT_EQ(ffprobeArgs::probeJson("-in.m4a"),
              L({"-v", "error", "-print_format", "json", "-show_format", "-show_streams", "-select_streams",
                 "a:0", "file:-in.m4a"}));
}

TEST(SoxUtArgsTest, RelativeFileNamesCannotPassForOptions) {
    const QString cwd = QDir::currentPath();
    EXPECT_EQ(soxArgs::gain("-x.wav", "|y.wav", 1.0), L({cwd + "/-x.wav", cwd + "/|y.wav", "gain", "1.0"}));
    EXPECT_EQ(ffArgs::describe("-n"), L({"-i", cwd + "/-n"}));
    // Literal null files stay what they are.
    EXPECT_EQ(soxArgs::stats("-n").mid(1), L({"-n", "stats"}));
}

TEST(SoxUtArgsTest, PathPieces) {
    EXPECT_EQ(toolFilePaths::withoutExtension("/a.b/c.d.wav"), "/a.b/c.d");
    EXPECT_EQ(toolFilePaths::withoutExtension("/a.b/c"), "/a.b/c");
    EXPECT_EQ(toolFilePaths::withoutExtension("/a/.hidden"), "/a/.hidden");
    EXPECT_EQ(toolFilePaths::extensionLower("/a/B.MP3"), "mp3");
    EXPECT_EQ(toolFilePaths::extensionLower("/a.mp3/b"), "");
}
