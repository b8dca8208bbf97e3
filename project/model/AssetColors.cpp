#include "project/model/AssetColors.h"

namespace AEColors {

AssetColors getAssetColor(AEAssetType type, bool present) {
    QColor base;
    switch (type) {
    case AEAssetType::speech:
        base = QColor(0x3f, 0x7f, 0xbf);
        break;
    case AEAssetType::jingle:
        base = QColor(0xd0, 0x8a, 0x2e);
        break;
    case AEAssetType::music:
        base = QColor(0x8e, 0x5c, 0xc2);
        break;
    case AEAssetType::bgm:
        base = QColor(0x3f, 0xa3, 0x7a);
        break;
    case AEAssetType::ad:
        base = QColor(0xc2, 0x4e, 0x5a);
        break;
    case AEAssetType::effect:
        base = QColor(0xc9, 0xb0, 0x3a);
        break;
    case AEAssetType::silence:
        base = QColor(0x55, 0x55, 0x55);
        break;
    }
    if (!present) // missing media reads as a grey ghost of its role
        base = QColor::fromHsv(base.hsvHue(), base.hsvSaturation() / 4, 110);
    return {base.darker(160), base.lighter(130)};
}

} // namespace AEColors
