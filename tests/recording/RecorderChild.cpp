// A recorder to be killed: records from the input given by id into a file, says "recording" on
// standard output once a second has reached the file, and goes on until it is killed.

#include "recording/Recorder.h"

#include <QCoreApplication>
#include <QTimer>
#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: recorder_child <input id> <file.wav>\n");
        return 2;
    }
    auto recorder = std::make_shared<Recorder>();
    recorder->setDeviceV2(AudioDeviceMetadata(QString::fromUtf8(argv[1])));
    recorder->setFrequency(48000);
    recorder->setNChannels(2);
    recorder->setRecordingFile(QString::fromUtf8(argv[2]));
    if (!recorder->record()) return 1;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (recorder->getLength() < 1.0) return;
        std::printf("recording\n");
        std::fflush(stdout);
        poll.stop();
    });
    poll.start(20);
    return QCoreApplication::exec();
}
