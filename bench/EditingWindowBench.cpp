// The whole application on a 2-hour episode of 600 items: 500 clips on the main lane cut from eight
// 15-minute recordings (two hours of material, so two hours of summaries to load) and 100 attached
// effects and music beds on four lanes, opened from the episode list with a click on its row.
//
// Figures: the click to an interactive window (the timeline widget has painted and the loop is
// free), warm cache, against reading the same timeline file alone, the floor of any open; the
// memory the open window adds over the list; the CPU the open window takes while paused and while
// playing (through the null output), as a share of one core over 10 s, against the list idling.
// Under a virtual display the paints are the real ones:
//   xvfb-run -a -s "-screen 0 1600x1000x24" env QT_QPA_PLATFORM=xcb build/bench/EditingWindowBench
#include "BenchTimeline.h"
#include "app/core/AS.h"
#include "app/windows/AppDelegate.h"
#include "app/windows/AppWindow.h"
#include "app/windows/TimelineViewController.h"
#include "foundation/Interaction.h"
#include "foundation/Prefs.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/AESubsamples.h"
#include "project/model/Globals.h"
#include "project/panels/EpisodeListModel.h"
#include "project/panels/MainViewController.h"
#include "render/tools/ProcessRunner.h"
#include "support/EventWait.h"
#include "support/TestEnvironment.h"
#include "timeline/model/AEKeyframeList.h"
#include "timeline/model/AETimeLine.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/SimpleRound.h"
#include "timeline/view/TimelineWidget.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QListView>
#include <QTest>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <cmath>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>

