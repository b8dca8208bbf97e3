#include "app/core/PreloadsVC.h"

#include "app/core/AS.h"
#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Interaction.h"
#include "foundation/Log.h"

namespace {

void finish(const std::function<void()>& completionHandler) {
    PreloadsVC::preloadsDone = true;
    if (completionHandler) completionHandler();
}

void downloadAll(const std::vector<ASItem>& missing) {
    auto door = userInteraction();
    door->showProgress("Preloading", missing.front().id);
    for (const ASItem& item : missing) {
        door->updateProgress(item.id, "");
        const QString id = item.id;
        AS::httpDownload(item.remotePath, AS::getItemInASFolder(item.id), true, [door, id](int64_t bytes) {
            door->updateProgress(id, fu_getReadableFileSizeBySize(bytes));
        });
    }
    door->hideProgress();
}

} // namespace

void PreloadsVC::preload(const std::vector<ASItem>& list, std::function<void()> completionHandler) {
    qxLog("Preload");
    const std::vector<ASItem> missing = AS::missingItems(list);
    if (missing.empty()) {
        finish(completionHandler);
        return;
    }
    Queue::execute([missing, completionHandler] {
        if (!AS::connectedOrQuit()) return;
        downloadAll(missing);
        XMain::execute([completionHandler] { finish(completionHandler); }, true);
    });
}
