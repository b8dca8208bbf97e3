#include "project/model/DuckingSettings.h"

#include "foundation/Prefs.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

namespace {

QJsonObject loadSet(const char* label) {
    return QJsonDocument::fromJson(prefs_getValueString(label, "").toUtf8()).object();
}

void saveSet(const char* label, const QJsonObject& set) {
    prefs_setValueString(label, QString::fromUtf8(QJsonDocument(set).toJson(QJsonDocument::Compact)));
}

template <typename T> void readNumber(const QJsonObject& set, const char* key, T& field) {
    if (set.value(key).isDouble()) field = static_cast<T>(set.value(key).toDouble());
}

void readBool(const QJsonObject& set, const char* key, bool& field) {
    if (set.value(key).isBool()) field = set.value(key).toBool();
}

} // namespace

QXDuckingSettings::QXDuckingSettings() {
    const QJsonObject set = loadSet(kLabel);
    readNumber(set, "threshold", threshold);
    readNumber(set, "attackWindow", attackWindow);
    readNumber(set, "attackPreRoll", attackPreRoll);
    readNumber(set, "releaseWindow", releaseWindow);
    readNumber(set, "releasePreRoll", releasePreRoll);
    readNumber(set, "decrease", decrease);
}

void QXDuckingSettings::save() const {
    saveSet(kLabel, {{"threshold", threshold},
                     {"attackWindow", attackWindow},
                     {"attackPreRoll", attackPreRoll},
                     {"releaseWindow", releaseWindow},
                     {"releasePreRoll", releasePreRoll},
                     {"decrease", decrease}});
}

QString QXDuckingSettings::thresholdKey() const {
    return QString::number(static_cast<long long>(std::trunc(-static_cast<double>(threshold))));
}

AEDuckingSettings::AEDuckingSettings() {
    const QJsonObject set = loadSet(kLabel);
    readBool(set, "duckToSpeech", duckToSpeech);
    readBool(set, "duckToSFX", duckToSFX);
    readBool(set, "duckToJingles", duckToJingles);
    readBool(set, "duckToAdv", duckToAdv);
    readBool(set, "deleteKF", deleteKF);
}

void AEDuckingSettings::save() const {
    saveSet(kLabel, {{"duckToSpeech", duckToSpeech},
                     {"duckToSFX", duckToSFX},
                     {"duckToJingles", duckToJingles},
                     {"duckToAdv", duckToAdv},
                     {"deleteKF", deleteKF}});
}
