// Pixel probes of the lanes image at places computed from the model.
#include "WidgetFixture.h"
#include "project/model/AESubsamples.h"
#include "project/model/AssetColors.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/view/PlotWaveform.h"

namespace {
bool near(const QColor& a, const QColor& b, int tolerance = 2) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}
} // namespace

class TimelineDrawingTest : public WidgetFixture {};

TEST_F(TimelineDrawingTest, ItemsStartAtTheirTimeInTheColourOfTheirState) {
    const auto& items = tl->mainLane;
    const auto background = [](const AETimeLine::Item& item) {
        return AEColors::getAssetColor(item->asset->type, true).background;
    };
    // Below the name, where no waveform is (the assets have no summary).
    for (const auto& item : items) {
        // Clear of the border and the edge handle.
        const QPoint inside = at(item->inTime, 0, 0.4) + QPoint(6, 0);
        EXPECT_TRUE(near(pixel(inside), background(item)))
            << item->asset->name.toStdString() << pixel(inside).name().toStdString();
        const int left = static_cast<int>(std::round(tl->timeToX(item->inTime)));
        if (left > 0) {
            EXPECT_FALSE(near(pixel(QPoint(left - 3, inside.y())), background(item)))
                << "the item reaches left of its time";
        }
    }
    EXPECT_FALSE(near(background(items[0]), background(items[1]))) << "speech and jingle look alike";

    items[1]->selected = true;
    items[2]->active = false;
    widget->redrawNow();
    const auto colours = AEColors::getAssetColor(AEAssetType::jingle, true);
    EXPECT_TRUE(near(pixel(at(25, 0, 0.4)), colours.foreground)) << "selected: colours swapped";
    EXPECT_TRUE(near(pixel(at(35, 0, 0.4)), AEColors::getVeryDesaturatedColor(background(items[2]))));
    const QColor off = pixel(at(35, 0, 0.4));
    EXPECT_LT(off.hsvSaturation(), 40) << "a deactivated item is nearly grey";
}

TEST_F(TimelineDrawingTest, WaveformPeakBarFallsWhereTheSummaryPeaks) {
    // Quiet everywhere but one loud value 7.5 s into the asset; the item shows it from 2 s.
    auto& a = *tl->mainLane[0]->asset;
    a.subsamples = std::make_shared<AESubsamples>();
    std::vector<float> values(static_cast<size_t>(30 * 300), 300.0f);
    values[static_cast<size_t>(7.5 * 300)] = 30000.0f;
    a.subsamples->setSamples(values);
    a.subsamples->loaded = true;
    tl->mainLane[0]->range = AETimeRange(2, 20);
    tl->refillMainLaneInTime();
    widget->redrawNow();

    const QRectF lane = TimelinePainter::toImage(tl->getItemRect(tl->mainLane[0]), kCanvasHeight);
    int tallestX = -1;
    int tallest = 0;
    const QColor wave = AEColors::getAssetColor(AEAssetType::speech, true).foreground;
    for (int x = static_cast<int>(lane.left()) + 2; x < static_cast<int>(lane.right()) - 2; ++x) {
        int height = 0;
        for (int y = static_cast<int>(lane.bottom()) - 2;
             y > lane.top() && near(pixel(QPoint(x, y)), wave, 8); --y)
            ++height;
        if (height > tallest) {
            tallest = height;
            tallestX = x;
        }
    }
    const double expected = tl->timeToX(7.5 - 2 + tl->mainLane[0]->inTime);
    EXPECT_NEAR(tallestX, expected, 1.0);
    EXPECT_GT(tallest, lane.height() * 0.8);
}

TEST_F(TimelineDrawingTest, HandlesOnlyOnItemsFortyPixelsWide) {
    // At 25 px/s the 4 s effect is 100 px wide; at 1000 s on screen 1 px a second.
    const auto handlesOf = [&](const AETimeLine::Item& item) {
        const auto ys = tl->laneToYs(item->lane);
        int n = 0;
        for (const auto& area : tl->dragAreaView->dragAreas)
            if (area->rect.y() == ys->first && area->rect.left() >= tl->timeToX(item->inTime) - 0.5 &&
                area->rect.right() <= tl->timeToX(item->outTime()) + 0.5)
                ++n;
        return n;
    };
    EXPECT_EQ(handlesOf(effect), 2);
    tl->virtualScroller->setTotalRange(0, 2000);
    show(0, 1000);
    EXPECT_EQ(handlesOf(effect), 0);
    EXPECT_EQ(handlesOf(tl->mainLane[0]), 0) << "20 px";
    EXPECT_EQ(handlesOf(tl->mainLane[2]), 0) << "30 px";
}

TEST_F(TimelineDrawingTest, KeyframePointDrawnAtItsTimeAndLevel) {
    auto& item = *tl->mainLane[0];
    item.volumeKFs->setKeyframe(5.0, -6.0);
    item.volumeKFs->setKeyframe(12.0, -30.0);
    item.updateGlobalKFs();
    widget->redrawNow();
    const auto& kf = *item.kfView;
    const QPoint point = widget->laneToWidget(kf.time2Loc(12.0), kf.value2Loc(-30.0)).toPoint();
    EXPECT_NEAR(point.x(), tl->timeToX(12.0), 1.0);
    const QPoint above = point + QPoint(0, -30);
    const QColor withPoint = pixel(point);
    const QColor aboveWith = pixel(above);
    AEPreferences::displayVolumeKFs = false;
    widget->redrawNow();
    EXPECT_NE(pixel(point), withPoint) << "nothing drawn at the point";
    EXPECT_EQ(pixel(above), aboveWith) << "drawn away from the point";
}

TEST_F(TimelineDrawingTest, ItemOnALaneNotLaidOutIsDrawnAfterTheLanesAreCleaned) {
    effect->lane = 3; // lanes 2 and 3 do not exist
    widget->redrawNow();
    ASSERT_TRUE(tl->laneToYs(effect->lane)) << "still on no lane";
    EXPECT_TRUE(near(pixel(at(4, effect->lane, 0.4) + QPoint(6, 0)),
                     AEColors::getAssetColor(AEAssetType::effect, true).background));
}

TEST_F(TimelineDrawingTest, WaveformColumnsAreCountedFromTheAssetStart) {
    // Scrolling by a part of a pixel shows the same picture, moved by whole pixels.
    WaveformPlot plot;
    plot.secondsPerPixel = 0.04;
    plot.size = QSize(200, 40);
    plot.range = AETimeRange(1.003, 1.003 + 8);
    const int before = PlotWaveform::columnOf(plot, 3.0);
    plot.range = AETimeRange(1.013, 1.013 + 8);
    EXPECT_EQ(PlotWaveform::columnOf(plot, 3.0), before);
    plot.range = AETimeRange(1.043, 1.043 + 8);
    EXPECT_EQ(PlotWaveform::columnOf(plot, 3.0), before - 1);
}
