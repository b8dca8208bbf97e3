#pragma once
// The argument vectors of the MP3 steps, one pure function each (the program path is not part of the
// vector). The encode itself is ffArgs::encodeMp3.

#include "render/Mp3.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace mp3Args {

// Copies the audio of tmp and takes every tag and chapter from the FFMETADATA1 file; ID3v2.3 only:
// ffmpeg would write ID3v1 as raw UTF-8 cut at 30 bytes, which ID3v1 readers show garbled.
QStringList appendMetadata(const QString& tmp, const QString& metadata, const QString& dst);

// kid3 reads a value in double quotes only when its backslashes and quotes are escaped; otherwise the
// quotes are silently taken as part of the text.
QString kid3Value(const QString& value);
// "picture:'<path>'", the path escaped the same way for single quotes.
QString kid3PictureTag(const QString& picturePath);
// One "-c" "set <tag> <value>" per tag, the file last. Clearing sets the bare tag name (what comes
// before a ":") to "".
QStringList kid3SetTags(const QString& filePath, const std::vector<Mp3Tag>& tags, bool add);
QStringList kid3ConvertToID3(const QString& filePath);

} // namespace mp3Args
