#include "recording/MediaCheck.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "recording/AudioFileFacts.h"

#include <QFileInfo>

namespace {
constexpr int kMostChannels = 32;
constexpr int kLowestRate = 8000;
constexpr int kHighestRate = 384000;
} // namespace

std::optional<QString> mediaRefusal(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists()) return QString("cannot be found");
    if (info.isDir()) return QString("is a folder");
    if (!info.isFile()) return QString("is not a regular file");
    if (!info.isReadable()) return QString("cannot be read");
    const auto facts = readAudioFileFacts(path, false);
    if (!facts || facts->dataFormat.isEmpty() || facts->channels < 1 || facts->channels > kMostChannels ||
        facts->frequency < kLowestRate || facts->frequency > kHighestRate)
        return QString("is not audio");
    if (facts->duration * facts->frequency < 1.0) return QString("has no sound in it");
    return std::nullopt;
}

QString mediaRefusalText(const QString& path, const QString& reason) {
    return QString::fromUtf8("“") + QFileInfo(path).fileName() + QString::fromUtf8("” ") + reason + ".";
}

bool mediaAcceptedOrTold(const QString& path) {
    const auto reason = mediaRefusal(path);
    if (!reason) return true;
    const QString text = mediaRefusalText(path, *reason);
    qxLog("Refused: " + path + " " + *reason);
    ih_alertOk("Not Added", text);
    return false;
}
