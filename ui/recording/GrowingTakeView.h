#pragma once
// The small timeline of the asset recorder: the take under way over the viewport of its own
// timeline (the last 30 seconds), its live waveform from the meter, and the markers set so far.
// Stands in for the timeline widget until the sheet can host that one.

#include <QWidget>
#include <memory>

class AETimeLine;

class GrowingTakeView : public QWidget {
public:
    explicit GrowingTakeView(QWidget* parent = nullptr);
    void setTimeline(std::shared_ptr<AETimeLine> timeline);

protected:
    void paintEvent(QPaintEvent* event) override;
    QSize sizeHint() const override { return {480, 90}; }

private:
    std::shared_ptr<AETimeLine> timeline_;
};
