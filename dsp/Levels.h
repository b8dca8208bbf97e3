#pragma once
// Level conversions shared by envelopes, players and the mixdown.

#include <cmath>

inline double aUt_log10(double x) {
    return std::log(x) / std::log(10.0);
}

inline double aUt_dbToDouble(double db) {
    return std::pow(10.0, 0.05 * db);
}

// dB of a ratio to full scale: callers holding 16-bit data divide by 32767 first.
inline double aUt_percToDb(double x) {
    return 20.0 * aUt_log10(x);
}
