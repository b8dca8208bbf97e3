#include "timeline/view/PlotWaveform.h"

#include "dsp/Levels.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/view/ImageCache.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {
constexpr double kMinRange = 0.001;
constexpr double kMinWaveWidth = 25.0;
constexpr double kFullScale = 32768.0;
// Fast plotting reads at most this many summary values per column.
constexpr int64_t kFastReads = 8;

double secondsPerColumn(const WaveformPlot& plot) {
    return plot.secondsPerPixel > 0 ? plot.secondsPerPixel
                                    : plot.range.duration() / std::max(1, plot.size.width());
}

QString envelopeKey(const WaveformPlot& plot) {
    size_t seed = std::hash<double>{}(plot.gainDb);
    if (plot.volumeKF)
        for (const auto& k : plot.volumeKF->keyframes)
            seed = seed * 31 + std::hash<double>{}(k->time) * 7 + std::hash<double>{}(k->value);
    return QString::number(seed, 16);
}

QString cacheKey(const WaveformPlot& plot, int64_t firstColumn) {
    return QStringLiteral("PWF_%1_%2-%3-%4x%5@%6-%7-%8%9-%10-%11-%12")
        .arg(plot.assetId)
        .arg(plot.range.i, 0, 'f', 4)
        .arg(plot.range.o, 0, 'f', 4)
        .arg(plot.size.width())
        .arg(plot.size.height())
        .arg(plot.devicePixelRatio)
        .arg(plot.foreground.name(QColor::HexArgb))
        .arg(plot.singleBand ? 's' : 'd')
        .arg(plot.fast ? 'f' : 'n')
        .arg(firstColumn)
        .arg(envelopeKey(plot))
        .arg(secondsPerColumn(plot), 0, 'g', 12);
}

int64_t firstColumn(const WaveformPlot& plot) {
    return std::llround(plot.range.i / secondsPerColumn(plot));
}

// The loudest summary value in the column's stretch, on 0…1.
double columnPeak(const WaveformPlot& plot, const std::vector<float>& values, int64_t column) {
    const double perColumn = secondsPerColumn(plot) * plot.samplesPerSecond;
    const auto from = static_cast<int64_t>(std::floor(static_cast<double>(column) * perColumn));
    const auto to =
        std::max(from + 1, static_cast<int64_t>(std::floor(static_cast<double>(column + 1) * perColumn)));
    const auto size = static_cast<int64_t>(values.size());
    const int64_t step = plot.fast ? std::max<int64_t>(1, (to - from) / kFastReads) : 1;
    float peak = 0;
    for (int64_t n = std::max<int64_t>(0, from); n < std::min(to, size); n += step)
        peak = std::max(peak, values[static_cast<size_t>(n)]);
    return peak / kFullScale;
}
} // namespace

int PlotWaveform::columnOf(const WaveformPlot& plot, double t) {
    return static_cast<int>(std::floor(t / secondsPerColumn(plot)) - static_cast<double>(firstColumn(plot)));
}

QImage PlotWaveform::plotBySubsamples(const WaveformPlot& plot) {
    if (plot.range.duration() < kMinRange || plot.size.isEmpty()) return {};
    const int64_t first = firstColumn(plot);
    const QString key = cacheKey(plot, first);
    ImageCache& cache = ImageCache::shared();
    if (!plot.forceDraw)
        if (auto cached = cache.getImage(key)) return *cached;

    QImage image(plot.size * plot.devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(plot.devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, false);
    const double w = plot.size.width();
    const double h = plot.size.height();
    if (w > kMinWaveWidth && plot.samples && !plot.samples->empty()) {
        const auto& values = *plot.samples;
        const double perColumn = secondsPerColumn(plot);
        const bool enveloped = plot.volumeKF && !plot.volumeKF->keyframes.empty();
        const double baseGain = aUt_dbToDouble(plot.gainDb);
        const double mid = h / 2.0;
        for (int c = 0; c < plot.size.width(); ++c) {
            const int64_t column = first + c;
            double level = columnPeak(plot, values, column);
            if (level <= 0) continue;
            const double t = (static_cast<double>(column) + 0.5) * perColumn;
            level *= enveloped ? aUt_dbToDouble(plot.volumeKF->getValue(t) + plot.gainDb) : baseGain;
            level = std::min(level, 1.0);
            if (plot.singleBand) {
                const double bar = level * (h - 2);
                painter.fillRect(QRectF(c, h - 1 - bar, 1, bar), plot.foreground);
            } else {
                const double half = level * (mid - 1);
                painter.fillRect(QRectF(c, mid - half, 1, 2 * half), plot.foreground);
            }
        }
    }
    painter.setPen(plot.foreground);
    painter.drawRect(QRectF(0, 0, w - 1, h - 1));
    painter.end();
    cache.setImage(key, image);
    return image;
}
