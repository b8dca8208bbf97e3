#pragma once
// The gate's rebuild of a file from its clusters in one read and one write: each cluster with its
// leading silence, faded in and out on the sound tool's logarithmic curve, normalized to full scale on
// request. The result keeps the source's rate, channels and sample format.

#include "render/tools/Cluster.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

struct GateSpan {
    cluster span;
    double silenceBefore = 0; // none up to 0.01 s, as the tool's pad
    double fadeIn = 0;
    double fadeOut = 0;
};

// False with nothing at dst when the source cannot be read or dst cannot be written. `written` is
// called after each span with its number from 1.
bool gateRebuild(const QString& src, const QString& dst, const std::vector<GateSpan>& spans,
                 bool normalizeEach, const std::function<void(int)>& written);
