#pragma once
// The aUt_ audio probes: what every subsystem asks of an audio file. Answers come from libsndfile in
// process, or from the media prober for containers it cannot open. A missing or unreadable file gives
// 0, "" or an empty array, never an error. Any thread; a probe may block for a prober run.

#include <QString>
#include <cstdint>
#include <vector>

int aUt_getAudioNChannels(const QString& path);
int aUt_getAudioFrequency(const QString& path);
int aUt_getSampleRate(const QString& path);
// The sample width for PCM and lossless data (float WAV: 32); for lossy data bit rate / channels /
// frequency in whole bits, which is 0 or 1 for most of it.
int aUt_getAudioBitsPerSample(const QString& path);
int64_t aUt_getAudioBitrate(const QString& path);
// "WAVE", "AIFF", "AIFC", "MPG3", "m4af", "FLAC", "OggS", "caff", "adts", ...
QString aUt_getAudioFileTypeID(const QString& path);
bool aUt_isAudio(const QString& path);
double aUt_getAudioDuration(const QString& path);

// A short report, one fact a line, "" for what is not audio:
//   File: <path>
//   File type ID: WAVE
//   Data format: 2 ch, 44100 Hz, 16-bit signed integer PCM
//   estimated duration: 3.000000 sec
//   bit rate: 1411200 bits per second
QString aUt_getAudioInfo(const QString& path);

// "44.1 kHz", "48 kHz", otherwise "<n> Hz".
QString aUt_getFrequencyString(int frequency);
// "Mono", "Stereo", otherwise the number.
QString aUt_getNChannelsString(int channels);
// time × frequency, truncated.
int64_t aUt_timeToSampleN(double time, double frequency);

inline constexpr float kInt16FullScale = 32767.0f;

// Channel 0 of the whole file on the 16-bit scale (× 32767.0), read in slices; empty when missing.
std::vector<float> aUt_readFileIntoFloatArray(const QString& path);
