#include "timeline/view/TimelinePainter.h"

#include "foundation/Execution.h"
#include "project/model/AEAsset.h"
#include "project/model/AESubsamples.h"
#include "project/model/AssetColors.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/AELane.h"
#include "timeline/model/AERuler.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/DragAreaView.h"
#include "timeline/model/VirtualScroller.h"
#include "timeline/view/ImageCache.h"
#include "timeline/view/PlotWaveform.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace {
constexpr double kFastAbove = 120.0;
constexpr double kLinkRadius = 3.0;
constexpr int kRulerGap = 8;
const QColor kBackdrop(0x26, 0x26, 0x28);
const QColor kLaneBand(0x30, 0x30, 0x33);
const QColor kAssetMarker(0x9a, 0x9a, 0x9a);
const QColor kItemMarker(0xf5, 0xf5, 0xf5);
const QColor kChapterMarker(0xff, 0xd0, 0x60);
const QColor kHandle(255, 255, 255, 70);

struct MarkerMark {
    double x; // in the item's image
    AEMarkerType type;
    bool ofAsset;
};

// What one item's plot needs, gathered on the main thread so the plot itself reads no shared state.
struct ItemJob {
    std::shared_ptr<AETimeLineItem> item;
    QRectF laneRect;
    QRectF imageRect;
    AETimeRange range;
    AEColors::AssetColors colors;
    QString name;
    bool selected = false;
    bool loaded = true;
    bool overlay = false;
    QColor overlayColor;
    WaveformPlot wave;
    bool withWave = true;
    std::vector<MarkerMark> markers;
    QImage image;
};

void drawMarker(QPainter& p, const MarkerMark& m, double height) {
    const QColor color = m.ofAsset                         ? kAssetMarker
                         : m.type == AEMarkerType::chapter ? kChapterMarker
                                                           : kItemMarker;
    p.setPen(QPen(color, 1));
    p.drawLine(QPointF(m.x, 0), QPointF(m.x, height));
    QPainterPath flag;
    flag.moveTo(m.x, 0);
    flag.lineTo(m.x + (m.type == AEMarkerType::chapter ? 8 : 6), 0);
    flag.lineTo(m.x, m.type == AEMarkerType::chapter ? 10 : 8);
    flag.closeSubpath();
    p.fillPath(flag, color);
}

