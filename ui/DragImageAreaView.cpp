#include "ui/DragImageAreaView.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPainter>
#include <QUrl>
#include <QVBoxLayout>

namespace {
QStringList imagePaths(const QMimeData* mime) {
    QStringList paths;
    if (!mime || !mime->hasUrls()) return paths;
    for (const QUrl& url : mime->urls())
        if (url.isLocalFile() && DragImageAreaView::isImageFile(url.toLocalFile()))
            paths << url.toLocalFile();
    return paths;
}
} // namespace

DragImageAreaView::DragImageAreaView(QWidget* parent) : QFrame(parent) {
    setAcceptDrops(true);
    setFrameShape(QFrame::StyledPanel);
    setMinimumSize(140, 140);
}

bool DragImageAreaView::isImageFile(const QString& path) {
    static const QStringList kinds = {"png", "jpg", "jpeg", "gif", "bmp", "tif", "tiff", "webp"};
    return kinds.contains(QFileInfo(path).suffix().toLower());
}

void DragImageAreaView::setImage(const QImage& image) {
    image_ = image;
    update();
}

void DragImageAreaView::dragEnterEvent(QDragEnterEvent* event) {
    if (imagePaths(event->mimeData()).isEmpty()) return;
    hovering_ = true;
    update();
    event->acceptProposedAction();
}

void DragImageAreaView::dragLeaveEvent(QDragLeaveEvent*) {
    hovering_ = false;
    update();
}

void DragImageAreaView::dropEvent(QDropEvent* event) {
    hovering_ = false;
    update();
    const QStringList paths = imagePaths(event->mimeData());
    if (paths.isEmpty()) return;
    event->acceptProposedAction();
    if (onDropped) onDropped(paths);
}

void DragImageAreaView::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect inner = contentsRect().adjusted(6, 6, -6, -6);
    if (!image_.isNull()) {
        const QSize fitted = image_.size().scaled(inner.size(), Qt::KeepAspectRatio);
        QRect target(QPoint(0, 0), fitted);
        target.moveCenter(inner.center());
        painter.drawImage(target, image_);
    } else {
        QPen pen(palette().color(QPalette::PlaceholderText), 1.5, Qt::DashLine);
        painter.setPen(pen);
        painter.drawRoundedRect(inner, 8, 8);
    }
    if (hovering_) {
        QColor tint = palette().color(QPalette::Highlight);
        tint.setAlphaF(0.25);
        painter.fillRect(inner, tint);
    }
}

QHBoxLayout* imageBesideFields(DragImageAreaView* area, QWidget* caption, QWidget* choose, QLayout* fields) {
    auto* imageColumn = new QVBoxLayout;
    imageColumn->addWidget(area, 0, Qt::AlignHCenter);
    imageColumn->addWidget(caption);
    imageColumn->addWidget(choose);
    imageColumn->addStretch();
    auto* row = new QHBoxLayout;
    row->addLayout(imageColumn);
    row->addSpacing(12);
    row->addLayout(fields, 1);
    return row;
}
