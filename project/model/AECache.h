#pragma once
// The per-user cache of waveform summaries: one raw float file per asset,
// <user cache>/AudioEngine/<md5 of the original file's path>.cache. The key is the path, not the
// content: moving the original misses the entry, changing it in place does not. Any thread.

#include <QString>
#include <optional>
#include <span>
#include <vector>

class AECache {
public:
    // Without a trailing "/".
    static QString getCacheFolder();
    static QString cacheFilePath(const QString& originalFileName);
    // Makes the folder when needed; false when the write failed.
    static bool saveSubsamplesToCache(const QString& originalFileName, std::span<const float> subsamples);
    // Nothing when there is no entry or it cannot be read.
    static std::optional<std::vector<float>> loadSubsamplesFromCache(const QString& originalFileName);
    static void removeSubsamplesFromCache(const QString& originalFileName);
    // Deletes every entry; nothing rebuilds them until an asset is loaded again.
    static void clearCache();
};
