#pragma once
// Format conversions. SoX does the WAV work; MP3 and M4A sources are decoded by ffmpeg, which also
// encodes MP3 and AAC. Each call replaces its destination unless noted, and blocks until done.

#include <QString>
#include <optional>

// Each format value is passed only when given. An .mp3 source is deliberately not handled here: the
// destination is removed and nothing else happens (use soxUt_convertMp3ToWav).
void soxUt_convert(const QString& srcFilePath, const QString& dstFilePath, std::optional<int> frequency,
                   std::optional<int> nChannels, std::optional<int> bitsPerSample, bool normalize);
// Decodes to nChannels of bitsPerSample-bit integer WAV; normalize is accepted and ignored.
void soxUt_convertMp3ToWav(const QString& srcFilePath, const QString& dstFilePath, bool normalize,
                           int nChannels, int bitsPerSample);
// Mono 16-bit WAV, resampled when resampleTo is given; normalize is accepted and ignored.
void soxUt_convertMp3ToWavMono16(const QString& srcFilePath, const QString& dstFilePath,
                                 std::optional<int> resampleTo, bool normalize);
// AAC in an MP4 file (.m4a); bitrate in bits per second.
void soxUt_convertToAAC(const QString& srcFilePath, const QString& dstFilePath, int bitrate);
// MP3 without tags. An existing destination is kept as it is.
void soxUt_convertToMp3(const QString& srcFilePath, const QString& destFilePath, int kbitrate,
                        std::optional<int> channels = std::nullopt);
// The source path with ".mp3" for its extension; that path is returned.
QString soxUt_convertToMp3InTheSameFolder(const QString& srcFilePath, int kbitrate);
