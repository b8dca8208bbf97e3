#pragma once
// The sheet in front of cleaning an asset: keep the source beside the cleaned copy ("Leave") or let the
// copy replace it ("Remove"). Main thread.

#include <QDialog>
#include <functional>
#include <memory>

class AEAsset;
class QRadioButton;

class BrightwashAssetAlertVC : public QDialog {
public:
    // delegate(row, mustRemove) starts the clean.
    BrightwashAssetAlertVC(std::shared_ptr<AEAsset> asset, int assetRow,
                           std::function<void(int row, bool mustRemove)> delegate, QWidget* parent = nullptr);

    QRadioButton* radioLeave = nullptr;
    QRadioButton* radioRemove = nullptr;
    QString radio = "Leave";
    std::function<void(int, bool)> delegate;
    std::shared_ptr<AEAsset> asset;
    int assetRow = -1;

    void okPressed();
    void forgetIt_pressed();

private:
    void doBrightwash();
};
