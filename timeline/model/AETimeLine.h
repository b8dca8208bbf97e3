#pragma once
// Interim timeline: an episode only asks its timeline for its total duration so far. The edit model
// with its lanes, items and file replaces this.

class AETimeLine {
public:
    double getTotalDuration() const { return totalDuration; }
    double totalDuration = 0;
};
