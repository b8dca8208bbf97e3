#include "recording/AudioRecorderSettings.h"

#include "foundation/Prefs.h"

namespace {
const bool registered =
    registerArchiveClass<AudioDeviceMetadata>() && registerArchiveClass<AudioRecorderSettings>();

// A stored value the recorder cannot make falls back to the default.
int validFrequency(int64_t f) {
    return f == 48000 ? 48000 : 44100;
}
int validDepth(int64_t d) {
    return d == 24 ? 24 : 16;
}
int validChannels(int64_t n) {
    return n >= 0 && n <= 4 ? static_cast<int>(n) : 0;
}
} // namespace

void AudioDeviceMetadata::encode(KeyedArchiver& coder) const {
    coder.encodeString("id", id);
    coder.encodeString("name", name);
}

std::shared_ptr<AudioDeviceMetadata> AudioDeviceMetadata::decode(KeyedUnarchiver& coder) {
    (void)registered;
    return std::make_shared<AudioDeviceMetadata>(coder.decodeString("id").value_or(""),
                                                 coder.decodeString("name").value_or(""));
}

void SCSetupData::saveToDefaults() const {
    prefs_setValueString("SCSetup.device", device);
    prefs_setValueInt("SCSetup.frequency", frequency);
    prefs_setValueInt("SCSetup.nChannels", nChannels);
    prefs_setValueInt("SCSetup.bitDepth", bitDepth);
}

SCSetupData SCSetupData::loadFromDefaults() {
    SCSetupData data;
    data.device = prefs_getValueString("SCSetup.device", "");
    data.frequency = validFrequency(prefs_getValueInt("SCSetup.frequency", 44100));
    data.nChannels = validChannels(prefs_getValueInt("SCSetup.nChannels", 0));
    data.bitDepth = validDepth(prefs_getValueInt("SCSetup.bitDepth", 16));
    return data;
}

void AudioRecorderSettings::encode(KeyedArchiver& coder) const {
    coder.encodeObject("device", std::make_shared<AudioDeviceMetadata>(device));
    coder.encodeInt("frequency", frequency);
    coder.encodeInt("nChannels", nChannels);
    coder.encodeInt("bps", bps);
}

std::shared_ptr<AudioRecorderSettings> AudioRecorderSettings::decode(KeyedUnarchiver& coder) {
    auto settings = std::make_shared<AudioRecorderSettings>();
    if (const auto device = coder.decodeObject<AudioDeviceMetadata>("device")) settings->device = *device;
    settings->frequency = validFrequency(coder.decodeInt("frequency").value_or(44100));
    settings->nChannels = validChannels(coder.decodeInt("nChannels").value_or(0));
    settings->bps = validDepth(coder.decodeInt("bps").value_or(16));
    return settings;
}

void AudioRecorderSettings::saveToDefaults() const {
    prefs_setValueString("AudioRecorderSettings.device.id", device.id);
    prefs_setValueString("AudioRecorderSettings.device.name", device.name);
    prefs_setValueInt("AudioRecorderSettings.frequency", frequency);
    prefs_setValueInt("AudioRecorderSettings.nChannels", nChannels);
    prefs_setValueInt("AudioRecorderSettings.bps", bps);
}

std::shared_ptr<AudioRecorderSettings> AudioRecorderSettings::loadFromDefaults() {
    auto settings = std::make_shared<AudioRecorderSettings>();
    settings->device.id = prefs_getValueString("AudioRecorderSettings.device.id", "");
    settings->device.name = prefs_getValueString("AudioRecorderSettings.device.name", "");
    settings->frequency = validFrequency(prefs_getValueInt("AudioRecorderSettings.frequency", 44100));
    settings->nChannels = validChannels(prefs_getValueInt("AudioRecorderSettings.nChannels", 0));
    settings->bps = validDepth(prefs_getValueInt("AudioRecorderSettings.bps", 16));
    return settings;
}

SCSetupData AudioRecorderSettings::toSCSetupData() const {
    return SCSetupData{device.name, frequency, nChannels, bps};
}
