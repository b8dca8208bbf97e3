#include "project/panels/AssetTypeButtons.h"

#include "project/model/AssetColors.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

namespace {

// A disc in the type's colour, the way the lists and the timeline show that type.
QIcon typeIcon(AEAssetType type) {
    QPixmap pixmap(28, 28);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const AEColors::AssetColors colors = AEColors::getAssetColor(type, true);
    painter.setBrush(colors.background);
    painter.setPen(QPen(colors.foreground, 2));
    painter.drawEllipse(QRectF(3, 3, 22, 22));
    painter.setPen(colors.foreground);
    painter.drawText(QRectF(3, 3, 22, 22), Qt::AlignCenter, AssetTypeButtons::typeName(type).left(1));
    return QIcon(pixmap);
}

} // namespace

QString AssetTypeButtons::typeName(AEAssetType type) {
    switch (type) {
    case AEAssetType::speech:
        return "Speech";
    case AEAssetType::jingle:
        return "Jingle";
    case AEAssetType::music:
        return "Music";
    case AEAssetType::bgm:
        return "Background Music";
    case AEAssetType::ad:
        return "Ad";
    default:
        return "Effect";
    }
}

AssetTypeButtons::AssetTypeButtons(AEAssetType checked, QWidget* parent) : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    for (size_t i = 0; i < kTypes.size(); ++i) {
        auto* button = new QToolButton(this);
        button->setCheckable(true);
        button->setIcon(typeIcon(kTypes[i]));
        button->setIconSize(QSize(28, 28));
        button->setToolTip(typeName(kTypes[i]));
        button->setObjectName("type_" + typeName(kTypes[i]));
        connect(button, &QToolButton::clicked, this, [this, i] {
            setChecked(kTypes[i]);
            emit typePressed(kTypes[i]);
        });
        row->addWidget(button);
        buttons_[i] = button;
    }
    row->addStretch();
    setChecked(checked);
}

void AssetTypeButtons::setChecked(AEAssetType type) {
    for (size_t i = 0; i < kTypes.size(); ++i)
        buttons_[i]->setChecked(kTypes[i] == type);
}

QToolButton* AssetTypeButtons::button(AEAssetType type) const {
    for (size_t i = 0; i < kTypes.size(); ++i)
        if (kTypes[i] == type) return buttons_[i];
    return nullptr;
}
