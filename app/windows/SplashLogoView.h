#pragma once
// The splash logo, drawn rather than read from frames: the mark draws itself in over the first
// second, then two level bars breathe beside it. Sixty frames a second. Main thread.

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

class SplashLogoView : public QWidget {
public:
    static constexpr int kFramesPerSecond = 60;

    explicit SplashLogoView(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {180, 180}; }
    int frame() const { return frame_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer ticker_;
    QElapsedTimer clock_;
    int frame_ = 0;
};
