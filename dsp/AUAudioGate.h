#pragma once
// An envelope gate over a stream of values: opens when a value rises above attackThreshold, closes
// when one falls below decayThreshold, with linear ramps of attackInSamples and decayInSamples values.
// While closed it passes gateAmount of each value. One thread at a time.

enum class AudioGateStatus : int { opened = 0, closing = 1, closed = 2, opening = 3 };

class AUAudioGate {
public:
    AUAudioGate(float attackInSamples, float attackThreshold, float decayInSamples, float decayThreshold,
                float gateAmount);

    float attackInSamples;
    float attackThreshold;
    float decayInSamples;
    float decayThreshold;
    float gateAmount;
    AudioGateStatus status = AudioGateStatus::opened;
    float event = 0.0f; // values since the last change of state

    float newSample(float x);

private:
    float closingGain() const;
    float openingGain() const;
};
