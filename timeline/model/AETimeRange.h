#pragma once
// A stretch of time, in or out on the 1/128 s grid. A value: copies are independent.

#include "foundation/KeyedArchive.h"

#include <memory>

class AETimeRange : public KeyedObject {
public:
    AETimeRange() = default;
    AETimeRange(double i, double o);

    static constexpr const char* kClassName = "AETimeRange";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    // Nothing when either end is missing or cannot be a time.
    static std::shared_ptr<AETimeRange> decode(KeyedUnarchiver& coder);

    double i = 0;
    double o = 0;

    AETimeRange simpleRound() const;
    AETimeRange duplicate() const { return *this; }
    double duration() const { return o - i; }
    double center() const;
    // Both ends excluded.
    bool isContained(double t) const { return i < t && t < o; }
    // Ranges that only touch do not overlap; equal ones do.
    bool isOverlapping(const AETimeRange& other) const;
    bool isEqual(const AETimeRange& other) const { return i == other.i && o == other.o; }
};
