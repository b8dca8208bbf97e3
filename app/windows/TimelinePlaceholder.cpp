#include "app/windows/TimelinePlaceholder.h"

#include "project/model/AEAsset.h"
#include "project/model/AssetColors.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"

#include <QMouseEvent>
#include <QPainter>

TimelinePlaceholder::TimelinePlaceholder(QWidget* parent) : QWidget(parent) {
    setObjectName("timelineView");
    setMouseTracking(true);
    setMinimumHeight(200);
    setAutoFillBackground(true);
}

void TimelinePlaceholder::setTimeline(const std::shared_ptr<AETimeLine>& timeline) {
    timeline_ = timeline;
    if (!timeline_) return;
    timeline_->drawDelegate = [this] { QWidget::update(); };
    if (!timeline_->view) {
        AETimeLineLanesHelper::totalH = height();
        timeline_->setView(width(), height(), {}, false);
        timeline_->setupLanes();
    }
    QWidget::update();
}

void TimelinePlaceholder::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (!timeline_) return;
    AETimeLineLanesHelper::totalH = height();
    if (timeline_->view) {
        timeline_->view->viewportWidth = width();
        timeline_->view->viewportHeight = height();
    } else {
        timeline_->setView(width(), height(), {}, false);
    }
    timeline_->setupLanes();
    timeline_->mustDraw = true;
}

void TimelinePlaceholder::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), QColor(38, 40, 44));
    if (!timeline_) return;
    for (const auto& lane : timeline_->lanes)
        p.fillRect(QRectF(0, lane->y, width(), lane->height - 1),
                   lane->n == 0 ? QColor(50, 53, 58) : QColor(45, 47, 51));
    for (const auto& item : timeline_->getCollectedItems()) {
        const auto ys = timeline_->laneToYs(item->lane);
        if (!ys || !item->asset) continue;
        const double end = item->isBGM() ? item->bgmOutTime : item->outTime();
        const QRectF r(QPointF(timeline_->timeToX(item->inTime), ys->first + 2),
                       QPointF(timeline_->timeToX(end), ys->second - 2));
        const auto colours = AEColors::getAssetColor(item->asset->type, item->asset->present);
        p.fillRect(r, item->selected ? colours.background.lighter(130) : colours.background);
        p.setPen(colours.foreground);
        p.drawRect(r);
        p.drawText(r.adjusted(4, 2, -4, -2), Qt::AlignLeft | Qt::AlignTop, item->asset->name);
    }
    if (const auto& view = timeline_->view) {
        if (view->ephemeralPlayhead && !view->ephemeralPlayhead->hidden) {
            p.setPen(QColor(255, 255, 255, 90));
            const double x = timeline_->timeToX(view->ephemeralPlayhead->currentTime);
            p.drawLine(QPointF(x, 0), QPointF(x, height()));
        }
    }
    p.setPen(QColor(255, 80, 60));
    const double x = timeline_->timeToX(timeline_->currentPHTime);
    p.drawLine(QPointF(x, 0), QPointF(x, height()));
}

void TimelinePlaceholder::mousePressEvent(QMouseEvent* event) {
    if (!timeline_) return;
    timeline_->setPlayheadTime(timeline_->xToTime(event->position().x()));
    QWidget::update();
}

void TimelinePlaceholder::mouseMoveEvent(QMouseEvent* event) {
    if (!timeline_ || !timeline_->view || !timeline_->view->ephemeralPlayhead) return;
    timeline_->view->ephemeralPlayhead->currentTime = timeline_->xToTime(event->position().x());
    timeline_->showEphemeral();
    QWidget::update();
}

void TimelinePlaceholder::leaveEvent(QEvent*) {
    if (timeline_) timeline_->hideEphemeral();
    QWidget::update();
}
