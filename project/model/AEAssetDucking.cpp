#include "project/model/AEAssetDucking.h"

#include "dsp/ArrayUtils.h"
#include "foundation/Execution.h"
#include "foundation/Log.h"
#include "project/model/AEIngest.h"
#include "project/model/AESubsamples.h"
#include "project/model/DuckingSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

std::shared_ptr<AEAssetDucking> AEAssetDucking::make(const QString& id,
                                                     const std::shared_ptr<AESubsamples>& subSamples) {
    const QXDuckingSettings settings;
    std::shared_ptr<AEAssetDucking> ducking(new AEAssetDucking(id + "_" + settings.thresholdKey(), id));
    if (ducking->loadLocal()) {
        ducking->qxppStatus = QXPersistenceStatus::saved;
        return ducking;
    }
    if (!subSamples) return ducking;
    ducking->qxppStatus = QXPersistenceStatus::generating;
    std::weak_ptr<AEAssetDucking> weak = ducking;
    const float threshold = settings.threshold;
    Queue::execute([weak, subSamples, threshold] {
        auto self = weak.lock();
        if (!self) return;
        const auto summary = subSamples->samples();
        QXOnOffList clusters = analyse(*summary, threshold);
        self->saveLocal(clusters);
        self->setDuckingClusters(std::move(clusters));
        self->qxppStatus = QXPersistenceStatus::saved;
        XMain::execute(
            [assetId = self->assetId_] {
                if (analysedObserver) analysedObserver(assetId);
            },
            true);
    });
    return ducking;
}

QString AEAssetDucking::qxppSaveFolderPrefix() {
    if (AEIngest::workFolder.isEmpty()) return {};
    return AEIngest::workFolder + "LFSubsamples/";
}

QString AEAssetDucking::recordPath(const QString& uniqueId) {
    const QString folder = qxppSaveFolderPrefix();
    return folder.isEmpty() ? QString() : folder + uniqueId + ".json";
}

std::shared_ptr<const QXOnOffList> AEAssetDucking::duckingClusters() const {
    std::lock_guard lock(mutex_);
    return clusters_;
}

void AEAssetDucking::setDuckingClusters(QXOnOffList clusters) {
    auto published = std::make_shared<const QXOnOffList>(std::move(clusters));
    std::lock_guard lock(mutex_);
    clusters_ = std::move(published);
}

QXOnOffList AEAssetDucking::analyse(std::span<const float> summary, float threshold) {
    const auto levels = ArrayUtils::convertToDB(ArrayUtils::downsample(summary, reduceFactor), 32767.0f);
    QXOnOffList list;
    list.streamToEventsAndFilter(levels, threshold, timeUnit, minSpikeDuration, minPauseDuration);
    return list;
}

bool AEAssetDucking::loadLocal() {
    const QString& path = recordPath_;
    if (path.isEmpty() || !QFile::exists(path)) return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
    auto clusters = QXOnOffList::fromJson(doc.object().value("duckingClusters").toObject());
    if (!clusters) {
        qxLog("AEAssetDucking.loadLocal: unreadable record " + path + ", analysing again");
        return false;
    }
    setDuckingClusters(std::move(*clusters));
    return true;
}

void AEAssetDucking::saveLocal(const QXOnOffList& clusters) const {
    const QString& path = recordPath_;
    if (path.isEmpty()) return;
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    const QJsonObject record{{"duckingClusters", clusters.toJson()}};
    // A record that cannot be written leaves the analysis in memory only.
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(record).toJson()) < 0 || !file.commit())
        qxLog("AEAssetDucking.saveLocal: cannot write " + path);
}
