#include "timeline/model/AEKeyframeList.h"

#include "dsp/Levels.h"
#include "foundation/Log.h"

#include <algorithm>
#include <cmath>

namespace {
const bool registered = registerArchiveClass<AEKeyframeList>();

double linearInterpolation(double t0, double v0, double t1, double v1, double t) {
    return v0 + (v1 - v0) * (t - t0) / (t1 - t0);
}

float linearInterpolationFloat(float t0, float v0, float t1, float v1, float t) {
    return v0 + (v1 - v0) * (t - t0) / (t1 - t0);
}

// The first point with time > t; the one before it, if any, is the last with time <= t.
template <class Points, class T> auto firstAfter(const Points& points, T t) {
    return std::upper_bound(points.begin(), points.end(), t, [](T x, const auto& p) { return x < p->time; });
}

// Level on a non-empty list: flat before the first point and after the last.
template <class Points, class T, class Interpolate>
T valueAlong(const Points& points, T t, Interpolate interpolate) {
    const auto next = firstAfter(points, t);
    if (next == points.begin()) return points.front()->value;
    if (next == points.end()) return points.back()->value;
    const auto& a = **(next - 1);
    const auto& b = **next;
    return interpolate(a.time, a.value, b.time, b.value, t);
}

// After any point at the same time, where appending and a stable sort would put it.
template <class Points, class Point> size_t insertByTime(Points& points, std::shared_ptr<Point> point) {
    const auto at = points.insert(firstAfter(points, point->time), std::move(point));
    return static_cast<size_t>(at - points.begin());
}

template <class Points> void numberFrom(Points& points, size_t first) {
    for (size_t i = first; i < points.size(); ++i)
        points[i]->pos = static_cast<int64_t>(i);
}

template <class Points> void sortAndNumber(Points& points) {
    const auto earlier = [](const auto& a, const auto& b) { return a->time < b->time; };
    if (!std::is_sorted(points.begin(), points.end(), earlier))
        std::stable_sort(points.begin(), points.end(), earlier);
    numberFrom(points, 0);
}

// Indices past the end of marked are kept: the gain list may be longer than the dB list.
template <class Points> void eraseMarked(Points& points, const std::vector<bool>& marked) {
    Points kept;
    kept.reserve(points.size());
    for (size_t i = 0; i < points.size(); ++i)
        if (i >= marked.size() || !marked[i]) kept.push_back(std::move(points[i]));
    points = std::move(kept);
}
} // namespace

AEKeyframeList::AEKeyframeList(double defaultValue)
    : defaultValue(defaultValue), duckPrefs(std::make_shared<AEKeyFrameDuckPrefs>()) {
    (void)registered;
}

void AEKeyframeList::encode(KeyedArchiver& coder) const {
    coder.encodeObjectArray("keyframes", keyframes);
    coder.encodeObjectArray("keyframesPerc", keyframesPerc);
    coder.encodeDouble("defaultValue", defaultValue);
    coder.encodeObject("duckPrefs", duckPrefs);
}

std::shared_ptr<AEKeyframeList> AEKeyframeList::decode(KeyedUnarchiver& coder) {
    auto list = std::make_shared<AEKeyframeList>(coder.decodeDouble("defaultValue").value_or(0));
    auto points = coder.decodeObjectArray<AEKeyframe>("keyframes");
    auto twins = coder.decodeObjectArray<AEKeyframeFloat>("keyframesPerc");
    if ((!points && coder.containsKey("keyframes")) || (!twins && coder.containsKey("keyframesPerc")) ||
        !std::isfinite(list->defaultValue)) {
        qxLog("AEKeyframeList: unusable envelope in archive");
        return nullptr;
    }
    if (points) list->keyframes = std::move(*points);
    if (twins) list->keyframesPerc = std::move(*twins);
    if (auto prefs = coder.decodeObject<AEKeyFrameDuckPrefs>("duckPrefs")) list->duckPrefs = std::move(prefs);
    list->sortKFs();
    return list;
}

std::shared_ptr<AEKeyframeList> AEKeyframeList::duplicate() const {
    auto copy = std::make_shared<AEKeyframeList>(defaultValue);
    copy->duckPrefs = duckPrefs;
    copy->keyframes.reserve(keyframes.size());
    for (const auto& k : keyframes)
        copy->keyframes.push_back(k->duplicate());
    copy->keyframesPerc.reserve(keyframesPerc.size());
    for (const auto& k : keyframesPerc)
        copy->keyframesPerc.push_back(k->duplicate());
    return copy;
}

std::optional<size_t> AEKeyframeList::getKeyframeAt(double time) const {
    const auto found = std::lower_bound(keyframes.begin(), keyframes.end(), time,
                                        [](const auto& k, double t) { return k->time < t; });
    if (found == keyframes.end() || (*found)->time != time) return std::nullopt;
    return static_cast<size_t>(found - keyframes.begin());
}

void AEKeyframeList::sortKFs() {
    sortAndNumber(keyframes);
    sortAndNumber(keyframesPerc);
}

