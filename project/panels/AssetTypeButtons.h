#pragma once
// The six type buttons every asset panel shows, each with the type's colour disc; exactly one is
// checked. Main thread.

#include "project/model/AEAssetType.h"

#include <QWidget>
#include <array>

class QToolButton;

class AssetTypeButtons : public QWidget {
    Q_OBJECT
public:
    // In this order: speech, jingle, music, bgm, ad, effect.
    static constexpr std::array<AEAssetType, 6> kTypes{AEAssetType::speech, AEAssetType::jingle,
                                                       AEAssetType::music,  AEAssetType::bgm,
                                                       AEAssetType::ad,     AEAssetType::effect};
    static QString typeName(AEAssetType type);

    explicit AssetTypeButtons(AEAssetType checked, QWidget* parent = nullptr);
    void setChecked(AEAssetType type);
    QToolButton* button(AEAssetType type) const;

signals:
    void typePressed(AEAssetType type);

private:
    std::array<QToolButton*, 6> buttons_{};
};
