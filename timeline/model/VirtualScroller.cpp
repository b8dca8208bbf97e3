#include "timeline/model/VirtualScroller.h"

#include "foundation/Log.h"

#include <QCoreApplication>
#include <algorithm>
#include <tuple>

namespace {
// Released on every way out of the scope, callbacks that throw included.
class HeldWhile {
public:
    explicit HeldWhile(Hold& hold) : gate(hold) { gate.hold(); }
    ~HeldWhile() { gate.release(); }
    HeldWhile(const HeldWhile&) = delete;
    HeldWhile& operator=(const HeldWhile&) = delete;

private:
    Hold& gate;
};

// Seconds shown when asked to show nothing.
constexpr double kEmptyRequestLength = 30.0;
} // namespace

VirtualScroller::VirtualScroller(const QString& id, VSRange totalRange,
                                 std::function<void()> valueChangedCallback)
    : id(id), totalRange(totalRange), valueChangedCallback(std::move(valueChangedCallback)) {
    // No control can be attached yet, so there is nothing to write.
    storeVisibleRange(visibleRange.i, visibleRange.o);
}

void VirtualScroller::setTotalRange(double i, double o) {
    totalRange = {i, o};
    setVisibleRange(visibleRange.i, visibleRange.o);
}

void VirtualScroller::setVisibleRange(double i, double o) {
    HeldWhile held(hold);
    applyVisibleRange(i, o);
}

void VirtualScroller::shiftVisibleRange(double delta) {
    HeldWhile held(hold);
    applyVisibleRange(visibleRange.i + delta, visibleRange.o + delta);
}

void VirtualScroller::magnify(double newLength, std::optional<double> centerAt, bool callFeedback) {
    {
        HeldWhile held(hold);
        const double length = std::max(newLength, minLength);
        const double center = centerAt.value_or(visibleRange.center());
        applyVisibleRange(center - length / 2.0, center + length / 2.0);
    }
    if (callFeedback && valueChangedCallback) valueChangedCallback();
}

void VirtualScroller::applyVisibleRange(double i, double o) {
    qxLog("setVisibleRange [id: " + id + "] (" + QString::number(i) + ", " + QString::number(o) + ")");
    storeVisibleRange(i, o);
    // Without an application nobody would run a write posted to the main thread.
    if (XMain::isMain() || !QCoreApplication::instance())
        writeScrollerValueAndRatio();
    else
        XMain::execute([this] { writeScrollerValueAndRatio(); });
}

void VirtualScroller::storeVisibleRange(double i, double o) {
    // Checked first so that the clamping below still keeps the answer inside the total range.
    // The negated test also catches NaN.
    if (!(o > i)) {
        i = 0;
        o = kEmptyRequestLength;
    }
    if (i < 0) {
        o -= i;
        i = 0;
    }
    if (o > totalRange.o) {
        i = std::max(0.0, i - (o - totalRange.o));
        o = totalRange.o;
    }
    visibleRange = {i, o};
    adjustRatio();
    adjustValue();
}

double VirtualScroller::minRatio() const {
    const double total = totalRange.length();
    return total > 0 ? std::clamp(minLength / total, 0.0, 1.0) : 1.0;
}

void VirtualScroller::adjustRatio() {
    const double total = totalRange.length();
    const double ratio = total > 0 ? visibleRange.length() / total : 1.0;
    scrollerRatio = std::clamp(ratio, minRatio(), 1.0);
}

void VirtualScroller::adjustValue() {
    // The knob travels over the part of the track it does not cover.
    const double travel = totalRange.length() * (1.0 - scrollerRatio);
    scrollerValue = travel > 0 ? std::clamp((visibleRange.i - totalRange.i) / travel, 0.0, 1.0) : 0.0;
}

void VirtualScroller::setVisibleRangeInternal() {
    const double total = totalRange.length();
    const double i = totalRange.i + total * (1.0 - scrollerRatio) * scrollerValue;
    visibleRange = {i, i + scrollerRatio * total};
}

void VirtualScroller::writeScrollerValueAndRatio() {
    if (writeControl) writeControl(scrollerValue, scrollerRatio);
}

void VirtualScroller::readScrollerValueAndRatio() {
    if (readControl) std::tie(scrollerValue, scrollerRatio) = readControl();
}

void VirtualScroller::idle() {
    if (hold.status != Hold::Status::released) return;
    readScrollerValueAndRatio();
    scrollerRatio = std::clamp(scrollerRatio, minRatio(), 1.0);
    setVisibleRangeInternal();
    if (scrollerValue == previousScrollerValue && scrollerRatio == previousScrollerRatio) return;
    // Copied first: a callback that turns idle again must not see the same change twice.
    previousScrollerValue = scrollerValue;
    previousScrollerRatio = scrollerRatio;
    if (valueChangedCallback) valueChangedCallback();
}
