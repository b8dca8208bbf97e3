#pragma once
// Two channels of 32-bit float, equal length by convention.

#include <vector>

struct StereoFloat {
    std::vector<float> l;
    std::vector<float> r;
};
