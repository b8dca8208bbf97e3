#pragma once
// Filters and noise reduction with SoX. Each call replaces its destination and blocks until done.

#include "render/tools/BWEqBandSettings.h"

#include <QString>
#include <vector>

// Keeps lowFreqCut...hiFreqCut Hz. isForSync also makes the result mono 16-bit and lifts 500 Hz.
void soxUt_bandPass(const QString& srcFilePath, const QString& dstFilePath, double lowFreqCut,
                    double hiFreqCut, bool isForSync);
// Bands in list order; removeHum is the hum frequency in Hz to cut deeply, 0 for none.
void soxUt_equalize(const QString& srcFilePath, const QString& dstFilePath,
                    const std::vector<BWEqBandSettings>& equalizerValues, double removeHum);
// Levels above -30 dB are compressed by `ratio`; gain in dB; attack and decay in seconds.
void soxUt_compressor(const QString& srcFilePath, const QString& dstFilePath, double ratio, double gain,
                      double attack, double decay);
// soxUt_equalize, then soxUt_compressor, in one run.
void soxUt_eqComp(const QString& srcFilePath, const QString& dstFilePath, double ratio, double gain,
                  double attack, double decay, const std::vector<BWEqBandSettings>& equalizerValues,
                  double removeHum);
// Octave bands 62.5 Hz...8 kHz with the given gains in order; missing gains are 0, extra ones unused.
std::vector<BWEqBandSettings> soxUt_getStandardEq(const std::vector<double>& gainList);
// Learns the noise from a stretch with no speech in it.
void soxUt_getNoiseProfile(const QString& srcFilePath, const QString& noiseProfilePath);
// amount 0...1: how much of the profiled noise to take out.
void soxUt_denoise(const QString& srcFilePath, const QString& noiseProfilePath, const QString& dstFilePath,
                   double amount);
