#include "app/core/Preloads.h"

#include "app/core/AS.h"
#include "app/core/PreloadsVC.h"
#include "foundation/Log.h"

#include <QStringList>

namespace {

std::vector<ASItem> itemsFor(const QStringList& ids) {
    std::vector<ASItem> items;
    for (const QString& id : ids)
        items.push_back(AS::itemFor(id));
    return items;
}

} // namespace

void Preloads::doBaseZendrelUtils(std::function<void()> completionHandler) {
    qxLog("doBaseZendrelUtils");
    PreloadsVC::preload(itemsFor({"Updrel2.app", "sxh", "fmh"}), std::move(completionHandler));
}

void Preloads::doExtendedZendrelUtils(std::function<void()> completionHandler) {
    qxLog("doExtendedZendrelUtils");
    PreloadsVC::preload(itemsFor({"Updrel2.app", "sxh", "fmh", "kd3.app"}), std::move(completionHandler));
}
