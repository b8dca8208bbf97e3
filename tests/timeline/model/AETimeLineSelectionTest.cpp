#include "TimelineFixture.h"
#include "timeline/model/AEKeyframe.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/Undo.h"

using namespace tlfixture;

namespace {

std::vector<double> lengths(const AETimeLine& tl) {
    std::vector<double> out;
    for (const auto& item : tl.mainLane)
        out.push_back(item->range.duration());
    return out;
}

std::vector<QString> names(const AETimeLine& tl) {
    std::vector<QString> out;
    for (const auto& item : tl.mainLane)
        out.push_back(item->asset->name);
    return out;
}

} // namespace

TEST(AETimeLineSelection, DeletingARangeAcrossClipsJoinsWhatIsLeft) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10, 10, 10});
    tl->setPlayheadTime(15);
    tl->drag->setRange(AETimeRange(5, 25));
    tl->deleteSelection();
    EXPECT_EQ(names(*tl), (std::vector<QString>{"c0", "c2", "c3"}));
    EXPECT_EQ(lengths(*tl), (std::vector<double>{5, 5, 10}));
    EXPECT_TRUE(tl->mainLane[1]->range.isEqual(AETimeRange(5, 10))) << "the tail of the third clip";
    EXPECT_EQ(tl->currentPHTime, 5.0) << "a playhead inside the stretch goes to its start";
    EXPECT_FALSE(tl->drag->active);
    expectInvariants(*tl);
}

TEST(AETimeLineSelection, AttachedRangesCutOutOfTheItemUnderTheirStart) {
    auto tl = timeline();
    fillMainLane(*tl, {60});
    const auto fx = tl->attachItem(asset("fx", 20, AEAssetType::effect), 1, 10, std::nullopt, false, false);
    tl->drag->setRange(AETimeRange(5, 15), fx->lane);
    tl->deleteSelection();
    EXPECT_EQ(tl->attachedItems.size(), 1u) << "a range starting in a gap removes nothing";

    tl->drag->setRange(AETimeRange(14, 18), fx->lane);
    tl->deleteSelection();
    ASSERT_EQ(tl->attachedItems.size(), 2u);
    EXPECT_TRUE(fx->range.isEqual(AETimeRange(0, 4)));
    EXPECT_EQ(tl->attachedItems[1]->inTime, 18.0) << "nothing ripples on an attached lane";
    EXPECT_EQ(tl->mainLane.size(), 1u);
    expectInvariants(*tl);
}

TEST(AETimeLineSelection, ASelectedKeyframeBeatsTheRange) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    auto item = tl->mainLane[0];
    item->volumeKFs->setKeyframe(2.0, -6.0);
    item->volumeKFs->setKeyframe(4.0, -3.0);
    item->volumeKFs->keyframes[0]->selected = true;
    tl->draggingVolumeItem = item;
    tl->draggingVolumeKF = item->volumeKFs->keyframes[0];
    tl->drag->setRange(AETimeRange(0, 20));
    tl->deleteSelection();
    EXPECT_EQ(tl->mainLane.size(), 2u);
    ASSERT_EQ(item->volumeKFs->keyframes.size(), 1u);
    EXPECT_EQ(item->volumeKFs->keyframes[0]->time, 4.0);
    EXPECT_FALSE(tl->draggingVolumeKF);
}

TEST(AETimeLineSelection, ItemSelectionIsSingleAndDrivesTheRange) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10});
    const auto fx = tl->attachItem(asset("fx", 5, AEAssetType::effect), 1, 3, std::nullopt, false, false);
    EXPECT_EQ(tl->selectItemInMainLane(12), 1);
    EXPECT_TRUE(tl->drag->getRange().isEqual(AETimeRange(10, 20)));
    tl->selectAttachedItem(4, fx->lane);
    EXPECT_TRUE(fx->selected);
    EXPECT_FALSE(tl->mainLane[1]->selected);
    EXPECT_EQ(tl->drag->lane, fx->lane);

    tl->toggleActivateSelectedItem();
    EXPECT_FALSE(AETimeLine::itemActive(fx));
    tl->removeSelectedItem();
    EXPECT_TRUE(tl->attachedItems.empty());
    tl->selectItemInMainLane(1);
    tl->removeSelectedItem();
    EXPECT_EQ(names(*tl), (std::vector<QString>{"c1"}));
}

TEST(AETimeLineSelection, CopyAndPasteCarryRangesOnly) {
    auto tl = timeline();
    fillMainLane(*tl, {10, 10, 10});
    tl->mainLane[1]->volumeKFs->setKeyframe(5.0, -6.0);
    tl->mainLane[1]->addMarker(5.0, std::nullopt, "m", AEMarkerType::normal);
    tl->drag->setRange(AETimeRange(5, 25));
    tl->copySelection();
    EXPECT_EQ(lengths(*tl), (std::vector<double>{10, 10, 10})) << "the temporary cuts are joined again";
    ASSERT_EQ(tl->clipboardLane.size(), 3u);
    EXPECT_EQ(tl->clipboardLane[1]->inTime, 5.0);
    EXPECT_EQ(tl->clipboardLane[2]->inTime, 15.0);

    tl->paste(15); // inside the middle clip: it is cut
    EXPECT_EQ(lengths(*tl), (std::vector<double>{10, 5, 5, 10, 5, 5, 10}));
    EXPECT_TRUE(tl->mainLane[2]->volumeKFs->keyframes.empty());
    EXPECT_TRUE(tl->mainLane[2]->markers.empty());
    EXPECT_NE(tl->mainLane[2]->id, tl->clipboardLane[0]->id);

    tl->paste(tl->getMainLaneOutTime());
    EXPECT_EQ(tl->mainLane.size(), 10u);
    EXPECT_EQ(tl->mainLane.back()->asset->name, "c2");
    expectInvariants(*tl);
}

TEST(AETimeLineSelection, CutTakesTwoSnapshotsAndUndoRestoresTheEarlierTimeline) {
    // Snapshots go to a queue, as the window wires it.
    Undo queue;
    auto tl = timeline();
    tl->undoDoCallback = [&] { queue.addStatus(tl->getStatus()); };
    fillMainLane(*tl, {10, 10, 10});
    const QString before = documentForm(*tl);
    tl->drag->setRange(AETimeRange(5, 15));
    tl->cut();
    EXPECT_EQ(lengths(*tl), (std::vector<double>{5, 5, 10}));
    EXPECT_EQ(queue.queue.size(), 2u);
    EXPECT_FALSE(tl->drag->active);

    const auto edited = tl;
    tl = undoTimeline(tl, queue);
    EXPECT_NE(tl, edited);
    EXPECT_EQ(documentForm(*tl), before);
    tl = undoTimeline(tl, queue);
    EXPECT_EQ(documentForm(*tl), before) << "the second undo shows no change";
    EXPECT_EQ(tl->virtualScroller, edited->virtualScroller);
    EXPECT_EQ(tl->clipboardLane.size(), 0u) << "the clipboard is not part of a snapshot";
}
