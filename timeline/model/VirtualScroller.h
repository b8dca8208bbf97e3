#pragma once
// A scroll bar over content that is drawn on demand, so there is no scrolled document to measure.
// It owns the total range (all that can be scrolled to) and the visible range (what the view
// shows), and keeps two fractions in step with them: scrollerValue, the knob position in 0..1, and
// scrollerRatio, the knob's share of the track, never below minRatio().
//
// Main thread, except setVisibleRange, which any thread may call: the control hooks run on the main
// thread only. A real scroll bar is attached through readControl/writeControl; without them the
// fractions are the truth. Changes from the control reach the owner in idle(), once per change.

#include "foundation/Execution.h"
#include "timeline/model/VSRange.h"

#include <QString>
#include <functional>
#include <optional>
#include <utility>

class VirtualScroller {
public:
    VirtualScroller(const QString& id, VSRange totalRange, std::function<void()> valueChangedCallback = {});

    QString id;
    VSRange totalRange{0, 10.0};
    VSRange visibleRange{0, 10.0};
    double minLength = 1.0;
    std::function<void()> valueChangedCallback;
    double scrollerValue = 0;
    double scrollerRatio = 1;
    double previousScrollerValue = 0;
    double previousScrollerRatio = 1;
    // Taken while code changes the range, so idle() does not read a half-written control.
    Hold hold;
    // The transport turns pinch magnification off while playing; the attached control obeys it.
    bool magnificationAllowed = true;

    // Hooks to a real scroll bar, both optional: value then ratio.
    std::function<void(double value, double ratio)> writeControl;
    std::function<std::pair<double, double>()> readControl;

    void setTotalRange(double i, double o);
    void setVisibleRange(double i, double o);
    void shiftVisibleRange(double delta);
    // newLength is in seconds, not a factor; the range is centred on centerAt, or on its own middle.
    void magnify(double newLength, std::optional<double> centerAt = std::nullopt, bool callFeedback = false);

    double minRatio() const;
    void adjustRatio();
    void adjustValue();
    // The visible range that the value and ratio stand for.
    void setVisibleRangeInternal();
    void writeScrollerValueAndRatio();
    void readScrollerValueAndRatio();
    // Called on every fast idle turn.
    void idle();

private:
    // Clamps and stores the range, then brings value and ratio in step; no control is touched.
    void storeVisibleRange(double i, double o);
    // storeVisibleRange, then the control is written on the main thread. The caller holds `hold`.
    void applyVisibleRange(double i, double o);
};
