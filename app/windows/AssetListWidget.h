#pragma once
// One of the editing window's asset lists (the show's common assets or the episode's): a row per
// asset with its type colour, name, duration and a small waveform. Rows drag onto the timeline;
// files dropped from the desktop are handed on through filesDropped. Main thread.

#include <QListWidget>
#include <memory>
#include <vector>

class AEAsset;

class AssetListWidget : public QListWidget {
    Q_OBJECT
public:
    // The MIME type of an asset dragged from a list; the data is the asset's id.
    static constexpr const char* kAssetMime = "application/x-zendrel-asset";

    explicit AssetListWidget(const QString& objectName, QWidget* parent = nullptr);

    void setAssets(const std::vector<std::shared_ptr<AEAsset>>& assets);
    const std::vector<std::shared_ptr<AEAsset>>& assets() const { return assets_; }
    std::shared_ptr<AEAsset> assetAt(int row) const;

    // Rows dragged within the list move there (rowMoved tells the owner, who reorders its records).
    void setReorderable(bool on) { reorderable_ = on; }

    // Local paths of the files in a drop, folders and non-local entries left out.
    static QStringList localFiles(const QMimeData* mime);

signals:
    void filesDropped(const QStringList& paths);
    void rowMoved(int from, int to);

protected:
    QMimeData* mimeData(const QList<QListWidgetItem*>& items) const override;
    QStringList mimeTypes() const override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool isOwnRowDrag(const QDropEvent* event) const;

    std::vector<std::shared_ptr<AEAsset>> assets_;
    bool reorderable_ = false;
};
