#pragma once
// Draggable rectangles laid over the timeline image: the edge handles of items. Each draw empties the
// list and the item plots add their handles again. A drag turns pixels into value units and keeps the
// total within the item's limits, telling the item of each step. Main thread.

#include <QPointF>
#include <QRectF>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

enum class DragAction { null = 0, started = 1, continued = 2, ended = 3 };
enum class DragConstraintType { null, box, horizontal, vertical, axis, circle };

class DragAreaItem {
public:
    QRectF rect;
    DragConstraintType constraintType = DragConstraintType::horizontal;
    DragAction status = DragAction::null;
    double pixelX2ValueK = 1;
    double pixelY2ValueK = 0;
    double minX = 0;
    double minY = 0;
    double maxX = 0;
    double maxY = 0;
    // −1 the left handle, 1 the right one.
    int64_t tag = 0;
    std::function<void(DragAction, QPointF)> callback;
};

class DragAreaView {
public:
    static inline bool active = true;

    std::vector<std::shared_ptr<DragAreaItem>> dragAreas;
    DragAction status = DragAction::null;
    QPointF origin;
    QPointF previousPoint;
    std::shared_ptr<DragAreaItem> activeDrag;
    QPointF totalDrag;

    std::shared_ptr<DragAreaItem> mouseOver(QPointF location) const;
    // Whether a handle took the press.
    bool mouseDown(QPointF location);
    // Whether a handle drag is running.
    bool mouseMoved(QPointF location);
    // Whether a handle drag ended.
    bool mouseUp(QPointF location);

private:
    void step(QPointF location, DragAction action);
};
