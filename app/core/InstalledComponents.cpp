#include "app/core/InstalledComponents.h"

#include "foundation/FileUtils.h"
#include "foundation/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

struct ToolLink {
    const char* id;
    // Where the executable lies inside the component; "" when the component is the executable.
    const char* inner;
    const char* installed;
};

const ToolLink toolLinks[] = {
    {"sxh", "", "/usr/bin/sox"},
    {"fmh", "", "/usr/bin/ffmpeg"},
    {"kd3.app", "/Contents/MacOS/kid3-cli", "/usr/bin/kid3-cli"},
};

const QString updaterId = "Updrel2.app";

bool linkTool(const QString& link, const QString& tool) {
    if (QFileInfo::exists(link)) return true;
    if (!QFileInfo::exists(tool)) return false;
    // A link left behind by a tool since uninstalled.
    if (QFileInfo(link).isSymLink()) QFile::remove(link);
    fu_createFolder(QFileInfo(link).absolutePath());
    if (!QFile::link(tool, link)) {
        qxLog("Cannot link " + link + " to " + tool);
        return false;
    }
    qxLog("Provisioned " + link + " -> " + tool);
    return true;
}

// The self-update helper has no Linux build (updates come from the package manager); an explanatory
// folder is enough for the store to count it as present.
bool placeUpdaterStandIn(const QString& path) {
    if (QFileInfo::exists(path)) return true;
    if (!fu_createFolder(path)) return false;
    QSaveFile readme(path + "/README");
    if (readme.open(QIODevice::WriteOnly)) {
        readme.write(
            "Stand-in for the self-update helper: on Linux updates come from the package manager.\n");
        readme.commit();
    }
    qxLog("Provisioned " + path);
    return true;
}

} // namespace

bool provisionInstalledComponent(const QString& folder, const QString& id) {
    if (id == updaterId) return placeUpdaterStandIn(folder + "/" + id);
    for (const ToolLink& tool : toolLinks) {
        if (id == tool.id) return linkTool(folder + "/" + id + tool.inner, tool.installed);
    }
    return false;
}
