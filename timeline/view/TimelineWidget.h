#pragma once
// The timeline on screen: the lanes image the model asks for, the overlays drawn over it (playhead,
// hover playhead, nearest cut and its triangles, range rectangle, level balloon), and a horizontal
// scroll bar driven both ways by the model's virtual scroller. Mouse, wheel and keys are handed to the
// model in its own coordinates; keys the model does not take go on to the parent. The lanes are
// drawn on the model's idle turn (every 0.1 s at most, and only when something changed); the
// overlays repaint on a tick of their own when they move, over the same lanes image. Main thread.

#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AEMouseEvent.h"
#include "timeline/model/AETimeLine.h"

#include <QImage>
#include <QWidget>
#include <memory>
#include <optional>

class QScrollBar;
class QTimer;

class TimelineWidget : public QWidget, private AEKeyframeDrag, private AETriangleDelegate {
    Q_OBJECT
public:
    explicit TimelineWidget(std::shared_ptr<AETimeLine> timeline = nullptr, QWidget* parent = nullptr);
    ~TimelineWidget() override;

    // Shows another timeline (or none); the previous one is released from this view.
    void setTimeline(std::shared_ptr<AETimeLine> timeline);
    const std::shared_ptr<AETimeLine>& timeline() const { return timeline_; }
    QScrollBar* scrollBar() const { return scrollBar_; }

    // Where the lanes image sits in the widget (above the scroll bar).
    QRect canvasRect() const;
    // The model's location for a widget point, and back: x in image pixels, y upwards from the
    // bottom of the image plus the model's lanes offset.
    QPointF toModel(QPointF widgetPoint) const;
    QPointF toWidget(QPointF modelPoint) const;
    // A lane-space point (as items and keyframes are laid out: y upwards from the image's bottom).
    QPointF laneToWidget(double x, double laneY) const;
    // The last lanes image, at the device pixel ratio.
    const QImage& lanesImage() const { return lanes_; }
    // Draws the lanes now, without waiting for the model's idle turn.
    void redrawNow();
    // The whole widget as on screen (lanes, overlays and scroll bar).
    QImage snapshot();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    void volumeKFDragStart(QPointF loc, double volume) override;
    void volumeKFDrag(QPointF loc, double volume) override;
    void volumeKFDragStop() override;
    void showTriangles(double x, double yBottom, double yTop) override;

    void attach();
    void detach();
    void layoutModel();
    void renderLanes();
    void overlayTick();
    void applyModifiers(Qt::KeyboardModifiers modifiers);
    void updateCursor(const QString& name);
    // Zooms by the factor keeping the time under x where it is.
    void zoomAround(double x, double factor);
    AEMouseEvent modelEvent(QPointF widgetPoint, Qt::KeyboardModifiers modifiers) const;

    std::shared_ptr<AETimeLine> timeline_;
    QScrollBar* scrollBar_ = nullptr;
    QTimer* overlayTimer_ = nullptr;
    QImage lanes_;
    bool updatingScrollBar_ = false;
    bool pressed_ = false;
    // The press cut instead of starting a drag; its release is not a click.
    bool bladed_ = false;
    bool modeFromModifiers_ = false;
    bool waitingForSummaries_ = false;
    // Where the cut triangles are shown (lane space); none while hidden.
    std::optional<QPointF> triangles_;
    double trianglesTop_ = 0;
    // The level balloon while a keyframe is dragged: lane-space location and dB.
    std::optional<std::pair<QPointF, double>> balloon_;
    // What the overlays showed at the last paint, to repaint only on change.
    QString overlayState_;
    std::optional<double> playheadX_;
};
