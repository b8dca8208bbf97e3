#pragma once
// The hesitation fingerprint database of a show, "UhmDB.json" in its working folder: normalised
// spectra of stretches the user marked as hesitations. A missing or unreadable file is an empty
// database; saving replaces the file atomically. The list is touched on the main thread only.

#include <QString>
#include <span>
#include <vector>

class UhmDB {
public:
    // Loads the file at once.
    explicit UhmDB(QString dbPath);

    std::vector<std::vector<float>> fingerprintList;
    QString dbPath;

    // Each value over the largest (over 1.0 for an empty array, and when the largest is 0).
    static std::vector<float> normalizeFingerprint(std::span<const float> fingerprint);
    // Standard deviation of f0 − f1 over the shorter length: blind to a constant offset.
    static float getFingerprintDifference(std::span<const float> f0, std::span<const float> f1);

    void addFingerprint(std::vector<float> fingerprint);
    // The smallest difference to a stored fingerprint; +infinity for an empty list.
    float getDifferenceFromList(std::span<const float> fingerprint) const;
    bool saveToFile() const;
    void loadFromFile();
};
