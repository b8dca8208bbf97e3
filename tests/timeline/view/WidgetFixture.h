#pragma once
// A timeline widget of 1000 × 400 lane pixels over 60 s of main lane (speech 20 s, jingle 10 s,
// speech 30 s, each asset 10 s longer than its item) and one effect on lane 1 at 3 s, showing 0…40 s:
// 25 pixels a second. Points are asked for by time and lane.

#include "../model/TimelineFixture.h"
#include "app/core/AEPreferences.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/DragAreaView.h"
#include "timeline/view/TimelinePainter.h"
#include "timeline/view/TimelineWidget.h"

#include <QScrollBar>
#include <QTest>
#include <memory>

class WidgetFixture : public ::testing::Test {
protected:
    static constexpr int kWidth = 1000;
    static constexpr int kCanvasHeight = 400;

    void SetUp() override {
        AEPreferences::displayVolumeKFs = true;
        AEPreferences::waveFormTypeSingle = true;
        AETimeLineLanesHelper::lanesViewMode = AETimeLineLanesViewMode::complete;
        AETimeLineLanesHelper::lanesViewSetup = AETimeLineLanesViewSetup::normal;
        if (!AETimeLineItem::kfSetup->kfImage) AETimeLineItem::startup();
        tl = AETimeLine::make("tl");
        for (const auto& [name, length, type] :
             {std::tuple{"a", 20.0, AEAssetType::speech}, std::tuple{"b", 10.0, AEAssetType::jingle},
              std::tuple{"c", 30.0, AEAssetType::speech}}) {
            tl->appendItemInMainLane(tlfixture::asset(name, length + 10, type), AETimeRange(0, length),
                                     false);
        }
        effect = tl->attachItem(tlfixture::asset("fx", 4, AEAssetType::effect), 1, 3.0, std::nullopt, false,
                                false);
        tl->undoDoCallback = [this] { ++undos; };
        widget = std::make_unique<TimelineWidget>(tl);
        widget->resize(kWidth, kCanvasHeight + widget->scrollBar()->sizeHint().height());
        widget->show();
        show(0, 40);
    }

    void TearDown() override {
        widget.reset();
        tl->stopTimers();
    }

    void show(double i, double o) {
        tl->setViewportRange(i, o);
        tl->updateViewAfterSomething();
        widget->redrawNow();
    }

    // The middle of the lane at time t, as a widget point.
    QPoint at(double t, int64_t lane, double ofHeight = 0.5) const {
        const auto ys = tl->laneToYs(lane);
        EXPECT_TRUE(ys) << "no lane " << lane;
        const double y = ys ? ys->first + (ys->second - ys->first) * ofHeight : 0;
        return widget->laneToWidget(tl->timeToX(t), y).toPoint();
    }

    QColor pixel(QPoint p) const { return widget->lanesImage().pixelColor(p); }

    void press(QPoint p, Qt::KeyboardModifiers m = {}) {
        QTest::mousePress(widget.get(), Qt::LeftButton, m, p);
    }
    void move(QPoint p, Qt::KeyboardModifiers m = {}) {
        // QTest's move carries no button; the widget reads only position and modifiers.
        QMouseEvent e(QEvent::MouseMove, p, widget->mapToGlobal(p), Qt::NoButton, Qt::LeftButton, m);
        QApplication::sendEvent(widget.get(), &e);
    }
    void release(QPoint p, Qt::KeyboardModifiers m = {}) {
        QTest::mouseRelease(widget.get(), Qt::LeftButton, m, p);
    }

    std::shared_ptr<AETimeLine> tl;
    AETimeLine::Item effect;
    std::unique_ptr<TimelineWidget> widget;
    int undos = 0;
};
