#pragma once
// The two setting sets of automatic ducking, global to the application. Each is kept whole, as one
// JSON object under its own label in the preference store; constructing one reads the saved set over
// the defaults (a missing or damaged field keeps its default). Values: copy them to hand them to
// another thread.

#include <QString>

// How speech is found and how deep and fast the music dips under it.
class QXDuckingSettings {
public:
    static constexpr const char* kLabel = "QXDuckingSettings";
    QXDuckingSettings();

    float threshold = -25.0f;
    double attackWindow = 0.5;
    double attackPreRoll = 0.2;
    double releaseWindow = 0.9;
    double releasePreRoll = 0.2;
    float decrease = -12.0f;

    void save() const;
    // The record id suffix of an analysis at this threshold: the integer part of −threshold.
    QString thresholdKey() const;
};

// Which main-lane items the music ducks under, and whether hand-made points go first.
class AEDuckingSettings {
public:
    static constexpr const char* kLabel = "AEDuckingSettings";
    AEDuckingSettings();

    bool duckToSpeech = true;
    bool duckToSFX = false;
    bool duckToJingles = true;
    bool duckToAdv = true;
    bool deleteKF = true;

    void save() const;
};
