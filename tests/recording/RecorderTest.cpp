#include "recording/Recorder.h"

#include "RecordingFixture.h"
#include "foundation/Interaction.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <csignal>
#include <sndfile.h>

using namespace recordingtest;

namespace {

struct Format {
    int frequency;
    int bitDepth;
    int channels; // asked for; 0 is the device's own (two here)
    int expectedChannels;
    int subFormat;
};

class RecorderTest : public RecordingServerTest, public ::testing::WithParamInterface<Format> {
protected:
    std::shared_ptr<Recorder> recorderInto(const QString& name,
                                           const QByteArray& input = PulseNullSink::kSource) {
        auto recorder = std::make_shared<Recorder>();
        recorder->setDeviceV2(AudioDeviceMetadata(QString::fromUtf8(input)));
        recorder->setRecordingFile(dir_.filePath(name));
        return recorder;
    }
    // Lets a take run for `ms` and says how long it really ran.
    static double recordFor(int ms) {
        QElapsedTimer clock;
        clock.start();
        testenv::pumpEventsFor(ms);
        return clock.nsecsElapsed() / 1e9;
    }

    QTemporaryDir dir_;
};

TEST_P(RecorderTest, ATakeHasTheTonesFrequencyLevelAndLength) {
    const Format format = GetParam();
    const auto tone = playTone();
    auto recorder = recorderInto("tone.wav");
    recorder->setFrequency(format.frequency);
    recorder->setBitDepth(format.bitDepth);
    recorder->setNChannels(format.channels);
    QStringList times;
    recorder->setRecordingTimeLabel([&](const QString& t) { times << t; });
    ASSERT_TRUE(recorder->record());
    QElapsedTimer clock;
    clock.start();
    testenv::pumpEventsFor(1200);
    std::vector<float> meterDb;
    for (int i = 0; i < 5; ++i) {
        meterDb.push_back(recorder->getMeteringPower(0));
        testenv::pumpEventsFor(60);
    }
    const double ran = clock.nsecsElapsed() / 1e9;
    recorder->stop();
    std::sort(meterDb.begin(), meterDb.end());

    const Take take = readTake(dir_.filePath("tone.wav"));
    EXPECT_EQ(take.rate, format.frequency);
    EXPECT_EQ(take.channels, format.expectedChannels);
    EXPECT_EQ(take.subFormat, format.subFormat);
    EXPECT_NEAR(take.seconds(), ran, 0.05);
    EXPECT_NEAR(recorder->getLength(), take.seconds(), 0.001);
    const auto settle = static_cast<size_t>(take.rate / 10);
    EXPECT_NEAR(frequencyOf(take.left, take.rate, settle), kToneHz, 2.0);
    EXPECT_NEAR(sinePeakDbOf(take.left, settle, take.left.size(), take.rate), kToneDb, 1.0);
    // The meter reads the RMS of the sine: 3 dB under its peak.
    EXPECT_NEAR(meterDb[2], kToneDb - 3.01, 1.0);
    EXPECT_GE(times.size(), 15);
    EXPECT_EQ(recorder->droppedFrames(), 0);
}

INSTANTIATE_TEST_SUITE_P(Formats, RecorderTest,
                         ::testing::Values(Format{48000, 24, 0, 2, SF_FORMAT_PCM_24},
                                           Format{44100, 16, 1, 1, SF_FORMAT_PCM_16}));

using RecorderServerTest = RecorderTest;

TEST_F(RecorderServerTest, PauseAndResumeFillOneFileWithTheSumOfTheParts) {
    const auto tone = playTone();
    auto recorder = recorderInto("parts.wav");
    ASSERT_TRUE(recorder->record());
    double sum = recordFor(700);
    recorder->pause();
    const double atPause = recorder->getLength();
    testenv::pumpEventsFor(600);
    EXPECT_DOUBLE_EQ(recorder->getLength(), atPause);
    recorder->resumeRecord();
    sum += recordFor(800);
    recorder->stop();

    const Take take = readTake(dir_.filePath("parts.wav"));
    EXPECT_NEAR(take.seconds(), sum, 0.1);
    EXPECT_NEAR(recorder->getLength(), take.seconds(), 0.001);
    EXPECT_NEAR(frequencyOf(take.left, take.rate, take.rate / 10), kToneHz, 2.0);
}

TEST_F(RecorderServerTest, TheChosenInputIsOpenedAndTheSystemDefaultStays) {
    const int other = server_->addSource("othermic", PulseNullSink::kOtherSink);
    ASSERT_GE(other, 0);
    ASSERT_TRUE(testenv::waitUntil([] { return Recorder::getDeviceListV2().size() >= 2; }, 5000));
    EXPECT_EQ(Recorder::getDeviceListV2().front().id, PulseNullSink::kSource);

    // The tone goes to the default output only, so the other input hears silence.
    const auto tone = playTone();
    auto recorder = recorderInto("other.wav", "othermic");
    EXPECT_EQ(recorder->device().id, "othermic");
    ASSERT_TRUE(recorder->record());
    testenv::pumpEventsFor(500);
    recorder->stop();
    const Take take = readTake(dir_.filePath("other.wav"));
    EXPECT_GT(take.seconds(), 0.3);
    EXPECT_LT(sinePeakDbOf(take.left, 0, take.left.size(), take.rate), -60.0);
    EXPECT_EQ(QMediaDevices::defaultAudioInput().id(), PulseNullSink::kSource);

    // A name that is not there leaves the default input.
    EXPECT_FALSE(recorder->setDeviceByName("No Such Microphone"));
    EXPECT_EQ(recorder->device().id, PulseNullSink::kSource);
    server_->unloadModule(other);
}

TEST_F(RecorderServerTest, AKilledTakeIsReadByLibsndfileAndSox) {
    const auto tone = playTone();
    const QString path = dir_.filePath("killed.wav");
    QProcess child;
    child.start(RECORDER_CHILD, {PulseNullSink::kSource, path});
    ASSERT_TRUE(child.waitForStarted(5000));
    ASSERT_TRUE(testenv::waitUntil([&] { return child.readAllStandardOutput().contains("recording"); }, 8000))
        << child.readAllStandardError().toStdString();
    // Past one header rewrite after the first second.
    testenv::pumpEventsFor(700);
    ::kill(static_cast<pid_t>(child.processId()), SIGKILL);
    child.waitForFinished(5000);
    ASSERT_EQ(child.exitStatus(), QProcess::CrashExit);

    const Take take = readTake(path);
    EXPECT_GE(take.seconds(), 1.0);
    EXPECT_NEAR(frequencyOf(take.left, take.rate, take.rate / 10), kToneHz, 2.0);
    QProcess sox;
    sox.start("sox", {"--i", "-D", path});
    ASSERT_TRUE(sox.waitForFinished(10000));
    EXPECT_EQ(sox.exitCode(), 0) << sox.readAllStandardError().toStdString();
    EXPECT_NEAR(sox.readAllStandardOutput().trimmed().toDouble(), take.seconds(), 0.001);
    sox.start("sox", {path, "-n", "stat"});
    ASSERT_TRUE(sox.waitForFinished(10000));
    EXPECT_EQ(sox.exitCode(), 0) << sox.readAllStandardError().toStdString();
}

TEST_F(RecorderServerTest, ARemovedInputEndsTheTakeKeepsItAndTellsThePerson) {
    const int module = server_->addSource("usbmic", PulseNullSink::kSink);
    ASSERT_GE(module, 0);
    ASSERT_TRUE(testenv::waitUntil([] { return Recorder::getDeviceListV2().size() >= 2; }, 5000));
    auto door = std::make_shared<ScriptedInteraction>();
    setUserInteraction(door);
    const auto tone = playTone();
    auto recorder = recorderInto("unplugged.wav", "usbmic");
    QString failure;
    recorder->onFailure = [&](const QString& text) { failure = text; };
    ASSERT_TRUE(recorder->record());
    testenv::pumpEventsFor(1000);
    ASSERT_TRUE(server_->unloadModule(module));
    EXPECT_TRUE(testenv::waitUntil([&] { return !recorder->isRecording; }, 5000));

    EXPECT_TRUE(failure.contains("no longer available")) << failure.toStdString();
    ASSERT_FALSE(door->transcript().empty());
    EXPECT_TRUE(door->transcript().back().startsWith("alert: Recording Stopped"))
        << door->transcript().back().toStdString();
    const Take take = readTake(dir_.filePath("unplugged.wav"));
    EXPECT_NEAR(take.seconds(), recorder->recorderLength, 0.001);
    EXPECT_GE(take.seconds(), 0.8);
    EXPECT_NEAR(frequencyOf(take.left, take.rate, take.rate / 10), kToneHz, 2.0);
    setUserInteraction(std::make_shared<ScriptedInteraction>());
}

} // namespace
