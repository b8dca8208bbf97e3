#pragma once
// A sound file ready for the slice readers: opened directly when libsndfile knows its format, otherwise
// (MP4/M4A, ADTS AAC, ...) decoded by the media converter into a 32-bit float WAV in a private temporary
// folder that lives exactly as long as this object. One thread at a time.

#include "dsp/SndFile.h"

#include <QString>
#include <QTemporaryDir>
#include <memory>

class ReadableAudio {
public:
    // Nothing when neither way gives audio.
    static std::unique_ptr<ReadableAudio> open(const QString& path);

    SndFile& file() { return file_; }
    bool wasDecoded() const { return decodedFolder_ != nullptr; }

private:
    ReadableAudio(std::unique_ptr<QTemporaryDir> folder, const QString& path);

    // Declared first so that it is removed after the file is closed.
    std::unique_ptr<QTemporaryDir> decodedFolder_;
    SndFile file_;
};
