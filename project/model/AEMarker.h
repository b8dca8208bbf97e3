#pragma once
// A note fixed to a moment of an asset, in asset time, so it travels with the audio through cuts
// and moves. A point when outTime equals inTime, else a range.

#include "foundation/KeyedArchive.h"

#include <QString>
#include <memory>
#include <optional>

enum class AEMarkerType { normal = 0, bgmStart = 1, uhm = 2, chapter = 3 };

class AEMarker : public KeyedObject {
public:
    AEMarker(double inTime, std::optional<double> outTime = std::nullopt,
             AEMarkerType type = AEMarkerType::normal, const QString& notes = QString(),
             const std::optional<QString>& id = std::nullopt);

    static constexpr const char* kClassName = "AEMarker";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AEMarker> decode(KeyedUnarchiver& coder);

    QString id;
    double inTime;
    double outTime;
    AEMarkerType type;
    QString notes;

    // Same fields, same id.
    std::shared_ptr<AEMarker> duplicate() const;
    std::shared_ptr<AEMarker> copy() const { return duplicate(); }
    // The marker's start lies within [i, o].
    bool clicOnIt(double rangeIn, double rangeOut) const;
    static QString markerImage(AEMarkerType type);
};
