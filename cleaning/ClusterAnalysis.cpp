#include "cleaning/ClusterAnalysis.h"

#include "cleaning/AudioAnalysis.h"
#include "dsp/GaussianReduction.h"
#include "dsp/Levels.h"
#include "foundation/Log.h"
#include "foundation/Prog.h"

#include <QFile>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr int kBlock = 300;

QString block(const QString& tag, const QString& body) {
    return "<" + tag + ">\n" + body + "</" + tag + ">\n";
}

// The text between the first <tag> and its </tag>; no result when either is missing.
std::optional<QString> tagged(const QString& text, const QString& tag) {
    const QString open = "<" + tag + ">";
    const qsizetype from = text.indexOf(open);
    if (from < 0) return std::nullopt;
    const qsizetype to = text.indexOf("</" + tag + ">", from);
    if (to < 0) return std::nullopt;
    return text.mid(from + open.size(), to - from - open.size()).trimmed();
}

} // namespace

SpeechLevels::Wanted clusterLevelsWanted() {
    return {{static_cast<size_t>(kBlock)}, true};
}

std::vector<double> getClusterArray(const SpeechLevels& levels, double dbThreshold, bool isForSync,
                                    int32_t decayInSamples, int32_t samplesPerSecond, bool noisyEnviroment,
                                    double environmentNoiseLevel, double hysteresis,
                                    const std::shared_ptr<Prog>& prog) {
    std::vector<double> out;
    const std::vector<float>& means = levels.means(kBlock);
    const int64_t n = levels.sampleCount;
    const int64_t blocks = n > 0 ? (n - 1) / kBlock : 0;
    const int64_t holdBlocks = decayInSamples / kBlock;
    const double thr =
        dbThreshold == 0.0 ? getThreshold(levels, -40.0, isForSync, noisyEnviroment) : dbThreshold;
    const double T = (environmentNoiseLevel - 1.0) * -10.0 + thr;
    const double rate = samplesPerSecond;
    if (prog) prog->newSubPhase("Identifying Clusters...", SubPhaseType::percentage);
    bool open = false;
    int64_t opened = 0;
    for (int64_t i = 0; i < blocks - 1 && i < int64_t(means.size()); ++i) {
        const double db = 20.0 * std::log10(means[size_t(i)] / 32767.0);
        if (!open && db >= T) {
            open = true;
            opened = i;
            out.push_back(double(kBlock * i) / rate);
        } else if (open && opened + holdBlocks < i && db <= T - hysteresis) {
            open = false;
            out.push_back(-double(kBlock * i) / rate);
        }
        if (prog && i % 1024 == 0) prog->subPhaseSetRatio(double(i + 1), double(blocks));
    }
    if (open) out.push_back(-double(blocks * kBlock) / rate);
    if (prog) prog->subPhaseSetRatio(1, 1);
    return out;
}

std::vector<double> filterSpikes(const std::vector<double>& clusterArray, double minDuration) {
    std::vector<double> out;
    for (size_t i = 1; i < clusterArray.size(); ++i) {
        if (clusterArray[i] >= 0) continue;
        const double d = -clusterArray[i] - clusterArray[i - 1];
        if (d >= minDuration) {
            out.push_back(clusterArray[i - 1]);
            out.push_back(clusterArray[i]);
        }
    }
    return out.empty() ? clusterArray : out;
}

std::optional<std::vector<cluster>> getClusterList(const std::vector<double>& clusterArray,
                                                   double audioLength) {
    if (clusterArray.empty()) return std::nullopt;
    std::vector<double> a = clusterArray;
    if (a.front() < 0) a.insert(a.begin(), 0.0);
    if (a.back() > 0) a.push_back(-audioLength);
    std::vector<cluster> list;
    for (size_t k = 0; k < a.size() / 2; ++k)
        list.push_back(cluster{a[2 * k], -a[2 * k + 1]});
    return list;
}

std::vector<cluster> filterClusterListByDuration(const std::vector<cluster>& clusterList,
                                                 double minDuration) {
    if (clusterList.empty()) return {};
    std::vector<cluster> kept;
    std::copy_if(clusterList.begin(), clusterList.end(), std::back_inserter(kept),
                 [minDuration](const cluster& c) { return c.duration() >= minDuration; });
    // A list of clusters of no positive length would shrink forever.
    if (kept.empty() && minDuration > 1e-9)
        return filterClusterListByDuration(clusterList, minDuration * 0.9);
    return kept;
}

std::vector<cluster> expandClusterList(const std::vector<cluster>& clusterList, double decay,
                                       double fadeInDuration, double fadeOutDuration, double preRoll) {
    std::vector<cluster> out;
    for (const cluster& c : clusterList) {
        double end = c.endPoint;
        if (decay > c.duration()) end = c.inPoint + c.duration(); // the hold is already in the gate
        out.push_back(cluster{std::max(0.0, c.inPoint - fadeInDuration - preRoll), fadeOutDuration + end});
    }
    correctOverlappingClusters(out);
    return out;
}

