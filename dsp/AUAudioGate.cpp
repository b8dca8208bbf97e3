#include "dsp/AUAudioGate.h"

#include <algorithm>

AUAudioGate::AUAudioGate(float attackInSamples, float attackThreshold, float decayInSamples,
                         float decayThreshold, float gateAmount)
    : attackInSamples(attackInSamples), attackThreshold(attackThreshold), decayInSamples(decayInSamples),
      decayThreshold(decayThreshold), gateAmount(gateAmount) {}

// Ramps never leave gateAmount...1, and a state is reached once its length has passed, so that a
// one-value attack opens at once instead of ramping past full gain.
float AUAudioGate::closingGain() const {
    return std::clamp((decayInSamples - event) / decayInSamples, 0.0f, 1.0f) * (1.0f - gateAmount) +
           gateAmount;
}

float AUAudioGate::openingGain() const {
    return std::clamp(event / attackInSamples, 0.0f, 1.0f) * (1.0f - gateAmount) + gateAmount;
}

float AUAudioGate::newSample(float x) {
    event += 1.0f;
    switch (status) {
    case AudioGateStatus::opened:
        if (decayThreshold > x) {
            event = 1.0f;
            status = AudioGateStatus::closing;
            return x * closingGain();
        }
        return x;
    case AudioGateStatus::closing:
        if (event >= decayInSamples) {
            status = AudioGateStatus::closed;
            return x * gateAmount;
        }
        return x * closingGain();
    case AudioGateStatus::closed:
        if (x > attackThreshold) {
            event = 1.0f;
            status = AudioGateStatus::opening;
            return x * openingGain();
        }
        return x * gateAmount;
    case AudioGateStatus::opening:
        if (event >= attackInSamples) status = AudioGateStatus::opened;
        return x * openingGain();
    }
    return x;
}
