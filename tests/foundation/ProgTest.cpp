#include "foundation/Prog.h"

#include "foundation/QXTimer.h"
#include "support/EventWait.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {
struct Seen {
    QString phase, phaseData, subPhase, subPhaseData;
    double phaseBar = -1, subPhaseBar = -1;
    int refreshes = 0;
};

ProgViews viewsInto(Seen& seen) {
    ProgViews v;
    v.phaseLabel = [&](const QString& t) {
        seen.phase = t;
        ++seen.refreshes;
    };
    v.phaseBarIndicator = [&](double f) { seen.phaseBar = f; };
    v.phaseDataLabel = [&](const QString& t) { seen.phaseData = t; };
    v.subPhaseLabel = [&](const QString& t) { seen.subPhase = t; };
    v.subPhaseBarIndicator = [&](double f) { seen.subPhaseBar = f; };
    v.subPhaseDataLabel = [&](const QString& t) { seen.subPhaseData = t; };
    return v;
}

void writeBytes(const QString& path, int count) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(count, 'x'));
}
} // namespace

TEST(Prog, TotalIsFinishedPhasesPlusTheShareOfTheCurrent) {
    ProgState s;
    s.nPhases = 4;
    s.currentPhase = 3;
    s.subPhasePercentage = 0.5;
    EXPECT_DOUBLE_EQ(s.getTotalPercentage(), 0.625);
    s.currentPhase = 0; // before the first phase
    EXPECT_DOUBLE_EQ(s.getTotalPercentage(), 0.0);
    s.nPhases = 0;
    EXPECT_DOUBLE_EQ(s.getTotalPercentage(), 0.0);

    auto prog = Prog::make(ProgType::double_, {}, 0.1, 4);
    for (int i = 0; i < 3; ++i)
        prog->newPhase("phase");
    prog->subPhaseSetRatio(5, 10);
    EXPECT_DOUBLE_EQ(prog->getTotalPercentage(), 0.625);
}

TEST(Prog, NewPhaseClearsTheSubphaseWhoseSettersStayWithinZeroAndOne) {
    auto prog = Prog::make(ProgType::double_, {}, 0.1, 2);
    prog->newPhase("Converting");
    prog->subPhaseSetRatio(3, 0);
    EXPECT_EQ(prog->state().subPhasePercentage, 0.0);
    prog->subPhaseSetPercentage(1.7);
    EXPECT_EQ(prog->state().subPhasePercentage, 1.0);
    prog->newSubPhase("Steps", SubPhaseType::counter, 8);
    prog->subPhaseSetCounter(6);
    EXPECT_DOUBLE_EQ(prog->state().subPhasePercentage, 0.75);
    prog->subPhaseSetCounter(9);
    EXPECT_EQ(prog->state().subPhasePercentage, 1.0);
    prog->newPhase("Mixing");
    const ProgState s = prog->state();
    EXPECT_EQ(s.currentPhase, 2);
    EXPECT_EQ(s.phaseTitle, "Mixing");
    EXPECT_EQ(s.subPhaseCounter, 0);
    EXPECT_EQ(s.subNPhases, 0);
    EXPECT_EQ(s.subPhasePercentage, 0.0);
    EXPECT_TRUE(s.subPhaseTitle.isEmpty());
    EXPECT_DOUBLE_EQ(prog->getTotalPercentage(), 0.5);
}

TEST(Prog, RefreshFillsOnlyTheViewsOfItsType) {
    Seen seen;
    auto single = Prog::make(ProgType::single, viewsInto(seen), 0.1, 2);
    single->newPhase("Loading");
    single->subPhaseSetPercentage(0.5);
    single->updateUI();
    EXPECT_EQ(seen.phase, "Loading");
    EXPECT_EQ(seen.phaseData, "Phase 1 of 2");
    EXPECT_DOUBLE_EQ(seen.phaseBar, 0.25);
    EXPECT_EQ(seen.subPhaseBar, -1);
    EXPECT_TRUE(seen.subPhaseData.isEmpty());

    auto twoBars = Prog::make(ProgType::double_, viewsInto(seen), 0.1, 2);
    twoBars->newPhase("Cleaning");
    twoBars->newSubPhase("Files", SubPhaseType::counter, 40);
    twoBars->subPhaseSetCounter(12);
    twoBars->updateUI();
    EXPECT_EQ(seen.subPhase, "Files");
    EXPECT_EQ(seen.subPhaseData, "12 of 40");
    EXPECT_DOUBLE_EQ(seen.subPhaseBar, 0.3);
    twoBars->newSubPhase("Denoise", SubPhaseType::percentage);
    twoBars->subPhaseSetPercentage(0.505);
    twoBars->updateUI();
    EXPECT_EQ(seen.subPhaseData, "50%");

    auto silent = Prog::make(ProgType::double_, ProgViews{}, 0.1, 1); // no views at all
    silent->newPhase("p");
    silent->updateUI();
}

TEST(Prog, FileSubphasesMeasureTheTargetsOnRefresh) {
    QTemporaryDir dir;
    const QString a = dir.filePath("a.wav"), b = dir.filePath("b.wav");
    Seen seen;
    auto prog = Prog::make(ProgType::double_, viewsInto(seen), 0.1, 1);
    prog->newPhase("Render");
    prog->newSubPhase("Mixdown", SubPhaseType::fileSize, 4'000'000, a);
    writeBytes(a, 1'000'000);
    prog->updateUI();
    EXPECT_DOUBLE_EQ(seen.subPhaseBar, 0.25);
    EXPECT_EQ(prog->state().finalFileSize, 1'000'000);
    EXPECT_EQ(seen.subPhaseData, "1.0 MB of 4.0 MB");

    prog->newSubPhase("Lanes", SubPhaseType::multiFile, 4'000'000, {}, {a, b});
    writeBytes(b, 2'000'000);
    prog->updateUI();
    EXPECT_DOUBLE_EQ(seen.subPhaseBar, 0.75);
    EXPECT_DOUBLE_EQ(seen.phaseBar, 0.75);
}

TEST(Prog, StartRefreshesOnItsTimerUntilStopped) {
    Seen seen;
    auto prog = Prog::make(ProgType::single, viewsInto(seen), 0.005, 1);
    prog->newPhase("Working");
    prog->start();
    EXPECT_TRUE(QXTimer::getTimerNameList().contains("Prog.updateUI"));
    ASSERT_TRUE(testenv::waitUntil([&] { return seen.refreshes >= 2; }));
    prog->stop();
    testenv::pumpEventsFor(5);
    const int atStop = seen.refreshes;
    testenv::pumpEventsFor(30);
    EXPECT_EQ(seen.refreshes, atStop);
    EXPECT_FALSE(QXTimer::getTimerNameList().contains("Prog.updateUI"));
}