void correctOverlappingClusters(std::vector<cluster>& list) {
    bool changed = true;
    while (changed) {
        changed = false;
        for (size_t i = 0; i + 1 < list.size(); ++i) {
            if (list[i].endPoint >= list[i + 1].inPoint) {
                mergeTwoConsecutiveClusters(list, i);
                changed = true;
            }
        }
    }
}

void mergeTwoConsecutiveClusters(std::vector<cluster>& list, size_t index) {
    if (index + 1 >= list.size()) return;
    list[index].endPoint = list[index + 1].endPoint;
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(index) + 1);
}

std::pair<double, double> getLongestPause(const std::vector<cluster>& list) {
    double best = 0.0;
    std::pair<double, double> pause{0.0, 0.0};
    for (size_t i = 0; i + 1 < list.size(); ++i) {
        const double gap = list[i + 1].inPoint - list[i].endPoint;
        if (gap > best) {
            best = gap;
            pause = {list[i].endPoint, list[i + 1].inPoint};
        }
    }
    return pause;
}

double weightedValue(double a, double wa, double b, double wb) {
    return (a * wa + b * wb) / (wa + wb);
}

double getThreshold(const SpeechLevels& levels, double, bool, bool) {
    return thresholdAnalysis(levels, BWGateAdvancedSettings());
}

double thresholdAnalysis(const SpeechLevels& levels, const BWGateAdvancedSettings& settings) {
    const int rangeStart = settings.subThreshold.rangeStart;
    const int rangeEnd = settings.subThreshold.rangeEnd;
    std::vector<int64_t> h(90, 0);
    for (float mx : levels.tenthSampleMaxima) {
        const int v = AudioAnalysis::binOf(aUt_percToDb(mx / 32767.0), rangeStart, rangeEnd);
        ++h[size_t(-v)];
    }
    QStringList lines;
    for (int db = rangeStart; db <= rangeEnd; ++db)
        lines << QString::number(db) + "," + QString::number(h[size_t(-db)]);
    qxLog(lines.join('\n'));
    const std::vector<double> r = GaussianReduction::reduceTo2(GaussianReduction::convertToDoubleArray(h));
    lines.clear();
    for (int db = rangeStart; db <= rangeEnd; ++db)
        lines << QString::number(db) + "," + QString::number(r[size_t(-db)]);
    qxLog(lines.join('\n'));

    const double m = AudioAnalysis::getMedian(h);
    const double a = AudioAnalysis::getAverage(h);
    const double p = std::max(-60.0, -double(GaussianReduction::getFirstPeak(r)));
    const double v = -double(GaussianReduction::getValley(r));
    if (v < p) return weightedValue(a, 1.0, -m, 2.0);
    const double x = r[size_t(-p)];
    const double y = r[std::min(size_t(-v), r.size() - 1)];
    if (y > x) return weightedValue(a, 1.0, -m, 1.0);
    // The clamps stand in this order, so w is always 0 and the result is v − 6.
    const double w = std::min(0.0, std::max(y / x, 1.0));
    return weightedValue(p, w, v, 1.0 - w) - 6.0;
}

QString printClusterList(const std::vector<cluster>& list, const QString& resultType, const QString& saveTo) {
    QString text;
    if (resultType == "old") {
        for (const cluster& c : list)
            text += "clusterStr: " + QString::number(c.inPoint) +
                    "\nclusterEnd: " + QString::number(c.endPoint) + "\n";
    } else {
        QString body = block("count", QString::number(list.size()) + "\n");
        for (const cluster& c : list)
            body += block("cluster", block("clusterStart", QString::number(c.inPoint, 'f', 2) + "\n") +
                                         block("clusterEnd", QString::number(c.endPoint, 'f', 2) + "\n"));
        text = block("clusters", body);
    }
    if (saveTo.isEmpty()) {
        qxLog(text);
    } else {
        QFile file(saveTo);
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(text.toUtf8());
    }
    return text;
}

std::vector<cluster> parseClusterText(const QString& clusterText) {
    std::vector<cluster> list;
    const auto clusters = tagged(clusterText, "clusters");
    if (!clusters) return list;
    bool ok = false;
    const int count = tagged(*clusters, "count").value_or("").toInt(&ok);
    if (!ok) return list;
    QString rest = *clusters;
    for (int k = 0; k < count; ++k) {
        const auto one = tagged(rest, "cluster");
        if (!one) break;
        bool okIn = false, okEnd = false;
        const double in = tagged(*one, "clusterStart").value_or("").toDouble(&okIn);
        const double end = tagged(*one, "clusterEnd").value_or("").toDouble(&okEnd);
        if (!okIn || !okEnd) break;
        list.push_back(cluster{in, end});
        rest = rest.mid(rest.indexOf("</cluster>") + QString("</cluster>").size());
    }
    return list;
}
