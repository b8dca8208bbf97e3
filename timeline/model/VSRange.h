#pragma once
// A stretch of the scroller's axis, in seconds. Unlike AETimeRange it is not put on the time grid:
// the scroller's arithmetic must round-trip exactly.

struct VSRange {
    double i = 0;
    double o = 0;

    double length() const { return o - i; }
    double center() const { return (i + o) / 2.0; }
};
