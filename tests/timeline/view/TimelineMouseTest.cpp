// Gestures through the widget, checked on the model after each one.
#include "WidgetFixture.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "timeline/model/AEKeyframeList.h"

class TimelineMouseTest : public WidgetFixture {};

TEST_F(TimelineMouseTest, ClickSelectsTheMainLaneItemAndMovesThePlayhead) {
    QTest::mouseClick(widget.get(), Qt::LeftButton, {}, at(25, 0));
    EXPECT_TRUE(tl->mainLane[1]->selected);
    EXPECT_FALSE(tl->mainLane[0]->selected);
    EXPECT_NEAR(tl->currentPHTime, 25, 0.04);
    // A click on the empty part of an attached lane keeps the selection and still moves the playhead.
    QTest::mouseClick(widget.get(), Qt::LeftButton, {}, at(30, 1));
    EXPECT_TRUE(tl->mainLane[1]->selected);
    EXPECT_NEAR(tl->currentPHTime, 30, 0.04);
}

TEST_F(TimelineMouseTest, RangeDragRightToLeftAndPastTheEdge) {
    press(at(15, 0));
    move(at(10, 0));
    move(at(5, 0));
    release(at(5, 0));
    EXPECT_TRUE(tl->drag->active);
    EXPECT_NEAR(tl->drag->range.i, 5, 0.04);
    EXPECT_NEAR(tl->drag->range.o, 15, 0.04);

    // Each event past the right edge scrolls a fifth of the 40 s shown.
    press(at(35, 0));
    const QPoint beyond(kWidth + 5, at(35, 0).y());
    move(beyond);
    EXPECT_NEAR(tl->virtualScroller->visibleRange.i, 8, 1e-6);
    move(beyond);
    EXPECT_NEAR(tl->virtualScroller->visibleRange.i, 16, 1e-6);
    release(beyond);
    EXPECT_LT(tl->drag->range.i, tl->drag->range.o);

    // A range of 0.01 s or less is dropped.
    tl->drag->setRange(AETimeRange(5, 5.01));
    widget->redrawNow();
    EXPECT_FALSE(tl->drag->active);
    EXPECT_FALSE(tl->dragRangeRect);
}

TEST_F(TimelineMouseTest, EdgeDragTrimsLiveWithinTheAsset) {
    // Item a: 0…20 of a 30 s asset. Its right handle, 100 px (4 s) to the right.
    const QPoint edge = at(20, 0) - QPoint(3, 0);
    press(edge);
    move(edge + QPoint(100, 0));
    EXPECT_NEAR(tl->mainLane[0]->range.o, 24, 0.04);
    EXPECT_NEAR(tl->mainLane[1]->inTime, 24, 0.04) << "the main lane closes up while dragging";
    EXPECT_EQ(effect->inTime, 3.0) << "attached items stay";
    move(edge + QPoint(600, 0));
    release(edge + QPoint(600, 0));
    EXPECT_EQ(tl->mainLane[0]->range.o, 30.0) << "stops at the asset's end";
    EXPECT_EQ(tl->mainLane[0]->dragging, AETimeLineDraggingType::none);
    EXPECT_GT(undos, 0);

    // Left handle of the same item pulled left: the range cannot start before 0.
    widget->redrawNow();
    const QPoint left = at(0, 0) + QPoint(3, 0);
    press(left);
    move(left + QPoint(-200, 0));
    release(left + QPoint(-200, 0));
    EXPECT_EQ(tl->mainLane[0]->range.i, 0.0);
    tlfixture::expectInvariants(*tl);
}

TEST_F(TimelineMouseTest, AttachedItemDragStopsAtTheMainLaneEnd) {
    undos = 0;
    const QPoint from = at(5, 1);
    press(from, Qt::ShiftModifier);
    move(from + QPoint(100, 0), Qt::ShiftModifier);
    EXPECT_NEAR(effect->inTime, 7, 0.04);
    move(from + QPoint(2000, 0), Qt::ShiftModifier);
    release(from + QPoint(2000, 0), Qt::ShiftModifier);
    EXPECT_EQ(effect->inTime, tl->getMainLaneOutTime());
    EXPECT_GT(undos, 0);
}

