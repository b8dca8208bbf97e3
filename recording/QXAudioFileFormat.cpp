#include "recording/QXAudioFileFormat.h"

#include <QFileInfo>

namespace {

struct FormatRow {
    QXAudioFileFormat::Case format;
    const char* raw;
    const char* extension;
    const char* display;
    QStringList recognised;
};

const FormatRow kRows[] = {
    {QXAudioFileFormat::wave, "wave", "wav", "Wave", {"wav", "wave"}},
    {QXAudioFileFormat::aiff, "aiff", "aif", "AIFF", {"aif", "aiff"}},
    {QXAudioFileFormat::mp3, "mp3", "mp3", "MP3", {"mp3"}},
    {QXAudioFileFormat::aac, "aac", "m4a", "MPEG-4 AAC", {"aac", "m4a"}},
};

const FormatRow& rowOf(QXAudioFileFormat::Case format) {
    for (const FormatRow& row : kRows) {
        if (row.format == format) return row;
    }
    return kRows[0];
}

} // namespace

QString QXAudioFileFormat::rawValue() const {
    return rowOf(value).raw;
}
QString QXAudioFileFormat::fileExtension() const {
    return rowOf(value).extension;
}
QString QXAudioFileFormat::displayString() const {
    return rowOf(value).display;
}
QStringList QXAudioFileFormat::extensions() const {
    return rowOf(value).recognised;
}

std::optional<QXAudioFileFormat> QXAudioFileFormat::fromRawValue(const QString& raw) {
    for (const FormatRow& row : kRows) {
        if (raw == row.raw) return QXAudioFileFormat(row.format);
    }
    return std::nullopt;
}

std::optional<QXAudioFileFormat> QXAudioFileFormat::fromExtension(const QString& extension) {
    const QString lower = extension.toLower();
    for (const FormatRow& row : kRows) {
        if (row.recognised.contains(lower)) return QXAudioFileFormat(row.format);
    }
    return std::nullopt;
}

std::optional<QXAudioFileFormat> QXAudioFileFormat::fromPath(const QString& path) {
    return fromExtension(QFileInfo(path).suffix());
}

std::optional<QXAudioFileFormat> QXAudioFileFormat::displyaStringTovalue(const QString& displayString) {
    for (const FormatRow& row : kRows) {
        if (displayString == row.display) return QXAudioFileFormat(row.format);
    }
    return std::nullopt;
}
