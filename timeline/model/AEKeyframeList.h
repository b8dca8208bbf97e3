#pragma once
// A volume envelope in asset time: points in dB, interpolated linearly in dB, plus a parallel list of
// the same points in linear gain. Both lists are kept sorted by rising time (setKeyframe, the range
// edits and decoding re-sort them; a drag keeps the order), and the lookups rely on that. The gain
// list follows only setKeyframe and the range edits, so it may lag behind the dB list. Main thread.

#include "foundation/KeyedArchive.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AETimeRange.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

class AEKeyframeList : public KeyedObject {
public:
    explicit AEKeyframeList(double defaultValue = 0);

    static constexpr const char* kClassName = "AEKeyframeList";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    // Missing lists read as empty and a missing dip shape as the defaults; a damaged point fails the list.
    static std::shared_ptr<AEKeyframeList> decode(KeyedUnarchiver& coder);

    std::vector<std::shared_ptr<AEKeyframe>> keyframes;
    std::vector<std::shared_ptr<AEKeyframeFloat>> keyframesPerc;
    double defaultValue;
    std::shared_ptr<AEKeyFrameDuckPrefs> duckPrefs;

    // Copies the points; shares duckPrefs.
    std::shared_ptr<AEKeyframeList> duplicate() const;
    std::optional<size_t> getKeyframeAt(double time) const;
    void sortKFs();
    // Overwrites the value of a point already at t (its gain twin keeps the old gain); otherwise adds a
    // point, at the current level when no value is given.
    void setKeyframe(double t, std::optional<double> value = std::nullopt, bool flag0 = false,
                     bool flag1 = false);
    // Both ends of the range are excluded.
    void deleteKeyframesInTimeRange(const AETimeRange& range);
    void keepKeyframesInTimeRange(const AETimeRange& range);
    std::shared_ptr<AEKeyframeList> shiftInTime(double inTime) const;
    std::shared_ptr<AEKeyframe> getPreviousKeyframe(double t) const;
    std::shared_ptr<AEKeyframe> getNextKeyframe(double t) const;
    std::shared_ptr<AEKeyframe> getNearestKeyframe(double t) const;
    double getValue(double t) const;
    double getValuePerc(double t) const;
    void removeByFlag(int flagN);
    // Every level scaled by factor.
    std::shared_ptr<AEKeyframeList> convolution(double factor) const;
    // The sum of two envelopes in dB, exact at the points of either.
    std::shared_ptr<AEKeyframeList> convolution(const AEKeyframeList& other) const;
    // Replaces what lies around the range with a dip of duckPrefs' shape.
    void duck(const AETimeRange& range);
};
