#pragma once
// The per-user cache of waveform summaries: one raw float file per asset,
// <user cache>/AudioEngine/<md5 of the key>.cache. The key is what the file is: its path, size and
// modification time (the path alone once the file is gone), so moving, replacing or rewriting the
// original misses the entry. An empty summary is never stored nor taken. Any thread.

#include <QString>
#include <optional>
#include <span>
#include <vector>

class AECache {
public:
    // Without a trailing "/".
    static QString getCacheFolder();
    static QString cacheFilePath(const QString& originalFileName);
    static QString cacheKey(const QString& originalFileName);
    // Makes the folder when needed; false when the write failed or there is nothing to store.
    static bool saveSubsamplesToCache(const QString& originalFileName, std::span<const float> subsamples);
    // Nothing when there is no entry, it cannot be read or it is empty.
    static std::optional<std::vector<float>> loadSubsamplesFromCache(const QString& originalFileName);
    static void removeSubsamplesFromCache(const QString& originalFileName);
    // Deletes every entry; nothing rebuilds them until an asset is loaded again.
    static void clearCache();
};
