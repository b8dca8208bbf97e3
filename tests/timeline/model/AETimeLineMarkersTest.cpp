#include "TimelineFixture.h"
#include "timeline/model/Undo.h"

using namespace tlfixture;

namespace {
std::vector<double> times(const std::vector<std::shared_ptr<AEMarker>>& markers) {
    std::vector<double> out;
    for (const auto& m : markers)
        out.push_back(m->inTime);
    return out;
}
} // namespace

TEST(AETimeLineMarkers, MarkersStayInAssetTimeAcrossACut) {
    auto tl = timeline();
    fillMainLane(*tl, {10});
    tl->appendItemInMainLane(asset("talk", 60), AETimeRange(5, 30), false); // at 10
    const auto item = tl->mainLane[1];
    const auto marker = item->addMarker(std::nullopt, 12.0, "note", AEMarkerType::chapter);
    EXPECT_EQ(marker->inTime, 7.0);
    tl->getCollectedItems();
    EXPECT_EQ(times(tl->getMarkerList()), (std::vector<double>{12.0}));

    tl->sliceMainLane(11.0);
    const auto first = tl->mainLane[1];
    const auto second = tl->mainLane[2];
    EXPECT_TRUE(first->range.isEqual(AETimeRange(5, 6)));
    EXPECT_TRUE(second->range.isEqual(AETimeRange(6, 30)));
    EXPECT_TRUE(first->getVisibleMarkers().empty());
    ASSERT_EQ(second->getVisibleMarkers().size(), 1u);
    EXPECT_EQ(second->getVisibleMarkers()[0]->inTime, 12.0);
    EXPECT_EQ(second->getVisibleMarkers()[0]->outTime, 7.0) << "the end stays in asset time";
    EXPECT_EQ(marker->inTime, 7.0) << "the record itself is untouched";
    EXPECT_EQ(times(tl->getMarkerList()), (std::vector<double>{12.0}));

    // On the cut's own asset time both halves show it.
    tl->sliceMainLane(12.0);
    tl->getCollectedItems();
    EXPECT_EQ(times(tl->getMarkerList()), (std::vector<double>{12.0, 12.0}));
}

TEST(AETimeLineMarkers, FindingMarkersByTimeAndOrder) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    tl->mainLane[0]->addMarker(2.0, std::nullopt, "a", AEMarkerType::normal);
    tl->mainLane[1]->addMarker(3.0, std::nullopt, "b", AEMarkerType::normal);
    const auto own = std::make_shared<AEMarker>(5.0, std::nullopt, AEMarkerType::normal, "of the asset");
    tl->mainLane[1]->asset->markers.push_back(own);
    tl->getCollectedItems();

    EXPECT_EQ(tl->getMarkerAtTime(15.0), own);
    EXPECT_FALSE(tl->getMarkerAtTime(14.0));
    ASSERT_TRUE(tl->getNextMarker(2.0));
    EXPECT_EQ(tl->getNextMarker(2.0)->inTime, 13.0) << "the marker at the time itself is skipped";
    EXPECT_EQ(tl->getPreviousMarker(13.0)->inTime, 2.0);
    EXPECT_FALSE(tl->getPreviousMarker(2.0));
    tl->setPlayheadTime(14);
    EXPECT_EQ(tl->getNextMarker()->inTime, 15.0);

    // A visible copy keeps the id, so deleting through it deletes the real one.
    const auto shown = tl->getMarkerList()[2];
    EXPECT_NE(shown, own);
    tl->deleteMarker(shown);
    EXPECT_TRUE(tl->mainLane[1]->asset->markers.empty());
    EXPECT_EQ(tl->getMarkerList().size(), 2u);
}

TEST(AETimeLineMarkers, AddingAtThePlayheadOpensTheOneAlreadyThere) {
    auto tl = timeline();
    std::vector<std::shared_ptr<AEMarker>> inspected;
    tl->markerInspectorPresenter = [&](const std::shared_ptr<AEMarker>& m) { inspected.push_back(m); };
    int snapshots = 0;
    tl->undoDoCallback = [&] { ++snapshots; };

    tl->addMarkerToCurrentSelectedMainLaneItem(true, AEMarkerType::normal);
    EXPECT_EQ(snapshots, 0) << "an empty timeline takes no marker and no snapshot";

    fillMainLane(*tl, {10, 10});
    tl->getCollectedItems();
    tl->setPlayheadTime(12);
    tl->addMarkerToCurrentSelectedMainLaneItem(false, AEMarkerType::normal);
    ASSERT_EQ(tl->mainLane[1]->markers.size(), 1u);
    EXPECT_EQ(tl->mainLane[1]->markers[0]->notes, "Marker");
    EXPECT_EQ(tl->mainLane[1]->markers[0]->inTime, 2.0);
    EXPECT_TRUE(inspected.empty());
    EXPECT_EQ(snapshots, 1);

    tl->addMarkerToCurrentSelectedMainLaneItem(true, AEMarkerType::normal);
    EXPECT_EQ(tl->mainLane[1]->markers.size(), 1u) << "no two markers at one spot";
    ASSERT_EQ(inspected.size(), 1u);
    EXPECT_EQ(inspected[0], tl->mainLane[1]->markers[0]);
    EXPECT_TRUE(tl->markeriInspectorOpen);

    // The hover point wins over the playhead when it shows.
    tl->view->ephemeralPlayhead->hidden = false;
    tl->view->ephemeralPlayhead->currentTime = 16.0;
    tl->setPlayheadTime(18);
    tl->addMarkerToCurrentSelectedMainLaneItem(true, AEMarkerType::chapter);
    ASSERT_EQ(tl->mainLane[1]->markers.size(), 2u);
    EXPECT_EQ(tl->mainLane[1]->markers[1]->inTime, 6.0);
    EXPECT_EQ(inspected.back(), tl->mainLane[1]->markers[1]);
}

TEST(AETimeLineMarkers, InspectorOutcomes) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10, 10});
    tl->getCollectedItems();
    const auto marker = tl->mainLane[1]->addMarker(2.0, std::nullopt, "old", AEMarkerType::normal);
    marker->outTime = 6.0;
    int listUpdates = 0;
    tl->markerListUpdater = [&] { ++listUpdates; };

    auto edited = marker->duplicate();
    edited->notes = "new";
    edited->type = AEMarkerType::chapter;
    edited->inTime = 3.0;
    tl->markeriInspectorOpen = true;
    tl->markerVCDone(edited, AEMarkerVCDoneAction::ok);
    EXPECT_FALSE(tl->markeriInspectorOpen);
    EXPECT_EQ(marker->notes, "new");
    EXPECT_EQ(marker->type, AEMarkerType::chapter);
    EXPECT_EQ(marker->inTime, 3.0);
    EXPECT_EQ(listUpdates, 1);

    tl->markeriInspectorOpen = true;
    tl->markerVCDone(marker, AEMarkerVCDoneAction::cancel);
    EXPECT_FALSE(tl->markeriInspectorOpen);

    // Remove selection: the marker's stretch of its item goes, with ripple.
    tl->markerVCDone(marker, AEMarkerVCDoneAction::deleteSelection);
    EXPECT_EQ(tl->getMainLaneOutTime(), 27.0);
    EXPECT_EQ(tl->mainLane.size(), 4u);

    const auto other = tl->mainLane[0]->addMarker(1.0, std::nullopt, "x", AEMarkerType::normal);
    tl->markerVCDone(other, AEMarkerVCDoneAction::remove);
    EXPECT_TRUE(tl->mainLane[0]->markers.empty());
}
