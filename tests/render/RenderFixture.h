#pragma once
// Timelines over real files for render tests: click tracks, constant levels and tones made with the
// installed sox, assets that point at them without starting an ingest, and the onsets of a rendered
// file.

#include "../timeline/model/TimelineFixture.h"
#include "foundation/Execution.h"
#include "recording/AudioProbes.h"
#include "render/SoXer.h"
#include "render/tools/ToolFixture.h"
#include "support/EventWait.h"

#include <atomic>
#include <vector>

class RenderFixture : public ToolFixture {
protected:
    // A file that is already its own usable copy, so reading it starts no ingest.
    static std::shared_ptr<AEAsset> fileAsset(const QString& file, AEAssetType type = AEAssetType::speech) {
        auto a = tlfixture::asset(QFileInfo(file).completeBaseName(), aUt_getAudioDuration(file), type);
        a->originalFilePath = file;
        a->ingestedFilePath = file;
        a->ingested = true;
        return a;
    }

    // Seconds at which channel 0 first rises above `threshold` after at least 0.1 s below it.
    static std::vector<double> onsets(const Decoded& d, double threshold = 0.02) {
        std::vector<double> found;
        int64_t quiet = d.rate; // the start counts as after a quiet spell
        for (int64_t i = 0; i < d.frames; ++i) {
            const float v = std::fabs(d.samples[static_cast<size_t>(i * d.channels)]);
            if (v > threshold) {
                if (quiet >= d.rate / 10) found.push_back(static_cast<double>(i) / d.rate);
                quiet = 0;
            } else {
                ++quiet;
            }
        }
        return found;
    }

    // Renders on a pool thread, as the window does, while this thread keeps the event loop turning.
    static bool render(const std::shared_ptr<SoXer>& soxer, bool selection = false) {
        auto result = std::make_shared<std::atomic<int>>(-1);
        soxer->performAsync(selection, [result](bool done) { *result = done ? 1 : 0; });
        EXPECT_TRUE(testenv::waitUntil([&] { return *result >= 0; }, 180000));
        testenv::pumpEventsFor(20); // alerts posted by the render
        return *result == 1;
    }
};
