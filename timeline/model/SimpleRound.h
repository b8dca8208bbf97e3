#pragma once
// The timeline's time grid: every stored time is truncated (not rounded) to 1/128 s, so that times
// that went through it compare exactly.

#include <cmath>

double simpleRound(double x);

// Whether simpleRound can take the value; anything read from a file is checked with this first.
inline bool simpleRoundAccepts(double x) {
    return std::isfinite(x) && std::fabs(x * 128.0) < 9.2e18;
}
