#pragma once
// Durations as the user reads them. Seconds are non-negative; fractions are truncated, never
// rounded, so a timecode never shows a frame that has not yet begun.

#include <QString>
#include <cstdint>

// Hours, minutes and seconds of a whole count of seconds.
void tc_getHHMMSS(int64_t seconds, int64_t& hh, int64_t& mm, int64_t& ss);

// "01:01:01"
QString tc_getIntegerTimecode(double seconds);
// "00:01:05.250": milliseconds.
QString tc_getFloatTimecode(double t);
// "00:01:05.2": tenths.
QString tc_getFloatTimecodeX(double t);
// "00:01:05:12": frames of `timeBase` a second.
QString tc_getHHMMSSFF(double t, double timeBase);
// "61:05": minutes are not folded into hours.
QString tc_getMMSS(float t);
// "5s", "2m 05s", "1h 02m 05s"
QString tc_getReadableDuration(double seconds);
// "2m", "1h 02m"
QString tc_getReadableDurationHMM(double seconds);
// "30.0s", "2.5m", "1.2h": one decimal digit in the largest unit reached.
QString tc_getDurationShort(double seconds);
