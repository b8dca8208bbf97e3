#include "ui/recording/AudioRecorderSetupVC.h"

#include "recording/Recorder.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QRadioButton>

namespace {

QWidget* radioRow(QWidget* parent, QButtonGroup* group, const std::vector<std::pair<QString, int>>& choices,
                  int current) {
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (const auto& [text, value] : choices) {
        auto* radio = new QRadioButton(text, row);
        group->addButton(radio, value);
        radio->setChecked(value == current);
        layout->addWidget(radio);
    }
    return row;
}

} // namespace

AudioRecorderSetupVC*
AudioRecorderSetupVC::showPanel(QWidget* parent, AudioRecorderSetupDelegate* delegate,
                                const std::shared_ptr<AudioRecorderSettings>& recorderSettings) {
    auto* panel = new AudioRecorderSetupVC(parent, delegate, recorderSettings);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
    return panel;
}

AudioRecorderSetupVC::AudioRecorderSetupVC(QWidget* parent, AudioRecorderSetupDelegate* delegate,
                                           const std::shared_ptr<AudioRecorderSettings>& recorderSettings)
    : QDialog(parent), delegate_(delegate),
      settings_(recorderSettings ? recorderSettings : std::make_shared<AudioRecorderSettings>()) {
    setWindowTitle(tr("Recorder Settings"));
    setWindowModality(Qt::WindowModal);
    auto* form = new QFormLayout(this);

    availableDevices = Recorder::getDeviceListV2();
    devicePopup = new QComboBox(this);
    int selected = 0;
    for (size_t i = 0; i < availableDevices.size(); ++i) {
        devicePopup->addItem(availableDevices[i].name, availableDevices[i].id);
        const bool sameId = !settings_->device.id.isEmpty() && availableDevices[i].id == settings_->device.id;
        const bool sameName =
            settings_->device.id.isEmpty() && availableDevices[i].name == settings_->device.name;
        if (sameId || sameName) selected = static_cast<int>(i);
    }
    // A stored input that has gone shows the first one.
    devicePopup->setCurrentIndex(selected);
    form->addRow(tr("Input"), devicePopup);

    frequencyRadio = new QButtonGroup(this);
    form->addRow(tr("Frequency"), radioRow(this, frequencyRadio, {{"44.1 kHz", 44100}, {"48 kHz", 48000}},
                                           settings_->frequency));
    bitDepthRadio = new QButtonGroup(this);
    form->addRow(tr("Bit depth"),
                 radioRow(this, bitDepthRadio, {{"16 bit", 16}, {"24 bit", 24}}, settings_->bps));

    channelsPopup = new QComboBox(this);
    const std::pair<QString, int> channelChoices[] = {{"Rec. device channels", 0},
                                                      {"1 (Mono)", 1},
                                                      {"2 (Stereo)", 2},
                                                      {"3 (Mono + Stereo)", 3},
                                                      {"4 (Dual Stereo)", 4}};
    for (const auto& [text, value] : channelChoices)
        channelsPopup->addItem(text, value);
    channelsPopup->setCurrentIndex(std::max(0, channelsPopup->findData(settings_->nChannels)));
    form->addRow(tr("Channels"), channelsPopup);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
}

void AudioRecorderSetupVC::updateDefaults() {
    const int device = devicePopup->currentIndex();
    if (device >= 0 && device < static_cast<int>(availableDevices.size()))
        settings_->device = availableDevices[static_cast<size_t>(device)];
    settings_->frequency = frequencyRadio->checkedId() == 48000 ? 48000 : 44100;
    settings_->bps = bitDepthRadio->checkedId() == 24 ? 24 : 16;
    settings_->nChannels = channelsPopup->currentData().toInt();
    settings_->saveToDefaults();
    settings_->toSCSetupData().saveToDefaults();
}

void AudioRecorderSetupVC::accept() {
    updateDefaults();
    if (delegate_) delegate_->audioRecordingSetupUpdate(settings_);
    QDialog::accept();
}
