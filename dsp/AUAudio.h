#pragma once
// Reading sound files into plain float arrays, one channel at a time, in slices of kSliceFrames frames
// so that the decoder's buffers stay small. Readers never throw: a file that cannot be opened gives an
// empty array, a read error the part read before it. Stateless; any thread.

#include "dsp/StereoFloat.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

class ProgressProtocol;
class SndFile;

class AUAudio {
public:
    static constexpr int64_t kSliceFrames = 0x100000;
    static inline const QString kReadLabel = "Progressive Read into Buffer";
    static inline const QString kSubsampleLabel = "Progressive Read into Buffer and Subsample";
    static inline const QString kStereoLabel = "Progressive Read Audio File";

    // First channel, whole file, full scale ±1.0.
    static std::vector<float> readFileIntoFloatArray(const QString& path,
                                                     ProgressProtocol* delegate = nullptr);
    // With subSampleBy above 1 the subsampled reading (block means), otherwise the whole channel.
    static std::vector<float> readFileIntoFloatArrayByURL(const QString& path, int subSampleBy,
                                                          ProgressProtocol* delegate = nullptr);
    static std::vector<float> readFileIntoFloatArrayByURLAndSubsample(const QString& path, int subSampleBy,
                                                                      bool subSampleByMax = false,
                                                                      ProgressProtocol* delegate = nullptr);

    // Both channels; a mono file gives its one channel twice, a file with more channels its first two.
    static StereoFloat readFileIntoStereoFloat(const QString& path, ProgressProtocol* delegate = nullptr);
    static StereoFloat readFileIntoFloatArrayByURLStereo(const QString& path,
                                                         ProgressProtocol* delegate = nullptr);
    static StereoFloat progressiveReadIntoStereoFloat(SndFile& file, int64_t sliceSize,
                                                      ProgressProtocol* delegate = nullptr);

    // Writers print "error: " and the reason and return; they never throw. The container follows the
    // path's extension (WAV when libsndfile does not know it), so convertToWav has nothing left to do
    // for a .wav path. Values beyond ±1.0 are clipped in integer formats, not wrapped.
    // bitDepth 16 writes 16-bit PCM, anything else 32-bit float; one channel.
    static void saveArrayIntoAudioFile(std::span<const float> sampleArray, int frequency, int bitDepth,
                                       const QString& path, bool convertToWav = true);
    static void saveArrayIntoAudioFile16(std::span<const float> sampleArray, int frequency,
                                         const QString& path, bool convertToWav = true);
    static void saveStereoArrayIntoAudioFile16(std::span<const float> sampleArrayL,
                                               std::span<const float> sampleArrayR, int frequency,
                                               const QString& path, bool convertToWav = true);
    // Two 32-bit float mono files, path + ".l.wav" and path + ".r.wav", written on two threads and
    // joined by the sound tool into path; the halves are removed afterwards.
    static void saveStereoFloatToAudioFile(const StereoFloat& stereoFloat, int frequency,
                                           const QString& path);

    // A channel the file does not have gives an empty array.
    static std::vector<float> progressiveReadIntoBuffer(SndFile& file, int64_t sliceSize, int channel,
                                                        ProgressProtocol* delegate = nullptr);
    // Each slice on its own: magnitudes, then block maxima (subSampleByMax) or block means. The
    // remainder of every slice is dropped, so the summary has a seam at each slice boundary.
    static std::vector<float> progressiveReadIntoBufferAndSubsample(SndFile& file, int64_t sliceSize,
                                                                    int subsampleBy, bool subSampleByMax,
                                                                    int channel,
                                                                    ProgressProtocol* delegate = nullptr);

    // A run of frames as decoded: `frames` frames of `channels` interleaved values. The last piece of
    // each slice says so.
    struct Piece {
        const float* interleaved;
        int64_t frames;
        int channels;
        bool endsSlice;
    };
    using PieceVisitor = std::function<void(const Piece& piece)>;
    using ChannelVisitor = std::function<void(std::span<const float> channelValues, bool endsSlice)>;

    // The loop under every reader. The delegate hears `label` and the fraction done before each slice;
    // within a slice the decoder is asked for kPieceFrames at a time, so the buffer stays in the CPU
    // cache while the visitor works on it. Returns the frames read.
    static int64_t readSlices(SndFile& file, int64_t sliceSize, const QString& label,
                              ProgressProtocol* delegate, const PieceVisitor& visitor);
    // The same, handing over the values of one channel.
    static int64_t readChannelSlices(SndFile& file, int64_t sliceSize, int channel, const QString& label,
                                     ProgressProtocol* delegate, const ChannelVisitor& visitor);

    static constexpr int64_t kPieceFrames = 16384;
};
