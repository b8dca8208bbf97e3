#include "timeline/model/AERuler.h"

#include "foundation/Timecode.h"

#include <QGuiApplication>
#include <QPainter>
#include <array>
#include <cmath>

namespace {
constexpr std::array kUnits{0.05,  0.1,   0.25,  0.5,    1.0,    2.0,    5.0,     10.0,    30.0,   60.0,
                            120.0, 300.0, 600.0, 1200.0, 3000.0, 6000.0, 12000.0, 30000.0, 60000.0};
// Pixels between ticks, at least.
constexpr double kMinorDistance = 40.0;
constexpr double kMajorDistance = 80.0;
constexpr double kLabelOffset = 4.0;
constexpr double kLabelWidth = 80.0;

bool canDrawText() {
    // Without a QGuiApplication the font database aborts the process.
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}
} // namespace

double AERuler::timeUnitPerPixel() const {
    return width > 0 ? range.duration() / width : 0.0;
}

double AERuler::timeUnit(double d, double dist) {
    const double wanted = d * dist;
    for (const double unit : kUnits)
        if (unit >= wanted) return unit;
    return kUnits.back();
}

std::vector<double> AERuler::getMeaningfulTimesList(bool minor) const {
    // The negated test also turns away NaN.
    if (!std::isfinite(width) || width <= 0 || !(range.duration() > 0)) return {};
    const double unit = timeUnit(timeUnitPerPixel(), minor ? kMinorDistance : kMajorDistance);
    // More ticks than pixels cannot be drawn; the cap matters only past the largest unit.
    const auto cap = static_cast<size_t>(width) + 2;
    const double start = unit * std::floor(range.i / unit);
    std::vector<double> times;
    // Multiplied, not summed, so that a long ruler does not drift off its units.
    for (size_t k = 0; times.size() < cap; ++k) {
        const double t = start + static_cast<double>(k) * unit;
        if (!(t < range.o)) break;
        times.push_back(t);
    }
    return times;
}

double AERuler::timeToX(double t) const {
    const double perPixel = timeUnitPerPixel();
    return perPixel > 0 ? (t - range.i) / perPixel : 0.0;
}

void AERuler::setRange(const AETimeRange& r) {
    range = r;
}

QImage AERuler::draw() const {
    const auto w = static_cast<int>(std::ceil(width));
    const auto h = static_cast<int>(std::ceil(height));
    if (w <= 0 || h <= 0) return {};
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor::fromRgbF(0.2f, 0.2f, 0.2f, 0.3f));
    QPainter painter(&image);
    for (const double t : getMeaningfulTimesList(true))
        painter.fillRect(QRectF(timeToX(t), height * 0.75, 1.0, height * 0.25),
                         QColor::fromRgbF(0.3f, 0.3f, 0.3f));
    const bool withText = canDrawText();
    painter.setPen(QColor(200, 200, 200));
    for (const double t : getMeaningfulTimesList(false)) {
        const double x = timeToX(t);
        painter.fillRect(QRectF(x, 0.0, 1.0, height), QColor::fromRgbF(0.5f, 0.5f, 0.5f));
        if (withText)
            painter.drawText(QRectF(x + kLabelOffset, 0.0, kLabelWidth, height),
                             Qt::AlignLeft | Qt::AlignVCenter, tc_getFloatTimecodeX(t));
    }
    return image;
}
