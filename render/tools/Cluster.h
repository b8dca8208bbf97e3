#pragma once
// A span of speech in a source file. Lists of clusters are sorted by time and do not overlap.

struct cluster {
    double inPoint = 0.0;  // seconds from the start of the source
    double endPoint = 0.0; // seconds from the start of the source

    double duration() const { return endPoint - inPoint; }
};
