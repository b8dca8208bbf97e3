#pragma once
// One take at a time from a chosen input into a linear PCM WAV, with its levels, running time and
// file size. The chosen device is opened directly; the system's default input is never changed.
// A take may be paused and resumed into the same file. When the input vanishes or the disk refuses a
// write, the take is closed where it stands (its header fixed), the person is told through the
// interaction door, and onFailure runs.
//
// Threads: main thread only. The input's audio thread and the file's writer thread sit behind it
// (AudioInput, RecordingFile).

#include "recording/AudioRecorderSettings.h"

#include <QAudioDevice>
#include <QString>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AudioInput;
class QXTimer;
class RecordingFile;

struct meterSettings {
    using Indicator = std::function<void(double)>;
    Indicator indicator0;
    Indicator indicator1;
    double minValue = 0.0;
    double maxValue = 1.0;
    double updateInterval = 0.075;
};

class Recorder : public std::enable_shared_from_this<Recorder> {
public:
    static constexpr const char* kLabelTimerName = "Recorder_v2.updateLabels";
    static constexpr double kLabelInterval = 0.075;
    // What a start, pause, resume or stop waits at most for the stream to deliver the sound heard
    // before it, so that each lands where it was pressed.
    static constexpr double kCatchUp = 0.3;
    using TextLabel = std::function<void(const QString&)>;

    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    std::optional<QString> kDefaultPathUrl;
    QString filePathUrl;
    meterSettings meter;
    bool drawWaveform = true;
    int frequency = 44100;
    int nChannels = 0;
    int bitDepth = 16;
    double recorderLength = 0;
    QVariantMap recordingSettings;
    bool isRecording = false;
    bool isUserRecording = false;
    // The take was closed by a failure; the text says why.
    std::function<void(const QString&)> onFailure;

    // Prepares a target: the given file, or "recording.wav" in "PlainTaker" of the Documents folder.
    bool startup();
    bool startup(const QString& path);

    // The inputs, the system's default first.
    static std::vector<AudioDeviceMetadata> getDeviceListV2();
    static std::optional<AudioDeviceMetadata> getDeviceByName(const QString& name);
    // False when no input has that name: the default input is kept.
    bool setDeviceByName(const QString& name);
    // By id, else by name, else the default.
    void setDeviceV2(const AudioDeviceMetadata& device);
    // The input the next take records from.
    AudioDeviceMetadata device() const;

    void setFrequency(int hz);
    void setBitDepth(int bits);
    // 0: as many channels as the device has.
    void setNChannels(int channels);
    void setRecordingFile(const QString& path);
    // The settings of a show, device included.
    void apply(const AudioRecorderSettings& settings);

    // Starts a take into filePathUrl. On failure the person is told, and the recorder stays idle.
    bool record();
    void pause();
    void resumeRecord();
    // Closes the take; the file is complete when this returns.
    void stop();
    bool isPaused() const { return paused_; }
    // Seconds in the file: with actualLength what has been captured so far, else recorderLength.
    double getLength(bool actualLength = true) const;
    QString getReadableLength() const;
    // Channels of the take under way (or the last one).
    int recordedChannels() const { return recordedChannels_; }
    int64_t droppedFrames() const;

    void setMetering(meterSettings::Indicator indicator, double minValue, double maxValue,
                     double updateInterval);
    void setMetering2(meterSettings::Indicator indicator);
    // Average (RMS) and peak power of the last level window, dB below full scale.
    float getMeteringPower(int channel) const;
    float getMeteringDB(int channel) const;
    // The average power as a linear value, 0...1.
    double getMeteringToDouble(int channel) const;

    void setRecordingTimeLabel(TextLabel label);
    void setfileSizeLabel(TextLabel label);

private:
    std::optional<QAudioDevice> chosenDevice() const;
    int channelsFor(const QAudioDevice& device) const;
    void updateLabels();
    bool inputGone() const;
    void endTake();
    void fail(const QString& text);

    QByteArray deviceId_;
    QString deviceName_;
    std::unique_ptr<AudioInput> input_;
    std::unique_ptr<RecordingFile> file_;
    std::shared_ptr<QXTimer> idleTimer;
    TextLabel recordingTimeLabel;
    TextLabel fileSizeLabel;
    bool paused_ = false;
    int recordedChannels_ = 0;
    int recordedRate_ = 0;
};
