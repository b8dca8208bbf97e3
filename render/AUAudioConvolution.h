#pragma once
// Applies a volume envelope to a sound file with the program's own sample loop. A gain envelope,
// not a convolution in the signal-processing sense: the name is the program's.

#include <QString>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

class AEKeyframeList;

class AUAudioConvolution {
public:
    // A point of the envelope: seconds from the start of the file, level in dB.
    struct GainPoint {
        double time;
        double db;
    };

    // Reads srcPath, shapes every channel with the keyframes (sorted by time first) and writes 32-bit
    // float at the same rate to dstPath, slice by slice in one pass: the samples are those of
    // convolutionMonoV2 on each channel. An empty list copies the sound unchanged (plus the one extra
    // sample).
    static void convolution(const QString& srcPath, const QString& dstPath,
                            const std::shared_ptr<AEKeyframeList>& volumeKFs);

    // The envelope of one channel: points before 0 are dropped (the last point alone, moved to 0, when
    // none is left); the first value holds from 0 and the last to the end; between points the
    // amplitude multiplier runs linearly. The output has one sample more than the input, the last one
    // repeated at the last level.
    static std::vector<float> convolutionMonoV2(std::span<const float> samples, int frequency,
                                                std::vector<GainPoint> points);
    // The keyframes as points, sorted by time.
    static std::vector<GainPoint> gainPoints(const std::shared_ptr<AEKeyframeList>& list);
    // The points the envelope runs through for a file of `duration` seconds (see convolutionMonoV2).
    static std::vector<GainPoint> envelopePoints(const std::vector<GainPoint>& points, double duration);
    // samples × frequency, truncated.
    static int64_t timeToSample(double time, int frequency);
};
