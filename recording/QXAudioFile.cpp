#include "recording/QXAudioFile.h"

#include "recording/AudioProbes.h"

double QXAudioFile::getDuration(const QString& path) {
    return aUt_getAudioDuration(path);
}
int QXAudioFile::getSampleRate(const QString& path) {
    return aUt_getSampleRate(path);
}
int QXAudioFile::getFrequency(const QString& path) {
    return aUt_getAudioFrequency(path);
}
std::optional<QXAudioFileFormat> QXAudioFile::getFormat(const QString& path) {
    return QXAudioFileFormat::fromPath(path);
}
int QXAudioFile::getBPS(const QString& path) {
    return aUt_getAudioBitsPerSample(path);
}
int QXAudioFile::getChannelCount(const QString& path) {
    return aUt_getAudioNChannels(path);
}
int64_t QXAudioFile::timeToSampleN(double time, double sampleRate) {
    return aUt_timeToSampleN(time, sampleRate);
}
