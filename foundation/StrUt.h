#pragma once
// Number-to-text helpers. Everything here is locale-free: the application runs in the user's
// locale, but files, logs and tool arguments must read the same everywhere.

#include <QString>
#include <cstdint>

// Leading zeros up to two, three or n digits; a minus sign goes before the zeros ("-05").
QString strUt_pad2(int64_t value);
QString strUt_pad3(int64_t value);
QString strUt_padN(int64_t value, int n);

// Fixed notation with exactly `decimals` digits after the point, correctly rounded: (2.25, 1) -> "2.2".
QString strUt_doubleToString(double value, int decimals);

// The plain decimal print used for every number handed to external tools and archives: the
// shortest text that reads back to the same double, always with a fraction ("1.0", "0.25",
// "-24.0"). Magnitudes below 1e-4 or from 1e16 up use an exponent ("1e-07", "1e+21"); NaN and the
// infinities print as "nan", "inf", "-inf", which strtod accepts.
QString strUt_doublePrint(double value);

// Every character of text that is not in accepted becomes replacement, one for one.
QString strUt_acceptChars(const QString& text, const QString& accepted, const QString& replacement);
