#pragma once
// A signal that is on or off in time: the on-spans as events (a time and a kind) and as clusters (an
// in and an out). The operations keep whichever form they name; clustersToEvents and createClusters
// turn one into the other. `offset` places the list on another time axis (combine adds it).
// Plain values: a list may be copied to another thread and worked on there.

#include <QJsonObject>
#include <QString>
#include <optional>
#include <span>
#include <vector>

enum class QXOnOffType { off, on };

struct QXIncreaseDecreaseEvent {
    double time = 0;
    int value = 0;
};

struct QXOnOffEvent {
    double time = 0;
    QXOnOffType type = QXOnOffType::off;

    // +1 for on, −1 for off, at time + offset.
    QXIncreaseDecreaseEvent increseDecrease(double offset) const;
    bool operator==(const QXOnOffEvent&) const = default;
};

struct QXOnOffCluster {
    double i = 0;
    double o = 0;

    double duration() const { return o - i; }
    QXOnOffCluster duplicate() const { return *this; }
    bool operator==(const QXOnOffCluster&) const = default;
};

struct QXQXIncreaseDecreaseList {
    std::vector<QXIncreaseDecreaseEvent> events;
};

class QXOnOffList {
public:
    double offset = 0;
    std::vector<QXOnOffEvent> events;
    std::vector<QXOnOffCluster> clusters;

    // Events where the stream crosses the threshold, one value per timeUnit; a stream on at its end
    // closes at count × timeUnit.
    void streamToEvents(std::span<const float> stream, float threshold, double timeUnit);
    // Pairs the events into clusters; an out-of-order event is reported and skipped.
    void createClusters();
    void clustersToEvents();
    void filterSpikes(double minDuration);
    // Closes gaps shorter than minDuration; a gap of exactly minDuration stays.
    void filterPauses(double minDuration);
    void streamToEventsAndFilter(std::span<const float> stream, float threshold, double timeUnit,
                                 double minSpikeDuration, double minPauseDuration);
    // Clusters overlapping [i, o], sorted by in, each cut to the range.
    std::vector<QXOnOffCluster> filterClusterByRange(double i, double o) const;
    // The same, as a list with offset i and both forms filled.
    QXOnOffList getListByRange(double i, double o) const;
    // The union of the on-spans of both lists, each shifted by its offset; offset 0, both forms filled.
    static QXOnOffList combine(const QXOnOffList& list0, const QXOnOffList& list1);

    // Keys "offset", "events" (each "time", "type" as "on"/"off"), "clusters" (each "i", "o").
    QJsonObject toJson() const;
    // Nothing when a key is missing or of the wrong kind.
    static std::optional<QXOnOffList> fromJson(const QJsonObject& json);
    // One line for the log.
    QString description() const;
    bool operator==(const QXOnOffList&) const = default;
};
