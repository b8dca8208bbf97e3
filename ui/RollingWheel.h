#pragma once
// A ring of dots with one bright dot running round it: "working, not stuck". Main thread.

#include <QTimer>
#include <QWidget>

class RollingWheel : public QWidget {
public:
    explicit RollingWheel(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {32, 32}; }
    int frame() const { return frame_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    static constexpr int kDots = 8;
    QTimer stepper_;
    int frame_ = 0;
};
