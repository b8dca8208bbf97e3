#pragma once
// The lane colours of an asset by its role, and dimmed when its media cannot be reached.

#include "project/model/AEAssetType.h"

#include <QColor>

namespace AEColors {
struct AssetColors {
    QColor background;
    QColor foreground;
};
AssetColors getAssetColor(AEAssetType type, bool present);
} // namespace AEColors
