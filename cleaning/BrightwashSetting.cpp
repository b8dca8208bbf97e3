#include "cleaning/BrightwashSetting.h"

#include "foundation/Prefs.h"
#include "render/tools/SoxFilters.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <stdexcept>

QString toString(BWExportFormats format) {
    return format == BWExportFormats::mp3 ? "mp3" : "wave";
}

BWExportFormats exportFormatFromString(const QString& text) {
    return text == "mp3" ? BWExportFormats::mp3 : BWExportFormats::wave;
}

std::vector<BWEqBandSettings> BrightwashSetting::defaultEqualizer() {
    return soxUt_getStandardEq({-2, 0, 1, 0, 0, -1, 0, 2});
}

namespace {

// Reads the fields of one JSON object into a value; a present field of another kind throws.
class Reader {
public:
    explicit Reader(const QJsonObject& object) : object_(object) {}

    void get(const char* key, bool& out) const {
        if (const QJsonValue v = value(key); !v.isUndefined()) out = require(v.isBool(), v).toBool();
    }
    void get(const char* key, double& out) const {
        if (const QJsonValue v = value(key); !v.isUndefined()) out = require(v.isDouble(), v).toDouble();
    }
    void get(const char* key, float& out) const {
        double d = out;
        get(key, d);
        out = static_cast<float>(d);
    }
    void get(const char* key, int& out) const {
        if (const QJsonValue v = value(key); !v.isUndefined()) out = require(v.isDouble(), v).toInt();
    }
    void get(const char* key, QString& out) const {
        if (const QJsonValue v = value(key); !v.isUndefined()) out = require(v.isString(), v).toString();
    }
    QJsonObject object(const char* key) const {
        const QJsonValue v = value(key);
        return v.isUndefined() ? QJsonObject() : require(v.isObject(), v).toObject();
    }
    QJsonValue value(const char* key) const { return object_.value(QLatin1String(key)); }

    static const QJsonValue& require(bool ok, const QJsonValue& v) {
        if (!ok) throw std::invalid_argument("wrong kind");
        return v;
    }

private:
    QJsonObject object_;
};

QJsonObject gateJson(const BWGateSettings& g) {
    return {{"autoThreshold", g.autoThreshold},
            {"threshold", g.threshold},
            {"decay", g.decay},
            {"minDuration", g.minDuration},
            {"fadeInDuration", g.fadeInDuration},
            {"fadeOutDuration", g.fadeOutDuration},
            {"noisyEnironment", g.noisyEnironment},
            {"hysteresis", g.hysteresis},
            {"normalizeEachCluster", g.normalizeEachCluster},
            {"preRoll", g.preRoll},
            {"environmentNoiseLevel", g.environmentNoiseLevel}};
}

BWGateSettings gateFrom(const Reader& r) {
    BWGateSettings g;
    r.get("autoThreshold", g.autoThreshold);
    r.get("threshold", g.threshold);
    r.get("decay", g.decay);
    r.get("minDuration", g.minDuration);
    r.get("fadeInDuration", g.fadeInDuration);
    r.get("fadeOutDuration", g.fadeOutDuration);
    r.get("noisyEnironment", g.noisyEnironment);
    r.get("hysteresis", g.hysteresis);
    r.get("normalizeEachCluster", g.normalizeEachCluster);
    r.get("preRoll", g.preRoll);
    r.get("environmentNoiseLevel", g.environmentNoiseLevel);
    return g;
}

QJsonObject advancedJson(const BWGateAdvancedSettings& a) {
    const BWateAnalysisSubThresholdSettings& s = a.subThreshold;
    return {{"preEq", a.preEq},
            {"preEqLowCut", a.preEqLowCut},
            {"preEqHighCut", a.preEqHighCut},
            {"subThreshold", QJsonObject{{"convolution", s.convolution},
                                         {"cutOff", s.cutOff},
                                         {"sampling", s.sampling},
                                         {"rangeStart", s.rangeStart},
                                         {"rangeEnd", s.rangeEnd}}}};
}

BWGateAdvancedSettings advancedFrom(const Reader& r) {
    BWGateAdvancedSettings a;
    r.get("preEq", a.preEq);
    r.get("preEqLowCut", a.preEqLowCut);
    r.get("preEqHighCut", a.preEqHighCut);
    const Reader s(r.object("subThreshold"));
    s.get("convolution", a.subThreshold.convolution);
    s.get("cutOff", a.subThreshold.cutOff);
    s.get("sampling", a.subThreshold.sampling);
    s.get("rangeStart", a.subThreshold.rangeStart);
    s.get("rangeEnd", a.subThreshold.rangeEnd);
    return a;
}

QJsonObject compressorJson(const BWCompressorSetings& c) {
    return {{"ratio", c.ratio}, {"gain", c.gain}, {"attack", c.attack}, {"decay", c.decay}};
}

BWCompressorSetings compressorFrom(const Reader& r) {
    BWCompressorSetings c;
    r.get("ratio", c.ratio);
    r.get("gain", c.gain);
    r.get("attack", c.attack);
    r.get("decay", c.decay);
    return c;
}

QJsonObject uhmJson(const BWUhmSettings& u) {
    return {{"analisysInterval", u.analisysInterval},
            {"minimumLength", u.minimumLength},
            {"threshold", double(u.threshold)},
            {"crossDissolveMS", u.crossDissolveMS}};
}

BWUhmSettings uhmFrom(const Reader& r) {
    BWUhmSettings u;
    r.get("analisysInterval", u.analisysInterval);
    r.get("minimumLength", u.minimumLength);
    r.get("threshold", u.threshold);
    r.get("crossDissolveMS", u.crossDissolveMS);
    return u;
}

std::vector<BWEqBandSettings> equalizerFrom(const QJsonValue& v, std::vector<BWEqBandSettings> fallback) {
    if (v.isUndefined()) return fallback;
    std::vector<BWEqBandSettings> bands;
    for (const QJsonValue& band : Reader::require(v.isArray(), v).toArray()) {
        const Reader r(Reader::require(band.isObject(), band).toObject());
        BWEqBandSettings b;
        r.get("frequency", b.frequency);
        r.get("gain", b.gain);
        bands.push_back(b);
    }
    return bands;
}

} // namespace

