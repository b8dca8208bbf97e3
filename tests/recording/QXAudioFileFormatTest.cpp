#include "recording/QXAudioFileFormat.h"

#include "recording/QXAudioFile.h"

#include <gtest/gtest.h>

using F = QXAudioFileFormat;

TEST(QXAudioFileFormat, ExtensionsInAnyCase) {
    const std::pair<const char*, std::optional<F>> rows[] = {
        {"x.wav", F::wave},  {"x.WAVE", F::wave},         {"x.AIFF", F::aiff}, {"x.aif", F::aiff},
        {"x.Mp3", F::mp3},   {"x.m4a", F::aac},           {"x.aac", F::aac},   {"x.flac", std::nullopt},
        {"x", std::nullopt}, {"x.wav.txt", std::nullopt},
    };
    for (const auto& [name, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(F::fromPath(name), expected);
        EXPECT_EQ(QXAudioFile::getFormat(name), expected);
    }
}

TEST(QXAudioFileFormat, TableAndDisplayTextRoundTrip) {
    const struct {
        F format;
        const char *raw, *extension, *display;
    } rows[] = {{F::wave, "wave", "wav", "Wave"},
                {F::aiff, "aiff", "aif", "AIFF"},
                {F::mp3, "mp3", "mp3", "MP3"},
                {F::aac, "aac", "m4a", "MPEG-4 AAC"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.raw);
        EXPECT_EQ(row.format.rawValue(), row.raw);
        EXPECT_EQ(row.format.fileExtension(), row.extension);
        EXPECT_EQ(row.format.displayString(), row.display);
        EXPECT_EQ(F::displyaStringTovalue(row.display), row.format);
        EXPECT_EQ(F::fromRawValue(row.raw), row.format);
        // The extension a format writes is one it recognises.
        EXPECT_EQ(F::fromExtension(row.format.fileExtension()), row.format);
    }
    EXPECT_EQ(F::displyaStringTovalue("wave"), std::nullopt);
    EXPECT_EQ(F::displyaStringTovalue("FLAC"), std::nullopt);
}
