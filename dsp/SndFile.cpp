#include "dsp/SndFile.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>

SndFile::SndFile(const QString& path) {
    if (path.isEmpty()) return;
    handle_.reset(sf_open(QFile::encodeName(path).constData(), SFM_READ, &info_));
    // Zero channels or rate would divide by zero downstream; nothing readable has them.
    if (handle_ && (info_.channels <= 0 || info_.samplerate <= 0)) handle_.reset();
    if (!handle_)
        info_ = SF_INFO{};
    else
        fileBytes_ = QFileInfo(path).size();
}

int64_t SndFile::plausibleFrames() const {
    // No codec packs more frames than this into one byte.
    constexpr int64_t kMostFramesPerByte = 64;
    return std::min(frames(), std::max<int64_t>(fileBytes_, 1) * kMostFramesPerByte);
}

int64_t SndFile::readFrames(float* buffer, int64_t frames) {
    if (!handle_ || frames <= 0) return 0;
    const sf_count_t got = sf_readf_float(handle_.get(), buffer, frames);
    return got < 0 ? 0 : got;
}

bool SndFile::seek(int64_t frame) {
    return handle_ && sf_seek(handle_.get(), frame, SEEK_SET) == frame;
}