void AEKeyframeList::setKeyframe(double t, std::optional<double> value, bool flag0, bool flag1) {
    const double v = value ? *value : getValue(t);
    if (const auto at = getKeyframeAt(t)) {
        keyframes[*at]->value = v;
        return;
    }
    // Both lists are in order: inserting in place and renumbering what moved is all a full sortKFs
    // would do, and keeps building a list of thousands of points linear.
    numberFrom(keyframes, insertByTime(keyframes, std::make_shared<AEKeyframe>(t, v, flag0, flag1)));
    const auto gain = static_cast<float>(aUt_dbToDouble(v));
    numberFrom(keyframesPerc,
               insertByTime(keyframesPerc, std::make_shared<AEKeyframeFloat>(static_cast<float>(t), gain)));
}

void AEKeyframeList::deleteKeyframesInTimeRange(const AETimeRange& range) {
    std::vector<bool> inside(keyframes.size());
    for (size_t i = 0; i < keyframes.size(); ++i)
        inside[i] = range.isContained(keyframes[i]->time);
    eraseMarked(keyframes, inside);
    eraseMarked(keyframesPerc, inside);
    sortKFs();
}

void AEKeyframeList::keepKeyframesInTimeRange(const AETimeRange& range) {
    std::erase_if(keyframes, [&](const auto& k) { return !range.isContained(k->time); });
    std::erase_if(keyframesPerc, [&](const auto& k) { return !range.isContained(k->time); });
    sortKFs();
}

std::shared_ptr<AEKeyframeList> AEKeyframeList::shiftInTime(double inTime) const {
    auto shifted = duplicate();
    for (const auto& k : shifted->keyframes)
        k->time -= inTime;
    for (const auto& k : shifted->keyframesPerc)
        k->time = static_cast<float>(k->time - inTime);
    return shifted;
}

std::shared_ptr<AEKeyframe> AEKeyframeList::getPreviousKeyframe(double t) const {
    const auto next = firstAfter(keyframes, t);
    return next == keyframes.begin() ? nullptr : *(next - 1);
}

std::shared_ptr<AEKeyframe> AEKeyframeList::getNextKeyframe(double t) const {
    const auto next = firstAfter(keyframes, t);
    return next == keyframes.end() ? nullptr : *next;
}

std::shared_ptr<AEKeyframe> AEKeyframeList::getNearestKeyframe(double t) const {
    std::shared_ptr<AEKeyframe> nearest;
    double best = 0;
    for (const auto& k : keyframes) {
        const double distance = std::fabs(k->time - t);
        if (!nearest || distance < best) {
            nearest = k;
            best = distance;
        }
    }
    return nearest;
}

double AEKeyframeList::getValue(double t) const {
    if (keyframes.empty()) return defaultValue;
    return valueAlong(keyframes, t, linearInterpolation);
}

double AEKeyframeList::getValuePerc(double t) const {
    if (keyframesPerc.empty()) return aUt_dbToDouble(defaultValue);
    return valueAlong(keyframesPerc, static_cast<float>(t), linearInterpolationFloat);
}

void AEKeyframeList::removeByFlag(int flagN) {
    if (flagN == 0) std::erase_if(keyframes, [](const auto& k) { return k->flag0; });
    if (flagN == 1) std::erase_if(keyframes, [](const auto& k) { return k->flag1; });
    // The order is unchanged; only pos would be stale for a drag that follows.
    numberFrom(keyframes, 0);
}

std::shared_ptr<AEKeyframeList> AEKeyframeList::convolution(double factor) const {
    auto scaled = std::make_shared<AEKeyframeList>(0);
    for (const auto& k : keyframes)
        scaled->setKeyframe(k->time, k->value * factor, k->flag0, k->flag1);
    return scaled;
}

std::shared_ptr<AEKeyframeList> AEKeyframeList::convolution(const AEKeyframeList& other) const {
    auto sum = std::make_shared<AEKeyframeList>(0);
    for (const auto& k : keyframes)
        sum->setKeyframe(k->time, k->value + other.getValue(k->time));
    for (const auto& k : other.keyframes)
        sum->setKeyframe(k->time, k->value + getValue(k->time));
    return sum;
}

void AEKeyframeList::duck(const AETimeRange& range) {
    const auto p = duckPrefs ? duckPrefs : std::make_shared<AEKeyFrameDuckPrefs>();
    const double a0 = range.i - p->attackPreRoll;
    const double a1 = a0 + p->attackDuration;
    const double r0 = range.o - p->releasePreRoll;
    const double r1 = r0 + p->releaseDuration;
    const double v0 = getValue(a0);
    const double v1 = getValue(r1);
    // The range truncates its ends onto the time grid, so what is cleared may be up to one grid step
    // off (a0, r1).
    deleteKeyframesInTimeRange(AETimeRange(a0, r1));
    setKeyframe(a0, v0);
    setKeyframe(a1, v0 + p->decreaseDB);
    setKeyframe(r0, v1 + p->decreaseDB);
    setKeyframe(r1, v1);
}
