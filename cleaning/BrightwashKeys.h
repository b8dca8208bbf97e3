#pragma once
// Preference keys of the cleaning settings' per-key form. Where a read key and a write key differ,
// both are listed: the difference is deliberate (see BrightwashSetting.h).

namespace bwKeys {
inline constexpr const char* doDenoise = "doDenoise";
inline constexpr const char* doGate = "doGate";
inline constexpr const char* doCompressor = "doCompressor";
inline constexpr const char* doEq = "doEq";
inline constexpr const char* doRemoveHum = "doRemoveHum";
inline constexpr const char* doRemovePauses = "doRemovePauses";
inline constexpr const char* doEraseUhm = "doEraseUhm";
inline constexpr const char* denoiseAmount = "denoiseAmount";
inline constexpr const char* eqBands[8] = {"eq62", "eq125", "eq250", "eq500", "eq1k", "eq2k", "eq4k", "eq8k"};
inline constexpr const char* pauseMaxLength = "pauseMaxLength";
inline constexpr const char* pauseThresholdRead = "pauseThreshold";
inline constexpr const char* pauseThresholdWrite = "pausesThreshold";
inline constexpr const char* cleanFormat = "cleanFormat";
inline constexpr const char* cleanSuffix = "cleanSuffix";

inline constexpr const char* gateAutoThreshold = "BrightwashSettings.gate.autoThreshold";
inline constexpr const char* gateThreshold = "BrightwashSettings.gate.dbThreshold";
inline constexpr const char* gateDecay = "BrightwashSettings.gate.decay";
inline constexpr const char* gateMinDuration = "BrightwashSettings.gate.minDuration";
inline constexpr const char* gateFadeIn = "BrightwashSettings.gate.fadeInDuration";
inline constexpr const char* gateFadeOut = "BrightwashSettings.gate.fadeOutDuration";
inline constexpr const char* gateNoisy = "BrightwashSettings.gate.noisyEnironment";
inline constexpr const char* gateHysteresisRead = "BrightwashSettings.gate.hysteresisP";
inline constexpr const char* gateHysteresisWrite = "BrightwashSettings.gate.hysteresis";
inline constexpr const char* gateNormalize = "BrightwashSettings.gate.normalizeEachCluster";
inline constexpr const char* gatePreRoll = "BrightwashSettings.gate.preRoll";
inline constexpr const char* gateNoiseLevel = "BrightwashSettings.gate.environmentNoiseLevel";

inline constexpr const char* compRatioRead = "compressor.ratio";
inline constexpr const char* compGainRead = "compressor.gain";
inline constexpr const char* compAttackRead = "compressor.attack";
inline constexpr const char* compDecayRead = "compressor.decay";
inline constexpr const char* compRatioWrite = "BrightwashSettings.compressor.ratio";
inline constexpr const char* compGainWrite = "BrightwashSettings.compressor.gain";
inline constexpr const char* compAttackWrite = "BrightwashSettings.compressor.attack";
inline constexpr const char* compDecayWrite = "BrightwashSettings.compressor.decay";

inline constexpr const char* uhmInterval = "uhm.analisysInterval";
inline constexpr const char* uhmMinimumLength = "uhm.minimumLength";
inline constexpr const char* uhmThreshold = "uhm.threshold";
inline constexpr const char* uhmCrossDissolve = "uhm.crossDissolveMS";

inline constexpr const char* showRemovePauses = "brightwasher2.showRemovePauses";
inline constexpr const char* showUhmEraser = "brightwasher2.showUhmEraser";
} // namespace bwKeys
