#include "dsp/AUAudio.h"
#include "dsp/SndFile.h"

StereoFloat AUAudio::progressiveReadIntoStereoFloat(SndFile& file, int64_t sliceSize,
                                                    ProgressProtocol* delegate) {
    StereoFloat out;
    if (!file.isOpen()) return out;
    const auto expected = static_cast<size_t>(file.plausibleFrames());
    out.l.reserve(expected);
    out.r.reserve(expected);
    readSlices(file, sliceSize, kStereoLabel, delegate, [&out](const Piece& piece) {
        const int right = piece.channels > 1 ? 1 : 0;
        const float* frame = piece.interleaved;
        for (int64_t i = 0; i < piece.frames; ++i, frame += piece.channels) {
            out.l.push_back(frame[0]);
            out.r.push_back(frame[right]);
        }
    });
    return out;
}

StereoFloat AUAudio::readFileIntoStereoFloat(const QString& path, ProgressProtocol* delegate) {
    SndFile file(path);
    return progressiveReadIntoStereoFloat(file, kSliceFrames, delegate);
}

StereoFloat AUAudio::readFileIntoFloatArrayByURLStereo(const QString& path, ProgressProtocol* delegate) {
    return readFileIntoStereoFloat(path, delegate);
}
