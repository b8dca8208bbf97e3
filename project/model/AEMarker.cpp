#include "project/model/AEMarker.h"

#include "foundation/Hallard.h"

namespace {
const bool registered = registerArchiveClass<AEMarker>();
} // namespace

AEMarker::AEMarker(double inTime, std::optional<double> outTime, AEMarkerType type, const QString& notes,
                   const std::optional<QString>& id)
    : id(id.value_or(hallard_getNewId())), inTime(inTime), outTime(outTime.value_or(inTime)), type(type),
      notes(notes) {
    (void)registered;
}

void AEMarker::encode(KeyedArchiver& coder) const {
    coder.encodeString("id", id);
    coder.encodeDouble("inTime", inTime);
    coder.encodeDouble("outTime", outTime);
    coder.encodeInt("type", static_cast<int64_t>(type));
    coder.encodeString("notes", notes);
}

std::shared_ptr<AEMarker> AEMarker::decode(KeyedUnarchiver& coder) {
    const auto notes = coder.decodeString("notes");
    const auto id = coder.decodeString("id");
    const int64_t type = coder.decodeInt("type").value_or(0);
    if (!notes || !id || type < 0 || type > 3) return nullptr;
    const double in = coder.decodeDouble("inTime").value_or(0);
    return std::make_shared<AEMarker>(in, coder.decodeDouble("outTime").value_or(in),
                                      static_cast<AEMarkerType>(type), *notes, *id);
}

std::shared_ptr<AEMarker> AEMarker::duplicate() const {
    return std::make_shared<AEMarker>(inTime, outTime, type, notes, id);
}

bool AEMarker::clicOnIt(double rangeIn, double rangeOut) const {
    return inTime >= rangeIn && inTime <= rangeOut;
}

QString AEMarker::markerImage(AEMarkerType type) {
    return type == AEMarkerType::chapter ? "Marker_Chapter" : "marker";
}
