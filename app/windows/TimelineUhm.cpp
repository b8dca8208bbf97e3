#include "app/windows/TimelineUhm.h"

#include "cleaning/UhmMarkers.h"
#include "foundation/Interaction.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/Globals.h"
#include "timeline/model/AEDrag.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "ui/cleaning/UhmVCPC.h"

#include <algorithm>

void timelineUhm_openPanel(const std::shared_ptr<AEAsset>& asset, QWidget* parent,
                           std::function<void()> markersAdded) {
    auto* panel = new UhmVCPC(
        asset, uhmDB,
        [asset, markersAdded](int added) {
            if (added > 0) AEAssetDB::saveAsset(asset);
            if (markersAdded) markersAdded();
            userInteraction()->alert("Probable Uhm",
                                     added == 0 ? QString("No hesitation found.")
                                                : QString("%1 probable hesitations marked.").arg(added));
        },
        parent);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
}

void timelineUhm_selectionToUhmFP(const std::shared_ptr<AETimeLine>& timeline) {
    const QString title = "Selection to Uhm DB";
    if (!uhmDB) {
        userInteraction()->alert(title, "Open a show first: its hesitation database lives in its folder.");
        return;
    }
    if (!timeline || timeline->getSelectionDuration() <= 0) {
        userInteraction()->alert(title, "Select the held sound on the timeline first.");
        return;
    }
    const AETimeRange range = timeline->drag->getRange();
    const auto item = timeline->getItemAtTime(range.i);
    if (!item || !item->asset) {
        userInteraction()->alert(title, "The selection does not start on a clip of the main lane.");
        return;
    }
    const double start = item->globalTimeToAssetTime(range.i);
    const double end = std::min(item->globalTimeToAssetTime(range.o), item->range.o);
    addSelectionToUhmDB(item->asset, start, end, [title](bool added) {
        userInteraction()->alert(title, added ? QString("The selection was added to the hesitation database.")
                                              : QString("The selection is too short to learn from."));
    });
}
