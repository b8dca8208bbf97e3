#pragma once
// The envelope editor laid over one item: maps asset time and dB to the item's plot rectangle (y grows
// upwards), picks a point under the mouse and drags it between its neighbours. It shares the item's
// list and tells the item through keyframeListModifiedCallback. Main thread.

#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AEMouseEvent.h"
#include "timeline/model/AETimeRange.h"

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <functional>
#include <memory>
#include <optional>

// Implemented by whoever shows the level next to the pointer while a point is dragged.
class AEKeyframeDrag {
public:
    virtual ~AEKeyframeDrag() = default;
    virtual void volumeKFDragStart(QPointF loc, double volume) = 0;
    virtual void volumeKFDrag(QPointF loc, double volume) = 0;
    virtual void volumeKFDragStop() = 0;
};

// The marks and line colour shared by every item's editor.
class AEKeyframeViewSetup {
public:
    std::optional<QImage> kfImage;
    std::optional<QImage> kfSelectedImage;
    std::optional<QImage> kfMouseSelectedImage;
    std::optional<QImage> kfFlag0SelectedImage;
    std::optional<QImage> kfFlag1SelectedImage;
    QColor lineColor = Qt::black;

    QSizeF kfImageHalfSize() const;
};

enum class AEKeyModifier { none, control, option, shift, command };

class AEKeyframeView {
public:
    std::shared_ptr<AEKeyframeViewSetup> setup;
    std::optional<QRectF> screenRect;
    AETimeRange timeRange;
    std::optional<double> minValue;
    std::optional<double> maxValue;
    std::shared_ptr<AEKeyframeList> keyframes;
    std::shared_ptr<AEKeyframe> selected;
    std::optional<AEMouseEvent> selectedEvent;
    double keyFrameGridModule = 3.0;
    AEKeyModifier keyFrameGridKeyModifier = AEKeyModifier::shift;
    AEKeyframeDrag* keyframeDragDelegate = nullptr; // not owned
    std::function<void()> keyframeListModifiedCallback;
    std::optional<QPointF> startLocation;
    std::optional<QPointF> lastLocation;
    std::shared_ptr<AEKeyframe> selectedKF;

    // Without a plot rectangle, a time range or a value range these map everything onto the
    // rectangle's origin or the range's start, and nothing is hit.
    double time2Loc(double t) const;
    double loc2Time(double x) const;
    double deltaValue() const;
    double value2Loc(double v) const;
    double loc2Value(double y) const;

    // Only the point nearest in time is tried; a hit is marked selected.
    std::shared_ptr<AEKeyframe> selectedKeyframe(double x, double y);
    // Whether a point was taken for dragging.
    bool mouseDown(const AEMouseEvent& e, QPointF deltaLoc);
    void mouseDrag(const AEMouseEvent& e, QPointF deltaLoc);
    void mouseUp();
    // Keeps the dragged point within the value range and 0.001 s from its neighbours; nothing is re-sorted.
    void boundDraggingKF(double t, double v);
    void deselect();
    // The gain list is left as it is.
    void deleteSelectedKFs();
    // Same settings, same list and callback; the owner rebinds both.
    std::shared_ptr<AEKeyframeView> duplicate() const;
};
