#include "timeline/model/AETimeLineItem.h"

#include "foundation/Hallard.h"
#include "foundation/Log.h"
#include "playback/RPlayer.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDucking.h"
#include "project/model/AEBGMSettings.h"
#include "timeline/model/AEDucking.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AEKeyframeView.h"
#include "timeline/model/DragAreaView.h"
#include "timeline/model/SimpleRound.h"

#include <QPainter>
#include <algorithm>

std::shared_ptr<AEKeyframeViewSetup> AETimeLineItem::kfSetup = std::make_shared<AEKeyframeViewSetup>();

namespace {

// A round mark of 10 pixels, for a build whose resources carry no keyframe images.
QImage drawnMark(const QColor& fill) {
    QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(QPen(QColor(20, 20, 20), 1.5));
    painter.setBrush(fill);
    painter.drawEllipse(QRectF(1, 1, 8, 8));
    return image;
}

std::optional<QImage> resourceImage(const QString& name, const QColor& fallback) {
    QImage image(":/images/" + name + ".png");
    if (image.isNull()) return drawnMark(fallback);
    return image;
}

} // namespace

std::shared_ptr<AETimeLineItem> AETimeLineItem::make(const std::shared_ptr<AEAsset>& asset,
                                                     const std::optional<QString>& id, int64_t lane,
                                                     double inTime, const std::optional<AETimeRange>& range,
                                                     const std::shared_ptr<RPlayer>& player) {
    std::shared_ptr<AETimeLineItem> item(new AETimeLineItem());
    item->initialise(asset, lane, inTime, range);
    item->id =
        id ? *id
           : hallard_getNewId(asset->name + QString::number(lane) + QString::number(item->inTime, 'g', 17));
    item->player = player;
    if (!item->player) item->makePlayer();
    item->attachKeyframeView();
    item->updateGlobalKFs();
    return item;
}

void AETimeLineItem::initialise(const std::shared_ptr<AEAsset>& source, int64_t onLane, double at,
                                const std::optional<AETimeRange>& played) {
    asset = source;
    lane = onLane;
    inTime = simpleRound(at);
    range = played ? *played : AETimeRange(0, simpleRound(source->duration));
    volumeKFs = std::make_shared<AEKeyframeList>(0);
    fadeOutKFS = std::make_shared<AEKeyframeList>(0);
    globalKFS = std::make_shared<AEKeyframeList>(0);
}

void AETimeLineItem::makePlayer() {
    if (asset->recording || asset->type == AEAssetType::silence) return;
    // Named by the item: the polling timer of each player must be its own.
    if (const auto path = asset->getUsableFilePath()) player = std::make_shared<RPlayer>(id, *path);
}

void AETimeLineItem::attachKeyframeView() {
    kfView = std::make_shared<AEKeyframeView>();
    kfView->setup = kfSetup;
    kfView->minValue = -60.0;
    kfView->maxValue = 12.0;
    kfView->keyframes = volumeKFs;
    volumeKFs->sortKFs();
    bindKeyframeView();
}

void AETimeLineItem::bindKeyframeView() {
    std::weak_ptr<AETimeLineItem> weak = weak_from_this();
    kfView->keyframeListModifiedCallback = [weak] {
        if (auto self = weak.lock()) self->updateGlobalKFs();
    };
}

void AETimeLineItem::startup() {
    const QColor plain(0xf5, 0xf5, 0xf5);
    const QColor selected(0xff, 0x8c, 0x1a);
    const QColor ducking(0x56, 0xb4, 0xe9);
    kfSetup->kfImage = resourceImage("volumeKeyframe (0-00-00-00)", plain);
    kfSetup->kfSelectedImage = resourceImage("volumeKeyframeSelected (0-00-00-00)", selected);
    kfSetup->kfMouseSelectedImage = resourceImage("volumeKeyframeSelected (0-00-00-00)", selected);
    kfSetup->kfFlag0SelectedImage = resourceImage("volumeKeyframeDucking", ducking);
    kfSetup->kfFlag1SelectedImage = resourceImage("volumeKeyframeDucking", ducking);
    // Over the dark fill of the lanes.
    kfSetup->lineColor = QColor(0xf5, 0xf5, 0xf5, 0xd0);
}

bool AETimeLineItem::isBGM() const {
    return asset->type == AEAssetType::bgm;
}

double AETimeLineItem::outTime() const {
    if (isBGM() && bgmOutTime > 0) return bgmOutTime;
    const double assetEnd = isBGM() ? range.o : 0;
    if (assetEnd == 0) return simpleRound(inTime + range.duration());
    // An uncomputed music item lasts at least to its asset's end, whatever its start.
    return simpleRound(std::max(inTime + range.duration(), assetEnd));
}

double AETimeLineItem::getLocalTime(double t) const {
    return simpleRound(t - inTime);
}

double AETimeLineItem::getGlobalTime(double assetTime) const {
    return simpleRound(assetTime + inTime - range.i);
}

