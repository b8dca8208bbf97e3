#include "dsp/SndFileWriter.h"

#include "foundation/Log.h"

#include <QFile>

SndFileWriter::SndFileWriter(const QString& path, int frequency, int channels, int format) : path_(path) {
    SF_INFO info{};
    info.samplerate = frequency;
    info.channels = channels;
    info.format = format;
    if (frequency <= 0 || channels <= 0 || !sf_format_check(&info)) {
        qxLog("error: cannot write " + path + " as " + QString::number(channels) + " channels at " +
              QString::number(frequency) + " Hz");
        return;
    }
    handle_.reset(sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info));
    if (!handle_) {
        qxLog("error: " + QString::fromUtf8(sf_strerror(nullptr)) + " (" + path + ")");
        return;
    }
    sf_command(handle_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

bool SndFileWriter::writeFrames(const float* interleaved, int64_t frames) {
    if (!handle_) return false;
    if (sf_writef_float(handle_.get(), interleaved, frames) == frames) return true;
    qxLog("error: " + QString::fromUtf8(sf_strerror(handle_.get())) + " (" + path_ + ")");
    return false;
}

bool SndFileWriter::writeFrames(const int16_t* interleaved, int64_t frames) {
    if (!handle_) return false;
    if (sf_writef_short(handle_.get(), interleaved, frames) == frames) return true;
    qxLog("error: " + QString::fromUtf8(sf_strerror(handle_.get())) + " (" + path_ + ")");
    return false;
}
