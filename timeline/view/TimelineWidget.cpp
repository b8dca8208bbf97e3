#include "timeline/view/TimelineWidget.h"

#include "app/core/AEPreferences.h"
#include "project/model/AEAsset.h"
#include "project/model/AESubsamples.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/VirtualScroller.h"
#include "timeline/view/TimelinePainter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace {
// The scroll bar's integer track stands for the scroller's 0…1 fractions.
constexpr int kTrack = 100000;
constexpr int kOverlayTickMs = 20;
constexpr double kWheelNotch = 120.0;
constexpr double kWheelShare = 0.1; // of the visible length per notch
constexpr double kZoomPerNotch = 0.8;
constexpr double kTriangle = 7.0;
const QColor kPlayhead(0xff, 0x5a, 0x36);
const QColor kEphemeral(255, 255, 255, 150);
const QColor kNearestCut(0xff, 0xd0, 0x60);

// The modifiers standing for the platform's: Command is Ctrl; Control (blade) is Alt; the multi-cut
// chord is Ctrl+Alt+Shift; Shift alone is the drag mode.
Qt::KeyboardModifier modifierOf(int key) {
    switch (key) {
    case Qt::Key_Shift:
        return Qt::ShiftModifier;
    case Qt::Key_Control:
        return Qt::ControlModifier;
    case Qt::Key_Alt:
        return Qt::AltModifier;
    case Qt::Key_Meta:
        return Qt::MetaModifier;
    default:
        return Qt::NoModifier;
    }
}

// The modifiers held after the event: platforms differ on whether a modifier's own key event counts it.
Qt::KeyboardModifiers heldAfter(const QKeyEvent& event) {
    Qt::KeyboardModifiers held = event.modifiers();
    if (event.type() == QEvent::KeyPress)
        held |= modifierOf(event.key());
    else
        held &= ~Qt::KeyboardModifiers(modifierOf(event.key()));
    return held;
}

AEEditorMode modeFor(Qt::KeyboardModifiers m) {
    const bool ctrl = m.testFlag(Qt::ControlModifier);
    const bool alt = m.testFlag(Qt::AltModifier);
    const bool shift = m.testFlag(Qt::ShiftModifier);
    if (ctrl && alt && shift) return AEEditorMode::multiCut;
    if (alt) return AEEditorMode::blade;
    if (shift) return AEEditorMode::drag;
    return AEEditorMode::normal;
}

QString headState(const std::optional<AEPlayHead>& head) {
    if (!head || head->hidden) return QStringLiteral("-");
    return QString::number(head->x, 'f', 1);
}
} // namespace

TimelineWidget::TimelineWidget(std::shared_ptr<AETimeLine> timeline, QWidget* parent)
    : QWidget(parent), scrollBar_(new QScrollBar(Qt::Horizontal, this)), overlayTimer_(new QTimer(this)) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 160);
    scrollBar_->setRange(0, 0);
    overlayTimer_->setInterval(kOverlayTickMs);
    connect(overlayTimer_, &QTimer::timeout, this, &TimelineWidget::overlayTick);
    overlayTimer_->start();
    setTimeline(std::move(timeline));
}

TimelineWidget::~TimelineWidget() {
    detach();
}

void TimelineWidget::setTimeline(std::shared_ptr<AETimeLine> timeline) {
    if (timeline == timeline_) return;
    detach();
    timeline_ = std::move(timeline);
    attach();
}

void TimelineWidget::detach() {
    if (!timeline_) return;
    timeline_->drawDelegate = nullptr;
    timeline_->cursorCallback = nullptr;
    if (timeline_->triangleDelegate == this) timeline_->triangleDelegate = nullptr;
    if (timeline_->keyframeDragDelegate == this) timeline_->keyframeDragDelegate = nullptr;
    for (const auto& item : timeline_->getCollectedItems())
        if (item->kfView && item->kfView->keyframeDragDelegate == this)
            item->kfView->keyframeDragDelegate = nullptr;
    if (timeline_->virtualScroller) {
        timeline_->virtualScroller->writeControl = nullptr;
        timeline_->virtualScroller->readControl = nullptr;
    }
}

