#include "app/core/AEPreferences.h"

#include "foundation/Prefs.h"

bool AEPreferences::timelineAutoScroll = true;
bool AEPreferences::waveFormTypeSingle = true;
bool AEPreferences::displayVolumeKFs = false;
bool AEPreferences::recButtonInEpisodeAssetsArea = true;

void AEPreferences::load() {
    timelineAutoScroll = prefs_getValueBool("AEPreferences.timelineAutoScroll", true);
    waveFormTypeSingle = prefs_getValueString("AEWaveFormType", "Single") == "Single";
    displayVolumeKFs = prefs_getValueBool("AEPreferences.displayVolumeKFs", false);
    recButtonInEpisodeAssetsArea = prefs_getValueBool("AEPreferences.recButtonInEpisodeAssetsArea", true);
}

void AEPreferences::save() {
    prefs_setValueBool("AEPreferences.timelineAutoScroll", timelineAutoScroll);
    prefs_setValueBool("AEPreferences.displayVolumeKFs", displayVolumeKFs);
    prefs_setValueBool("AEPreferences.recButtonInEpisodeAssetsArea", recButtonInEpisodeAssetsArea);
}