// AEAsset's plot: fill, waveform, name, markers.
void plotItem(ItemJob& job, qreal dpr) {
    const QSize size(static_cast<int>(std::ceil(job.imageRect.width())),
                     static_cast<int>(std::ceil(job.imageRect.height())));
    if (job.imageRect.width() < 1.0 || size.isEmpty()) return;
    QImage image(size * dpr, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(job.overlay ? job.overlayColor : job.colors.background);
    QPainter p(&image);
    if (job.withWave) {
        job.wave.size = size;
        job.wave.devicePixelRatio = dpr;
        const QImage wave = PlotWaveform::plotBySubsamples(job.wave);
        if (!wave.isNull()) p.drawImage(QPointF(0, 0), wave);
    } else {
        p.setPen(job.colors.foreground);
        p.drawRect(QRectF(0, 0, size.width() - 1, size.height() - 1));
    }
    QFont font = p.font();
    font.setPixelSize(11);
    p.setFont(font);
    if (!job.selected && size.width() > 12) {
        // On a backing of the fill, so the name reads over a busy waveform.
        const QRectF box = p.fontMetrics().boundingRect(job.name).adjusted(-3, 0, 3, 0);
        const QRectF label(2, 2, std::min(box.width(), size.width() - 4.0), 15);
        QColor backing = job.colors.background;
        backing.setAlpha(210);
        p.fillRect(label, backing);
        p.setPen(AEColors::getDarkerColor(job.colors.foreground).lighter(150));
        p.drawText(label.adjusted(3, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, job.name);
    }
    if (!job.loaded) {
        p.setPen(job.colors.foreground);
        p.drawText(QRectF(5, size.height() - 19, size.width() - 8, 14), Qt::AlignLeft | Qt::AlignVCenter,
                   QStringLiteral("Calculating Waveform..."));
    }
    for (const auto& m : job.markers)
        drawMarker(p, m, size.height());
    p.end();
    job.image = image;
}

void drawEnvelope(QPainter& p, AEKeyframeView& kf, double imageHeight) {
    if (!kf.keyframes || !kf.screenRect) return;
    const QRectF r = *kf.screenRect;
    const auto at = [&](double t, double v) {
        return QPointF(kf.time2Loc(t), imageHeight - kf.value2Loc(v));
    };
    const QColor line = kf.setup ? kf.setup->lineColor : QColor(Qt::white);
    p.save();
    p.setClipRect(TimelinePainter::toImage(r, imageHeight));
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(line, 1.5));
    const auto& points = kf.keyframes->keyframes;
    if (points.size() < 2) {
        const double v = points.empty() ? kf.keyframes->defaultValue : points.front()->value;
        const double y = imageHeight - kf.value2Loc(v);
        p.drawLine(QPointF(r.left(), y), QPointF(r.right(), y));
        p.restore();
        if (points.empty()) return;
    } else {
        QPolygonF poly;
        poly << QPointF(std::max(r.left(), kf.time2Loc(kf.timeRange.i)), at(0, points.front()->value).y());
        for (const auto& k : points)
            poly << at(k->time, k->value);
        poly << QPointF(r.right(), at(0, points.back()->value).y());
        p.drawPolyline(poly);
        p.restore();
    }
    for (const auto& k : points) {
        const QPointF c = at(k->time, k->value);
        if (c.x() < r.left() - 6 || c.x() > r.right() + 6) continue;
        const std::optional<QImage>* mark = &kf.setup->kfImage;
        if (k->selected)
            mark = &kf.setup->kfSelectedImage;
        else if (k->flag0)
            mark = &kf.setup->kfFlag0SelectedImage;
        else if (k->flag1)
            mark = &kf.setup->kfFlag1SelectedImage;
        if (kf.setup && *mark && !(*mark)->isNull()) {
            const QSizeF half = QSizeF((*mark)->size()) / (2.0 * (*mark)->devicePixelRatio());
            p.drawImage(c - QPointF(half.width(), half.height()), **mark);
        } else {
            p.setBrush(k->selected ? QColor(Qt::white) : line);
            p.drawEllipse(c, 3.5, 3.5);
        }
    }
}

void drawRuler(QPainter& p, AETimeLine& tl, double width) {
    if (!tl.view || !tl.view->ruler) return;
    AERuler& ruler = *tl.view->ruler;
    ruler.width = width;
    const QImage image = ruler.draw();
    if (!image.isNull()) p.drawImage(QRectF(0, 0, width, ruler.height), image);
}
} // namespace

int TimelinePainter::lanesHeightFor(int imageHeight) {
    return std::max(40, imageHeight - AETimeLineLanesHelper::kBgmBaseline -
                            AETimeLineLanesHelper::kRulerHeight - kRulerGap);
}

QRectF TimelinePainter::toImage(const QRectF& laneRect, double imageHeight) {
    return QRectF(laneRect.x(), imageHeight - laneRect.y() - laneRect.height(), laneRect.width(),
                  laneRect.height());
}

