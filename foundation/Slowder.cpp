#include "foundation/Slowder.h"

#include "foundation/Execution.h"
#include "foundation/Prefs.h"

Slowder::Slowder(const QString& id)
    : id(id), itemsToLoad_(static_cast<int>(prefs_getValueInt("Slowder_" + id, 0))) {}

void Slowder::itemLoaded() {
    const int loaded = ++itemsLoaded_;
    // A first run knows no total: doubling keeps the bar short of its end.
    if (loaded > itemsToLoad_) itemsToLoad_ = loaded * 2;
    const int total = itemsToLoad_;
    if (onProgress) XMain::execute([callback = onProgress, loaded, total] { callback(loaded, total); }, true);
}

void Slowder::saveItemsN(int n) {
    itemsToLoad_ = n;
    prefs_setValueInt("Slowder_" + id, n);
}