void TimelineWidget::attach() {
    lanes_ = QImage();
    if (!timeline_) {
        update();
        return;
    }
    AETimeLineLanesHelper::timeline = timeline_;
    timeline_->triangleDelegate = this;
    timeline_->keyframeDragDelegate = this;
    timeline_->cursorCallback = [this](const QString& name) { updateCursor(name); };
    timeline_->drawDelegate = [this] { renderLanes(); };
    layoutModel();
    timeline_->setEditingMode(timeline_->editorMode);
    redrawNow();
}

QRect TimelineWidget::canvasRect() const {
    return QRect(0, 0, width(), std::max(1, height() - scrollBar_->sizeHint().height()));
}

void TimelineWidget::layoutModel() {
    if (!timeline_) return;
    const QRect canvas = canvasRect();
    AETimeLine& tl = *timeline_;
    if (!tl.view) {
        tl.setView(canvas.width(), canvas.height(), QPointF(0, 0));
    } else {
        tl.view->viewportWidth = canvas.width();
        tl.view->viewportHeight = canvas.height();
        tl.deltaOrigin = QPointF(0, 0);
    }
    if (tl.view->ruler) tl.view->ruler->width = canvas.width();
    // The scroll bar mirrors the scroller's fractions; a code change to the range is kept exactly
    // unless the knob has since moved.
    auto scroller = tl.virtualScroller;
    scroller->writeControl = [this](double value, double ratio) {
        updatingScrollBar_ = true;
        const int page = std::clamp(static_cast<int>(std::lround(ratio * kTrack)), 1, kTrack);
        scrollBar_->setRange(0, kTrack - page);
        scrollBar_->setPageStep(page);
        scrollBar_->setSingleStep(std::max(1, page / 10));
        scrollBar_->setValue(static_cast<int>(std::lround(value * (kTrack - page))));
        updatingScrollBar_ = false;
    };
    std::weak_ptr<VirtualScroller> weak = scroller;
    scroller->readControl = [this, weak]() -> std::pair<double, double> {
        auto s = weak.lock();
        const int max = scrollBar_->maximum();
        const int written = static_cast<int>(std::lround(s->scrollerValue * max));
        if (scrollBar_->value() == written || max <= 0) return {s->scrollerValue, s->scrollerRatio};
        return {static_cast<double>(scrollBar_->value()) / max, s->scrollerRatio};
    };
    AETimeLineLanesHelper::setBGM(tl, TimelinePainter::lanesHeightFor(canvas.height()));
    tl.setInsetViewSize();
    scroller->writeScrollerValueAndRatio();
    tl.mustDraw = true;
}

void TimelineWidget::redrawNow() {
    if (!timeline_) return;
    timeline_->mustDraw = true;
    timeline_->draw();
    timeline_->drawPlayhead();
}

void TimelineWidget::renderLanes() {
    if (!timeline_) return;
    const QRect canvas = canvasRect();
    timeline_->showVolumeKFs = AEPreferences::displayVolumeKFs;
    TimelinePainter::Options options;
    options.devicePixelRatio = devicePixelRatioF();
    options.singleBand = AEPreferences::waveFormTypeSingle;
    options.showVolumeKFs = timeline_->showVolumeKFs;
    for (const auto& item : timeline_->getCollectedItems())
        if (item->kfView) item->kfView->keyframeDragDelegate = this;
    auto result = TimelinePainter::draw(*timeline_, canvas.size(), options);
    lanes_ = std::move(result.image);
    waitingForSummaries_ = result.waitingForSummaries;
    update();
}

QImage TimelineWidget::snapshot() {
    return grab().toImage();
}

QPointF TimelineWidget::toModel(QPointF widgetPoint) const {
    return QPointF(widgetPoint.x(), canvasRect().height() - widgetPoint.y() + AETimeLine::kLanesTop);
}

