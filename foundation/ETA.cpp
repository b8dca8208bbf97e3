#include "foundation/ETA.h"

#include "foundation/Timecode.h"

#include <algorithm>
#include <array>
#include <utility>

ETA::ETA(const QString& id, int checkInterval)
    : startTime(QDateTime::currentDateTime()), id(id), checkInterval(checkInterval) {}

QDateTime ETA::getETA(double percentage) {
    this->percentage = percentage;
    const QDateTime now = QDateTime::currentDateTime();
    if (!lastCheck || lastCheck->secsTo(now) >= checkInterval) {
        lastCheck = now;
        lastEta = calc(startTime, percentage);
    }
    return lastEta;
}

QDateTime ETA::calc(const QDateTime& startTime, double percentage) {
    return QDateTime::currentDateTime().addSecs(secondsToGo(startTime, percentage));
}

int64_t ETA::secondsToGo(const QDateTime& startTime, double percentage) {
    const double p = std::max(percentage, 0.00001);
    const double elapsed = static_cast<double>(startTime.msecsTo(QDateTime::currentDateTime())) / 1000.0;
    return std::max<int64_t>(0, static_cast<int64_t>(elapsed * (1.0 - p) / p));
}

QString ETA::getRemaining(const QDateTime& startTime, double percentage) {
    return tc_getReadableDuration(static_cast<double>(secondsToGo(startTime, percentage)));
}

QString DiscorsiveETA::getString(double seconds) {
    // Each text covers the times nearer to it than to its neighbours, roughly halfway between.
    static const std::array<std::pair<double, const char*>, 10> fromLongest{{
        {5400, "It should take a lot..."},        // 1 h 30 m and more
        {2700, "Something like an hour..."},      // from 45 m
        {1350, "Something like half an hour..."}, // from 22 m 30 s
        {750, "Something like 15 minutes..."},    // from 12 m 30 s
        {450, "Something like 10 minutes..."},    // from 7 m 30 s
        {240, "Something like 5 minutes..."},     // from 4 m
        {150, "About three minutes..."},          // from 2 m 30 s
        {90, "About two minutes..."},             // from 1 m 30 s
        {45, "About a minute..."},                // from 45 s
        {15, "Less than a minute..."},            // from 15 s
    }};
    for (const auto& [from, text] : fromLongest)
        if (seconds >= from) return text;
    return "Still a few seconds...";
}
