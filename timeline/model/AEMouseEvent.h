#pragma once
// A mouse event as the timeline model sees it. Locations are in the timeline view's own coordinates
// with y growing upwards (the view flips its toolkit's y before handing events over).

#include <QPointF>
#include <Qt>

struct AEMouseEvent {
    QPointF locationInWindow;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
};
