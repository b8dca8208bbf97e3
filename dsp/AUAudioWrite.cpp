#include "dsp/AUAudio.h"
#include "dsp/SndFileWriter.h"
#include "foundation/Log.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <memory>
#include <sndfile.h>
#include <vector>

namespace {

int majorFormatFor(const QString& path) {
    const QString ext = QFileInfo(path).suffix().toLower();
    if (ext == "aif" || ext == "aiff" || ext == "aifc") return SF_FORMAT_AIFF;
    if (ext == "caf") return SF_FORMAT_CAF;
    if (ext == "flac") return SF_FORMAT_FLAC;
    return SF_FORMAT_WAV;
}

// Interleaved frames of `channels` values; writes or prints why not.
void writeInterleaved(const float* values, int64_t frames, int channels, int frequency, int subFormat,
                      const QString& path) {
    if (frequency <= 0) {
        qxLog("error: cannot write " + path + " at " + QString::number(frequency) + " Hz");
        return;
    }
    SF_INFO info{};
    info.samplerate = frequency;
    info.channels = channels;
    info.format = majorFormatFor(path) | subFormat;
    if (!sf_format_check(&info)) info.format = SF_FORMAT_WAV | subFormat;
    struct Closer {
        void operator()(SNDFILE* f) const { sf_close(f); }
    };
    std::unique_ptr<SNDFILE, Closer> file(sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info));
    if (!file) {
        qxLog("error: " + QString::fromUtf8(sf_strerror(nullptr)) + " (" + path + ")");
        return;
    }
    sf_command(file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    const sf_count_t written = sf_writef_float(file.get(), values, frames);
    if (written != frames) qxLog("error: " + QString::fromUtf8(sf_strerror(file.get())) + " (" + path + ")");
}

} // namespace

void AUAudio::saveArrayIntoAudioFile(std::span<const float> sampleArray, int frequency, int bitDepth,
                                     const QString& path, bool convertToWav) {
    if (bitDepth == 16) {
        saveArrayIntoAudioFile16(sampleArray, frequency, path, convertToWav);
        return;
    }
    writeInterleaved(sampleArray.data(), static_cast<int64_t>(sampleArray.size()), 1, frequency,
                     SF_FORMAT_FLOAT, path);
}

void AUAudio::saveArrayIntoAudioFile16(std::span<const float> sampleArray, int frequency, const QString& path,
                                       bool) {
    writeInterleaved(sampleArray.data(), static_cast<int64_t>(sampleArray.size()), 1, frequency,
                     SF_FORMAT_PCM_16, path);
}

void AUAudio::saveStereoArrayIntoAudioFile16(std::span<const float> sampleArrayL,
                                             std::span<const float> sampleArrayR, int frequency,
                                             const QString& path, bool) {
    const size_t frames = std::min(sampleArrayL.size(), sampleArrayR.size());
    std::vector<float> interleaved(frames * 2);
    for (size_t i = 0; i < frames; ++i) {
        interleaved[2 * i] = sampleArrayL[i];
        interleaved[2 * i + 1] = sampleArrayR[i];
    }
    writeInterleaved(interleaved.data(), static_cast<int64_t>(frames), 2, frequency, SF_FORMAT_PCM_16, path);
}

void AUAudio::saveStereoFloatToAudioFile(const StereoFloat& stereoFloat, int frequency, const QString& path) {
    // One pass, interleaved a block at a time: no halves to write, join and delete.
    SndFileWriter writer(path, frequency, 2, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    const size_t frames = std::min(stereoFloat.l.size(), stereoFloat.r.size());
    constexpr size_t kBlock = 65536;
    std::vector<float> block(2 * std::min(frames, kBlock));
    for (size_t at = 0; writer.isOpen() && at < frames; at += kBlock) {
        const size_t n = std::min(kBlock, frames - at);
        for (size_t i = 0; i < n; ++i) {
            block[2 * i] = stereoFloat.l[at + i];
            block[2 * i + 1] = stereoFloat.r[at + i];
        }
        if (!writer.writeFrames(block.data(), static_cast<int64_t>(n))) break;
    }
}
