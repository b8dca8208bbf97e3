#pragma once
// The two-hour episode the timeline benches share: 500 main-lane clips cut from the speech assets with
// a jingle every 25th, envelopes on every fifth, and 100 attached items in overlapping pairs, so they
// fill two lanes above and two below.

#include "project/model/AEAsset.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace benchtl {

constexpr int kMainItems = 500;
constexpr int kAttached = 100;
constexpr double kLength = 7200.0;

struct Media {
    std::vector<std::shared_ptr<AEAsset>> speech;
    std::shared_ptr<AEAsset> jingle, bed, effect;
    // The length of each speech asset, which the clips are cut from.
    double speechLength = 0;
};

inline std::shared_ptr<AETimeLine> twoHourTimeline(const QString& id, const Media& m) {
    auto tl = AETimeLine::make(id);
    const double clip = kLength / kMainItems;
    for (int n = 0; n < kMainItems; ++n) {
        if (n % 25 == 12) {
            tl->appendItemInMainLane(m.jingle, AETimeRange(0, std::min(8.0, clip)), false);
            continue;
        }
        const auto& s = m.speech[static_cast<size_t>(n) % m.speech.size()];
        const double from = std::fmod(n * 37.0, m.speechLength - clip);
        auto item = tl->appendItemInMainLane(s, AETimeRange(from, simpleRound(from + clip)), false);
        if (n % 5 == 0) {
            for (int k = 1; k <= 4; ++k)
                item->volumeKFs->setKeyframe(simpleRound(from + clip * k / 5.0), -3.0 * k);
            item->updateGlobalKFs();
        }
    }
    const double step = (kLength - 200) / (kAttached / 4);
    for (int n = 0; n < kAttached / 4; ++n) {
        const double t = simpleRound(10.0 + n * step);
        tl->attachItem(m.effect, 1, t, std::nullopt, false, false);
        tl->attachItem(m.effect, 1, t + 1, std::nullopt, false, false);
        tl->attachItem(m.bed, -1, t, std::nullopt, false, false);
        tl->attachItem(m.bed, -1, t + 30, std::nullopt, false, false);
    }
    return tl;
}

} // namespace benchtl
