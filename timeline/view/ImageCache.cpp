#include "timeline/view/ImageCache.h"

ImageCache& ImageCache::shared() {
    static ImageCache cache;
    return cache;
}

bool ImageCache::imagePresent(const QString& key) const {
    std::lock_guard lock(mutex_);
    return entries_.contains(key);
}

std::optional<QImage> ImageCache::getImage(const QString& key) {
    std::lock_guard lock(mutex_);
    const auto found = entries_.find(key);
    if (found == entries_.end()) return std::nullopt;
    uses_.splice(uses_.begin(), uses_, found->use);
    return found->image;
}

void ImageCache::setImage(const QString& key, const QImage& image) {
    std::lock_guard lock(mutex_);
    if (const auto found = entries_.find(key); found != entries_.end()) {
        bytes_ -= found->image.sizeInBytes();
        uses_.erase(found->use);
        entries_.erase(found);
    }
    uses_.push_front(key);
    entries_.insert(key, Entry{image, uses_.begin()});
    bytes_ += image.sizeInBytes();
    // Between flushes one draw's worth may exceed the bound; the peak counts it.
    peak_ = std::max(peak_, bytes_);
}

void ImageCache::flush() {
    std::lock_guard lock(mutex_);
    while (bytes_ > maxBytes_ && !uses_.empty()) {
        const auto found = entries_.find(uses_.back());
        bytes_ -= found->image.sizeInBytes();
        entries_.erase(found);
        uses_.pop_back();
    }
}

void ImageCache::clear() {
    std::lock_guard lock(mutex_);
    entries_.clear();
    uses_.clear();
    bytes_ = 0;
    peak_ = 0;
}

int64_t ImageCache::bytes() const {
    std::lock_guard lock(mutex_);
    return bytes_;
}

int64_t ImageCache::peakBytes() const {
    std::lock_guard lock(mutex_);
    return peak_;
}
