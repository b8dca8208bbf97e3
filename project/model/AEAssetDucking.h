#pragma once
// Where an asset has speech, as seen by the ducking of background music. The record only: the
// analysis that fills it and its file under the working folder come with the ducking work.

#include <QString>

enum class QXPersistenceStatus { none, generating, saved };

class AEAssetDucking {
public:
    explicit AEAssetDucking(const QString& assetId) : qxppUniqueId(assetId) {}

    static constexpr double minSpikeDuration = 0.5;
    static constexpr double minPauseDuration = 1.25;
    static constexpr int reduceFactor = 30;

    QString qxppUniqueId;
    QXPersistenceStatus qxppStatus = QXPersistenceStatus::none;
};
