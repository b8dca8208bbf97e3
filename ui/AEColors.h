#pragma once
// Named colours of the interface, shared so that panels drawn by hand match each other.

#include <QColor>

namespace AEColors {
inline const QColor darkGrey{0x33, 0x33, 0x33};
inline const QColor mediumGrey{0x8c, 0x8c, 0x8c};
// Accents of the episode list.
inline const QColor lightText{0xe6, 0xe6, 0xe6};
inline const QColor dimText{0x9a, 0x9a, 0x9a};
inline const QColor accent{0xe0, 0xa0, 0x30};
} // namespace AEColors
