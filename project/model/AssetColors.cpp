#include "project/model/AssetColors.h"

namespace AEColors {

AssetColors getAssetColor(AEAssetType type, bool present) {
    QColor base;
    switch (type) {
    case AEAssetType::speech:
        base = QColor(0x56, 0xb4, 0xe9); // sky blue
        break;
    case AEAssetType::jingle:
        base = QColor(0xe6, 0x9f, 0x00); // orange
        break;
    case AEAssetType::music:
        base = QColor(0xcc, 0x79, 0xa7); // reddish purple
        break;
    case AEAssetType::bgm:
        base = QColor(0x00, 0x9e, 0x73); // bluish green
        break;
    case AEAssetType::ad:
        base = QColor(0xd5, 0x5e, 0x00); // vermilion
        break;
    case AEAssetType::effect:
        base = QColor(0xf0, 0xe4, 0x42); // yellow
        break;
    case AEAssetType::silence:
        base = QColor(0x88, 0x88, 0x88);
        break;
    }
    if (!present) // missing media reads as a grey ghost of its role
        base = QColor::fromHsv(base.hsvHue(), base.hsvSaturation() / 4, 110);
    return {base.darker(260), base.lighter(115)};
}

QColor getVeryDesaturatedColor(const QColor& color) {
    const QColor hsv = color.toHsv();
    return QColor::fromHsv(hsv.hsvHue(), hsv.hsvSaturation() / 6, hsv.value(), color.alpha());
}

QColor getDarkerColor(const QColor& color) {
    return color.darker(170);
}

} // namespace AEColors
