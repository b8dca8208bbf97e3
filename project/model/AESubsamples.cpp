#include "project/model/AESubsamples.h"

#include "dsp/AUAudio.h"
#include "dsp/ArrayUtils.h"
#include "dsp/BlockMeans.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "project/model/AECache.h"
#include "project/model/AEIngest.h"
#include "recording/AudioProbes.h"
#include "recording/ReadableAudio.h"

#include <algorithm>
#include <cmath>

const float AESubsamples::kAverageThreshold = static_cast<float>(std::pow(10.0, -25.0 / 20.0) * 32768.0);

namespace {

const bool registered = registerArchiveClass<AESubsamples>();

float valueAt(const std::vector<float>& values, double time, double perSecond, bool isLoop) {
    if (values.empty()) return 0.0f;
    const auto index = static_cast<size_t>(time * perSecond);
    if (index < values.size()) return values[index];
    return isLoop ? values[index % values.size()] : 0.0f;
}

} // namespace

AESubsamples::~AESubsamples() {
    if (recordingTimer) recordingTimer->stop();
}

void AESubsamples::encode(KeyedArchiver& coder) const {
    coder.encodeFloat("average", average.load());
}

std::shared_ptr<AESubsamples> AESubsamples::decode(KeyedUnarchiver& coder) {
    auto subsamples = std::make_shared<AESubsamples>();
    const float stored = coder.decodeFloat("average").value_or(0.0f);
    if (stored == 0.0f)
        subsamples->generateAverage();
    else
        subsamples->average = stored;
    return subsamples;
}

std::shared_ptr<const std::vector<float>> AESubsamples::samples() const {
    return samples_.load();
}

void AESubsamples::setSamples(std::vector<float> values) {
    std::lock_guard lock(writeMutex_);
    samples_.store(std::make_shared<const std::vector<float>>(std::move(values)));
}

std::shared_ptr<AESubsamples> AESubsamples::duplicate() const {
    auto copy = std::make_shared<AESubsamples>();
    copy->samplesPerSecond = samplesPerSecond;
    copy->samplesPerSecondD = samplesPerSecondD;
    copy->samples_.store(samples_.load()); // immutable, so sharing it is a copy
    copy->loaded = loaded.load();
    copy->recording = recording.load();
    copy->average = average.load();
    return copy;
}

void AESubsamples::generateAverage() {
    average = ArrayUtils::averageAboveThreshold(*samples(), kAverageThreshold);
}

std::vector<float> AESubsamples::summaryOfFile(const QString& path, int samplesPerSecond) {
    const auto audio = ReadableAudio::open(path);
    if (!audio || samplesPerSecond <= 0) return {};
    const int rate = audio->file().sampleRate();
    if (rate < samplesPerSecond) return {};
    // Blocks of rate / samplesPerSecond frames on average, fractional lengths accumulated, so value k
    // stands for time k / samplesPerSecond at every rate (a whole-frame block drifts: 26 frames at
    // 8 kHz would make 307.7 values a second).
    BlockMeans means(static_cast<size_t>(rate), static_cast<size_t>(samplesPerSecond));
    means.reserve(static_cast<size_t>(audio->file().plausibleFrames() * samplesPerSecond / rate));
    // Channel 0 straight out of the decoded pieces: the same float steps as scaling the whole array and
    // taking getAbs, without holding either.
    AUAudio::readSlices(audio->file(), AUAudio::kSliceFrames, AUAudio::kReadLabel, nullptr,
                        [&means](const AUAudio::Piece& piece) {
                            means.addMagnitudes(piece.interleaved, static_cast<size_t>(piece.frames),
                                                static_cast<size_t>(piece.channels), kInt16FullScale);
                        });
    return means.takeMeans();
}

void AESubsamples::generate(const QString& originalFilePath, const QString& ingestedFilePath,
                            bool saveToCache, Callback callback) {
    auto self = weak_from_this().lock();
    if (!self) {
        qxLog("AESubsamples.generate: the summary is not held by a shared_ptr; nothing done");
        return;
    }
    Queue::execute([self, originalFilePath, ingestedFilePath, saveToCache, callback = std::move(callback)] {
        const QString original = AEIngest::loadPath(originalFilePath);
        const QString path = fu_fileExists(original) ? original : AEIngest::loadPath(ingestedFilePath);
        self->setSamples(summaryOfFile(path, self->samplesPerSecond));
        self->generateAverage();
        self->loaded = true;
        if (saveToCache) self->saveToCache(originalFilePath);
        if (callback) callback();
    });
}

bool AESubsamples::saveToCache(const QString& originalFilePath) const {
    return AECache::saveSubsamplesToCache(originalFilePath, *samples());
}

void AESubsamples::loadFromCache(bool /*loadFromOriginalIfNotPresent*/, const QString& originalFilePath,
                                 const QString& ingestedFilePath, Callback callback) {
    if (auto cached = AECache::loadSubsamplesFromCache(originalFilePath)) {
        setSamples(std::move(*cached));
        loaded = true;
        if (callback) callback();
        return;
    }
    generate(originalFilePath, ingestedFilePath, true, std::move(callback));
}

float AESubsamples::getSample(double time, bool isLoop) const {
    if (recording) return valueAt(samplesT, time, samplesPerSecondDT, isLoop);
    return valueAt(*samples(), time, samplesPerSecondD, isLoop);
}

void AESubsamples::appendSamples(std::span<const float> magnitudes) {
    const std::vector<float> reduced =
        ArrayUtils::downsample(magnitudes, static_cast<size_t>(samplesPerSecond));
    {
        std::lock_guard lock(writeMutex_);
        auto grown = std::make_shared<std::vector<float>>(*samples_.load());
        grown->insert(grown->end(), reduced.begin(), reduced.end());
        samples_.store(std::move(grown));
    }
    generateAverage();
}

void AESubsamples::startRecording(std::shared_ptr<AERecordingMeter> meter) {
    audioRecorder = std::move(meter);
    recording = true;
    std::weak_ptr<AESubsamples> weak = weak_from_this();
    recordingTimer = QXTimer::loop(kRecordingTimerName, 1.0 / samplesPerSecondDT, false, [weak] {
        if (auto self = weak.lock()) self->recordingIdle();
    });
}

void AESubsamples::recordingIdle() {
    if (!audioRecorder) return;
    audioRecorder->updateMeters();
    audioRecorder->setMeteringEnabled(true);
    const float power = audioRecorder->averagePowerForChannel(0);
    samplesT.push_back(std::max((power + 60.0f) * 256.0f, 0.0f));
}

void AESubsamples::stopRecording() {
    recording = false;
    if (recordingTimer) recordingTimer->stop();
}
