#include "render/AUAudioConvolution.h"

#include "dsp/AUAudio.h"
#include "dsp/ArrayUtils.h"
#include "dsp/Levels.h"
#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "recording/AudioProbes.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AEKeyframeList.h"

#include <algorithm>

namespace {

std::vector<AUAudioConvolution::GainPoint> pointsOf(const std::shared_ptr<AEKeyframeList>& list) {
    std::vector<AUAudioConvolution::GainPoint> points;
    if (!list) return points;
    for (const auto& kf : list->keyframes)
        if (kf) points.push_back({kf->time, kf->value});
    std::stable_sort(points.begin(), points.end(),
                     [](const auto& a, const auto& b) { return a.time < b.time; });
    return points;
}

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

int64_t AUAudioConvolution::timeToSample(double time, int frequency) {
    return static_cast<int64_t>(static_cast<double>(frequency) * time);
}

std::vector<float> AUAudioConvolution::convolutionMonoV2(std::span<const float> samples, int frequency,
                                                         std::vector<GainPoint> points) {
    if (frequency <= 0) return {};
    std::vector<GainPoint> list;
    std::copy_if(points.begin(), points.end(), std::back_inserter(list),
                 [](const GainPoint& p) { return p.time >= 0.0; });
    if (list.empty() && !points.empty()) list.push_back({0.0, points.back().db});
    // No points at all: unity gain throughout.
    if (list.empty()) list.push_back({0.0, 0.0});
    if (list.front().time != 0.0) list.insert(list.begin(), {0.0, list.front().db});
    const double duration = static_cast<double>(samples.size()) / frequency;
    if (list.back().time != duration) list.push_back({duration, list.back().db});

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
    const int frequency = aUt_getAudioFrequency(srcPath);
    const int channels = aUt_getAudioNChannels(srcPath);
    if (frequency <= 0 || channels <= 0) {
        qxLog("AUAudioConvolution: cannot read " + srcPath);
        return;
    }
    const std::vector<GainPoint> points = pointsOf(volumeKFs);
    if (channels == 1) {
        const std::vector<float> samples = AUAudio::readFileIntoFloatArray(srcPath);
        AUAudio::saveArrayIntoAudioFile(convolutionMonoV2(samples, frequency, points), frequency, 32,
                                        dstPath);
        return;
    }
    StereoFloat in = AUAudio::readFileIntoStereoFloat(srcPath);
    StereoFloat out;
    Parallelize::execute([&] { out.r = convolutionMonoV2(in.r, frequency, points); },
                         [&] { out.l = convolutionMonoV2(in.l, frequency, points); });
    in = StereoFloat{};
    AUAudio::saveStereoFloatToAudioFile(out, frequency, dstPath);
}
