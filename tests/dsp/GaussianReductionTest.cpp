#include "dsp/GaussianReduction.h"

#include "dsp/AUAudioGate.h"

#include <gtest/gtest.h>
#include <vector>

using V = std::vector<double>;

TEST(GaussianReduction, ShapeReadings) {
    struct Case {
        V a;
        bool gauss;
        bool doubleGauss;
        size_t valley;
    };
    const std::vector<Case> cases{
        {{1, 3, 5, 3, 1}, false, true, 5},     // one hump but two falling steps; no valley: the count
        {{3, 2, 1}, false, true, 3},           // strictly falling: two falls
        {{1, 5, 2, 1, 3}, false, true, 4},     // the first rise after the fall
        {{1, 3, 1, 3, 1}, false, true, 3},     // two humps
        {{1, 3, 1, 3, 1, 3}, false, false, 3}, // a third rise
        {{2, 2, 2}, true, true, 3},            // flat: nothing falls
        {{1, 2, 4, 3}, true, true, 4},         // one falling step
    };
    for (const Case& c : cases) {
        EXPECT_EQ(GaussianReduction::isGauss(c.a), c.gauss);
        EXPECT_EQ(GaussianReduction::isDoubleGauss(c.a), c.doubleGauss);
        EXPECT_EQ(GaussianReduction::getValley(c.a), c.valley);
    }
    EXPECT_EQ(GaussianReduction::getMaxIndex(V{1, 7, 3, 7}), 1u);
    // p starts at the first value and meets the others from the end.
    EXPECT_EQ(GaussianReduction::getFirstPeak(V{9, 1, 4, 2, 0}), 4u);
    EXPECT_EQ(GaussianReduction::getFirstPeak(V{0, 0, 0}), 0u);
}

TEST(GaussianReduction, SpikesAndSmoothing) {
    EXPECT_EQ(GaussianReduction::filterSpikes(V{4, 0, 5, 0, 2, 3, 0, 7}), (V{0, 0, 0, 0, 2, 3, 0, 0}));
    EXPECT_EQ(GaussianReduction::smooth(V{0, 3, 0}), (V{1.5, 1, 1.5}));
    const V ragged{0, 9, 1, 8, 2, 7, 1, 9, 0, 5, 0, 6, 1};
    EXPECT_TRUE(GaussianReduction::isDoubleGauss(GaussianReduction::reduceTo2(ragged)));
    EXPECT_EQ(GaussianReduction::reduceTo1(V{0, 1, 2, 0}), (V{0, 1, 2, 0})); // already one falling step
}

TEST(AUAudioGate, StateMachineAndRamps) {
    // attack 2, decay 4, thresholds 0.5 / 0.2, closed gain 0.1.
    AUAudioGate gate(2, 0.5f, 4, 0.2f, 0.1f);
    struct Step {
        float in;
        AudioGateStatus status;
        float out;
    };
    const std::vector<Step> steps{
        {0.3f, AudioGateStatus::opened, 0.3f},           // at or above the decay threshold: open
        {0.2f, AudioGateStatus::opened, 0.2f},           // exactly at it: no change
        {0.1f, AudioGateStatus::closing, 0.1f * 0.775f}, // (4 − 1) ÷ 4 × 0.9 + 0.1
        {1.0f, AudioGateStatus::closing, 1.0f * 0.55f},  // the ramp goes on whatever comes in
        {1.0f, AudioGateStatus::closing, 1.0f * 0.325f}, {1.0f, AudioGateStatus::closed, 0.1f},
        {0.5f, AudioGateStatus::closed, 0.05f},         // exactly at the attack threshold: no change
        {0.8f, AudioGateStatus::opening, 0.8f * 0.55f}, // 1 ÷ 2 × 0.9 + 0.1
        {0.8f, AudioGateStatus::opened, 0.8f},           {0.8f, AudioGateStatus::opened, 0.8f},
    };
    for (size_t i = 0; i < steps.size(); ++i) {
        EXPECT_NEAR(gate.newSample(steps[i].in), steps[i].out, 1e-6) << "step " << i;
        EXPECT_EQ(gate.status, steps[i].status) << "step " << i;
    }
    // A one-value attack opens at once.
    AUAudioGate quick(1, 0.5f, 3, 0.2f, 0.0f);
    quick.status = AudioGateStatus::closed;
    EXPECT_FLOAT_EQ(quick.newSample(0.9f), 0.9f);
    EXPECT_FLOAT_EQ(quick.newSample(0.7f), 0.7f);
    EXPECT_EQ(quick.status, AudioGateStatus::opened);
}
