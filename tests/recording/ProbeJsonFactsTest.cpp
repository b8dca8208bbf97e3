#include "recording/AudioFileFacts.h"

#include <gtest/gtest.h>

namespace {
QByteArray probeJson(const QString& stream, const QString& format) {
    return QString(R"({"streams": [%1], "format": %2})").arg(stream, format).toUtf8();
}
} // namespace

TEST(ProbeJsonFacts, LosslessAndPcmStreamsKeepTheirSampleWidth) {
    const auto alac = audioFactsFromProbeJson(
        probeJson(
            R"({"codec_type": "audio", "codec_name": "alac", "sample_fmt": "s32p", "sample_rate": "48000",
                      "channels": 1, "bits_per_sample": 0, "bits_per_raw_sample": "24", "bit_rate": "700000"})",
            R"({"format_name": "mov,mp4,m4a,3gp,3g2,mj2", "duration": "2.5", "tags": {"major_brand": "isom"}})"),
        0);
    ASSERT_TRUE(alac);
    EXPECT_EQ(alac->bitsPerSample(), 24);
    EXPECT_EQ(alac->bitrate, 700000);
    EXPECT_EQ(alac->fileTypeID, "mp4f");
    EXPECT_DOUBLE_EQ(alac->duration, 2.5); // from the container when the stream has none

    const auto pcm = audioFactsFromProbeJson(
        probeJson(
            R"({"codec_type": "audio", "codec_name": "pcm_s16be", "sample_fmt": "s16", "sample_rate": "8000",
                      "channels": 2, "bits_per_sample": 0})",
            R"({"format_name": "mov,mp4,m4a,3gp,3g2,mj2", "tags": {"major_brand": "qt  "}})"),
        0);
    ASSERT_TRUE(pcm);
    EXPECT_EQ(pcm->bitsPerSample(), 16);
    EXPECT_EQ(pcm->bitrate, 8000 * 2 * 16);
    EXPECT_EQ(pcm->fileTypeID, "moov");
}

TEST(ProbeJsonFacts, NoAudioStreamIsNoAudio) {
    EXPECT_FALSE(
        audioFactsFromProbeJson(probeJson(R"({"codec_type": "video", "codec_name": "png", "width": 48})",
                                          R"({"format_name": "png_pipe"})"),
                                100));
    for (const char* stream :
         {R"({"codec_type": "audio", "codec_name": "aac", "sample_rate": "0", "channels": 2})",
          R"({"codec_type": "audio", "codec_name": "aac", "sample_rate": "8000", "channels": 0})"})
        EXPECT_FALSE(audioFactsFromProbeJson(probeJson(stream, "{}"), 100)) << stream;
}
