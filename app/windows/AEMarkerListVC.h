#pragma once
// The one marker list window: every visible marker of the timeline in time order, refreshed when the
// markers change; a double click moves the playhead to the marker. Main thread.

#include <QWidget>
#include <functional>
#include <memory>

class AETimeLine;
class QTableWidget;

class AEMarkerListVC : public QWidget {
    Q_OBJECT
public:
    // Shows the window (made on first use) for whatever `timeline` gives when asked.
    static AEMarkerListVC* show(std::function<std::shared_ptr<AETimeLine>()> timeline, QWidget* parent);
    // The window when it is open, else null.
    static AEMarkerListVC* current();

    void update();
    void rowClicked(int row);
    QTableWidget* table() const { return table_; }

private:
    explicit AEMarkerListVC(QWidget* parent);
    std::function<std::shared_ptr<AETimeLine>()> timeline_;
    QTableWidget* table_;
};
