#pragma once
// One lane of the timeline as laid out on screen; rebuilt by the lane layout, never persisted.

#include <cstdint>

class AELane {
public:
    AELane(int64_t n, double y, double height) : n(n), y(y), height(height) {}
    int64_t n;
    double y;
    double height;
    bool mute = false;
    bool solo = false;
};
