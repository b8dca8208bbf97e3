#include "app/core/WorkFolderPrefs.h"

#include "cleaning/UhmDB.h"
#include "foundation/Log.h"
#include "foundation/Prefs.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"

QString workFolder_readAtStartup() {
    QString folder = prefs_getValueString("workFolder", "");
    if (folder.isEmpty()) {
        folder = AEIngest::documentsFolder() + "/Zendrel/";
        prefs_setValueString("workFolder", folder);
    }
    AEIngest::workFolder = folder;
    return folder;
}

void workFolder_changeTo(const QString& to) {
    qxLog("workingFolderChange: " + to);
    AEIngest::workFolder = to + "/";
    prefs_setValueString("workFolder", AEIngest::workFolder);
    prefs_setValueString("WorkingFolder", AEIngest::workFolder);
    zendrelShow = workFolder_loadShow();
    mustUpdate = true;
}

std::shared_ptr<AEShow> workFolder_loadShow() {
    auto show = loadShow();
    uhmDB = std::make_shared<UhmDB>(AEIngest::workFolder + "UhmDB.json");
    return show;
}
