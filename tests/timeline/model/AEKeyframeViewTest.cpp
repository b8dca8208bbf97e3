#include "timeline/model/AEKeyframeView.h"

#include <QString>
#include <QStringList>
#include <cmath>
#include <gtest/gtest.h>

namespace {
struct Recorder : AEKeyframeDrag {
    QStringList calls;
    void volumeKFDragStart(QPointF p, double v) override {
        calls << QString("start %1 %2 %3").arg(p.x()).arg(p.y()).arg(v);
    }
    void volumeKFDrag(QPointF p, double v) override {
        calls << QString("drag %1 %2 %3").arg(p.x()).arg(p.y()).arg(v);
    }
    void volumeKFDragStop() override { calls << "stop"; }
};

// 10 px per second from x = 100 and 1 px per dB with -60 dB at y = 50; marks of 8 x 6 px.
std::shared_ptr<AEKeyframeView> makeView(std::initializer_list<std::pair<double, double>> points) {
    auto view = std::make_shared<AEKeyframeView>();
    view->setup = std::make_shared<AEKeyframeViewSetup>();
    view->setup->kfImage = QImage(8, 6, QImage::Format_ARGB32);
    view->screenRect = QRectF(100, 50, 600, 72);
    view->timeRange = AETimeRange(0, 60);
    view->minValue = -60.0;
    view->maxValue = 12.0;
    view->keyframes = std::make_shared<AEKeyframeList>();
    for (const auto& [t, v] : points)
        view->keyframes->setKeyframe(t, v);
    return view;
}
} // namespace

TEST(AEKeyframeView, CoordinatesMapBothWaysAndDegenerateGeometryHitsNothing) {
    auto view = makeView({{0, 0}});
    EXPECT_EQ(view->time2Loc(30), 400);
    EXPECT_EQ(view->loc2Time(400), 30);
    EXPECT_EQ(view->value2Loc(12), 122);
    EXPECT_EQ(view->loc2Value(86), -24);

    view->screenRect = QRectF(100, 50, 0, 72);
    EXPECT_TRUE(std::isfinite(view->loc2Time(5)));
    EXPECT_FALSE(view->selectedKeyframe(100, 110));
    view->screenRect.reset();
    EXPECT_TRUE(std::isfinite(view->loc2Value(5)));
    EXPECT_FALSE(view->selectedKeyframe(0, 0));
    view->screenRect = QRectF(100, 50, 600, 72);
    view->timeRange = AETimeRange(5, 5);
    EXPECT_TRUE(std::isfinite(view->time2Loc(7)));
    EXPECT_FALSE(view->mouseDown({QPointF(100, 110)}, {}));
}

TEST(AEKeyframeView, HitTestTriesOnlyThePointNearestInTime) {
    EXPECT_EQ(AEKeyframeViewSetup().kfImageHalfSize(), QSizeF(0, 0));
    auto view = makeView({{10, 0}, {11, -30}});
    // Within reach of the point at 10 s, but 10.7 s is nearer the one at 11 s, 30 px lower.
    EXPECT_FALSE(view->selectedKeyframe(207, 110));
    const auto hit = view->selectedKeyframe(192, 116);
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->time, 10);
    EXPECT_TRUE(hit->selected);
    EXPECT_FALSE(view->selectedKeyframe(191.5, 110));
    EXPECT_FALSE(hit->selected);
    EXPECT_FALSE(view->selectedKeyframe(200, 116.5));
}

TEST(AEKeyframeView, MouseTakesDragsAndReleasesAPointAndCopiesShareTheList) {
    auto view = makeView({{10, 0}, {20, -6}});
    Recorder recorder;
    int changes = 0;
    view->keyframeDragDelegate = &recorder;
    view->keyframeListModifiedCallback = [&] { ++changes; };
    const QPointF delta(-20, 5);
    EXPECT_FALSE(view->mouseDown({QPointF(400, 110) + delta}, delta));
    ASSERT_TRUE(view->mouseDown({QPointF(201, 111) + delta}, delta));
    EXPECT_EQ(view->selected, view->keyframes->keyframes[0]);
    EXPECT_EQ(view->startLocation, QPointF(201, 111));
    view->mouseDrag({QPointF(250, 104) + delta}, delta);
    EXPECT_EQ(view->keyframes->keyframes[0]->time, 15);
    EXPECT_EQ(view->keyframes->keyframes[0]->value, -6);
    view->mouseUp();
    view->mouseDrag({QPointF(300, 104)}, {});
    EXPECT_EQ(view->keyframes->keyframes[0]->time, 15);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(recorder.calls, QStringList({"start 201 111 0", "drag 250 104 -6", "stop"}));

    // A copy edits the same list; the point taken is still selected, its gain twin stays.
    const auto copy = view->duplicate();
    EXPECT_EQ(copy->keyframeDragDelegate, &recorder);
    copy->deleteSelectedKFs();
    ASSERT_EQ(view->keyframes->keyframes.size(), 1u);
    EXPECT_EQ(view->keyframes->keyframes[0]->pos, 0);
    EXPECT_EQ(view->keyframes->keyframesPerc.size(), 2u);
    EXPECT_EQ(changes, 2);
}

TEST(AEKeyframeView, DragStaysBetweenNeighboursAndWithinTheValueRange) {
    auto view = makeView({{10, 0}, {20, 0}, {30, 0}});
    const auto points = view->keyframes->keyframes;
    view->selectedKF = points[1];
    view->boundDraggingKF(5, 50);
    EXPECT_DOUBLE_EQ(points[1]->time, 10.001);
    EXPECT_EQ(points[1]->value, 12);
    view->boundDraggingKF(45, -100);
    EXPECT_DOUBLE_EQ(points[1]->time, 29.999);
    EXPECT_EQ(points[1]->value, -60);
    EXPECT_EQ(view->keyframes->keyframesPerc[1]->time, 20.0f);
    view->selectedKF = points[0];
    view->boundDraggingKF(-100, 0);
    EXPECT_EQ(points[0]->time, -100);

    // A list edited directly keeps stale positions; the real neighbours still bound the drag.
    view->selectedKF = points[1];
    view->keyframes->keyframes.erase(view->keyframes->keyframes.begin());
    view->boundDraggingKF(35, 0);
    EXPECT_DOUBLE_EQ(points[1]->time, 29.999);
}

TEST(AEKeyframeView, GridKeySnapsToWholeStepsByIntegerPart) {
    auto view = makeView({{10, 0}});
    view->selectedKF = view->keyframes->keyframes[0];
    const auto dragTo = [&](double dB, Qt::KeyboardModifiers keys) {
        view->mouseDrag({QPointF(200, dB + 110), keys}, {});
        return view->selectedKF->value;
    };
    EXPECT_EQ(dragTo(4, Qt::ShiftModifier), 3);
    EXPECT_EQ(dragTo(5, Qt::ShiftModifier), 6);
    EXPECT_EQ(dragTo(-4, Qt::ShiftModifier), 0);
    EXPECT_EQ(dragTo(-5, Qt::ShiftModifier), -3);
    EXPECT_DOUBLE_EQ(dragTo(4, Qt::ControlModifier), 4);
    view->keyFrameGridKeyModifier = AEKeyModifier::option;
    EXPECT_EQ(dragTo(4, Qt::AltModifier | Qt::ShiftModifier), 3);
    view->keyFrameGridKeyModifier = AEKeyModifier::none;
    EXPECT_DOUBLE_EQ(dragTo(4, Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier),
                     4);
}
