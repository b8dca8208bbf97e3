#pragma once
// Load progress whose total is the item count the previous run saved. Items may be counted from any
// thread; the display callback always runs on the main thread.

#include <QString>
#include <atomic>
#include <functional>

class Slowder {
public:
    explicit Slowder(const QString& id);

    // Called on the main thread with (loaded, total).
    std::function<void(int, int)> onProgress;

    void itemLoaded();
    // Remembers n as the total of the next run, under "Slowder_" + id.
    void saveItemsN(int n);

    int itemsToLoad() const { return itemsToLoad_; }
    int itemsLoaded() const { return itemsLoaded_; }
    const QString id;

private:
    std::atomic<int> itemsToLoad_;
    std::atomic<int> itemsLoaded_{0};
};