QJsonObject BrightwashSetting::toJson() const {
    QJsonArray bands;
    for (const BWEqBandSettings& b : equalizer)
        bands.append(QJsonObject{{"frequency", b.frequency}, {"gain", b.gain}});
    return {{"doDenoiser", doDenoiser},
            {"doNoiseGate", doNoiseGate},
            {"doCompressor", doCompressor},
            {"doEqualizer", doEqualizer},
            {"doRemoveHum", doRemoveHum},
            {"doRemovePauses", doRemovePauses},
            {"doEraseUhm", doEraseUhm},
            {"denoiserLevel", denoiserLevel},
            {"gate", gateJson(gate)},
            {"advancedGate", advancedJson(advancedGate)},
            {"compressor", compressorJson(compressor)},
            {"equalizer", bands},
            {"pauseLength", pauseLength},
            {"pausesThreshold", pausesThreshold},
            {"uhmPrefs", uhmJson(uhmPrefs)},
            {"exportFormat", toString(exportFormat)},
            {"suffix", suffix},
            {"ingestInBackground", ingestInBackground}};
}

std::optional<BrightwashSetting> BrightwashSetting::fromJson(const QJsonObject& object) {
    try {
        const Reader r(object);
        BrightwashSetting s;
        r.get("doDenoiser", s.doDenoiser);
        r.get("doNoiseGate", s.doNoiseGate);
        r.get("doCompressor", s.doCompressor);
        r.get("doEqualizer", s.doEqualizer);
        r.get("doRemoveHum", s.doRemoveHum);
        r.get("doRemovePauses", s.doRemovePauses);
        r.get("doEraseUhm", s.doEraseUhm);
        r.get("denoiserLevel", s.denoiserLevel);
        s.gate = gateFrom(Reader(r.object("gate")));
        s.advancedGate = advancedFrom(Reader(r.object("advancedGate")));
        s.compressor = compressorFrom(Reader(r.object("compressor")));
        s.equalizer = equalizerFrom(r.value("equalizer"), s.equalizer);
        r.get("pauseLength", s.pauseLength);
        r.get("pausesThreshold", s.pausesThreshold);
        s.uhmPrefs = uhmFrom(Reader(r.object("uhmPrefs")));
        QString format = toString(s.exportFormat);
        r.get("exportFormat", format);
        if (format != "wave" && format != "mp3") return std::nullopt;
        s.exportFormat = exportFormatFromString(format);
        r.get("suffix", s.suffix);
        r.get("ingestInBackground", s.ingestInBackground);
        return s;
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

QString BrightwashSetting::encodeString() const {
    return QString::fromUtf8(QJsonDocument(toJson()).toJson(QJsonDocument::Compact));
}

std::optional<BrightwashSetting> BrightwashSetting::decodeString(const QString& text) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) return std::nullopt;
    return fromJson(document.object());
}

void BrightwashSetting::save() const {
    prefs_setValueString("BrightwashSettings", encodeString());
}

std::optional<BrightwashSetting> BrightwashSetting::load() {
    return decodeString(prefs_getValueString("BrightwashSettings", ""));
}

BrightwashSetting& globalBWSettings() {
    static BrightwashSetting settings;
    return settings;
}
