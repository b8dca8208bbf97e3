#include "app/windows/AssetListWidget.h"

#include "foundation/Timecode.h"
#include "project/model/AEAsset.h"
#include "project/model/AESubsamples.h"
#include "project/model/AssetColors.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QUrl>
#include <algorithm>
#include <cmath>

namespace {

constexpr int kRowHeight = 34;
constexpr int kWaveWidth = 70;
constexpr int kAssetRole = Qt::UserRole + 1;

// Draws the envelope of a summary into `rect`, as many columns as it has pixels.
void paintWave(QPainter& p, const QRectF& rect, const AEAsset& asset, const QColor& colour) {
    if (!asset.subsamples) return;
    const auto samples = asset.subsamples->samples();
    if (!samples || samples->empty()) return;
    const int columns = std::max(1, int(rect.width()));
    const double perColumn = double(samples->size()) / columns;
    p.setPen(colour);
    for (int x = 0; x < columns; ++x) {
        const size_t from = size_t(x * perColumn);
        const size_t to = std::min(samples->size(), std::max(from + 1, size_t((x + 1) * perColumn)));
        float peak = 0;
        for (size_t i = from; i < to; ++i)
            peak = std::max(peak, std::abs((*samples)[i]));
        const double half = std::min(1.0, double(peak)) * rect.height() / 2;
        p.drawLine(QPointF(rect.left() + x, rect.center().y() - half),
                   QPointF(rect.left() + x, rect.center().y() + half));
    }
}

class AssetRowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return {QStyledItemDelegate::sizeHint(option, index).width(), kRowHeight};
    }
    void paint(QPainter* p, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        auto* list = static_cast<const AssetListWidget*>(parent());
        const auto asset = list->assetAt(index.row());
        if (!asset) return;
        p->save();
        const QRect r = option.rect.adjusted(2, 1, -2, -1);
        const bool selected = option.state & QStyle::State_Selected;
        p->fillRect(r, selected ? option.palette.highlight() : option.palette.base());
        const auto colours = AEColors::getAssetColor(asset->type, asset->present);
        p->fillRect(QRect(r.left(), r.top(), 5, r.height()), colours.background);
        const QRect wave(r.right() - kWaveWidth, r.top() + 3, kWaveWidth - 4, r.height() - 6);
        p->fillRect(wave, colours.background.darker(140));
        paintWave(*p, wave, *asset, colours.foreground);
        p->setPen(selected ? option.palette.highlightedText().color() : option.palette.text().color());
        const QRect text(r.left() + 10, r.top(), wave.left() - r.left() - 14, r.height());
        p->drawText(text.adjusted(0, 2, 0, -r.height() / 2), Qt::AlignLeft | Qt::AlignVCenter,
                    p->fontMetrics().elidedText(asset->name, Qt::ElideMiddle, text.width()));
        QFont small = p->font();
        small.setPointSizeF(small.pointSizeF() * 0.85);
        p->setFont(small);
        p->setPen(option.palette.placeholderText().color());
        p->drawText(text.adjusted(0, r.height() / 2, 0, -2), Qt::AlignLeft | Qt::AlignVCenter,
                    tc_getDurationShort(asset->duration) + (asset->present ? "" : "  (missing)"));
        p->restore();
    }
};

} // namespace

AssetListWidget::AssetListWidget(const QString& objectName, QWidget* parent) : QListWidget(parent) {
    setObjectName(objectName);
    setItemDelegate(new AssetRowDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::CopyAction);
    setUniformItemSizes(true);
}

void AssetListWidget::setAssets(const std::vector<std::shared_ptr<AEAsset>>& assets) {
    const int current = currentRow();
    assets_ = assets;
    clear();
    for (const auto& asset : assets_) {
        auto* row = new QListWidgetItem(asset ? asset->name : QString(), this);
        row->setData(kAssetRole, asset ? asset->id : QString());
        row->setToolTip(asset ? asset->originalFilePath : QString());
    }
    if (current >= 0 && current < count()) setCurrentRow(current);
}

std::shared_ptr<AEAsset> AssetListWidget::assetAt(int row) const {
    if (row < 0 || row >= int(assets_.size())) return nullptr;
    return assets_[size_t(row)];
}

QStringList AssetListWidget::localFiles(const QMimeData* mime) {
    QStringList paths;
    if (!mime || !mime->hasUrls()) return paths;
    for (const QUrl& url : mime->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

QStringList AssetListWidget::mimeTypes() const {
    return {kAssetMime};
}

QMimeData* AssetListWidget::mimeData(const QList<QListWidgetItem*>& items) const {
    if (items.isEmpty()) return nullptr;
    auto* mime = new QMimeData;
    mime->setData(kAssetMime, items.first()->data(kAssetRole).toString().toUtf8());
    return mime;
}

bool AssetListWidget::isOwnRowDrag(const QDropEvent* event) const {
    return reorderable_ && event->source() == this && event->mimeData()->hasFormat(kAssetMime);
}

void AssetListWidget::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls() || isOwnRowDrag(event))
        event->acceptProposedAction();
    else
        event->ignore();
}

void AssetListWidget::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData()->hasUrls() || isOwnRowDrag(event))
        event->acceptProposedAction();
    else
        event->ignore();
}

void AssetListWidget::dropEvent(QDropEvent* event) {
    if (isOwnRowDrag(event)) {
        const QString id = QString::fromUtf8(event->mimeData()->data(kAssetMime));
        const auto from =
            std::find_if(assets_.begin(), assets_.end(), [&](const auto& a) { return a && a->id == id; });
        if (from == assets_.end()) return event->ignore();
        const int row = indexAt(event->position().toPoint()).row();
        event->setDropAction(Qt::CopyAction);
        event->accept();
        emit rowMoved(static_cast<int>(from - assets_.begin()), row < 0 ? count() - 1 : row);
        return;
    }
    const QStringList paths = localFiles(event->mimeData());
    if (paths.isEmpty()) return event->ignore();
    event->acceptProposedAction();
    emit filesDropped(paths);
}