QPointF TimelineWidget::toWidget(QPointF modelPoint) const {
    return QPointF(modelPoint.x(), canvasRect().height() - (modelPoint.y() - AETimeLine::kLanesTop));
}

QPointF TimelineWidget::laneToWidget(double x, double laneY) const {
    return QPointF(x, canvasRect().height() - laneY);
}

AEMouseEvent TimelineWidget::modelEvent(QPointF widgetPoint, Qt::KeyboardModifiers modifiers) const {
    return AEMouseEvent{toModel(widgetPoint), modifiers};
}

void TimelineWidget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QRect canvas = canvasRect();
    if (lanes_.isNull())
        p.fillRect(canvas, palette().window());
    else
        p.drawImage(canvas.topLeft(), lanes_);
    if (!timeline_ || !timeline_->view) return;
    const AETimeLineView& view = *timeline_->view;
    const double H = canvas.height();
    const double top = AETimeLineLanesHelper::kRulerHeight;
    if (timeline_->dragRangeRect) {
        p.setPen(QPen(Qt::white, 1));
        p.setBrush(QColor(255, 255, 255, 28));
        p.drawRect(TimelinePainter::toImage(*timeline_->dragRangeRect, H).adjusted(0.5, 0.5, -0.5, -0.5));
    }
    if (view.nearestCut && !view.nearestCut->hidden) {
        const AEPlayHead& cut = *view.nearestCut;
        const double x = cut.x + cut.image.width() / 2.0;
        const QRectF lane = TimelinePainter::toImage(QRectF(x, cut.y, 0, cut.height), H);
        p.setPen(QPen(kNearestCut, 1, Qt::DashLine));
        p.drawLine(QPointF(x + 0.5, lane.top()), QPointF(x + 0.5, lane.bottom()));
        if (triangles_) {
            p.setRenderHint(QPainter::Antialiasing, true);
            QPainterPath marks;
            const double tx = triangles_->x() + cut.image.width() / 2.0 + 0.5;
            const double yTop = H - trianglesTop_;
            const double yBottom = H - triangles_->y();
            marks.addPolygon(QPolygonF{
                {tx - kTriangle, yTop - kTriangle}, {tx + kTriangle, yTop - kTriangle}, {tx, yTop}});
            marks.addPolygon(QPolygonF{
                {tx - kTriangle, yBottom + kTriangle}, {tx + kTriangle, yBottom + kTriangle}, {tx, yBottom}});
            p.fillPath(marks, kNearestCut);
            p.setRenderHint(QPainter::Antialiasing, false);
        }
    }
    if (view.ephemeralPlayhead && !view.ephemeralPlayhead->hidden) {
        const double x = view.ephemeralPlayhead->x + view.ephemeralPlayhead->originX;
        p.setPen(QPen(kEphemeral, 1));
        p.drawLine(QPointF(x + 0.5, top), QPointF(x + 0.5, H));
    }
    if (view.playhead && !view.playhead->hidden) {
        const double x = view.playhead->x + view.playhead->originX;
        p.setPen(QPen(kPlayhead, 1));
        p.drawLine(QPointF(x + 0.5, 0), QPointF(x + 0.5, H));
        p.setRenderHint(QPainter::Antialiasing, true);
        p.setBrush(kPlayhead);
        p.drawPolygon(QPolygonF{{x - 5.5, 0}, {x + 6.5, 0}, {x + 0.5, 8}});
        p.setRenderHint(QPainter::Antialiasing, false);
    }
    if (balloon_) {
        const QString text = QString::number(static_cast<int>(balloon_->second)) + QStringLiteral(" dB");
        const QPointF at = laneToWidget(balloon_->first.x(), balloon_->first.y());
        const QRectF box(at.x() + 12, at.y() - 28, p.fontMetrics().horizontalAdvance(text) + 14, 20);
        p.setRenderHint(QPainter::Antialiasing, true);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(20, 20, 20, 220));
        p.drawRoundedRect(box, 6, 6);
        p.setPen(Qt::white);
        p.drawText(box, Qt::AlignCenter, text);
    }
}

void TimelineWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int h = scrollBar_->sizeHint().height();
    scrollBar_->setGeometry(0, height() - h, width(), h);
    if (timeline_) {
        layoutModel();
        redrawNow();
    }
}

void TimelineWidget::overlayTick() {
    if (!timeline_ || !timeline_->view) return;
    if (waitingForSummaries_) {
        bool allLoaded = true;
        for (const auto& item : timeline_->getCollectedItems())
            if (item->asset && item->asset->subsamples && !item->asset->subsamples->loaded) allLoaded = false;
        if (allLoaded) timeline_->mustDraw = true;
    }
    const AETimeLineView& view = *timeline_->view;
    // While playing only the playhead moves: the strips it leaves and enters are repainted.
    const std::optional<double> head = view.playhead && !view.playhead->hidden
                                           ? std::optional(view.playhead->x + view.playhead->originX)
                                           : std::nullopt;
    if (head != playheadX_) {
        const int h = canvasRect().height();
        for (const auto& x : {playheadX_, head})
            if (x) update(QRect(static_cast<int>(std::floor(*x)) - 7, 0, 16, h));
        playheadX_ = head;
    }
    QString state = headState(view.ephemeralPlayhead) + '|' + headState(view.nearestCut) + '|' +
                    (balloon_ ? QString::number(balloon_->second) : QString());
    if (timeline_->dragRangeRect) {
        const QRectF& r = *timeline_->dragRangeRect;
        state += QStringLiteral("|%1,%2,%3,%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    }
    if (state != overlayState_) {
        overlayState_ = state;
        update();
    }
}

void TimelineWidget::mousePressEvent(QMouseEvent* event) {
    if (!timeline_ || event->button() != Qt::LeftButton) return;
    setFocus(Qt::MouseFocusReason);
    pressed_ = true;
    const AEMouseEvent e = modelEvent(event->position(), event->modifiers());
    const AEEditorMode mode = timeline_->editorMode;
    const bool bladeHeld = event->modifiers().testFlag(Qt::AltModifier);
    if (bladeHeld || mode == AEEditorMode::blade || mode == AEEditorMode::multiCut) {
        const bool superBlade =
            mode == AEEditorMode::multiCut || event->modifiers().testFlag(Qt::ControlModifier);
        timeline_->blade(e, true, superBlade);
        bladed_ = true;
    } else {
        timeline_->mouseDown(e);
    }
}

void TimelineWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!timeline_) return;
    const AEMouseEvent e = modelEvent(event->position(), event->modifiers());
    if (pressed_ && !bladed_)
        timeline_->mouseDrag(e);
    else if (!pressed_)
        timeline_->mouseMoved(e);
}

void TimelineWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (!timeline_ || event->button() != Qt::LeftButton || !pressed_) return;
    pressed_ = false;
    if (bladed_) {
        bladed_ = false;
        return;
    }
    timeline_->mouseUp(modelEvent(event->position(), event->modifiers()));
}

void TimelineWidget::leaveEvent(QEvent* event) {
    if (timeline_) timeline_->mouseExited();
    update();
    QWidget::leaveEvent(event);
}

void TimelineWidget::zoomAround(double x, double factor) {
    if (!timeline_ || !timeline_->virtualScroller || !timeline_->view || factor <= 0) return;
    const VSRange visible = timeline_->virtualScroller->visibleRange;
    const double width = std::max(1.0, timeline_->view->viewportWidth);
    const double length = std::max(visible.length() * factor, timeline_->view->viewPortMinDuration);
    const double t = visible.i + x / width * visible.length();
    const double i = t - x / width * length;
    timeline_->hideEphemeral();
    timeline_->setViewportRange(i, i + length);
}

