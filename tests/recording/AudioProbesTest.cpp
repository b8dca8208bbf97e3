#include "recording/AudioProbes.h"

#include "support/TestAudio.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

struct ProbeCase {
    const char* name;
    int channels;
    int frequency;
    int bits;
    double duration;
    double durationTolerance;
    const char* typeID;
};

// One folder of real files for the whole suite: making them is the slow part.
class AudioProbesTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        make = std::make_unique<TestAudio>();
        make->sine("wav16.wav", 44100, 2, 16, 3.0);
        make->sine("wav24.wav", 48000, 1, 24, 2.0);
        make->sine("float32_6ch.wav", 22050, 6, 32, 1.5, -6.0, true);
        const QString source = make->sine("source.wav", 44100, 2, 16, 3.0);
        make->convert(source, {}, "stereo.aiff");
        make->convert(source,
                      {"-ac", "1", "-ar", "48000", "-sample_fmt", "s32", "-bits_per_raw_sample", "24"},
                      "mono24.flac");
        make->convert(source, {"-b:a", "128k"}, "stereo.mp3");
        make->convert(source, {"-c:a", "aac", "-b:a", "128k"}, "stereo.m4a");
        make->convert(source, {"-ac", "1", "-c:a", "libvorbis", "-b:a", "64k"}, "mono.ogg");
    }
    static void TearDownTestSuite() { make.reset(); }
    static QString path(const char* name) { return make->path(name); }

    static std::unique_ptr<TestAudio> make;
};
std::unique_ptr<TestAudio> AudioProbesTest::make;

// Text between two markers, blanks stripped: how callers take the report apart.
QString between(const QString& text, const QString& from, const QString& to) {
    const int start = text.indexOf(from);
    if (start < 0) return QString();
    const int end = text.indexOf(to, start + from.size());
    return text.mid(start + from.size(), end < 0 ? -1 : end - start - from.size()).trimmed();
}

} // namespace

TEST_F(AudioProbesTest, ProbesOfEveryFormatWidthAndLayout) {
    // Lossy data has no sample width: bit rate / channels / frequency in whole bits.
    const ProbeCase cases[] = {
        {"wav16.wav", 2, 44100, 16, 3.0, 1e-9, "WAVE"},
        {"wav24.wav", 1, 48000, 24, 2.0, 1e-9, "WAVE"},
        {"float32_6ch.wav", 6, 22050, 32, 1.5, 1e-9, "WAVE"},
        {"stereo.aiff", 2, 44100, 16, 3.0, 1e-9, "AIFF"},
        {"mono24.flac", 1, 48000, 24, 3.0, 1e-3, "FLAC"},
        {"stereo.mp3", 2, 44100, 1, 3.0, 0.03, "MPG3"},
        {"stereo.m4a", 2, 44100, 1, 3.0, 0.03, "m4af"},
        {"mono.ogg", 1, 44100, 1, 3.0, 0.03, "OggS"},
    };
    for (const ProbeCase& c : cases) {
        SCOPED_TRACE(c.name);
        const QString file = path(c.name);
        ASSERT_TRUE(QFileInfo::exists(file));
        EXPECT_TRUE(aUt_isAudio(file));
        EXPECT_EQ(aUt_getAudioNChannels(file), c.channels);
        EXPECT_EQ(aUt_getAudioFrequency(file), c.frequency);
        EXPECT_EQ(aUt_getSampleRate(file), c.frequency);
        EXPECT_EQ(aUt_getAudioBitsPerSample(file), c.bits);
        EXPECT_NEAR(aUt_getAudioDuration(file), c.duration, c.durationTolerance);
        EXPECT_EQ(aUt_getAudioFileTypeID(file), c.typeID);
    }
}

// Bit rates, and the report read back through the markers callers parse it by.
TEST_F(AudioProbesTest, BitRateAndReport) {
    EXPECT_EQ(aUt_getAudioBitrate(path("wav16.wav")), 44100 * 2 * 16);
    EXPECT_EQ(aUt_getAudioBitrate(path("stereo.mp3")), 128000);
    EXPECT_NEAR(static_cast<double>(aUt_getAudioBitrate(path("stereo.m4a"))), 128000.0, 12800.0);
    const int64_t flac = aUt_getAudioBitrate(path("mono24.flac")); // well under its source's PCM rate
    EXPECT_GT(flac, 0);
    EXPECT_LT(flac, 48000 * 24);
    for (const char* name : {"wav16.wav", "stereo.mp3", "stereo.m4a", "mono24.flac"}) {
        SCOPED_TRACE(name);
        const QString file = path(name);
        const QString info = aUt_getAudioInfo(file);
        EXPECT_EQ(between(info, "Data format: ", " ch").toInt(), aUt_getAudioNChannels(file));
        EXPECT_EQ(between(info, "bit rate: ", " bits per second").toLongLong(), aUt_getAudioBitrate(file));
        EXPECT_EQ(between(info, "File type ID:", "\n"), aUt_getAudioFileTypeID(file));
    }
}

