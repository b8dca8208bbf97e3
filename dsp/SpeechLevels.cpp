#include "dsp/SpeechLevels.h"

#include "dsp/BlockMeans.h"
#include "dsp/SndFile.h"

#include <algorithm>
#include <cmath>
#include <memory>

class SpeechLevels::Gatherer {
public:
    explicit Gatherer(const Wanted& wanted) : wanted_(wanted) {
        for (size_t amount : wanted.meanBlocks)
            blocks_.push_back(std::make_unique<BlockMeans>(amount));
    }

    // Magnitudes of the first channel of interleaved frames, on the 16-bit scale.
    void add(const float* values, size_t frames, size_t stride, float scale) {
        for (auto& block : blocks_)
            block->addMagnitudes(values, frames, stride, scale);
        if (!wanted_.tenthSampleMaxima) {
            count_ += static_cast<int64_t>(frames);
            return;
        }
        for (size_t i = 0; i < frames; ++i, ++count_) {
            if (count_ % 10 != 0) continue;
            const float v = std::fabs(values[i * stride] * scale);
            window(v, tenthMax_, tenthN_, 10, tenth_);
        }
    }

    void finish(SpeechLevels& levels) {
        levels.sampleCount = count_;
        for (size_t k = 0; k < blocks_.size(); ++k)
            levels.means_.emplace_back(wanted_.meanBlocks[k], blocks_[k]->takeMeans());
        levels.tenthSampleMaxima = std::move(tenth_);
    }

private:
    // A window of `size` picked values gives its maximum; a partial window at the end gives nothing.
    static void window(float v, float& mx, int& n, int size, std::vector<float>& out) {
        mx = n == 0 ? v : std::max(mx, v);
        if (++n < size) return;
        out.push_back(mx);
        n = 0;
    }

    const Wanted& wanted_;
    std::vector<std::unique_ptr<BlockMeans>> blocks_;
    int64_t count_ = 0;
    float tenthMax_ = 0;
    int tenthN_ = 0;
    std::vector<float> tenth_;
};

const std::vector<float>& SpeechLevels::means(size_t amount) const {
    static const std::vector<float> none;
    for (const auto& [size, values] : means_)
        if (size == amount) return values;
    return none;
}

SpeechLevels SpeechLevels::fromFile(const QString& path, const Wanted& wanted) {
    SpeechLevels levels;
    SndFile file(path);
    if (!file.isOpen()) return levels;
    levels.readable = true;
    levels.sampleRate = file.sampleRate();
    levels.channels = file.channels();
    switch (file.subFormat()) {
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_S8:
        levels.bitsPerSample = 8;
        break;
    case SF_FORMAT_PCM_16:
        levels.bitsPerSample = 16;
        break;
    case SF_FORMAT_PCM_24:
        levels.bitsPerSample = 24;
        break;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
        levels.bitsPerSample = 32;
        break;
    default:
        levels.bitsPerSample = 0;
    }
    if (wanted.meanBlocks.empty() && !wanted.tenthSampleMaxima) {
        levels.sampleCount = file.frames(); // the header's facts are all that was asked for
        return levels;
    }
    Gatherer gatherer(wanted);
    const auto channels = static_cast<size_t>(std::max(1, file.channels()));
    constexpr int64_t kFrames = 65536;
    std::vector<float> buffer(static_cast<size_t>(kFrames) * channels);
    // 16-bit data read as float is value ÷ 32768; this gives the integers back exactly.
    for (int64_t got; (got = file.readFrames(buffer.data(), kFrames)) > 0;)
        gatherer.add(buffer.data(), static_cast<size_t>(got), channels, 32768.0f);
    gatherer.finish(levels);
    return levels;
}

SpeechLevels SpeechLevels::fromSamples(std::span<const int16_t> samples, const Wanted& wanted) {
    SpeechLevels levels;
    levels.readable = true;
    levels.channels = 1;
    levels.bitsPerSample = 16;
    std::vector<float> floats(samples.begin(), samples.end());
    Gatherer gatherer(wanted);
    gatherer.add(floats.data(), floats.size(), 1, 1.0f);
    gatherer.finish(levels);
    return levels;
}
