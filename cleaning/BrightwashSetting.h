#pragma once
// Everything a user can set for the cleaning chain, as one value.
//
// It travels in two forms that are deliberately not symmetric: a per-key form (Brightwash::loadSettings
// and Brightwash::saveSettings) that every run reads, and a JSON form under "BrightwashSettings" that
// the settings panel keeps. Some read keys differ from the written ones, so a value set in the panel
// does not always come back through the per-key form; that is kept as it is.

#include "render/tools/BWEqBandSettings.h"

#include <QJsonObject>
#include <QString>
#include <optional>
#include <vector>

enum class BWExportFormats { wave, mp3 };
QString toString(BWExportFormats format);
// Any other text reads as wave.
BWExportFormats exportFormatFromString(const QString& text);

class BWateAnalysisSubThresholdSettings {
public:
    int convolution = 20;
    double cutOff = 0.5;
    int sampling = 10;
    int rangeStart = -89;
    int rangeEnd = -3;
};

class BWGateAdvancedSettings {
public:
    bool preEq = false;
    int preEqLowCut = 600;   // Hz
    int preEqHighCut = 4000; // Hz
    BWateAnalysisSubThresholdSettings subThreshold;
};

class BWGateSettings {
public:
    bool autoThreshold = true;
    double threshold = 0.05; // dB; 0 asks for an automatic one
    double decay = 1.0;      // s
    double minDuration = 0.5;
    double fadeInDuration = 0.3;
    double fadeOutDuration = 0.7;
    bool noisyEnironment = false;
    double hysteresis = 12.0; // dB
    bool normalizeEachCluster = false;
    double preRoll = 0.2;
    double environmentNoiseLevel = 1.0;
};

class BWCompressorSetings {
public:
    double ratio = 3.0;
    double gain = -12.0; // dB
    double attack = 0.3; // s
    double decay = 1.0;  // s
};

struct BWUhmSettings {
    int analisysInterval = 16; // analyses a second
    double minimumLength = 0.5;
    float threshold = 0.04f;
    int crossDissolveMS = 20;
};

struct BrightwashSetting {
    bool doDenoiser = true;
    bool doNoiseGate = true;
    bool doCompressor = true;
    bool doEqualizer = true;
    bool doRemoveHum = false;
    bool doRemovePauses = false;
    bool doEraseUhm = false;
    double denoiserLevel = 0.1;
    BWGateSettings gate;
    BWGateAdvancedSettings advancedGate;
    BWCompressorSetings compressor;
    std::vector<BWEqBandSettings> equalizer = defaultEqualizer();
    double pauseLength = 0.2;       // s
    double pausesThreshold = -25.0; // dB
    BWUhmSettings uhmPrefs;
    BWExportFormats exportFormat = BWExportFormats::wave;
    QString suffix = "cln";
    bool ingestInBackground = true;

    static std::vector<BWEqBandSettings> defaultEqualizer();

    QJsonObject toJson() const;
    // Missing fields keep the value-type defaults; a field of the wrong kind fails the whole value.
    static std::optional<BrightwashSetting> fromJson(const QJsonObject& object);
    QString encodeString() const;
    static std::optional<BrightwashSetting> decodeString(const QString& text);
    // The JSON form under the preference "BrightwashSettings".
    void save() const;
    static std::optional<BrightwashSetting> load();
};

// What the settings panel edits; runs never read it.
BrightwashSetting& globalBWSettings();