TEST_F(TimelineMouseTest, KeyframesAddedWithCtrlAndDraggedOnTheGridWithShift) {
    auto& item = *tl->mainLane[0];
    const auto& points = item.volumeKFs->keyframes;
    QTest::mouseClick(widget.get(), Qt::LeftButton, Qt::ControlModifier, at(8, 0));
    ASSERT_EQ(points.size(), 1u);
    EXPECT_NEAR(points[0]->time, 8, 0.04);
    EXPECT_EQ(points[0]->value, 0.0) << "the new point lies on the line";
    widget->redrawNow();

    const auto& kf = *item.kfView;
    const QPoint point = widget->laneToWidget(kf.time2Loc(points[0]->time), kf.value2Loc(0)).toPoint();
    undos = 0;
    press(point);
    move(point + QPoint(0, 40));
    EXPECT_NEAR(points[0]->value, kf.loc2Value(kf.value2Loc(0) - 40), 0.5);
    move(point + QPoint(0, 47), Qt::ShiftModifier);
    EXPECT_EQ(std::fmod(points[0]->value, 3.0), 0.0) << points[0]->value;
    EXPECT_LT(points[0]->value, -9.0);
    release(point + QPoint(0, 47), Qt::ShiftModifier);
    EXPECT_GT(undos, 1) << "a snapshot per drag event";
}

TEST_F(TimelineMouseTest, BladeCutsAtTheClickWithAltOrInBladeMode) {
    QTest::mouseClick(widget.get(), Qt::LeftButton, Qt::AltModifier, at(10, 0));
    ASSERT_EQ(tl->mainLane.size(), 4u);
    EXPECT_NEAR(tl->mainLane[1]->inTime, 10, 0.04);
    tl->setEditModeBlade();
    QTest::mouseClick(widget.get(), Qt::LeftButton, {}, at(5, 1));
    EXPECT_EQ(tl->attachedItems.size(), 2u);
    EXPECT_EQ(tl->mainLane.size(), 4u);
}

TEST_F(TimelineMouseTest, ModifiersHeldChangeTheMode) {
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers held;
        AEEditorMode mode;
    } cases[] = {
        {Qt::Key_Alt, Qt::AltModifier, AEEditorMode::blade},
        {Qt::Key_Shift, Qt::ShiftModifier, AEEditorMode::drag},
        {Qt::Key_Shift, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier, AEEditorMode::multiCut}};
    for (const auto& c : cases) {
        QTest::keyPress(widget.get(), c.key, c.held);
        EXPECT_EQ(tl->editorMode, c.mode);
        QTest::keyRelease(widget.get(), c.key, Qt::NoModifier);
        EXPECT_EQ(tl->editorMode, AEEditorMode::normal);
    }
}

TEST_F(TimelineMouseTest, KeysScrollJumpAndChangeTheRate) {
    QTest::keyClick(widget.get(), Qt::Key_Right);
    EXPECT_NEAR(tl->virtualScroller->visibleRange.i, 8, 1e-6);
    QTest::keyClick(widget.get(), Qt::Key_Left);
    EXPECT_NEAR(tl->virtualScroller->visibleRange.i, 0, 1e-6);
    tl->setPlayheadTime(12);
    QTest::keyClick(widget.get(), Qt::Key_Down);
    EXPECT_EQ(tl->currentPHTime, 20.0);
    QTest::keyClick(widget.get(), Qt::Key_Up);
    EXPECT_EQ(tl->currentPHTime, 0.0);

    sharedAudioEngine().startOffline();
    QTest::keyClick(widget.get(), Qt::Key_L);
    EXPECT_DOUBLE_EQ(tl->playSpeedRate, 1.25);
    QTest::keyClick(widget.get(), Qt::Key_J);
    QTest::keyClick(widget.get(), Qt::Key_J);
    EXPECT_DOUBLE_EQ(tl->playSpeedRate, 0.75);
    QTest::keyClick(widget.get(), Qt::Key_Space);
    EXPECT_TRUE(tl->playing);
    QTest::keyClick(widget.get(), Qt::Key_Space);
    EXPECT_FALSE(tl->playing);
    sharedAudioEngine().startNullOutput();
}
