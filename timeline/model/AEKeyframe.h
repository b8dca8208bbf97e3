#pragma once
// The points of a volume envelope: a level in dB at an asset time, its single-precision twin in linear
// gain, and the shape of one ducking dip.

#include "foundation/KeyedArchive.h"

#include <cstdint>
#include <memory>
#include <optional>

class AEKeyframe : public KeyedObject {
public:
    AEKeyframe(double time, double value, bool flag0 = false, bool flag1 = false);

    static constexpr const char* kClassName = "AEKeyframe";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    // Nothing when time or value is not finite: times are truncated onto the grid later.
    static std::shared_ptr<AEKeyframe> decode(KeyedUnarchiver& coder);

    double time;
    double value;
    bool flag0;
    bool flag1;
    // Index in its list, written by the list's sortKFs; neither is stored.
    std::optional<int64_t> pos;
    bool selected = false;

    std::shared_ptr<AEKeyframe> duplicate() const;
};

class AEKeyframeFloat : public KeyedObject {
public:
    AEKeyframeFloat(float time, float value);

    static constexpr const char* kClassName = "AEKeyframeFloat";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AEKeyframeFloat> decode(KeyedUnarchiver& coder);

    float time;
    float value; // linear gain, 1.0 = 0 dB
    std::optional<int64_t> pos;
    bool selected = false;

    std::shared_ptr<AEKeyframeFloat> duplicate() const;
};

class AEKeyFrameDuckPrefs : public KeyedObject {
public:
    AEKeyFrameDuckPrefs();

    static constexpr const char* kClassName = "AEKeyFrameDuckPrefs";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    // Missing keys read as 0; nothing when a value is not finite, so the list falls back to defaults.
    static std::shared_ptr<AEKeyFrameDuckPrefs> decode(KeyedUnarchiver& coder);

    double attackPreRoll = 0.3;
    double attackDuration = 0.8;
    double releasePreRoll = 0.4;
    double releaseDuration = 1.2;
    double decreaseDB = -12.0;
};
