#pragma once
// Waveform images by the exact key of what they show, so scrolling back and replaying cost nothing.
// Bounded by bytes: flush() drops the least recently used images above the bound. Any thread.

#include <QHash>
#include <QImage>
#include <QString>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>

class ImageCache {
public:
    static ImageCache& shared();

    explicit ImageCache(int64_t maxBytes = kDefaultMaxBytes) : maxBytes_(maxBytes) {}
    static constexpr int64_t kDefaultMaxBytes = 64LL * 1024 * 1024;

    bool imagePresent(const QString& key) const;
    std::optional<QImage> getImage(const QString& key);
    void setImage(const QString& key, const QImage& image);
    // Trims to the bound; called once per draw.
    void flush();
    void clear();
    int64_t bytes() const;
    // The most the cache held since the last clear.
    int64_t peakBytes() const;
    int64_t maxBytes() const { return maxBytes_; }

private:
    struct Entry {
        QImage image;
        std::list<QString>::iterator use;
    };
    mutable std::mutex mutex_;
    QHash<QString, Entry> entries_;
    std::list<QString> uses_; // most recent first
    int64_t bytes_ = 0;
    int64_t peak_ = 0;
    int64_t maxBytes_;
};
