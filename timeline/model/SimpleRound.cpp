#include "timeline/model/SimpleRound.h"

#include <QtGlobal>
#include <cstdint>

double simpleRound(double x) {
    // A non-finite time is a programming error: files are checked before their values get here.
    if (!simpleRoundAccepts(x)) qFatal("simpleRound: time out of range (%f)", x);
    return static_cast<double>(static_cast<int64_t>(x * 128.0)) / 128.0;
}
