#include "dsp/AUAudio.h"

#include "dsp/ArrayUtils.h"
#include "dsp/ProgressProtocol.h"
#include "dsp/SndFile.h"

#include <algorithm>

int64_t AUAudio::readSlices(SndFile& file, int64_t sliceSize, const QString& label,
                            ProgressProtocol* delegate, const PieceVisitor& visitor) {
    if (!file.isOpen() || sliceSize <= 0) return 0;
    const int64_t total = file.frames();
    const int channels = file.channels();
    std::vector<float> buffer(static_cast<size_t>(std::min(kPieceFrames, sliceSize) * channels));
    int64_t done = 0;
    // Reading is sequential, so each pass starts where the last one ended without a seek.
    while (done < total) {
        if (delegate) delegate->progress(label, static_cast<double>(done) / static_cast<double>(total));
        const int64_t sliceEnd = done + std::min(sliceSize, total - done);
        while (done < sliceEnd) {
            const int64_t want =
                std::min<int64_t>(sliceEnd - done, static_cast<int64_t>(buffer.size()) / channels);
            const int64_t got = file.readFrames(buffer.data(), want);
            done += got;
            const bool shortRead = got < want;
            visitor({buffer.data(), got, channels, shortRead || done == sliceEnd});
            if (shortRead) return done;
        }
    }
    return done;
}

int64_t AUAudio::readChannelSlices(SndFile& file, int64_t sliceSize, int channel, const QString& label,
                                   ProgressProtocol* delegate, const ChannelVisitor& visitor) {
    if (!file.isOpen() || channel < 0 || channel >= file.channels()) return 0;
    std::vector<float> values;
    return readSlices(file, sliceSize, label, delegate, [&](const Piece& piece) {
        if (piece.channels == 1) {
            visitor(std::span<const float>(piece.interleaved, static_cast<size_t>(piece.frames)),
                    piece.endsSlice);
            return;
        }
        values.resize(static_cast<size_t>(piece.frames));
        const float* from = piece.interleaved + channel;
        for (float& v : values) {
            v = *from;
            from += piece.channels;
        }
        visitor(values, piece.endsSlice);
    });
}

std::vector<float> AUAudio::progressiveReadIntoBuffer(SndFile& file, int64_t sliceSize, int channel,
                                                      ProgressProtocol* delegate) {
    std::vector<float> out;
    if (!file.isOpen() || channel < 0 || channel >= file.channels()) return out;
    out.reserve(static_cast<size_t>(file.plausibleFrames()));
    readChannelSlices(
        file, sliceSize, channel, kReadLabel, delegate,
        [&out](std::span<const float> values, bool) { out.insert(out.end(), values.begin(), values.end()); });
    return out;
}

std::vector<float> AUAudio::progressiveReadIntoBufferAndSubsample(SndFile& file, int64_t sliceSize,
                                                                  int subsampleBy, bool subSampleByMax,
                                                                  int channel, ProgressProtocol* delegate) {
    std::vector<float> out;
    if (subsampleBy <= 0) return out;
    const auto amount = static_cast<size_t>(subsampleBy);
    std::vector<float> slice;
    readChannelSlices(file, sliceSize, channel, kSubsampleLabel, delegate,
                      [&](std::span<const float> values, bool endsSlice) {
                          slice.insert(slice.end(), values.begin(), values.end());
                          if (!endsSlice) return;
                          const std::vector<float> magnitudes = ArrayUtils::getAbs(slice);
                          const std::vector<float> reduced =
                              subSampleByMax ? ArrayUtils::subsampleMax(magnitudes, amount)
                                             : ArrayUtils::downsample(magnitudes, amount);
                          out.insert(out.end(), reduced.begin(), reduced.end());
                          slice.clear();
                      });
    return out;
}

std::vector<float> AUAudio::readFileIntoFloatArray(const QString& path, ProgressProtocol* delegate) {
    SndFile file(path);
    return progressiveReadIntoBuffer(file, kSliceFrames, 0, delegate);
}

std::vector<float> AUAudio::readFileIntoFloatArrayByURL(const QString& path, int subSampleBy,
                                                        ProgressProtocol* delegate) {
    if (subSampleBy > 1) return readFileIntoFloatArrayByURLAndSubsample(path, subSampleBy, false, delegate);
    return readFileIntoFloatArray(path, delegate);
}

std::vector<float> AUAudio::readFileIntoFloatArrayByURLAndSubsample(const QString& path, int subSampleBy,
                                                                    bool subSampleByMax,
                                                                    ProgressProtocol* delegate) {
    SndFile file(path);
    return progressiveReadIntoBufferAndSubsample(file, kSliceFrames, subSampleBy, subSampleByMax, 0,
                                                 delegate);
}
