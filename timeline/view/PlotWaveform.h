#pragma once
// The waveform picture of a stretch of an asset: one bar per pixel column from the 300-per-second
// summary, scaled by the item's envelope and gain. Columns are counted from the start of the asset
// in whole pixels, so a scrolled view shows the same bars shifted rather than new ones. Pictures are
// kept in the ImageCache under a key of all they depend on. Any thread.

#include "timeline/model/AETimeRange.h"

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>
#include <memory>
#include <vector>

class AEKeyframeList;

struct WaveformPlot {
    QString assetId;
    AETimeRange range; // asset seconds across the width
    QSize size;        // logical pixels
    // The view's scale; columns are counted from asset time 0 in these steps.
    double secondsPerPixel = 0;
    qreal devicePixelRatio = 1;
    QColor foreground;
    std::shared_ptr<const std::vector<float>> samples;
    double samplesPerSecond = 300;
    std::shared_ptr<const AEKeyframeList> volumeKF; // dB in asset time; may be null
    double gainDb = 0;
    bool singleBand = false;
    bool fast = false;
    bool forceDraw = false;
};

namespace PlotWaveform {
// Transparent where no bar is; an empty image for a range under 0.001 s.
QImage plotBySubsamples(const WaveformPlot& plot);
// The column, counted from the image's left edge, that shows asset time t.
int columnOf(const WaveformPlot& plot, double t);
} // namespace PlotWaveform
