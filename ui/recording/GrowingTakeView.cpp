#include "ui/recording/GrowingTakeView.h"

#include "project/model/AEAsset.h"
#include "project/model/AESubsamples.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"

#include <QPainter>
#include <algorithm>

namespace {
// The summary's full scale: 0 dB from the meter.
constexpr double kFullScale = 15360.0;
} // namespace

GrowingTakeView::GrowingTakeView(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(60);
}

void GrowingTakeView::setTimeline(std::shared_ptr<AETimeLine> timeline) {
    timeline_ = std::move(timeline);
    update();
}

void GrowingTakeView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), palette().base());
    if (!timeline_) return;
    const AETimeRange view = timeline_->currentViewRange;
    const double span = std::max(0.001, view.o - view.i);
    const auto toX = [&](double t) { return (t - view.i) / span * width(); };
    const double mid = height() / 2.0;
    for (const auto& item : timeline_->mainLane) {
        const double x0 = std::max(0.0, toX(item->inTime));
        const double x1 = std::min<double>(width(), toX(item->inTime + item->range.o - item->range.i));
        p.fillRect(QRectF(x0, 2, x1 - x0, height() - 4), item->asset->plotBGColor);
        p.setPen(item->asset->plotFGColor);
        for (int x = static_cast<int>(x0); x < static_cast<int>(x1); ++x) {
            const double t = view.i + x * span / width() - item->inTime + item->range.i;
            const double v = std::clamp(item->asset->subsamples->getSample(t, false) / kFullScale, 0.0, 1.0);
            p.drawLine(QPointF(x, mid - v * (mid - 3)), QPointF(x, mid + v * (mid - 3)));
        }
        p.setPen(QColor(255, 200, 0));
        for (const auto& marker : item->markers) {
            const double x = toX(item->inTime + marker->inTime - item->range.i);
            p.drawLine(QPointF(x, 0), QPointF(x, height()));
        }
    }
}
