#include "render/TimelineMix.h"

#include "dsp/Levels.h"
#include "dsp/SndFileWriter.h"
#include "render/tools/ToolArgs.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace {

constexpr uint32_t kNoiseSeed = 0x9E3779B9u;

// A uniform value in [0, 1) from a xorshift generator: the dither needs no better.
float uniform(uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return static_cast<float>(state >> 8) * (1.0f / 16777216.0f);
}

} // namespace

TimelineMix::TimelineMix(std::vector<LaneStream> lanes, int rate, int channels)
    : rate(rate), channels(channels), lanes_(std::move(lanes)), blocks_(lanes_.size()), got_(lanes_.size()),
      scale_(laneScale(lanes_.size())), noise_(kNoiseSeed) {
    for (const LaneStream& lane : lanes_)
        frames_ = std::max(frames_, lane.frames());
}

TimelineMix::~TimelineMix() = default;

double TimelineMix::laneScale(size_t lanes) {
    if (lanes <= 1) return 1.0;
    const auto gain = soxArgs::mixGain(static_cast<qsizetype>(lanes));
    return aUt_dbToDouble(gain ? gain->toDouble() : 0.0) / static_cast<double>(lanes);
}

void TimelineMix::rewind() {
    for (LaneStream& lane : lanes_)
        lane.rewind();
    framesRead_ = 0;
    noise_ = kNoiseSeed;
}

void TimelineMix::readLanes(int64_t frames) {
    const auto readLane = [this, frames](size_t i) {
        blocks_[i].resize(static_cast<size_t>(frames * channels));
        got_[i] = lanes_[i].read(blocks_[i].data(), frames);
    };
    // Every lane but the first on a thread of its own; the pulling thread reads the first.
    std::vector<std::thread> others;
    for (size_t i = 1; i < lanes_.size(); ++i)
        others.emplace_back(readLane, i);
    if (!lanes_.empty()) readLane(0);
    for (std::thread& t : others)
        t.join();
}

int64_t TimelineMix::read(int16_t* out, int64_t frames) {
    readLanes(frames);
    const int64_t got = got_.empty() ? 0 : *std::max_element(got_.begin(), got_.end());
    const auto samples = static_cast<size_t>(got * channels);
    sum_.assign(samples, 0.0f);
    for (size_t i = 0; i < lanes_.size(); ++i) {
        const float* block = blocks_[i].data();
        const auto n = static_cast<size_t>(got_[i] * channels);
        for (size_t s = 0; s < n; ++s)
            sum_[s] += block[s];
    }
    const auto toSteps = static_cast<float>(scale_ * 32768.0);
    for (size_t s = 0; s < samples; ++s) {
        float level = std::clamp(sum_[s] * toSteps, -32768.0f, 32767.0f);
        // Steps of the 16-bit grid pass as they are; anything between gets triangular dither.
        if (level != static_cast<float>(static_cast<int32_t>(level)))
            level = std::clamp(level + uniform(noise_) - uniform(noise_), -32768.0f, 32767.0f);
        out[s] = static_cast<int16_t>(level + (level >= 0 ? 0.5f : -0.5f));
    }
    framesRead_ += got;
    return got;
}

QByteArray TimelineMix::readBytes(int64_t frames) {
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "the encoder is told s16le");
    QByteArray bytes(static_cast<qsizetype>(frames * channels * 2), Qt::Uninitialized);
    const int64_t got = read(reinterpret_cast<int16_t*>(bytes.data()), frames);
    bytes.truncate(static_cast<qsizetype>(got * channels * 2));
    return bytes;
}

bool TimelineMix::writeWav(const QString& path, const std::function<void()>& onBlock) {
    SndFileWriter out(path, rate, channels, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    if (!out.isOpen()) return false;
    constexpr int64_t kBlock = 65536;
    std::vector<int16_t> block(static_cast<size_t>(kBlock * channels));
    for (;;) {
        const int64_t got = read(block.data(), kBlock);
        if (got <= 0) return true;
        if (!out.writeFrames(block.data(), got)) return false;
        if (onBlock) onBlock();
    }
}
