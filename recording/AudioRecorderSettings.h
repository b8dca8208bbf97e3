#pragma once
// What the person chose once per show for recording: the input, the rate, the channels and the
// sample width. Kept in the show's archive (AEShow.recorderSettings) and in the preferences, under
// the current keys and under the older "SCSetup." ones that earlier versions read.

#include "foundation/KeyedArchive.h"

#include <QString>
#include <memory>

class AudioDeviceMetadata : public KeyedObject {
public:
    AudioDeviceMetadata(const QString& id = QString(), const QString& name = QString())
        : id(id), name(name) {}

    static constexpr const char* kClassName = "AudioDeviceMetadata";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AudioDeviceMetadata> decode(KeyedUnarchiver& coder);

    QString id;
    QString name;
};

// The older form of the same choice.
struct SCSetupData {
    QString device;
    int frequency = 44100;
    int nChannels = 0;
    int bitDepth = 16;

    void saveToDefaults() const;
    static SCSetupData loadFromDefaults();
};

class AudioRecorderSettings : public KeyedObject {
public:
    static constexpr const char* kClassName = "AudioRecorderSettings";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AudioRecorderSettings> decode(KeyedUnarchiver& coder);

    // Empty: the system's default input.
    AudioDeviceMetadata device;
    int frequency = 44100;
    // 0: as many as the device has.
    int nChannels = 0;
    int bps = 16;

    void saveToDefaults() const;
    // Absent keys keep the defaults above.
    static std::shared_ptr<AudioRecorderSettings> loadFromDefaults();
    SCSetupData toSCSetupData() const;
};
