#pragma once
// The coarse level views of a speech file that the analyses work on, gathered in one streaming pass so
// that no whole-file sample array is ever held: a 3-hour file costs a few tens of MB, not a GB.
// Values are magnitudes on the 16-bit scale (0...32768). The first channel is read; callers convert to
// mono 16-bit first. One thread at a time.

#include <QString>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

class SpeechLevels {
public:
    // Which views to gather; each is a mean (or maximum) of consecutive, non-overlapping blocks.
    struct Wanted {
        std::vector<size_t> meanBlocks; // e.g. 50, 300, 500
        bool tenthSampleMaxima = false; // max |s| of every tenth sample in blocks of 100
    };

    // False from fromFile when the file cannot be read: all views are then empty.
    bool readable = false;
    int64_t sampleCount = 0;
    int sampleRate = 0;
    int channels = 0;
    int bitsPerSample = 0; // 0 when the file's encoding has no fixed depth

    // The block means for `amount`, as ArrayUtils::downsample of the magnitudes gives them.
    const std::vector<float>& means(size_t amount) const;
    std::vector<float> tenthSampleMaxima;

    // With nothing wanted, only the header is read.
    static SpeechLevels fromFile(const QString& path, const Wanted& wanted);
    static SpeechLevels fromSamples(std::span<const int16_t> samples, const Wanted& wanted);
    double duration() const { return sampleRate > 0 ? double(sampleCount) / sampleRate : 0.0; }

private:
    class Gatherer;
    std::vector<std::pair<size_t, std::vector<float>>> means_;
};