TimelinePainter::Result TimelinePainter::draw(AETimeLine& tl, QSize size, const Options& options) {
    Result result;
    const qreal dpr = options.devicePixelRatio;
    QImage image(size * dpr, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(kBackdrop);
    const double H = size.height();
    QPainter p(&image);
    for (const auto& lane : tl.lanes)
        p.fillRect(toImage(QRectF(0, lane->y, size.width(), lane->height), H), kLaneBand);

    // Geometry first, on this thread: it may lay lanes out.
    const double visibleLength =
        tl.virtualScroller ? tl.virtualScroller->visibleRange.length() : tl.currentViewRange.duration();
    const VSRange visible = tl.virtualScroller ? tl.virtualScroller->visibleRange
                                               : VSRange{tl.currentViewRange.i, tl.currentViewRange.o};
    tl.mustBeFast = visibleLength > kFastAbove;
    const double perPixel = tl.xToTime(1.0, true, false);
    std::vector<ItemJob> jobs;
    for (const auto& item : tl.getCollectedItems()) {
        if (!item->asset) continue;
        const double end = item->isBGM() ? std::min(item->outTime(), item->bgmOutTime) : item->outTime();
        if (end <= visible.i || item->inTime >= visible.o) continue;
        const double ti = std::max(item->inTime, visible.i);
        const double to = std::min(end, visible.o);
        const AETimeRange range(item->getLocalTime(ti) + item->range.i,
                                item->getLocalTime(to) + item->range.i);
        ItemJob job;
        job.item = item;
        job.laneRect = tl.getItemRect(item, range);
        if (job.laneRect.isEmpty()) continue;
        // Whole pixels, so neighbours meet without seams.
        job.laneRect.setLeft(std::round(job.laneRect.left()));
        job.laneRect.setRight(std::round(job.laneRect.right()));
        job.imageRect = toImage(job.laneRect, H);
        job.range = range;
        const AEAsset& asset = *item->asset;
        job.colors = AEColors::getAssetColor(asset.type, asset.present);
        if (!tl.itemCanBePlayed(item)) {
            job.colors.foreground = AEColors::getVeryDesaturatedColor(job.colors.foreground);
            job.colors.background = AEColors::getVeryDesaturatedColor(job.colors.background);
        }
        job.selected = item->selected;
        if (job.selected) std::swap(job.colors.foreground, job.colors.background);
        job.name = asset.name;
        job.overlay = asset.drawOverlay;
        job.overlayColor = asset.plotOverlayColor;
        job.loaded = !asset.subsamples || asset.subsamples->loaded.load();
        result.waitingForSummaries = result.waitingForSummaries || !job.loaded;
        job.withWave = asset.type != AEAssetType::silence;
        job.wave.assetId = asset.id;
        job.wave.range = range;
        job.wave.secondsPerPixel = perPixel;
        job.wave.foreground = job.colors.foreground;
        if (asset.subsamples) {
            job.wave.samples = asset.subsamples->samples();
            job.wave.samplesPerSecond = asset.subsamples->samplesPerSecondD;
        }
        job.wave.volumeKF = item->globalKFS ? item->globalKFS->duplicate() : nullptr;
        job.wave.gainDb = asset.volumeGain;
        job.wave.singleBand = options.singleBand;
        job.wave.fast = tl.mustBeFast;
        using Markers = std::vector<std::shared_ptr<AEMarker>>;
        for (const Markers* list : {static_cast<const Markers*>(&item->markers), &asset.markers}) {
            for (const auto& m : *list) {
                if (m->inTime < range.i || m->inTime > range.o) continue;
                const double x = tl.timeToX(m->inTime + item->inTime - item->range.i) - job.laneRect.left();
                job.markers.push_back({x, m->type, list == &asset.markers});
            }
        }
        jobs.push_back(std::move(job));
    }

    MultiFork fork;
    for (auto& job : jobs) {
        fork.startThread();
        Queue::execute(
            [&job, &fork, dpr] {
                plotItem(job, dpr);
                fork.end();
            },
            true);
    }
    fork.join();

    for (const auto& job : jobs)
        if (!job.image.isNull()) p.drawImage(job.imageRect.topLeft(), job.image);

    // Link lines join attached items to the main lane.
    for (const auto& job : jobs) {
        if (job.item->lane == 0) continue;
        const double link = job.item->lane > 0 ? AETimeLineLanesHelper::upperLinkH.load()
                                               : AETimeLineLanesHelper::lowerLinkH.load();
        const double x = job.laneRect.left() + 1.0;
        const double from = job.item->lane > 0 ? job.laneRect.top() : job.laneRect.bottom();
        if (job.item->inTime < visible.i) continue;
        p.setPen(QPen(job.colors.foreground, 1));
        p.drawLine(QPointF(x, H - from), QPointF(x, H - link));
        p.setRenderHint(QPainter::Antialiasing, true);
        p.setBrush(job.colors.foreground);
        p.drawEllipse(QPointF(x, H - link), kLinkRadius, kLinkRadius);
        p.setRenderHint(QPainter::Antialiasing, false);
    }

    for (const auto& area : tl.dragAreaView->dragAreas)
        p.fillRect(toImage(area->rect, H).adjusted(area->tag < 0 ? 0 : 8, 0, area->tag < 0 ? -8 : 0, 0),
                   kHandle);

    if (options.showVolumeKFs) {
        for (const auto& job : jobs) {
            if (!job.item->kfView) continue;
            AEKeyframeView& kf = *job.item->kfView;
            kf.keyframes = job.item->volumeKFs;
            kf.screenRect = job.laneRect;
            kf.timeRange = job.range;
            drawEnvelope(p, kf, H);
        }
    }
    drawRuler(p, tl, size.width());
    p.end();
    ImageCache::shared().flush();
    result.image = image;
    return result;
}
