#pragma once
// How an asset behaves as background music: whether it loops, ducks, and how long it fades out.

#include "foundation/KeyedArchive.h"

#include <memory>
#include <optional>

class AEBGMSettings : public KeyedObject {
public:
    explicit AEBGMSettings(bool loopable = true, double fadeOut = 5.0, std::optional<bool> autoduck = true)
        : loopable(loopable), autoduck(autoduck), fadeOut(fadeOut) {}

    static constexpr const char* kClassName = "AEBGMSettings";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AEBGMSettings> decode(KeyedUnarchiver& coder);

    bool loopable;
    std::optional<bool> autoduck;
    double fadeOut;
};
