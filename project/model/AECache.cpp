#include "project/model/AECache.h"

#include "foundation/FileUtils.h"
#include "foundation/Hallard.h"
#include "foundation/Log.h"
#include "project/model/SaveArray.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

QString AECache::getCacheFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/AudioEngine";
}

QString AECache::cacheFilePath(const QString& originalFileName) {
    return getCacheFolder() + "/" + hallard_md5(originalFileName) + ".cache";
}

bool AECache::saveSubsamplesToCache(const QString& originalFileName, std::span<const float> subsamples) {
    if (!fu_createFolder(getCacheFolder())) return false;
    return SaveArray::saveFloat(subsamples, cacheFilePath(originalFileName));
}

std::optional<std::vector<float>> AECache::loadSubsamplesFromCache(const QString& originalFileName) {
    const QString path = cacheFilePath(originalFileName);
    QFile file(path);
    // Tested apart from the load: an empty summary is a valid entry, an unreadable file is none.
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    file.close();
    return SaveArray::loadFloat(path);
}

void AECache::removeSubsamplesFromCache(const QString& originalFileName) {
    fu_deleteFile(cacheFilePath(originalFileName));
}

void AECache::clearCache() {
    qxLog("AECache.clearCache");
    fu_deleteFolder(getCacheFolder());
}
