#include "dsp/QXOnOffList.h"

#include "foundation/Log.h"

#include <QJsonArray>
#include <algorithm>

QXIncreaseDecreaseEvent QXOnOffEvent::increseDecrease(double offset) const {
    return {time + offset, type == QXOnOffType::on ? 1 : -1};
}

void QXOnOffList::streamToEvents(std::span<const float> stream, float threshold, double timeUnit) {
    events.clear();
    bool on = false;
    for (size_t i = 0; i < stream.size(); ++i) {
        const double t = static_cast<double>(i) * timeUnit;
        if (!on && stream[i] >= threshold) {
            events.push_back({t, QXOnOffType::on});
            on = true;
        } else if (on && stream[i] < threshold) {
            events.push_back({t, QXOnOffType::off});
            on = false;
        }
    }
    if (on) events.push_back({static_cast<double>(stream.size()) * timeUnit, QXOnOffType::off});
}

void QXOnOffList::createClusters() {
    clusters.clear();
    QXOnOffType expected = QXOnOffType::on;
    double in = 0;
    for (const auto& event : events) {
        if (event.type != expected) {
            qxLog("QXOnOffList.createClusters: out-of-order event at " + QString::number(event.time));
            continue;
        }
        if (event.type == QXOnOffType::on) {
            in = event.time;
            expected = QXOnOffType::off;
        } else {
            clusters.push_back({in, event.time});
            expected = QXOnOffType::on;
        }
    }
}

void QXOnOffList::clustersToEvents() {
    events.clear();
    for (const auto& c : clusters) {
        events.push_back({c.i, QXOnOffType::on});
        events.push_back({c.o, QXOnOffType::off});
    }
}

void QXOnOffList::filterSpikes(double minDuration) {
    std::erase_if(clusters, [&](const QXOnOffCluster& c) { return c.duration() < minDuration; });
}

void QXOnOffList::filterPauses(double minDuration) {
    size_t i = 0;
    while (i + 1 < clusters.size()) {
        if (clusters[i].i > clusters[i].o)
            qxLog("QXOnOffList.filterPauses: cluster with in after out at " + QString::number(clusters[i].i));
        if (clusters[i + 1].i - clusters[i].o < minDuration) {
            clusters[i].o = clusters[i + 1].o;
            clusters.erase(clusters.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        } else {
            ++i;
        }
    }
}

void QXOnOffList::streamToEventsAndFilter(std::span<const float> stream, float threshold, double timeUnit,
                                          double minSpikeDuration, double minPauseDuration) {
    streamToEvents(stream, threshold, timeUnit);
    createClusters();
    filterSpikes(minSpikeDuration);
    filterPauses(minPauseDuration);
    clustersToEvents();
}

std::vector<QXOnOffCluster> QXOnOffList::filterClusterByRange(double i, double o) const {
    std::vector<QXOnOffCluster> out;
    for (const auto& c : clusters)
        if (c.i < o && c.o > i) out.push_back({std::max(c.i, i), std::min(c.o, o)});
    std::sort(out.begin(), out.end(), [](const auto& a, const auto& b) { return a.i < b.i; });
    return out;
}

QXOnOffList QXOnOffList::getListByRange(double i, double o) const {
    QXOnOffList list;
    list.offset = i;
    list.clusters = filterClusterByRange(i, o);
    list.clustersToEvents();
    return list;
}

QXOnOffList QXOnOffList::combine(const QXOnOffList& list0, const QXOnOffList& list1) {
    std::vector<QXIncreaseDecreaseEvent> all;
    all.reserve(list0.events.size() + list1.events.size());
    for (const auto& e : list0.events)
        all.push_back(e.increseDecrease(list0.offset));
    for (const auto& e : list1.events)
        all.push_back(e.increseDecrease(list1.offset));
    // At equal times the ons go first, so that touching spans join instead of closing and reopening.
    std::stable_sort(all.begin(), all.end(), [](const auto& a, const auto& b) {
        return a.time < b.time || (a.time == b.time && a.value > b.value);
    });
    QXOnOffList out;
    int depth = 0;
    double in = 0;
    for (const auto& e : all) {
        const int before = depth;
        depth = std::max(0, depth + e.value);
        if (before == 0 && depth > 0) in = e.time;
        if (before > 0 && depth == 0) out.clusters.push_back({in, e.time});
    }
    out.clustersToEvents();
    return out;
}

QJsonObject QXOnOffList::toJson() const {
    QJsonArray eventArray;
    for (const auto& e : events)
        eventArray.append(QJsonObject{{"time", e.time}, {"type", e.type == QXOnOffType::on ? "on" : "off"}});
    QJsonArray clusterArray;
    for (const auto& c : clusters)
        clusterArray.append(QJsonObject{{"i", c.i}, {"o", c.o}});
    return {{"offset", offset}, {"events", eventArray}, {"clusters", clusterArray}};
}

std::optional<QXOnOffList> QXOnOffList::fromJson(const QJsonObject& json) {
    if (!json.value("offset").isDouble() || !json.value("events").isArray() ||
        !json.value("clusters").isArray())
        return std::nullopt;
    QXOnOffList list;
    list.offset = json.value("offset").toDouble();
    for (const auto& value : json.value("events").toArray()) {
        const QJsonObject e = value.toObject();
        const QString type = e.value("type").toString();
        if (!e.value("time").isDouble() || (type != "on" && type != "off")) return std::nullopt;
        list.events.push_back(
            {e.value("time").toDouble(), type == "on" ? QXOnOffType::on : QXOnOffType::off});
    }
    for (const auto& value : json.value("clusters").toArray()) {
        const QJsonObject c = value.toObject();
        if (!c.value("i").isDouble() || !c.value("o").isDouble()) return std::nullopt;
        list.clusters.push_back({c.value("i").toDouble(), c.value("o").toDouble()});
    }
    return list;
}

QString QXOnOffList::description() const {
    QStringList spans;
    for (const auto& c : clusters)
        spans << QString::number(c.i + offset) + "-" + QString::number(c.o + offset);
    return "[" + spans.join(", ") + "]";
}
