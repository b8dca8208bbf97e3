// Channel splitting and joining, run against the installed SoX.

#include "render/tools/SoxChannels.h"

#include "render/tools/ToolFixture.h"
#include "support/EventWait.h"

#include <QFileInfo>

class SoxUtChannelsTest : public ToolFixture {};

// Combine and join put sources side by side; extract takes one channel back, counting from one.
TEST_F(SoxUtChannelsTest, CombineJoinAndExtract) {
    const QString left = tone("l.wav", 0.5, 440.0, 44100, 1, 0.5);
    const QString right = tone("r.wav", 0.5, 440.0, 44100, 1, 0.25);
    soxUt_combineLRChannels(left, right, path("lr.wav"));
    const Decoded lr = decode(path("lr.wav"));
    ASSERT_EQ(lr.channels, 2);
    EXPECT_NEAR(lr.peak(0, 0.0, 0.5), 0.5, 0.01);
    EXPECT_NEAR(lr.peak(1, 0.0, 0.5), 0.25, 0.01);

    soxUt_joinChannels({left, right, path("lr.wav")}, path("four.wav"));
    EXPECT_EQ(soxUt_getNChannels(path("four.wav")), 4);
    for (const int channel : {1, 2, 3, 4}) {
        const QString one = path("ch" + QString::number(channel) + ".wav");
        soxUt_extractChannel(path("four.wav"), one, channel);
        const Decoded d = decode(one);
        EXPECT_EQ(d.channels, 1);
        EXPECT_NEAR(d.peak(0, 0.0, 0.5), channel % 2 ? 0.5 : 0.25, 0.01) << channel;
    }
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
