#pragma once
// The lane colours of an asset by its role, and dimmed when its media cannot be reached.

#include "project/model/AEAssetType.h"

#include <QColor>

namespace AEColors {
struct AssetColors {
    QColor background;
    QColor foreground;
};
// Hues of a palette told apart with red-green colour blindness; a dark fill under a light waveform,
// legible on light and dark desktops alike.
AssetColors getAssetColor(AEAssetType type, bool present);
// Nearly grey, for items that do not sound.
QColor getVeryDesaturatedColor(const QColor& color);
QColor getDarkerColor(const QColor& color);
} // namespace AEColors
