// Channel splitting and joining, run against the installed SoX.

#include "render/tools/SoxChannels.h"

#include "render/tools/ToolFixture.h"
#include "support/EventWait.h"

#include <QFileInfo>

class SoxUtChannelsTest : public ToolFixture {};

TEST_F(SoxUtChannelsTest, CombineAndJoinPutSourcesSideBySide) {
    const QString left = tone("l.wav", 0.5, 440.0, 44100, 1, 0.5);
    const QString right = tone("r.wav", 0.5, 440.0, 44100, 1, 0.25);
    soxUt_combineLRChannels(left, right, path("lr.wav"));
    const Decoded lr = decode(path("lr.wav"));
    ASSERT_EQ(lr.channels, 2);
    EXPECT_NEAR(lr.peak(0, 0.0, 0.5), 0.5, 0.01);
    EXPECT_NEAR(lr.peak(1, 0.0, 0.5), 0.25, 0.01);

    soxUt_joinChannels({left, right, path("lr.wav")}, path("four.wav"));
    const Decoded four = decode(path("four.wav"));
    ASSERT_EQ(four.channels, 4);
    EXPECT_NEAR(four.peak(1, 0.0, 0.5), 0.25, 0.01);
    EXPECT_NEAR(four.peak(3, 0.0, 0.5), 0.25, 0.01);
    EXPECT_EQ(soxUt_getNChannels(path("four.wav")), 4);
}

TEST_F(SoxUtChannelsTest, ExtractTakesOneChannelCountingFromOne) {
    const QString st = channels("st.wav", {tone("l.wav", 0.5, 440.0, 44100, 1, 0.5), silence("r.wav", 0.5)});
    soxUt_extractChannel(st, path("one.wav"), 1);
    soxUt_extractChannel(st, path("two.wav"), 2);
    const Decoded one = decode(path("one.wav"));
    EXPECT_EQ(one.channels, 1);
    EXPECT_NEAR(one.peak(0, 0.0, 0.5), 0.5, 0.01);
    EXPECT_LT(decode(path("two.wav")).peak(0, 0.0, 0.5), 1e-4);
}

TEST_F(SoxUtChannelsTest, SplitChannelsCallsBackOnceWithEveryChannel) {
    const QString st = channels("st.wav", {tone("a.wav", 0.5, 440.0, 44100, 1, 0.5),
                                           tone("b.wav", 0.5, 440.0, 44100, 1, 0.25),
                                           tone("c.wav", 0.5, 440.0, 44100, 1, 0.125)});
    std::mutex m;
    QList<QStringList> calls;
    soxUt_splitChannels(st, path("part.wav"), [&](const QStringList& paths) {
        std::lock_guard lock(m);
        calls << paths;
    });
    ASSERT_TRUE(testenv::waitUntil(
        [&] {
            std::lock_guard lock(m);
            return !calls.isEmpty();
        },
        20000));
    testenv::pumpEventsFor(100);
    std::lock_guard lock(m);
    ASSERT_EQ(calls.size(), 1);
    QStringList sorted = calls.front();
    sorted.sort();
    EXPECT_EQ(sorted, QStringList({path("part_1.wav"), path("part_2.wav"), path("part_3.wav")}));
    EXPECT_NEAR(decode(path("part_1.wav")).peak(0, 0.0, 0.5), 0.5, 0.01);
    EXPECT_NEAR(decode(path("part_2.wav")).peak(0, 0.0, 0.5), 0.25, 0.01);
    EXPECT_NEAR(decode(path("part_3.wav")).peak(0, 0.0, 0.5), 0.125, 0.01);
}

TEST_F(SoxUtChannelsTest, SplittingWhatIsNotAudioGivesAnEmptyList) {
    const QString text = bytes("notes.wav", "not audio at all\n");
    EXPECT_EQ(soxUt_getNChannels(text), 0);
    EXPECT_EQ(soxUt_getNChannels(path("missing.wav")), 0);
    bool called = false;
    QStringList got{"sentinel"};
    soxUt_splitChannels(text, path("part.wav"), [&](const QStringList& paths) {
        called = true;
        got = paths;
    });
    EXPECT_TRUE(called);
    EXPECT_TRUE(got.isEmpty());
}