TEST_F(AudioProbesTest, UnreadableFilesGiveZerosAndEmpties) {
    const QString wav = path("wav16.wav");
    const QString inputs[] = {
        make->path("absent.wav"),
        make->bytes("text.wav", "RIFF? no, just a note about the episode\n"),
        make->bytes("zero.wav", QByteArray()),
        make->head(wav, 30, "header.wav"),
        make->path(""), // the folder itself
        QString(),
    };
    for (const QString& file : inputs) {
        SCOPED_TRACE(file.toStdString());
        EXPECT_FALSE(aUt_isAudio(file));
        EXPECT_EQ(aUt_getAudioNChannels(file), 0);
        EXPECT_EQ(aUt_getAudioFrequency(file), 0);
        EXPECT_EQ(aUt_getAudioBitsPerSample(file), 0);
        EXPECT_EQ(aUt_getAudioBitrate(file), 0);
        EXPECT_EQ(aUt_getAudioDuration(file), 0.0);
        EXPECT_EQ(aUt_getAudioFileTypeID(file), "");
        EXPECT_EQ(aUt_getAudioInfo(file), "");
        EXPECT_TRUE(aUt_readFileIntoFloatArray(file).empty());
    }
}

TEST_F(AudioProbesTest, CutFilesGiveTheirReadablePart) {
    // 44-byte header and 4 bytes a frame: one second survives.
    const QString wav = make->head(path("wav16.wav"), 44 + 44100 * 4, "cut.wav");
    EXPECT_EQ(aUt_getAudioNChannels(wav), 2);
    EXPECT_DOUBLE_EQ(aUt_getAudioDuration(wav), 1.0);
    EXPECT_EQ(aUt_readFileIntoFloatArray(wav).size(), 44100u);

    // An MP3 keeps its full-length header; the decoder stops where the data does.
    const QString mp3 = make->head(path("stereo.mp3"), 12000, "cut.mp3");
    EXPECT_EQ(aUt_getAudioNChannels(mp3), 2);
    const auto samples = aUt_readFileIntoFloatArray(mp3);
    EXPECT_GT(samples.size(), 0u);
    EXPECT_LT(samples.size(), 3u * 44100u);
}

TEST_F(AudioProbesTest, ReadIsChannelZeroOnTheSixteenBitScale) {
    TestAudio local;
    const QString file =
        local.floatWav("half.wav", 8000, 2, 100, [](int64_t, int c) { return c == 0 ? 0.5f : -1.0f; });
    const auto samples = aUt_readFileIntoFloatArray(file);
    ASSERT_EQ(samples.size(), 100u);
    EXPECT_EQ(samples.front(), 16383.5f);
    EXPECT_EQ(samples.back(), 16383.5f);

    // Formats libsndfile cannot open are decoded first, at their own rate, whatever their name.
    const QString m4a = make->path("-lead.m4a");
    ASSERT_TRUE(QFile::copy(path("stereo.m4a"), m4a));
    EXPECT_EQ(aUt_getAudioNChannels(m4a), 2);
    EXPECT_NEAR(static_cast<double>(aUt_readFileIntoFloatArray(m4a).size()), 3.0 * 44100, 2048.0);
}

TEST(AudioProbeText, FrequencyChannelsAndSampleNumbers) {
    EXPECT_EQ(aUt_getFrequencyString(44100), "44.1 kHz");
    EXPECT_EQ(aUt_getFrequencyString(48000), "48 kHz");
    EXPECT_EQ(aUt_getFrequencyString(22050), "22050 Hz");
    EXPECT_EQ(aUt_getNChannelsString(1), "Mono");
    EXPECT_EQ(aUt_getNChannelsString(2), "Stereo");
    EXPECT_EQ(aUt_getNChannelsString(6), "6");
    EXPECT_EQ(aUt_timeToSampleN(1.5, 44100), 66150);
    EXPECT_EQ(aUt_timeToSampleN(0.99999, 100), 99); // truncated, not rounded
}

// Facts are remembered per version of a file: rewritten in place, it is probed afresh.
TEST(AudioProbeMemory, AFileRewrittenInPlaceIsProbedAgain) {
    TestAudio make;
    const QString file = make.sine("rewritten.wav", 8000, 1, 16, 1.0);
    EXPECT_EQ(aUt_getAudioFrequency(file), 8000);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_EQ(make.sine("rewritten.wav", 48000, 2, 16, 2.0), file);
    EXPECT_EQ(aUt_getAudioFrequency(file), 48000);
    EXPECT_EQ(aUt_getAudioNChannels(file), 2);
}
