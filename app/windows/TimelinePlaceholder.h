#pragma once
// Stand-in for the timeline widget until it lands: gives the timeline its view size, draws the
// items as plain blocks with the playhead, sets the playhead on a click and shows the hover playhead
// that plain insert aims at. Main thread.

#include <QWidget>
#include <functional>
#include <memory>

class AETimeLine;

class TimelinePlaceholder : public QWidget {
public:
    explicit TimelinePlaceholder(QWidget* parent = nullptr);
    void setTimeline(const std::shared_ptr<AETimeLine>& timeline);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    std::shared_ptr<AETimeLine> timeline_;
};
