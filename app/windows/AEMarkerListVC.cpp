#include "app/windows/AEMarkerListVC.h"

#include "foundation/Timecode.h"
#include "timeline/model/AETimeLine.h"

#include <QHeaderView>
#include <QPointer>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace {
QPointer<AEMarkerListVC> markerListWC;

std::vector<std::shared_ptr<AEMarker>> sortedMarkers(const AETimeLine& timeline) {
    auto markers = timeline.getMarkerList();
    std::stable_sort(markers.begin(), markers.end(),
                     [](const auto& a, const auto& b) { return a->inTime < b->inTime; });
    return markers;
}
} // namespace

AEMarkerListVC::AEMarkerListVC(QWidget* parent)
    : QWidget(parent, Qt::Window), table_(new QTableWidget(this)) {
    setObjectName("AEMarkerListVC");
    setWindowTitle(tr("Markers"));
    setAttribute(Qt::WA_DeleteOnClose);
    table_->setColumnCount(3);
    table_->setHorizontalHeaderLabels({tr("Time"), tr("Notes"), tr("Chapter")});
    table_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    table_->verticalHeader()->hide();
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table_);
    resize(420, 360);
    connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int row, int) { rowClicked(row); });
}

AEMarkerListVC* AEMarkerListVC::show(std::function<std::shared_ptr<AETimeLine>()> timeline, QWidget* parent) {
    if (!markerListWC) markerListWC = new AEMarkerListVC(parent);
    markerListWC->timeline_ = std::move(timeline);
    markerListWC->update();
    markerListWC->QWidget::show();
    markerListWC->raise();
    return markerListWC;
}

AEMarkerListVC* AEMarkerListVC::current() {
    return markerListWC;
}

void AEMarkerListVC::update() {
    const auto timeline = timeline_ ? timeline_() : nullptr;
    table_->setRowCount(0);
    if (!timeline) return;
    const auto markers = sortedMarkers(*timeline);
    table_->setRowCount(int(markers.size()));
    for (int row = 0; row < int(markers.size()); ++row) {
        const auto& marker = markers[size_t(row)];
        table_->setItem(row, 0, new QTableWidgetItem(tc_getFloatTimecode(marker->inTime)));
        table_->setItem(row, 1, new QTableWidgetItem(marker->notes));
        table_->setItem(row, 2, new QTableWidgetItem(marker->type == AEMarkerType::chapter ? "●" : ""));
    }
}

void AEMarkerListVC::rowClicked(int row) {
    const auto timeline = timeline_ ? timeline_() : nullptr;
    if (!timeline) return;
    const auto markers = sortedMarkers(*timeline);
    if (row < 0 || row >= int(markers.size())) return;
    timeline->setPlayheadTime(markers[size_t(row)]->inTime, true);
}
