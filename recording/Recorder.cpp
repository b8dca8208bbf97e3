#include "recording/Recorder.h"

#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "foundation/QXTimer.h"
#include "foundation/Timecode.h"
#include "recording/AudioInput.h"
#include "recording/RecordingFile.h"

#include <QDir>
#include <QFileInfo>
#include <QMediaDevices>
#include <QStandardPaths>
#include <algorithm>
#include <cmath>

namespace {

double linearMap(double x, double inMin, double inMax, double outMin, double outMax) {
    if (inMax == inMin) return outMin;
    return std::clamp(outMin + (x - inMin) * (outMax - outMin) / (inMax - inMin), std::min(outMin, outMax),
                      std::max(outMin, outMax));
}

AudioDeviceMetadata metadataOf(const QAudioDevice& device) {
    return AudioDeviceMetadata(QString::fromUtf8(device.id()), device.description());
}

} // namespace

Recorder::Recorder() {
    recordingSettings.insert("AVFormatIDKey", "lpcm");
    recordingSettings.insert("AVSampleRateKey", frequency);
    recordingSettings.insert("AVNumberOfChannelsKey", nChannels);
    recordingSettings.insert("AVLinearPCMBitDepthKey", bitDepth);
}

Recorder::~Recorder() {
    stop();
}

bool Recorder::startup() {
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + QStringLiteral("/PlainTaker");
    if (!fu_createFolder(folder)) {
        Warning("Error", QStringLiteral("The folder \"%1\" cannot be made.").arg(folder));
        return false;
    }
    kDefaultPathUrl = folder + QStringLiteral("/recording.wav");
    return startup(*kDefaultPathUrl);
}

bool Recorder::startup(const QString& path) {
    setRecordingFile(path);
    return true;
}

std::vector<AudioDeviceMetadata> Recorder::getDeviceListV2() {
    std::vector<AudioDeviceMetadata> list;
    const QByteArray defaultId = QMediaDevices::defaultAudioInput().id();
    for (const QAudioDevice& device : QMediaDevices::audioInputs()) {
        if (device.id() == defaultId)
            list.insert(list.begin(), metadataOf(device));
        else
            list.push_back(metadataOf(device));
    }
    return list;
}

std::optional<AudioDeviceMetadata> Recorder::getDeviceByName(const QString& name) {
    for (const AudioDeviceMetadata& device : getDeviceListV2())
        if (device.name == name) return device;
    return std::nullopt;
}

bool Recorder::setDeviceByName(const QString& name) {
    const auto device = getDeviceByName(name);
    deviceId_ = device ? device->id.toUtf8() : QByteArray();
    deviceName_ = device ? device->name : QString();
    qxLog(QStringLiteral("Recorder.setDeviceByName %1 %2")
              .arg(name, device ? "found" : "absent: default input"));
    return device.has_value();
}

void Recorder::setDeviceV2(const AudioDeviceMetadata& device) {
    for (const AudioDeviceMetadata& present : getDeviceListV2())
        if (!device.id.isEmpty() && present.id == device.id) {
            deviceId_ = present.id.toUtf8();
            deviceName_ = present.name;
            return;
        }
    setDeviceByName(device.name);
}

AudioDeviceMetadata Recorder::device() const {
    const auto chosen = chosenDevice();
    return chosen ? metadataOf(*chosen) : AudioDeviceMetadata();
}

std::optional<QAudioDevice> Recorder::chosenDevice() const {
    const QList<QAudioDevice> inputs = QMediaDevices::audioInputs();
    for (const QAudioDevice& device : inputs)
        if (!deviceId_.isEmpty() && device.id() == deviceId_) return device;
    const QAudioDevice fallback = QMediaDevices::defaultAudioInput();
    if (!fallback.isNull()) return fallback;
    if (!inputs.isEmpty()) return inputs.first();
    return std::nullopt;
}

int Recorder::channelsFor(const QAudioDevice& device) const {
    if (nChannels > 0) return nChannels;
    const int preferred = device.preferredFormat().channelCount();
    return preferred > 0 ? preferred : std::max(1, device.maximumChannelCount());
}

void Recorder::setFrequency(int hz) {
    frequency = hz;
    recordingSettings.insert("AVSampleRateKey", hz);
}

void Recorder::setBitDepth(int bits) {
    bitDepth = bits;
    recordingSettings.insert("AVLinearPCMBitDepthKey", bits);
}

void Recorder::setNChannels(int channels) {
    nChannels = channels;
    recordingSettings.insert("AVNumberOfChannelsKey", channels);
}

void Recorder::setRecordingFile(const QString& path) {
    filePathUrl = path;
    recordingSettings.insert("path", path);
}

void Recorder::apply(const AudioRecorderSettings& settings) {
    setFrequency(settings.frequency);
    setNChannels(settings.nChannels);
    setBitDepth(settings.bps);
    setDeviceV2(settings.device);
}

