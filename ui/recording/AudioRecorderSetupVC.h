#pragma once
// The panel where the recording choices of a show are made: input, rate, sample width, channels.
// OK writes both preference key sets and hands the settings to the delegate; Cancel changes nothing.

#include "recording/AudioRecorderSettings.h"

#include <QDialog>
#include <memory>
#include <vector>

class QButtonGroup;
class QComboBox;

class AudioRecorderSetupDelegate {
public:
    virtual ~AudioRecorderSetupDelegate() = default;
    virtual void
    audioRecordingSetupUpdate(const std::shared_ptr<AudioRecorderSettings>& recorderSettings) = 0;
};

class AudioRecorderSetupVC : public QDialog {
public:
    // Opens the panel (window-modal over parent) and returns it; it deletes itself when closed.
    static AudioRecorderSetupVC* showPanel(QWidget* parent, AudioRecorderSetupDelegate* delegate,
                                           const std::shared_ptr<AudioRecorderSettings>& recorderSettings);

    AudioRecorderSetupVC(QWidget* parent, AudioRecorderSetupDelegate* delegate,
                         const std::shared_ptr<AudioRecorderSettings>& recorderSettings);

    std::vector<AudioDeviceMetadata> availableDevices;
    QComboBox* devicePopup = nullptr;
    QButtonGroup* frequencyRadio = nullptr;
    QButtonGroup* bitDepthRadio = nullptr;
    QComboBox* channelsPopup = nullptr;

    void setDelegate(AudioRecorderSetupDelegate* delegate) { delegate_ = delegate; }
    // The controls' choice into recorderSettings, then both key sets.
    void updateDefaults();
    void accept() override;

private:
    AudioRecorderSetupDelegate* delegate_;
    std::shared_ptr<AudioRecorderSettings> settings_;
};
