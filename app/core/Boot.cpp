#include "app/core/Boot.h"

#include "app/core/AS.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"

void Boot::removeZendrelUtils() {
    const QString folder = AS::applicationSupportFolder();
    qxLog("removeZendrelUtils: " + folder);
    fu_deleteFolder(folder);
}
