#pragma once
// Lane numbering and layout. Attached items fall to the lane nearest the main lane that has room;
// lanes are made when needed and dropped when left empty at the outer edge. The proportions and the
// available height are shared by all timelines (one window shows one at a time); the operations
// take the timeline they work on.

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class AETimeLine;
class AETimeLineItem;

enum class AETimeLineLanesViewMode { mainOnly = 0, complete = 1 };
enum class AETimeLineLanesViewSetup { normal = 0, bgm = 1, allEquals = 2 };

class AETimeLineLanesHelper {
public:
    using Item = std::shared_ptr<AETimeLineItem>;
    struct Fractions {
        double fx;
        double main;
        double bgm;
    };

    static constexpr int kGap = 5;
    static constexpr int kBgmBaseline = 20;
    static constexpr int kRulerHeight = 24;
    // Until a window gives its size, lanes are laid out on this height.
    static constexpr int kDefaultTotalH = 400;

    static std::atomic<AETimeLineLanesViewMode> lanesViewMode;
    static std::atomic<AETimeLineLanesViewSetup> lanesViewSetup;
    static std::atomic<int> totalH;
    static std::atomic<double> lowerLinkH;
    static std::atomic<double> upperLinkH;
    // The timeline the window shows; main thread.
    static std::weak_ptr<AETimeLine> timeline;

    // The preference "LanesMode": 0 normal, 1 bgm, 3 all equal.
    static void loadSetup();
    static void setSetup(AETimeLineLanesViewSetup setup);
    static Fractions setupLanes(const AETimeLine& tl);
    static int64_t getLaneN(const AETimeLine& tl, bool positive);
    static std::vector<Item> getAttachedItemsByLaneSign(const AETimeLine& tl, bool positive);
    static std::vector<Item> getAttachedItemsByLane(const AETimeLine& tl, int64_t laneN);
    static bool itemOverlapping(const AETimeLine& tl, const Item& item, int64_t lane);
    static void putInFirstClearLane(AETimeLine& tl, const Item& item, bool resize = true);
    static void cleanLanes(AETimeLine& tl);
    static void setBGM(AETimeLine& tl, std::optional<int> height = std::nullopt);
};
