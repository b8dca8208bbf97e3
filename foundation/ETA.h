#pragma once
// Estimates of the time a job has left, from when it started and the fraction done, assuming it
// keeps its pace so far. Fractions are 0...1; below 0.00001 they count as 0.00001, so a job that
// has not moved yet gets a very long estimate instead of a division by zero.
// Objects are used from one thread at a time.

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <optional>

class ETA {
public:
    QDateTime startTime; // when the object was made
    double percentage = 0.0;
    QString id;
    std::optional<QDateTime> lastCheck;
    int checkInterval; // seconds between recomputations
    QDateTime lastEta;

    explicit ETA(const QString& id = {}, int checkInterval = 5);

    // The expected end; between checks it keeps the last answer, so a display does not jitter.
    QDateTime getETA(double percentage);

    static QDateTime calc(const QDateTime& startTime, double percentage);
    // Whole seconds left, never negative.
    static int64_t secondsToGo(const QDateTime& startTime, double percentage);
    // The seconds left as text: "2m 05s".
    static QString getRemaining(const QDateTime& startTime, double percentage);
};

// An estimate that starts when it is made, for a single window or job.
class LocalETA {
public:
    QDateTime startTime = QDateTime::currentDateTime();

    int64_t secondsToGo(double percentage) const { return ETA::secondsToGo(startTime, percentage); }
    QString getRemaining(double percentage) const { return ETA::getRemaining(startTime, percentage); }
};

namespace DiscorsiveETA {
// The time left in words, from "It should take a lot..." down to "Still a few seconds...".
QString getString(double seconds);
} // namespace DiscorsiveETA
