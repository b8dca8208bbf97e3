#include "app/core/DroppedFiles.h"

#include "recording/AudioProbes.h"

#include <QFileInfo>

DroppedFiles DroppedFiles::sort(const QStringList& paths) {
    DroppedFiles result;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        const QString name = info.fileName().isEmpty() ? path : info.fileName();
        if (!info.exists())
            result.refused << name + ": the file is no longer there";
        else if (info.isDir())
            result.refused << name + ": folders cannot be dropped, only sound files";
        else if (info.size() == 0)
            result.refused << name + ": the file is empty";
        else if (!aUt_isAudio(path) || aUt_getAudioDuration(path) <= 0)
            result.refused << name + ": not a sound file that can be read";
        else
            result.audio << info.absoluteFilePath();
    }
    return result;
}

QString DroppedFiles::refusedMessage() const {
    if (refused.isEmpty()) return QString();
    return "These files were not added:\n" + refused.join("\n");
}
