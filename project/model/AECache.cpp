#include "project/model/AECache.h"

#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Log.h"
#include "project/model/SaveArray.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

QString AECache::getCacheFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/AudioEngine";
}

QString AECache::cacheFilePath(const QString& originalFileName) {
    return getCacheFolder() + "/" + hallard_md5(cacheKey(originalFileName)) + ".cache";
}

QString AECache::cacheKey(const QString& originalFileName) {
    const QFileInfo info(originalFileName);
    if (!info.isFile()) return originalFileName;
    // Another file at the same path (or the same file rewritten) is another entry.
    return originalFileName + "\n" + QString::number(info.size()) + "\n" +
           QString::number(info.lastModified().toMSecsSinceEpoch());
}

bool AECache::saveSubsamplesToCache(const QString& originalFileName, std::span<const float> subsamples) {
    if (subsamples.empty()) return false;
    if (!fu_createFolder(getCacheFolder())) return false;
    return SaveArray::saveFloat(subsamples, cacheFilePath(originalFileName));
}

std::optional<std::vector<float>> AECache::loadSubsamplesFromCache(const QString& originalFileName) {
    const QString path = cacheFilePath(originalFileName);
    QFile file(path);
    // Tested apart from the load: an empty summary is a valid entry, an unreadable file is none.
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    file.close();
    // An empty summary is what an unreadable file gives: never an answer worth keeping.
    auto values = SaveArray::loadFloat(path);
    if (values.empty()) return std::nullopt;
    return values;
}

void AECache::removeSubsamplesFromCache(const QString& originalFileName) {
    fu_deleteFile(cacheFilePath(originalFileName));
}

void AECache::clearCache() {
    qxLog("AECache.clearCache");
    fu_deleteFolder(getCacheFolder());
}
