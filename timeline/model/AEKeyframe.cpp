#include "timeline/model/AEKeyframe.h"

#include "foundation/Log.h"

#include <cmath>

namespace {
const bool registered = registerArchiveClass<AEKeyframe>() && registerArchiveClass<AEKeyframeFloat>() &&
                        registerArchiveClass<AEKeyFrameDuckPrefs>();
} // namespace

AEKeyframe::AEKeyframe(double time, double value, bool flag0, bool flag1)
    : time(time), value(value), flag0(flag0), flag1(flag1) {
    (void)registered;
}

void AEKeyframe::encode(KeyedArchiver& coder) const {
    coder.encodeDouble("time", time);
    coder.encodeDouble("value", value);
    coder.encodeBool("flag0", flag0);
    coder.encodeBool("flag1", flag1);
}

std::shared_ptr<AEKeyframe> AEKeyframe::decode(KeyedUnarchiver& coder) {
    const double time = coder.decodeDouble("time").value_or(0);
    const double value = coder.decodeDouble("value").value_or(0);
    if (!std::isfinite(time) || !std::isfinite(value)) {
        qxLog("AEKeyframe: unusable point in archive");
        return nullptr;
    }
    return std::make_shared<AEKeyframe>(time, value, coder.decodeBool("flag0").value_or(false),
                                        coder.decodeBool("flag1").value_or(false));
}

std::shared_ptr<AEKeyframe> AEKeyframe::duplicate() const {
    auto copy = std::make_shared<AEKeyframe>(time, value, flag0, flag1);
    copy->pos = pos;
    copy->selected = selected;
    return copy;
}

AEKeyframeFloat::AEKeyframeFloat(float time, float value) : time(time), value(value) {
    (void)registered;
}

void AEKeyframeFloat::encode(KeyedArchiver& coder) const {
    coder.encodeFloat("time", time);
    coder.encodeFloat("value", value);
}

std::shared_ptr<AEKeyframeFloat> AEKeyframeFloat::decode(KeyedUnarchiver& coder) {
    const float time = coder.decodeFloat("time").value_or(0);
    const float value = coder.decodeFloat("value").value_or(0);
    if (!std::isfinite(time) || !std::isfinite(value)) {
        qxLog("AEKeyframeFloat: unusable point in archive");
        return nullptr;
    }
    return std::make_shared<AEKeyframeFloat>(time, value);
}

std::shared_ptr<AEKeyframeFloat> AEKeyframeFloat::duplicate() const {
    auto copy = std::make_shared<AEKeyframeFloat>(time, value);
    copy->pos = pos;
    copy->selected = selected;
    return copy;
}

AEKeyFrameDuckPrefs::AEKeyFrameDuckPrefs() {
    (void)registered;
}

void AEKeyFrameDuckPrefs::encode(KeyedArchiver& coder) const {
    coder.encodeDouble("attackPreRoll", attackPreRoll);
    coder.encodeDouble("attackDuration", attackDuration);
    coder.encodeDouble("releasePreRoll", releasePreRoll);
    coder.encodeDouble("releaseDuration", releaseDuration);
    coder.encodeDouble("decreaseDB", decreaseDB);
}

std::shared_ptr<AEKeyFrameDuckPrefs> AEKeyFrameDuckPrefs::decode(KeyedUnarchiver& coder) {
    auto prefs = std::make_shared<AEKeyFrameDuckPrefs>();
    for (auto [key, field] : {std::pair{"attackPreRoll", &prefs->attackPreRoll},
                              std::pair{"attackDuration", &prefs->attackDuration},
                              std::pair{"releasePreRoll", &prefs->releasePreRoll},
                              std::pair{"releaseDuration", &prefs->releaseDuration},
                              std::pair{"decreaseDB", &prefs->decreaseDB}}) {
        *field = coder.decodeDouble(key).value_or(0);
        if (!std::isfinite(*field)) {
            qxLog("AEKeyFrameDuckPrefs: unusable dip shape in archive");
            return nullptr;
        }
    }
    return prefs;
}
