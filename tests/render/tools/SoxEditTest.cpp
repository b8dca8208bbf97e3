// Cutting, joining and level changes, run against the installed SoX.

#include "render/tools/SoxEdit.h"

#include "render/tools/ToolFixture.h"

#include <QFileInfo>

class SoxUtEditTest : public ToolFixture {};

namespace {
// SoX dithers 16-bit output, so its silence is a bit or so from zero.
const double quiet = 1e-4;
} // namespace

TEST_F(SoxUtEditTest, GeneratedSilenceDefaultsToOneSecondOfStereoDigitalZero) {
    soxUt_generateSilence(path("default.wav"));
    const Decoded d = decode(path("default.wav"));
    EXPECT_EQ(d.rate, 44100);
    EXPECT_EQ(d.channels, 2);
    EXPECT_EQ(d.frames, 44100);
    EXPECT_EQ(d.subFormat, SF_FORMAT_PCM_32);
    EXPECT_EQ(d.peak(0, 0.0, 1.0) + d.peak(1, 0.0, 1.0), 0.0);
}

TEST_F(SoxUtEditTest, PadPutsSilenceInFrontOfADecodedCompressedSource) {
    const QString mp3 = mp3From(tone("t.wav", 0.5, 440.0, 44100, 2), "t.mp3");
    soxUt_pad(mp3, path("padded.wav"), 0.5);
    const Decoded out = decode(path("padded.wav"));
    EXPECT_EQ(out.channels, 1);
    EXPECT_NEAR(out.seconds(), 1.0, 0.06);
    EXPECT_LT(out.peak(0, 0.0, 0.49), 0.001);
    EXPECT_GT(out.peak(0, 0.6, 0.9), 0.3);
    EXPECT_FALSE(QFileInfo::exists(mp3 + ".wav"));
}

TEST_F(SoxUtEditTest, ConcatenationSkipsMissingSourcesAndFades) {
    const QString a = tone("a.wav", 0.5);
    const QString b = tone("b.wav", 0.75, 880.0);
    soxUt_concatenate({a, path("missing.wav"), b}, path("ab.wav"));
    const Decoded ab = decode(path("ab.wav"));
    EXPECT_NEAR(ab.seconds(), 1.25, 0.001);
    EXPECT_NEAR(ab.peak(0, 0.0, 0.05), 0.5, 0.01); // zero-length fades change nothing

    soxUt_concatenate({a, b}, path("faded.wav"), std::nullopt, std::nullopt, 24, 0.5, 0.5);
    const Decoded faded = decode(path("faded.wav"));
    EXPECT_EQ(faded.subFormat, SF_FORMAT_PCM_24);
    EXPECT_LT(faded.peak(0, 0.0, 0.02), 0.05);
    EXPECT_NEAR(faded.peak(0, 0.6, 0.7), 0.5, 0.01);
    EXPECT_LT(faded.peak(0, 1.23, 1.25), 0.05);

    // With nothing to join there is no run and no destination.
    soxUt_concatenate({path("gone1.wav"), path("gone2.wav")}, path("ab.wav"));
    EXPECT_FALSE(QFileInfo::exists(path("ab.wav")));
}

TEST_F(SoxUtEditTest, MixdownAndRemovePausesShortenLongPauses) {
    const QString speechLike =
        join("in.wav", {tone("t1.wav", 0.5), silence("s1.wav", 2.0), tone("t2.wav", 0.5),
                        silence("s2.wav", 0.1), tone("t3.wav", 0.5)});
    soxUt_removePauses(speechLike, path("short.wav"), 0.25, -40.0);
    const Decoded out = decode(path("short.wav"));
    // -l: the two-second pause keeps about a quarter second; the short one is untouched.
    EXPECT_GT(out.seconds(), 0.5 + 0.25 + 0.5 + 0.1 + 0.5);
    EXPECT_LT(out.seconds(), 0.5 + 0.35 + 0.5 + 0.1 + 0.5);
    EXPECT_LT(out.peak(0, 0.51, 0.74), quiet);
    EXPECT_NEAR(out.peak(0, 0.8, 1.2), 0.5, 0.01);

    // Without -l a long pause all but vanishes.
    soxUt_mixdown({speechLike, silence("quiet.wav", 3.6)}, path("mix.wav"), true, 0.25, -40.0);
    const Decoded mix = decode(path("mix.wav"));
    EXPECT_NEAR(mix.seconds(), 0.5 + 0.5 + 0.1 + 0.5, 0.05);
    EXPECT_GT(mix.peak(0, 0.6, 0.9), 0.1);
}

TEST_F(SoxUtEditTest, SplitAtSilenceNumbersThePieces) {
    const QString src = join("talk.wav", {tone("a.wav", 0.5), silence("s1.wav", 0.5), tone("b.wav", 0.5),
                                          silence("s2.wav", 0.5), tone("c.wav", 0.5)});
    // A piece of an earlier, longer run must not be picked up.
    bytes("talk_part009.wav", {});
    const QStringList pieces = soxUt_splitAtSilence(src, 0.3);
    ASSERT_EQ(pieces,
              QStringList({path("talk_part001.wav"), path("talk_part002.wav"), path("talk_part003.wav")}));
    for (const QString& piece : pieces) {
        const Decoded d = decode(piece);
        EXPECT_GT(d.seconds(), 0.45) << piece.toStdString();
        EXPECT_LT(d.seconds(), 0.9) << piece.toStdString();
        EXPECT_NEAR(d.peak(0, 0.0, 0.4), 0.5, 0.01);
    }
}
