// Drawing a two-hour timeline of 600 items on 5 lanes (500 main-lane clips, 100 attached on two lanes
// above and two below) into a 1920 × 600 image, every clip with a 300-per-second summary and a fifth
// of them with envelopes. The baseline is the cheapest frame there is: filling the image.
//
// Figures: a full draw with the waveform cache cleared and with it warm, a scroll step (a wheel
// notch: a tenth of the view), a zoom step (each new scale re-plots), the playhead-only update of
// the widget during playback, and the cache's peak after scrolling the whole timeline at three zoom
// levels. The draws count the CPU of every thread (the item plots run on the pool), since the wall
// clock of a shared machine says little. Run with stdout to /dev/null: TimelineViewBench >/dev/null
// --benchmark_out=view.txt
// --benchmark_out_format=console
#include "BenchTimeline.h"
#include "app/core/AEPreferences.h"
#include "project/model/AEAsset.h"
#include "project/model/AESubsamples.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/AETimeLineLanesHelper.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/model/VirtualScroller.h"
#include "timeline/view/ImageCache.h"
#include "timeline/view/TimelinePainter.h"
#include "timeline/view/TimelineWidget.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

namespace {

using benchtl::kLength;
const QSize kSize(1920, 600);

std::shared_ptr<AEAsset> asset(const QString& name, AEAssetType type, double duration) {
    auto a = AEAsset::makePlaceholder();
    a->name = name;
    a->id = name;
    a->type = type;
    a->duration = duration;
    a->subsamples = std::make_shared<AESubsamples>();
    std::vector<float> values(static_cast<size_t>(duration * kAESubsamplesPerSecond));
    // Syllables of speech: a rough level that rises and falls a few times a second.
    for (size_t n = 0; n < values.size(); ++n)
        values[n] = static_cast<float>(6000.0 * (1.2 + std::sin(n * 0.07) * std::sin(n * 0.011)) *
                                       (0.6 + 0.4 * std::sin(static_cast<double>(n * n % 977))));
    a->subsamples->setSamples(std::move(values));
    a->subsamples->loaded = true;
    return a;
}

std::shared_ptr<AETimeLine> episode() {
    static std::shared_ptr<AETimeLine> made;
    if (made) return made;
    std::vector<std::shared_ptr<AEAsset>> speech;
    for (int n = 0; n < 8; ++n)
        speech.push_back(asset("speech" + QString::number(n), AEAssetType::speech, 1800));
    const auto jingle = asset("jingle", AEAssetType::jingle, 8);
    const auto bed = asset("bed", AEAssetType::music, 60);
    const auto effect = asset("effect", AEAssetType::effect, 4);
    auto tl = benchtl::twoHourTimeline("bench", {speech, jingle, bed, effect, 1800});
    tl->setView(kSize.width(), kSize.height(), QPointF(0, 0));
    AETimeLineLanesHelper::setBGM(*tl, TimelinePainter::lanesHeightFor(kSize.height()));
    tl->setInsetViewSize();
    tl->stopTimers();
    if (tl->lanes.size() != 5)
        qFatal("the bench timeline has %d lanes, not 5", static_cast<int>(tl->lanes.size()));
    made = tl;
    return tl;
}

void showSeconds(AETimeLine& tl, double i, double length) {
    tl.setViewportRange(i, i + length);
    tl.updateViewAfterSomething();
}

TimelinePainter::Options options() {
    TimelinePainter::Options o;
    o.showVolumeKFs = true;
    return o;
}

void BM_Baseline_FillImage(benchmark::State& state) {
    for (auto _ : state) {
        QImage image(kSize, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::darkGray);
        benchmark::DoNotOptimize(image.bits());
    }
}
BENCHMARK(BM_Baseline_FillImage)->Unit(benchmark::kMillisecond);

// Arg: seconds visible.
void BM_FullDrawCold(benchmark::State& state) {
    auto tl = episode();
    showSeconds(*tl, 3000, static_cast<double>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        ImageCache::shared().clear();
        state.ResumeTiming();
        benchmark::DoNotOptimize(TimelinePainter::draw(*tl, kSize, options()).image.bits());
    }
}
BENCHMARK(BM_FullDrawCold)->Arg(60)->Arg(600)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

void BM_FullDrawWarm(benchmark::State& state) {
    auto tl = episode();
    showSeconds(*tl, 3000, static_cast<double>(state.range(0)));
    TimelinePainter::draw(*tl, kSize, options());
    for (auto _ : state)
        benchmark::DoNotOptimize(TimelinePainter::draw(*tl, kSize, options()).image.bits());
}
BENCHMARK(BM_FullDrawWarm)->Arg(60)->Arg(600)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

// One wheel notch to the right per draw, wrapping at the end.
void BM_ScrollStep(benchmark::State& state) {
    auto tl = episode();
    const double length = static_cast<double>(state.range(0));
    double at = 0;
    ImageCache::shared().clear();
    for (auto _ : state) {
        at = at + length / 10 > kLength - length ? 0 : at + length / 10;
        showSeconds(*tl, at, length);
        benchmark::DoNotOptimize(TimelinePainter::draw(*tl, kSize, options()).image.bits());
    }
}
BENCHMARK(BM_ScrollStep)->Arg(60)->Arg(600)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

// One Ctrl+wheel notch (0.8×) around the middle, through scales not seen before.
void BM_ZoomStep(benchmark::State& state) {
    auto tl = episode();
    double length = 900;
    for (auto _ : state) {
        state.PauseTiming();
        length = length * 0.8 < 20 ? 900 : length * 0.8;
        ImageCache::shared().clear();
        state.ResumeTiming();
        showSeconds(*tl, 3600 - length / 2, length);
        benchmark::DoNotOptimize(TimelinePainter::draw(*tl, kSize, options()).image.bits());
    }
}
BENCHMARK(BM_ZoomStep)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

// What a playback tick costs the widget: the playhead moves, the lanes image is reused.
void BM_PlayheadUpdate(benchmark::State& state) {
    auto tl = episode();
    showSeconds(*tl, 3000, 60);
    TimelineWidget widget(tl);
    widget.resize(kSize.width(), kSize.height() + 16);
    widget.show();
    widget.redrawNow();
    tl->stopTimers();
    // Painted into an image of the widget's size: the same paintEvent over the strips the playhead
    // leaves and enters, as the widget asks for them, without waiting for a screen.
    QImage target(widget.size(), QImage::Format_ARGB32_Premultiplied);
    const int h = widget.canvasRect().height();
    double t = 3000;
    for (auto _ : state) {
        const double before = tl->view->playhead->x;
        t = t + 0.02 > 3060 ? 3000 : t + 0.02;
        tl->currentPHTime = t;
        tl->drawPlayhead();
        QRegion strips;
        for (const double x : {before, tl->view->playhead->x})
            strips += QRect(static_cast<int>(std::floor(x)) - 7, 0, 16, h);
        widget.render(&target, QPoint(), strips, QWidget::DrawWindowBackground);
    }
    widget.setTimeline(nullptr);
}
BENCHMARK(BM_PlayheadUpdate)->Unit(benchmark::kMillisecond);

// Scrolls the whole timeline a view at a time at 60, 600 and 1800 s visible; reports the cache's peak.
void BM_CachePeakWholeTimeline(benchmark::State& state) {
    auto tl = episode();
    for (auto _ : state) {
        ImageCache::shared().clear();
        for (const double length : {60.0, 600.0, 1800.0})
            for (double at = 0; at < kLength; at += length) {
                showSeconds(*tl, at, length);
                TimelinePainter::draw(*tl, kSize, options());
            }
    }
    state.counters["peak_MB"] = static_cast<double>(ImageCache::shared().peakBytes()) / (1024.0 * 1024.0);
    state.counters["bound_MB"] = static_cast<double>(ImageCache::shared().maxBytes()) / (1024.0 * 1024.0);
}
BENCHMARK(BM_CachePeakWholeTimeline)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    static QTemporaryDir home(QDir::tempPath() + "/zendrel-bench-home-XXXXXX");
    const QByteArray h = home.path().toUtf8();
    setenv("HOME", h.constData(), 1);
    setenv("XDG_CONFIG_HOME", (h + "/.config").constData(), 1);
    setenv("XDG_DATA_HOME", (h + "/.local/share").constData(), 1);
    setenv("XDG_CACHE_HOME", (h + "/.cache").constData(), 1);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    AEPreferences::displayVolumeKFs = true;
    AETimeLineItem::startup();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
