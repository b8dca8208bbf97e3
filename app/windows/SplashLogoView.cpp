#include "app/windows/SplashLogoView.h"

#include "ui/AEColors.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace {
constexpr double kAppearSeconds = 1.0;

double easeOut(double t) {
    return 1.0 - std::pow(1.0 - std::clamp(t, 0.0, 1.0), 3.0);
}

// The three strokes of the mark, drawn up to `fraction` of their joint length.
QPainterPath partialMark(const QRectF& box, double fraction) {
    const QPointF points[] = {box.topLeft(), box.topRight(), box.bottomLeft(), box.bottomRight()};
    double lengths[3];
    double total = 0;
    for (int i = 0; i < 3; ++i) {
        const QPointF d = points[i + 1] - points[i];
        lengths[i] = std::hypot(d.x(), d.y());
        total += lengths[i];
    }
    double left = total * std::clamp(fraction, 0.0, 1.0);
    QPainterPath path(points[0]);
    for (int i = 0; i < 3 && left > 0; ++i) {
        const double part = std::min(left, lengths[i]) / lengths[i];
        path.lineTo(points[i] + (points[i + 1] - points[i]) * part);
        left -= lengths[i];
    }
    return path;
}
} // namespace

SplashLogoView::SplashLogoView(QWidget* parent) : QWidget(parent) {
    setFixedSize(sizeHint());
    ticker_.setTimerType(Qt::PreciseTimer);
    ticker_.setInterval(1000 / kFramesPerSecond);
    connect(&ticker_, &QTimer::timeout, this, [this] {
        ++frame_;
        update();
    });
    clock_.start();
    ticker_.start();
}

void SplashLogoView::paintEvent(QPaintEvent*) {
    const double t = clock_.elapsed() / 1000.0;
    const double appear = easeOut(t / kAppearSeconds);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(8, 8, -8, -8);

    QColor plate(0x3a, 0x3a, 0x3a);
    plate.setAlphaF(appear);
    painter.setPen(Qt::NoPen);
    painter.setBrush(plate);
    const double grow = 0.85 + 0.15 * appear;
    QRectF plateRect(0, 0, area.width() * grow, area.height() * grow);
    plateRect.moveCenter(area.center());
    painter.drawRoundedRect(plateRect, 34 * grow, 34 * grow);

    const QRectF markBox =
        area.adjusted(area.width() * 0.28, area.height() * 0.28, -area.width() * 0.28, -area.height() * 0.28);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(
        QPen(AEColors::lightText, area.width() * 0.085, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(partialMark(markBox, appear));

    // Once the mark stands, the bars move like a level meter on speech.
    const double live = std::clamp(t - kAppearSeconds * 0.8, 0.0, 1.0);
    if (live <= 0) return;
    QColor bar = AEColors::accent;
    bar.setAlphaF(live);
    painter.setPen(Qt::NoPen);
    painter.setBrush(bar);
    const double barWidth = area.width() * 0.06;
    const double maxHeight = markBox.height() * 0.75;
    const double heights[] = {0.55 + 0.45 * std::sin(t * 5.1), 0.55 + 0.45 * std::sin(t * 6.7 + 1.3)};
    const double xs[] = {markBox.left() - barWidth * 2.4, markBox.right() + barWidth * 1.4};
    for (int i = 0; i < 2; ++i) {
        const double h = maxHeight * (0.25 + 0.75 * std::abs(heights[i]));
        painter.drawRoundedRect(QRectF(xs[i], area.center().y() - h / 2, barWidth, h), barWidth / 2,
                                barWidth / 2);
    }
}
