// Broadcast WAV time references, read through ffmpeg.

#include "recording/TimeReference.h"

#include "render/tools/ToolFixture.h"

class SoxUtTimeReferenceTest : public ToolFixture {
protected:
    QString broadcastWav(const QString& name, const QString& reference, int rate) {
        const QString out = path(name);
        run("/usr/bin/ffmpeg", {"-nostdin", "-v", "error", "-y", "-i", tone("src.wav", 0.2, 440.0, rate),
                                "-write_bext", "1", "-metadata", "time_reference=" + reference, out});
        return out;
    }
};

TEST_F(SoxUtTimeReferenceTest, ParsesTheNumberAfterTheLabel) {
    EXPECT_EQ(aUt_timeReferenceFromDescription("  Metadata:\n    time_reference  : 441000\n    coding: x\n"),
              441000);
    EXPECT_EQ(aUt_timeReferenceFromDescription("    time_reference  : 4147200000"), 4147200000LL);
    EXPECT_EQ(aUt_timeReferenceFromDescription("Duration: 00:00:01.00\n"), 0);
    EXPECT_EQ(aUt_timeReferenceFromDescription("    time_reference  : soon\n"), 0);
}

TEST_F(SoxUtTimeReferenceTest, ReadsBroadcastWavFilesAndNoneOfPlainOrMissingOnes) {
    // A day at 48 kHz does not fit 32 bits.
    const QString bwf = broadcastWav("late.wav", "4147100000", 48000);
    EXPECT_EQ(aUt_getAudioTimeReference(bwf), 4147100000LL);
    EXPECT_DOUBLE_EQ(aUt_getTimeStart(bwf), 4147100000.0 / 48000.0);

    EXPECT_EQ(aUt_getAudioTimeReference(tone("plain.wav", 0.2)), 0);
    EXPECT_EQ(aUt_getTimeStart(path("plain.wav")), 0.0);
    EXPECT_EQ(aUt_getAudioTimeReference(path("missing.wav")), 0);
    EXPECT_EQ(aUt_getTimeStart(path("missing.wav")), 0.0);
}
