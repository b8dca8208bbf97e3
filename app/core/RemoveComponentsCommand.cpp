#include "app/core/RemoveComponentsCommand.h"

#include "app/core/Boot.h"
#include "app/core/ProcessExit.h"
#include "foundation/Interaction.h"

void mnuRemoveExternalcomponents() {
    const bool ok = ih_alertOkCancel(
        "Warning",
        "Choosing this option, Zendrel external components will be removed and the app will quit. "
        "After the relaunch of the app, the external components will be re-downloaded. Press OK to "
        "continue.");
    if (!ok) return;
    Boot::removeZendrelUtils();
    processExit(0);
}