void TimelineWidget::wheelEvent(QWheelEvent* event) {
    if (!timeline_ || !timeline_->virtualScroller) return;
    const VSRange visible = timeline_->virtualScroller->visibleRange;
    const QPoint pixels = event->pixelDelta();
    const QPoint angle = event->angleDelta();
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        const double notches = (angle.y() != 0 ? angle.y() : angle.x()) / kWheelNotch;
        zoomAround(event->position().x(), std::pow(kZoomPerNotch, notches));
    } else if (!pixels.isNull()) {
        // A touchpad moves the content with the fingers.
        const int d = std::abs(pixels.x()) >= std::abs(pixels.y()) ? pixels.x() : pixels.y();
        timeline_->shiftViewPort(-d * timeline_->xToTime(1.0, true, false));
    } else {
        const int d = std::abs(angle.x()) >= std::abs(angle.y()) ? angle.x() : angle.y();
        timeline_->shiftViewPort(-d / kWheelNotch * kWheelShare * visible.length());
    }
    event->accept();
}

bool TimelineWidget::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture && timeline_) {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture && timeline_->virtualScroller &&
            timeline_->virtualScroller->magnificationAllowed) {
            zoomAround(gesture->position().x(), 1.0 - gesture->value());
            return true;
        }
    }
    return QWidget::event(event);
}

void TimelineWidget::applyModifiers(Qt::KeyboardModifiers modifiers) {
    if (!timeline_) return;
    const AEEditorMode held = modeFor(modifiers);
    // Releasing every modifier goes back to normal only from a mode the modifiers chose.
    if (held != AEEditorMode::normal) {
        if (timeline_->editorMode != held) timeline_->setEditingMode(held);
        modeFromModifiers_ = true;
    } else if (modeFromModifiers_) {
        timeline_->setEditingMode(AEEditorMode::normal);
        modeFromModifiers_ = false;
    }
}

void TimelineWidget::keyPressEvent(QKeyEvent* event) {
    if (!timeline_) return QWidget::keyPressEvent(event);
    applyModifiers(heldAfter(*event));
    const int key = event->key();
    if (modifierOf(key) != Qt::NoModifier) {
        event->accept();
        return;
    }
    // The table acts on bare keys; chords belong to the window's menus.
    const Qt::KeyboardModifiers chord = event->modifiers() & ~Qt::KeypadModifier;
    const bool repeatable = key == Qt::Key_Left || key == Qt::Key_Right;
    if (chord == Qt::NoModifier && (repeatable || !event->isAutoRepeat()) && timeline_->handleKeydown(key)) {
        event->accept();
        return;
    }
    // A held Space, J or L acts once.
    if (chord == Qt::NoModifier && event->isAutoRepeat() &&
        (key == Qt::Key_Space || key == Qt::Key_J || key == Qt::Key_L || key == Qt::Key_Up ||
         key == Qt::Key_Down))
        return event->accept();
    event->ignore();
}

void TimelineWidget::keyReleaseEvent(QKeyEvent* event) {
    applyModifiers(heldAfter(*event));
    QWidget::keyReleaseEvent(event);
}

void TimelineWidget::updateCursor(const QString& name) {
    if (name == QLatin1String("blade"))
        setCursor(Qt::CrossCursor);
    else if (name == QLatin1String("leftDrag") || name == QLatin1String("rightDrag"))
        setCursor(Qt::SplitHCursor);
    else if (name == QLatin1String("drag"))
        setCursor(Qt::OpenHandCursor);
    else
        unsetCursor();
}

void TimelineWidget::volumeKFDragStart(QPointF loc, double volume) {
    balloon_ = std::make_pair(loc, volume);
    update();
}

void TimelineWidget::volumeKFDrag(QPointF loc, double volume) {
    balloon_ = std::make_pair(loc, volume);
    update();
}

void TimelineWidget::volumeKFDragStop() {
    balloon_.reset();
    update();
}

void TimelineWidget::showTriangles(double x, double yBottom, double yTop) {
    if (x <= -1000.0)
        triangles_.reset();
    else
        triangles_ = QPointF(x, yBottom);
    trianglesTop_ = yTop;
    update();
}
