#pragma once
// Levels measured and set with SoX. Blocking.

#include <QString>

// SoX's statistics table for the file ("RMS lev dB" and the rest), as it prints it.
QString soxUt_getStats(const QString& srcPath);
// The RMS level in dB of the last channel (the only one of a mono file; Right of a stereo one);
// "-inf" for digital silence. -12.0 when the statistics hold no such value (missing or unreadable file) and
// also when it is not a number, which is logged.
double soxUt_getRMSLevel(const QString& srcPath);
// The same read from a statistics table.
double soxUt_rmsLevelFromStats(const QString& stats);
// A copy of the source brought to rmsLevel dB RMS.
void soxUt_autoRMS(const QString& srcPath, const QString& dstPath, double rmsLevel);
