#include "timeline/model/AETimeRange.h"

#include "foundation/Log.h"
#include "timeline/model/SimpleRound.h"

namespace {
const bool registered = registerArchiveClass<AETimeRange>();
} // namespace

AETimeRange::AETimeRange(double in, double out) : i(::simpleRound(in)), o(::simpleRound(out)) {
    (void)registered;
}

void AETimeRange::encode(KeyedArchiver& coder) const {
    coder.encodeDouble("i", i);
    coder.encodeDouble("o", o);
}

std::shared_ptr<AETimeRange> AETimeRange::decode(KeyedUnarchiver& coder) {
    const auto in = coder.decodeDouble("i");
    const auto out = coder.decodeDouble("o");
    if (!in || !out || !simpleRoundAccepts(*in) || !simpleRoundAccepts(*out)) {
        qxLog("AETimeRange: unusable range in archive");
        return nullptr;
    }
    return std::make_shared<AETimeRange>(*in, *out);
}

AETimeRange AETimeRange::simpleRound() const {
    return AETimeRange(i, o);
}

double AETimeRange::center() const {
    return ::simpleRound((i + o) / 2.0);
}

bool AETimeRange::isOverlapping(const AETimeRange& other) const {
    return other.isContained(i) || other.isContained(o) || isContained(other.i) || isContained(other.o) ||
           isEqual(other);
}
