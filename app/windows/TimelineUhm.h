#pragma once
// The timeline window's hesitation commands: the "Probable Uhm" sheet on an asset, and the selected
// stretch of the main lane learnt into the show's hesitation database. Main thread.

#include <functional>
#include <memory>

class AEAsset;
class AETimeLine;
class QWidget;

// Opens the sheet; `markersAdded` is told once the markers are on the asset (and it is saved).
void timelineUhm_openPanel(const std::shared_ptr<AEAsset>& asset, QWidget* parent,
                           std::function<void()> markersAdded);
// The selection's stretch of the main-lane item under its start, in that asset's time. Tells the user
// when there is no selection, no item or no show database, and when the stretch was learnt.
void timelineUhm_selectionToUhmFP(const std::shared_ptr<AETimeLine>& timeline);
