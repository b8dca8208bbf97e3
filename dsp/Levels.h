#pragma once
// Level conversions shared by envelopes, players and the mixdown.

#include <cmath>

inline double aUt_dbToDouble(double db) {
    return std::pow(10.0, 0.05 * db);
}

// dB of a 16-bit magnitude.
inline double aUt_percToDb(double value) {
    return 20.0 * std::log10(value / 32767.0);
}