AETimeRange AETimeLineItem::getRangeInTimeline() const {
    return isBGM() ? AETimeRange(inTime, bgmOutTime) : AETimeRange(inTime, outTime());
}

std::shared_ptr<AETimeLineItem> AETimeLineItem::duplicate() const {
    std::shared_ptr<AETimeLineItem> copy(new AETimeLineItem());
    copy->initialise(asset, lane, inTime, range.duplicate());
    copy->id = id;
    copy->player = player;
    copy->active = active;
    copy->solo = solo;
    copy->selected = selected;
    copy->playing = playing;
    copy->playSpeedRate = playSpeedRate;
    copy->bgmOutTime = bgmOutTime;
    for (const auto& marker : markers)
        copy->markers.push_back(marker->duplicate());
    copy->takeEnvelopeOf(*this);
    return copy;
}

void AETimeLineItem::setVolumeKFs(std::shared_ptr<AEKeyframeList> list) {
    volumeKFs = std::move(list);
    kfView->keyframes = volumeKFs;
    // The applied envelope is always derived, so it follows at once.
    updateGlobalKFs();
}

void AETimeLineItem::takeEnvelopeOf(const AETimeLineItem& source) {
    kfView = source.kfView->duplicate();
    // The copied editor must update this item, not the one it came from.
    bindKeyframeView();
    setVolumeKFs(source.volumeKFs->duplicate());
}

void AETimeLineItem::updateGlobalKFs() {
    if (fadeOutKFS && !fadeOutKFS->keyframes.empty()) {
        globalKFS = volumeKFs->keyframes.empty() ? fadeOutKFS : volumeKFs->convolution(*fadeOutKFS);
    } else {
        globalKFS = volumeKFs;
    }
}

std::shared_ptr<AEMarker> AETimeLineItem::addMarker(std::optional<double> localTime,
                                                    std::optional<double> globalTime, const QString& notes,
                                                    AEMarkerType type) {
    const double at = localTime ? *localTime : globalTimeToAssetTime(globalTime.value_or(0));
    auto marker = std::make_shared<AEMarker>(at, std::nullopt, type, notes);
    markers.push_back(marker);
    return marker;
}

std::vector<std::shared_ptr<AEMarker>> AETimeLineItem::getVisibleMarkers() const {
    std::vector<std::shared_ptr<AEMarker>> visible;
    const auto collect = [&](const std::vector<std::shared_ptr<AEMarker>>& list) {
        for (const auto& marker : list) {
            if (marker->inTime < range.i || marker->inTime > range.o) continue;
            auto shown = marker->duplicate();
            shown->inTime = marker->inTime - range.i + inTime;
            visible.push_back(std::move(shown));
        }
    };
    collect(markers);
    collect(asset->markers);
    return visible;
}

void AETimeLineItem::deleteMarker(const AEMarker& marker) {
    const auto sameId = [&](const std::shared_ptr<AEMarker>& m) { return m->id == marker.id; };
    if (auto found = std::find_if(markers.begin(), markers.end(), sameId); found != markers.end()) {
        markers.erase(found);
        return;
    }
    auto& own = asset->markers;
    if (auto found = std::find_if(own.begin(), own.end(), sameId); found != own.end()) own.erase(found);
}

std::optional<QXOnOffList> AETimeLineItem::getOnOffClusters() const {
    if (!asset || !asset->assetDucking) return std::nullopt;
    const auto analysis = asset->assetDucking->duckingClusters();
    if (!analysis) return std::nullopt;
    return AEDucking::clustersInTimeline(*analysis, inTime, range);
}

void AETimeLineItem::setFadeOutKFs() {
    if (!isBGM()) return;
    const double end = globalTimeToAssetTime(bgmOutTime);
    const double fade = asset->bgmSettings ? asset->bgmSettings->fadeOut : 5.0;
    fadeOutKFS = std::make_shared<AEKeyframeList>(0);
    fadeOutKFS->setKeyframe(end - fade, std::nullopt, true);
    fadeOutKFS->setKeyframe(end, -60.0, true);
    updateGlobalKFs();
}

void AETimeLineItem::removeFadeOutKFs() {
    // Fade points once lived in the envelope itself, flagged.
    if (kfView && kfView->keyframes) kfView->keyframes->removeByFlag(0);
    fadeOutKFS.reset();
}

void AETimeLineItem::dragIn(DragAction action, QPointF delta) {
    if (action == DragAction::started) {
        dragging = AETimeLineDraggingType::leftBorder;
        return;
    }
    range.i = simpleRound(std::clamp(range.i + delta.x(), 0.0, range.o));
    if (action == DragAction::ended) dragging = AETimeLineDraggingType::none;
}

void AETimeLineItem::dragOut(DragAction action, QPointF delta) {
    if (action == DragAction::started) {
        dragging = AETimeLineDraggingType::rightBorder;
        return;
    }
    const double end = asset ? asset->duration : range.o;
    range.o = simpleRound(std::clamp(range.o + delta.x(), range.i, std::max(range.i, end)));
    if (action == DragAction::ended) dragging = AETimeLineDraggingType::none;
}
