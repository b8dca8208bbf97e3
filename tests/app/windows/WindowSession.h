#pragma once
// What a test that drives the whole application window sets up and takes down: the working folder
// and drop preferences, the interaction door, and the shell's globals that an open episode leaves.

#include "foundation/Interaction.h"
#include "foundation/Prefs.h"
#include "project/model/Globals.h"
#include "support/TestEnvironment.h"

#include <memory>

namespace windowsession {

// Drops ingest without asking and without normalising, from `folder`.
inline void begin(const QString& folder, const std::shared_ptr<UserInteraction>& door) {
    prefs_removeKey("workFolder");
    prefs_setValueString("WorkingFolder", folder);
    prefs_setValueBool("AEIngest.DontAskAtDrag", true);
    prefs_setValueBool("AEIngest.Normalize", false);
    setUserInteraction(door);
}

inline void end() {
    zendrelShow.reset();
    AEEpisodeSelected.reset();
    AEEpisodeSelectedId.reset();
    TimelineWindowStatus = AEWindowStatus::closed;
    for (const char* key : {"WorkingFolder", "AEIngest.DontAskAtDrag", "AEIngest.Normalize"})
        prefs_removeKey(key);
    setUserInteraction(nullptr);
    testenv::useStoreWorkFolder();
}

} // namespace windowsession
