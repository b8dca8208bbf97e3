#include "ui/RollingWheel.h"

#include <QPainter>
#include <cmath>
#include <numbers>

RollingWheel::RollingWheel(QWidget* parent) : QWidget(parent) {
    setFixedSize(sizeHint());
    stepper_.setInterval(90);
    connect(&stepper_, &QTimer::timeout, this, [this] {
        frame_ = (frame_ + 1) % kDots;
        update();
    });
    stepper_.start();
}

void RollingWheel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QPointF centre = rect().center();
    const double radius = std::min(width(), height()) / 2.0 - 4.0;
    for (int i = 0; i < kDots; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / kDots;
        // Dots fade behind the bright one, so the eye reads a direction.
        const int behind = (frame_ - i + kDots) % kDots;
        QColor colour = palette().color(QPalette::WindowText);
        colour.setAlphaF(1.0 - 0.8 * behind / (kDots - 1.0));
        painter.setBrush(colour);
        painter.drawEllipse(centre + QPointF(radius * std::cos(angle), radius * std::sin(angle)), 2.5, 2.5);
    }
}
