#include "render/AUAudioConvolution.h"

#include "dsp/AUAudio.h"
#include "dsp/ArrayUtils.h"
#include "dsp/Levels.h"
#include "dsp/SndFile.h"
#include "dsp/SndFileWriter.h"
#include "foundation/Log.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AEKeyframeList.h"

#include <algorithm>

namespace {

// samples[first, last) × a linear ramp of multipliers from one level to the other, appended to out.
void appendRamp(std::vector<float>& out, std::span<const float> samples, int64_t first, int64_t last,
                double db0, double db1) {
    const auto count = static_cast<int64_t>(samples.size());
    last = std::min(last, count);
    if (first < 0 || last <= first) return;
    const std::vector<float> shaped =
        ArrayUtils::ramp(samples.subspan(static_cast<size_t>(first), static_cast<size_t>(last - first)),
                         static_cast<float>(aUt_dbToDouble(db0)), static_cast<float>(aUt_dbToDouble(db1)));
    out.insert(out.end(), shaped.begin(), shaped.end());
}

} // namespace

std::vector<AUAudioConvolution::GainPoint>
AUAudioConvolution::gainPoints(const std::shared_ptr<AEKeyframeList>& list) {
    std::vector<GainPoint> points;
    if (!list) return points;
    for (const auto& kf : list->keyframes)
        if (kf) points.push_back({kf->time, kf->value});
    std::stable_sort(points.begin(), points.end(),
                     [](const auto& a, const auto& b) { return a.time < b.time; });
    return points;
}

int64_t AUAudioConvolution::timeToSample(double time, int frequency) {
    return static_cast<int64_t>(static_cast<double>(frequency) * time);
}

std::vector<AUAudioConvolution::GainPoint>
AUAudioConvolution::envelopePoints(const std::vector<GainPoint>& points, double duration) {
    std::vector<GainPoint> list;
    std::copy_if(points.begin(), points.end(), std::back_inserter(list),
                 [](const GainPoint& p) { return p.time >= 0.0; });
    if (list.empty() && !points.empty()) list.push_back({0.0, points.back().db});
    // No points at all: unity gain throughout.
    if (list.empty()) list.push_back({0.0, 0.0});
    if (list.front().time != 0.0) list.insert(list.begin(), {0.0, list.front().db});
    if (list.back().time != duration) list.push_back({duration, list.back().db});
    return list;
}

std::vector<float> AUAudioConvolution::convolutionMonoV2(std::span<const float> samples, int frequency,
                                                         std::vector<GainPoint> points) {
    if (frequency <= 0) return {};
    const auto list = envelopePoints(points, static_cast<double>(samples.size()) / frequency);
    std::vector<float> out;
    out.reserve(samples.size() + 1);
    for (size_t i = 0; i + 1 < list.size(); ++i)
        appendRamp(out, samples, timeToSample(list[i].time, frequency),
                   timeToSample(list[i + 1].time, frequency), list[i].db, list[i + 1].db);
    if (!samples.empty()) out.push_back(static_cast<float>(samples.back() * aUt_dbToDouble(list.back().db)));
    return out;
}

void AUAudioConvolution::convolution(const QString& srcPath, const QString& dstPath,
                                     const std::shared_ptr<AEKeyframeList>& volumeKFs) {
    SndFile in(srcPath);
    if (!in.isOpen() || in.sampleRate() <= 0 || in.channels() <= 0) {
        qxLog("AUAudioConvolution: cannot read " + srcPath);
        return;
    }
    const int frequency = in.sampleRate();
    const int channels = in.channels();
    const int64_t count = in.frames();
    const auto list = envelopePoints(gainPoints(volumeKFs), static_cast<double>(count) / frequency);
    SndFileWriter out(dstPath, frequency, channels, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    if (!out.isOpen()) return;

    // Slice by slice, every channel at once: the same products as the whole-array envelope, in a
    // fixed amount of memory and with one write.
    constexpr int64_t kSlice = 65536;
    std::vector<float> block(static_cast<size_t>(kSlice * channels));
    int64_t position = 0;
    for (size_t i = 0; i + 1 < list.size(); ++i) {
        const int64_t first = timeToSample(list[i].time, frequency);
        const int64_t last = std::min(timeToSample(list[i + 1].time, frequency), count);
        if (first < 0 || last <= first) continue;
        if (first != position && !in.seek(first)) break;
        position = first;
        const auto g0 = static_cast<float>(aUt_dbToDouble(list[i].db));
        const auto g1 = static_cast<float>(aUt_dbToDouble(list[i + 1].db));
        const double step = (static_cast<double>(g1) - g0) / static_cast<double>(last - first);
        while (position < last) {
            const int64_t got = in.readFrames(block.data(), std::min(kSlice, last - position));
            if (got <= 0) break;
            for (int64_t f = 0; f < got; ++f) {
                const double multiplier = g0 + step * static_cast<double>(position + f - first);
                for (int c = 0; c < channels; ++c) {
                    float& v = block[static_cast<size_t>(f * channels + c)];
                    v = static_cast<float>(v * multiplier);
                }
            }
            if (!out.writeFrames(block.data(), got)) return;
            position += got;
        }
    }
    // The last frame once more, at the last level.
    if (count > 0 && in.seek(count - 1) && in.readFrames(block.data(), 1) == 1) {
        const double last = aUt_dbToDouble(list.back().db);
        for (int c = 0; c < channels; ++c)
            block[static_cast<size_t>(c)] = static_cast<float>(block[static_cast<size_t>(c)] * last);
        out.writeFrames(block.data(), 1);
    }
}
