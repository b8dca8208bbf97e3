#pragma once
// Paints a timeline's lanes into one image: lane bands, every visible item plotted into its own small
// image in parallel and copied in order, envelopes, link lines, edge handles and the ruler on top.
// The image is y-down; the model's lane space is y-up from the image's bottom. Main thread (the
// item plots run on the pool while the caller waits).

#include <QImage>
#include <QRectF>
#include <QSize>

class AETimeLine;

namespace TimelinePainter {
struct Options {
    qreal devicePixelRatio = 1;
    bool singleBand = false;
    bool showVolumeKFs = true;
};

struct Result {
    QImage image;
    // Some visible item still waits for its waveform summary.
    bool waitingForSummaries = false;
};

// Lanes are laid out on the height left under the ruler.
int lanesHeightFor(int imageHeight);
Result draw(AETimeLine& timeline, QSize size, const Options& options);
// Lane space (y up from the bottom of an image of that height) to image coordinates.
QRectF toImage(const QRectF& laneRect, double imageHeight);
} // namespace TimelinePainter
