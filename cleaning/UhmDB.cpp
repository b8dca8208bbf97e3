#include "cleaning/UhmDB.h"

#include "dsp/ArrayUtils.h"
#include "foundation/Log.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <algorithm>
#include <limits>

UhmDB::UhmDB(QString dbPath) : dbPath(std::move(dbPath)) {
    loadFromFile();
}

std::vector<float> UhmDB::normalizeFingerprint(std::span<const float> fingerprint) {
    float divisor = fingerprint.empty() ? 1.0f : *std::max_element(fingerprint.begin(), fingerprint.end());
    // Digital silence: nothing to scale by, and dividing would make NaNs.
    if (divisor == 0.0f) divisor = 1.0f;
    return ArrayUtils::multiply(fingerprint, 1.0f / divisor);
}

float UhmDB::getFingerprintDifference(std::span<const float> f0, std::span<const float> f1) {
    return ArrayUtils::deviation(ArrayUtils::subtract(f0, f1));
}

void UhmDB::addFingerprint(std::vector<float> fingerprint) {
    fingerprintList.push_back(std::move(fingerprint));
}

float UhmDB::getDifferenceFromList(std::span<const float> fingerprint) const {
    float best = std::numeric_limits<float>::infinity();
    for (const auto& stored : fingerprintList)
        best = std::min(best, getFingerprintDifference(fingerprint, stored));
    return best;
}

bool UhmDB::saveToFile() const {
    QJsonArray list;
    for (const auto& fingerprint : fingerprintList) {
        QJsonArray values;
        for (float v : fingerprint)
            values.append(double(v));
        list.append(values);
    }
    QSaveFile file(dbPath);
    if (!file.open(QIODevice::WriteOnly)) {
        qxLog("UhmDB.saveToFile " + dbPath + ": " + file.errorString());
        return false;
    }
    file.write(QJsonDocument(QJsonObject{{"fingerprintList", list}}).toJson(QJsonDocument::Compact));
    if (!file.commit()) {
        qxLog("UhmDB.saveToFile " + dbPath + ": " + file.errorString());
        return false;
    }
    return true;
}

void UhmDB::loadFromFile() {
    fingerprintList.clear();
    QFile file(dbPath);
    if (!file.open(QIODevice::ReadOnly)) return;
    const QJsonArray list =
        QJsonDocument::fromJson(file.readAll()).object().value("fingerprintList").toArray();
    for (const QJsonValue& entry : list) {
        std::vector<float> fingerprint;
        for (const QJsonValue& v : entry.toArray())
            fingerprint.push_back(float(v.toDouble()));
        fingerprintList.push_back(std::move(fingerprint));
    }
}
