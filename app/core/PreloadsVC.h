#pragma once
// Brings missing external components in before the program relies on them, behind the "Preloading"
// progress panel of the interaction door. The fetches run on a background queue one after the other;
// the completion handler runs on the main thread once all have ended (whether or not they worked).

#include "app/core/ASItem.h"

#include <atomic>
#include <functional>
#include <vector>

class PreloadsVC {
public:
    // Goes true once per run, when a preload has ended.
    static inline std::atomic<bool> preloadsDone{false};

    // With nothing missing the completion handler runs at once, on the calling thread, and no network is
    // needed. With something missing and no connection: alert and process exit, no completion.
    static void preload(const std::vector<ASItem>& list, std::function<void()> completionHandler);
};