namespace {

std::shared_ptr<AppDelegate> delegate;
QString timelinePath;

double residentMB() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::shared_ptr<AEAsset> media(const QString& folder, const QString& name, AEAssetType type, double seconds,
                               const QString& sound) {
    const QString path = folder + name + ".wav";
    const ProcessResult made =
        runProcess(ProcessRequest{.program = "sox",
                                  .arguments = {"-n", "-r", "8000", "-c", "1", "-b", "16", path, "synth",
                                                QString::number(seconds), sound, "vol", "0.3"},
                                  .keepOutput = false});
    if (!made.finished || made.exitCode != 0) qFatal("sox could not make %s", qPrintable(path));
    AEAsset::Args args;
    args.filePath = path;
    args.name = name;
    args.type = type;
    args.isIngestedCopy = true;
    args.isNew = true;
    auto asset = AEAsset::make(args);
    if (!testenv::waitUntil([&] { return asset->subsamples->loaded.load(); }, 120000))
        qFatal("no summary for %s", qPrintable(path));
    return asset;
}

// The working folder with its show, one episode and its timeline, made once per run.
void makeWorkingFolder() {
    const QString folder = testenv::storeWorkFolder();
    testenv::useStoreWorkFolder();
    const QString ingests = AEIngest::ingestPath;
    AEShow show("Bench Show");
    auto episode = std::make_shared<AEEpisode>("E1", "Two hours", "", folder);
    std::vector<std::shared_ptr<AEAsset>> speech;
    for (int n = 0; n < 8; ++n)
        speech.push_back(
            media(ingests, "speech" + QString::number(n), AEAssetType::speech, 900, "pinknoise"));
    const auto jingle = media(ingests, "jingle", AEAssetType::jingle, 8, "sine");
    const auto bed = media(ingests, "bed", AEAssetType::music, 60, "brownnoise");
    const auto effect = media(ingests, "effect", AEAssetType::effect, 4, "whitenoise");
    show.commonAssets = {jingle, bed, effect};
    for (const auto& a : speech) {
        AEAssetDB::saveAsset(a);
        episode->assets.push_back(a);
    }
    episode->assetsLoaded = true;

    auto tl = benchtl::twoHourTimeline(episode->id, {speech, jingle, bed, effect, 900});
    tl->stopTimers();
    tl->save(episode->timelineDataPath);
    timelinePath = episode->timelineDataPath;
    show.episodes.push_back(episode);
    if (!show.save(folder + "show.AEShow")) qFatal("cannot write the show");
    prefs_removeKey("workFolder");
    prefs_setValueString("WorkingFolder", folder);
}

TimelineViewController* window() {
    return delegate->timelineVC();
}

// Click to painted window; the list comes back afterwards, untimed.
double openOnce() {
    MainViewController* list = delegate->mainViewController();
    const QRect row = list->tableView_episodeList()->visualRect(list->model()->index(0));
    QElapsedTimer clock;
    clock.start();
    QTest::mouseClick(list->tableView_episodeList()->viewport(), Qt::LeftButton, {}, row.center());
    if (!testenv::waitUntil([] { return window() && window()->timeline() && window()->timeline()->view; },
                            60000))
        qFatal("the episode did not open");
    // Painted once the widget has had its paint event; free once a zero timer posted now has run.
    struct PaintSeen : QObject {
        bool seen = false;
        bool eventFilter(QObject*, QEvent* event) override {
            seen |= event->type() == QEvent::Paint;
            return false;
        }
    } paints;
    window()->timelineWidget()->installEventFilter(&paints);
    window()->timelineWidget()->update();
    testenv::waitUntil([&] { return paints.seen; }, 10000);
    bool free = false;
    QTimer::singleShot(0, [&] { free = true; });
    testenv::waitUntil([&] { return free; }, 10000);
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    window()->timelineWidget()->removeEventFilter(&paints);
    return seconds;
}

void closeOnce() {
    delegate->action("menu_closeEpisode")->trigger();
    if (!testenv::waitUntil([] { return TimelineWindowStatus == AEWindowStatus::closed; }, 10000))
        qFatal("the episode did not close");
}

void BM_Baseline_ReadTimelineFile(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(AETimeLine::load(timelinePath));
}
BENCHMARK(BM_Baseline_ReadTimelineFile)->Unit(benchmark::kMillisecond)->Iterations(5);

// The list's memory before any open, then the first (warming) open, then the timed ones.
void BM_ClickToInteractiveWindow(benchmark::State& state) {
    const double listMB = residentMB();
    openOnce();
    closeOnce();
    double openMB = 0;
    for (auto _ : state) {
        state.SetIterationTime(openOnce());
        openMB = std::max(openMB, residentMB());
        const auto tl = window()->timeline();
        state.counters["items"] = static_cast<double>(tl->mainLane.size() + tl->attachedItems.size());
        state.PauseTiming();
        closeOnce();
        state.ResumeTiming();
    }
    state.counters["list_MB"] = listMB;
    state.counters["window_MB"] = openMB - listMB;
}
BENCHMARK(BM_ClickToInteractiveWindow)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

// Arg: 0 the list alone, 1 the window paused, 2 the window playing. The loop runs for real for 10 s.
void BM_IdleCpuShareOfACore(benchmark::State& state) {
    const int what = static_cast<int>(state.range(0));
    if (what > 0) openOnce();
    if (what == 2) window()->play_pressed();
    QEventLoop settle;
    QTimer::singleShot(1000, &settle, &QEventLoop::quit);
    settle.exec();
    double share = 0;
    for (auto _ : state) {
        const double cpu = cpuSeconds();
        QElapsedTimer clock;
        clock.start();
        QEventLoop loop;
        QTimer::singleShot(10000, &loop, &QEventLoop::quit);
        loop.exec();
        share = (cpuSeconds() - cpu) / (static_cast<double>(clock.nsecsElapsed()) / 1e9);
    }
    if (what == 2) window()->play_pressed();
    if (what > 0) closeOnce();
    state.counters["cpu_percent"] = share * 100;
}
BENCHMARK(BM_IdleCpuShareOfACore)->Arg(0)->Arg(1)->Arg(2)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv) {
    testenv::isolateUserFolders();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    AS::installToolLocator();
    setUserInteraction(std::make_shared<ScriptedInteraction>());
    makeWorkingFolder();
    delegate = std::make_shared<AppDelegate>();
    delegate->applicationDidFinishLaunching();
    if (!testenv::waitUntil(
            [] {
                return delegate->mainViewController() &&
                       delegate->mainViewController()->model()->rowCount() == 1;
            },
            20000))
        qFatal("the episode list did not come up");
    if (!QTest::qWaitForWindowExposed(delegate->window())) qFatal("the window is not on the screen");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    delegate.reset();
    return 0;
}
