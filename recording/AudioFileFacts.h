#pragma once
// What the audio probes know about a file, gathered in process by libsndfile (WAV, AIFF, FLAC, Ogg,
// MP3 and its other formats) or, for what it cannot open (MP4/M4A, ADTS AAC, ...), from the JSON of
// the media prober. Any thread; a prober run blocks its caller.

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

enum class AudioEncoding { pcm, lossless, lossy };

struct AudioFileFacts {
    QString fileTypeID; // four-character-ish container id, "WAVE", "m4af"
    QString dataFormat; // "16-bit signed integer PCM", "MPEG layer III"
    AudioEncoding encoding = AudioEncoding::pcm;
    int channels = 0;
    int frequency = 0;
    int sampleWidth = 0; // bits of one sample for PCM and lossless data; 0 for lossy data
    double duration = 0.0;
    // Bits per second: rate × channels × width for PCM; for coded data what the coder reports (the
    // stream's own figure, else the file's), else the file's size over its duration. 0 when unknown.
    int64_t bitrate = 0;

    // The sample width where there is one, otherwise bitrate / channels / frequency; 0 when unknown.
    int bitsPerSample() const;
};

// Nothing when the file is missing, special, or neither reader takes it as audio. Each version of a
// file (path, size, modification time) is probed once and remembered. Coded data needs the prober
// for its bit rate: without `withBitrate` that figure is left 0 and no process is started for it.
std::optional<AudioFileFacts> readAudioFileFacts(const QString& path, bool withBitrate);

// The prober's answer (-show_format -show_streams, first audio stream) turned into facts; nothing
// when it holds no audio stream. `fileBytes` backs up a missing bit rate.
std::optional<AudioFileFacts> audioFactsFromProbeJson(const QByteArray& json, int64_t fileBytes);
