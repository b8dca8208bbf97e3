#include "recording/AudioProbes.h"

#include "dsp/AUAudio.h"
#include "recording/AudioFileFacts.h"
#include "recording/ReadableAudio.h"

int aUt_getAudioNChannels(const QString& path) {
    const auto facts = readAudioFileFacts(path, false);
    return facts ? facts->channels : 0;
}

int aUt_getAudioFrequency(const QString& path) {
    const auto facts = readAudioFileFacts(path, false);
    return facts ? facts->frequency : 0;
}

int aUt_getSampleRate(const QString& path) {
    return aUt_getAudioFrequency(path);
}

int aUt_getAudioBitsPerSample(const QString& path) {
    const auto facts = readAudioFileFacts(path, true);
    return facts ? facts->bitsPerSample() : 0;
}

int64_t aUt_getAudioBitrate(const QString& path) {
    const auto facts = readAudioFileFacts(path, true);
    return facts ? facts->bitrate : 0;
}

QString aUt_getAudioFileTypeID(const QString& path) {
    const auto facts = readAudioFileFacts(path, false);
    return facts ? facts->fileTypeID : QString();
}

bool aUt_isAudio(const QString& path) {
    return readAudioFileFacts(path, false).has_value();
}

double aUt_getAudioDuration(const QString& path) {
    const auto facts = readAudioFileFacts(path, false);
    return facts ? facts->duration : 0.0;
}

QString aUt_getAudioInfo(const QString& path) {
    const auto facts = readAudioFileFacts(path, true);
    if (!facts) return QString();
    return QString("File: %1\n"
                   "File type ID: %2\n"
                   "Data format: %3 ch, %4 Hz, %5\n"
                   "estimated duration: %6 sec\n"
                   "bit rate: %7 bits per second\n")
        .arg(path, facts->fileTypeID, QString::number(facts->channels), QString::number(facts->frequency),
             facts->dataFormat, QString::number(facts->duration, 'f', 6), QString::number(facts->bitrate));
}

QString aUt_getFrequencyString(int frequency) {
    if (frequency == 44100) return "44.1 kHz";
    if (frequency == 48000) return "48 kHz";
    return QString::number(frequency) + " Hz";
}

QString aUt_getNChannelsString(int channels) {
    if (channels == 1) return "Mono";
    if (channels == 2) return "Stereo";
    return QString::number(channels);
}

int64_t aUt_timeToSampleN(double time, double frequency) {
    return static_cast<int64_t>(time * frequency);
}

std::vector<float> aUt_readFileIntoFloatArray(const QString& path) {
    const auto audio = ReadableAudio::open(path);
    if (!audio) return {};
    std::vector<float> samples = AUAudio::progressiveReadIntoBuffer(audio->file(), AUAudio::kSliceFrames, 0);
    for (float& v : samples)
        v *= kInt16FullScale;
    return samples;
}
