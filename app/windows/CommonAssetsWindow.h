#pragma once
// The show's common assets in a window of their own: rows drag onto a timeline or into a new order,
// files dropped here become common assets, and each row's menu opens the asset inspector or removes
// the asset from the show (its media stay: episodes may still use them). Every change lands in
// AEAssetListVCGlobal and the show, which is saved. Main thread.

#include <QWidget>
#include <functional>

class AEAssetMiniInspectorVC;
class AssetListWidget;

class CommonAssetsWindow : public QWidget {
    Q_OBJECT
public:
    explicit CommonAssetsWindow(QWidget* parent = nullptr);

    // Files dropped on the list; the owner ingests them, then calls reload.
    std::function<void(const QStringList& paths)> filesDropped;

    void reload();
    void moveAsset(int from, int to);
    // Asks first ("Warning!"); false when the person said no or the row is gone.
    bool removePressed(int row);
    void openInspector(int row);
    void chooseType(int row);
    // The small name-and-type panel for a row, not yet shown; null for a row that is gone.
    AEAssetMiniInspectorVC* openMiniInspector(int row);
    AssetListWidget* list() const { return list_; }

private:
    void changed();
    AssetListWidget* list_;
};
