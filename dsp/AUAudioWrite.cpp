#include "dsp/AUAudio.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "render/tools/SoxChannels.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <memory>
#include <sndfile.h>

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
    const QString left = path + ".l.wav";
    const QString right = path + ".r.wav";
    Parallelize::execute([&] { saveArrayIntoAudioFile(stereoFloat.r, frequency, 32, right); },
                         [&] { saveArrayIntoAudioFile(stereoFloat.l, frequency, 32, left); });
    soxUt_combineLRChannels(left, right, path);
    fu_deleteFile(left);
    fu_deleteFile(right);
}
