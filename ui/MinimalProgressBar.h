#pragma once
// A thin bar with no frame and no text: a background colour and a foreground colour filled to a
// fraction. Main thread.

#include <QColor>
#include <QWidget>

class IH_MinimalProgressBar : public QWidget {
public:
    IH_MinimalProgressBar(const QColor& background, const QColor& foreground, QWidget* parent = nullptr);

    // Clamped to 0...1.
    void setFraction(double fraction);
    double fraction() const { return fraction_; }

    QSize sizeHint() const override { return {200, 4}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor background_;
    QColor foreground_;
    double fraction_ = 0.0;
};
