#include "foundation/Timecode.h"

#include "foundation/StrUt.h"

#include <cmath>

namespace {
int64_t wholeSeconds(double t) {
    return static_cast<int64_t>(t);
}

double fraction(double t) {
    return t - std::trunc(t);
}
} // namespace

void tc_getHHMMSS(int64_t seconds, int64_t& hh, int64_t& mm, int64_t& ss) {
    ss = seconds % 60;
    const int64_t minutes = seconds / 60;
    mm = minutes % 60;
    hh = minutes / 60;
}

QString tc_getIntegerTimecode(double seconds) {
    int64_t hh = 0, mm = 0, ss = 0;
    tc_getHHMMSS(wholeSeconds(seconds), hh, mm, ss);
    return strUt_pad2(hh) + ":" + strUt_pad2(mm) + ":" + strUt_pad2(ss);
}

QString tc_getFloatTimecode(double t) {
    return tc_getIntegerTimecode(t) + "." + strUt_pad3(static_cast<int64_t>(fraction(t) * 1000.0));
}

QString tc_getFloatTimecodeX(double t) {
    return tc_getIntegerTimecode(t) + "." + QString::number(static_cast<int64_t>(fraction(t) * 10.0));
}

QString tc_getHHMMSSFF(double t, double timeBase) {
    return tc_getIntegerTimecode(t) + ":" + strUt_pad2(static_cast<int64_t>(fraction(t) * timeBase));
}

QString tc_getMMSS(float t) {
    const int64_t seconds = static_cast<int64_t>(t);
    return strUt_pad2(seconds / 60) + ":" + strUt_pad2(seconds % 60);
}

QString tc_getReadableDuration(double seconds) {
    int64_t hh = 0, mm = 0, ss = 0;
    tc_getHHMMSS(wholeSeconds(seconds), hh, mm, ss);
    if (hh > 0) return QString::number(hh) + "h " + strUt_pad2(mm) + "m " + strUt_pad2(ss) + "s";
    if (mm > 0) return QString::number(mm) + "m " + strUt_pad2(ss) + "s";
    return QString::number(ss) + "s";
}

QString tc_getReadableDurationHMM(double seconds) {
    int64_t hh = 0, mm = 0, ss = 0;
    tc_getHHMMSS(wholeSeconds(seconds), hh, mm, ss);
    if (hh > 0) return QString::number(hh) + "h " + strUt_pad2(mm) + "m";
    return QString::number(mm) + "m";
}

QString tc_getDurationShort(double seconds) {
    if (seconds >= 3600.0) return strUt_doubleToString(seconds / 3600.0, 1) + "h";
    if (seconds >= 60.0) return strUt_doubleToString(seconds / 60.0, 1) + "m";
    return strUt_doubleToString(seconds, 1) + "s";
}