bool Recorder::record() {
    qxLog("record");
    if (isRecording) return true;
    const auto device = chosenDevice();
    QString error;
    if (!device) {
        error = QStringLiteral("There is no audio input to record from.");
    } else if (filePathUrl.isEmpty()) {
        error = QStringLiteral("The recording has no file to go to.");
    } else {
        QDir().mkpath(QFileInfo(filePathUrl).absolutePath());
        const int channels = channelsFor(*device);
        input_ = AudioInput::open(*device, frequency, channels, &error);
        if (input_) file_ = RecordingFile::create(filePathUrl, frequency, channels, bitDepth, &error);
    }
    if (!input_ || !file_) {
        input_.reset();
        file_.reset();
        qxLog("startRecordInternal: " + error);
        Warning("Error", error);
        return false;
    }
    recordedChannels_ = file_->channels();
    recordedRate_ = frequency;
    // Sound from before the press that the server still holds is not part of the take.
    input_->catchUp(kCatchUp);
    input_->setTarget(&file_->ring());
    isRecording = true;
    isUserRecording = true;
    paused_ = false;
    recorderLength = 0;
    std::weak_ptr<Recorder> weak = weak_from_this();
    idleTimer = QXTimer::loop(kLabelTimerName, kLabelInterval, false, [weak] {
        if (auto self = weak.lock()) self->updateLabels();
    });
    return true;
}

void Recorder::pause() {
    if (!isRecording || paused_) return;
    input_->catchUp(kCatchUp);
    input_->setTarget(nullptr);
    paused_ = true;
    recorderLength = getLength();
}

void Recorder::resumeRecord() {
    if (!isRecording || !paused_) return;
    input_->catchUp(kCatchUp);
    input_->setTarget(&file_->ring());
    paused_ = false;
}

void Recorder::stop() {
    if (!isRecording) return;
    isUserRecording = false;
    endTake();
}

void Recorder::endTake() {
    if (idleTimer) idleTimer->stop();
    idleTimer.reset();
    if (input_) {
        input_->catchUp(kCatchUp);
        input_->setTarget(nullptr);
    }
    recorderLength = getLength();
    input_.reset();
    if (file_) file_->finish();
    recorderLength =
        file_ && recordedRate_ > 0 ? double(file_->framesWritten()) / recordedRate_ : recorderLength;
    file_.reset();
    isRecording = false;
    paused_ = false;
}

double Recorder::getLength(bool actualLength) const {
    if (!actualLength || !input_ || recordedRate_ <= 0) return recorderLength;
    return double(input_->framesCaptured()) / recordedRate_;
}

QString Recorder::getReadableLength() const {
    return tc_getFloatTimecode(getLength());
}

int64_t Recorder::droppedFrames() const {
    return input_ ? input_->framesDropped() : 0;
}

void Recorder::setMetering(meterSettings::Indicator indicator, double minValue, double maxValue,
                           double updateInterval) {
    meter.indicator0 = std::move(indicator);
    meter.minValue = minValue;
    meter.maxValue = maxValue;
    meter.updateInterval = updateInterval;
}

void Recorder::setMetering2(meterSettings::Indicator indicator) {
    meter.indicator1 = std::move(indicator);
}

float Recorder::getMeteringPower(int channel) const {
    return input_ ? input_->averagePowerDb(channel) : AudioInput::kSilenceDb;
}

float Recorder::getMeteringDB(int channel) const {
    return input_ ? input_->peakPowerDb(channel) : AudioInput::kSilenceDb;
}

double Recorder::getMeteringToDouble(int channel) const {
    return std::pow(10.0, 0.05 * getMeteringPower(channel));
}

void Recorder::setRecordingTimeLabel(TextLabel label) {
    recordingTimeLabel = std::move(label);
}

void Recorder::setfileSizeLabel(TextLabel label) {
    fileSizeLabel = std::move(label);
}

void Recorder::updateLabels() {
    if (!isRecording) return;
    if (input_->failed() || inputGone()) {
        fail(QStringLiteral("The input \"%1\" is no longer available.").arg(input_->device().description()));
        return;
    }
    if (file_->failed()) {
        fail(file_->failure());
        return;
    }
    const auto toUnit = [this](double x) { return linearMap(x, meter.minValue, meter.maxValue, 0.0, 1.0); };
    if (meter.indicator0) meter.indicator0(toUnit(getMeteringToDouble(0)));
    if (meter.indicator1 && recordedChannels_ > 1) meter.indicator1(toUnit(getMeteringToDouble(1)));
    if (recordingTimeLabel) recordingTimeLabel(tc_getFloatTimecode(getLength()));
    if (fileSizeLabel) fileSizeLabel(fu_getReadableFileSizeBySize(fu_getFileSize(filePathUrl)));
}

// The server moves the stream of a vanished input to another one rather than failing it, so the
// device list is what tells.
bool Recorder::inputGone() const {
    const QByteArray id = input_->device().id();
    const QList<QAudioDevice> inputs = QMediaDevices::audioInputs();
    return std::none_of(inputs.begin(), inputs.end(), [&](const QAudioDevice& d) { return d.id() == id; });
}

void Recorder::fail(const QString& text) {
    const QString path = filePathUrl;
    isUserRecording = false;
    endTake();
    const QString message = QStringLiteral("%1 The recording until then (%2) is kept in \"%3\".")
                                .arg(text, tc_getFloatTimecode(recorderLength), path);
    qxLog("Recorder: " + message);
    Warning("Recording Stopped", message);
    if (onFailure) onFailure(message);
}
