#include "ui/MinimalProgressBar.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

IH_MinimalProgressBar::IH_MinimalProgressBar(const QColor& background, const QColor& foreground,
                                             QWidget* parent)
    : QWidget(parent), background_(background), foreground_(foreground) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(sizeHint().height());
}

void IH_MinimalProgressBar::setFraction(double fraction) {
    const double clamped = std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0.0;
    if (clamped == fraction_) return;
    fraction_ = clamped;
    update();
}

void IH_MinimalProgressBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), background_);
    QRectF filled = rect();
    filled.setWidth(filled.width() * fraction_);
    painter.fillRect(filled, foreground_);
}
