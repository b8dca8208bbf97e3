#pragma once
// The audio file formats a recording or an ingested copy can take, with their extensions and the
// names shown to the person.

#include <QString>
#include <QStringList>
#include <optional>

class QXAudioFileFormat {
public:
    enum Case { wave, aiff, mp3, aac };

    constexpr QXAudioFileFormat(Case c) : value(c) {}
    Case value;

    QString rawValue() const;      // "wave", "aiff", "mp3", "aac"
    QString fileExtension() const; // "wav", "aif", "mp3", "m4a"
    QString displayString() const; // "Wave", "AIFF", "MP3", "MPEG-4 AAC"
    // Lower-case extensions taken as this format.
    QStringList extensions() const;

    static std::optional<QXAudioFileFormat> fromRawValue(const QString& raw);
    // Any case; "flac" and anything unlisted give nothing.
    static std::optional<QXAudioFileFormat> fromExtension(const QString& extension);
    static std::optional<QXAudioFileFormat> fromPath(const QString& path);
    static std::optional<QXAudioFileFormat> displyaStringTovalue(const QString& displayString);

    bool operator==(const QXAudioFileFormat&) const = default;
};
