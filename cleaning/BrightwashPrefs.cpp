#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashKeys.h"
#include "foundation/Prefs.h"
#include "render/tools/SoxFilters.h"

using namespace bwKeys;

BrightwashSetting Brightwash::loadSettings() {
    BrightwashSetting s;
    s.doDenoiser = prefs_getValueBool(doDenoise, false);
    s.doNoiseGate = prefs_getValueBool(doGate, true);
    s.doCompressor = prefs_getValueBool(doCompressor, true);
    s.doEqualizer = prefs_getValueBool(doEq, false);
    s.doRemoveHum = prefs_getValueBool(doRemoveHum, true);
    s.doRemovePauses = prefs_getValueBool(doRemovePauses, false);
    s.doEraseUhm = prefs_getValueBool(doEraseUhm, false);
    s.denoiserLevel = prefs_getValueDouble(denoiseAmount, 0.1);

    BWGateSettings& g = s.gate;
    g.autoThreshold = prefs_getValueBool(gateAutoThreshold, true);
    g.threshold = prefs_getValueDouble(gateThreshold, -40.0);
    g.decay = prefs_getValueDouble(gateDecay, 0.5);
    g.minDuration = prefs_getValueDouble(gateMinDuration, 0.5);
    g.fadeInDuration = prefs_getValueDouble(gateFadeIn, 0.3);
    g.fadeOutDuration = prefs_getValueDouble(gateFadeOut, 0.7);
    g.noisyEnironment = prefs_getValueBool(gateNoisy, true);
    g.hysteresis = prefs_getValueDouble(gateHysteresisRead, 15.0);
    g.normalizeEachCluster = prefs_getValueBool(gateNormalize, false);
    g.preRoll = prefs_getValueDouble(gatePreRoll, 0.2);
    g.environmentNoiseLevel = prefs_getValueDouble(gateNoiseLevel, 1.0);

    BWCompressorSetings& c = s.compressor;
    c.ratio = prefs_getValueDouble(compRatioRead, 5.0);
    c.gain = prefs_getValueDouble(compGainRead, -12.0);
    c.attack = prefs_getValueDouble(compAttackRead, 0.3);
    c.decay = prefs_getValueDouble(compDecayRead, 1.0);

    std::vector<double> gains;
    for (const char* key : eqBands)
        gains.push_back(prefs_getValueDouble(key, 0.0));
    s.equalizer = soxUt_getStandardEq(gains);

    s.pauseLength = prefs_getValueDouble(pauseMaxLength, 0.2);
    s.pausesThreshold = prefs_getValueDouble(pauseThresholdRead, -25.0);

    BWUhmSettings& u = s.uhmPrefs;
    u.analisysInterval = static_cast<int>(prefs_getValueInt(uhmInterval, 16));
    u.minimumLength = prefs_getValueDouble(uhmMinimumLength, 0.3);
    u.threshold = static_cast<float>(prefs_getValueDouble(uhmThreshold, 0.1));
    u.crossDissolveMS = static_cast<int>(prefs_getValueInt(uhmCrossDissolve, 10));

    s.exportFormat = exportFormatFromString(prefs_getValueString(cleanFormat, "wave"));
    s.suffix = prefs_getValueString(cleanSuffix, "cln");
    return s;
}

void Brightwash::saveSettings(const BrightwashSetting& s) {
    prefs_setValueString(cleanSuffix, s.suffix);
    prefs_setValueString(cleanFormat, toString(s.exportFormat));
    prefs_setValueDouble(denoiseAmount, s.denoiserLevel);
    for (size_t i = 0; i < 8; ++i)
        prefs_setValueDouble(eqBands[i], i < s.equalizer.size() ? s.equalizer[i].gain : 0.0);
    prefs_setValueBool(doRemoveHum, s.doRemoveHum);

    const BWGateSettings& g = s.gate;
    prefs_setValueBool(gateAutoThreshold, g.autoThreshold);
    prefs_setValueDouble(gateThreshold, g.threshold);
    prefs_setValueDouble(gateDecay, g.decay);
    prefs_setValueDouble(gateMinDuration, g.minDuration);
    prefs_setValueDouble(gateFadeIn, g.fadeInDuration);
    prefs_setValueDouble(gateFadeOut, g.fadeOutDuration);
    prefs_setValueDouble(gateHysteresisWrite, g.hysteresis);
    prefs_setValueDouble(gateHysteresisWrite, g.hysteresis);
    prefs_setValueBool(gateNormalize, g.normalizeEachCluster);

    prefs_setValueDouble(compRatioWrite, s.compressor.ratio);
    prefs_setValueDouble(compGainWrite, s.compressor.gain);
    prefs_setValueDouble(compAttackWrite, s.compressor.attack);
    prefs_setValueDouble(compDecayWrite, s.compressor.decay);

    prefs_setValueDouble(pauseThresholdWrite, s.pausesThreshold);
    prefs_setValueDouble(pauseMaxLength, s.pauseLength);

    prefs_setValueInt(uhmInterval, s.uhmPrefs.analisysInterval);
    prefs_setValueDouble(uhmMinimumLength, s.uhmPrefs.minimumLength);
    prefs_setValueDouble(uhmThreshold, double(s.uhmPrefs.threshold));
    prefs_setValueInt(uhmCrossDissolve, s.uhmPrefs.crossDissolveMS);

    prefs_setValueBool(doGate, s.doNoiseGate);
    prefs_setValueBool(doCompressor, s.doCompressor);
    prefs_setValueBool(doDenoise, s.doDenoiser);
    prefs_setValueBool(doEq, s.doEqualizer);
    prefs_setValueBool(doRemovePauses, s.doRemovePauses);
    prefs_setValueBool(doEraseUhm, s.doEraseUhm);
}

void Brightwash::disableUhm() {
    prefs_setValueBool(showUhmEraser, false);
    prefs_setValueBool(doEraseUhm, false);
}

void Brightwash::disableRemovePauses() {
    prefs_setValueBool(showRemovePauses, false);
}
