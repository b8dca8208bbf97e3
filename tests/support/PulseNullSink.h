#pragma once
// A private sound server for tests that need a real audio device: a PulseAudio daemon of this
// process alone, whose outputs are null sinks, so what is played can be recorded back from their
// monitors. PULSE_SERVER points at it while it lives.
//
// Start it before Qt Multimedia first looks for devices: Qt keeps the first server it reaches and only
// looks again three seconds after losing it (on the main event loop).

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>
#include <vector>

namespace testenv {

class PulseNullSink {
public:
    static constexpr int kRate = 44100;
    // The default output, and a second one that is not the default.
    static constexpr const char* kSink = "nullsink";
    static constexpr const char* kOtherSink = "othersink";
    static constexpr const char* kSinkDescription = "Test-Main-Output";
    static constexpr const char* kOtherSinkDescription = "Test-Other-Output";
    // The default input: it hears what kSink plays.
    static constexpr const char* kSource = "nullmic";

    // Starts the daemon and waits until it answers; check available().
    PulseNullSink();
    // Stops the daemon and every recorder, and puts PULSE_SERVER back.
    ~PulseNullSink();
    PulseNullSink(const PulseNullSink&) = delete;
    PulseNullSink& operator=(const PulseNullSink&) = delete;

    bool available() const { return available_; }
    // Why it is not available.
    QString failure() const { return failure_; }
    // The PULSE_SERVER value of the daemon.
    QByteArray server() const { return server_; }

    // What `sink` plays over the next `ms` milliseconds, as interleaved stereo float at kRate; shorter
    // when the recorder fails.
    std::vector<float> record(const QByteArray& sink, int ms) const;

    // An input named `source` that hears what `sink` plays; its module index, or -1.
    int addSource(const QByteArray& source, const QByteArray& sink) const;
    // Takes a module out, as unplugging takes a device away.
    bool unloadModule(int index) const;

private:
    QString start();
    std::unique_ptr<QProcess> process(const QString& program, const QStringList& arguments) const;
    // Its output; *ok when it ran and succeeded.
    QByteArray pactl(const QStringList& arguments, int timeoutMs, bool* ok) const;
    QString logTail() const;
    void stop();

    QTemporaryDir dir_;
    QByteArray server_;
    QByteArray previousServer_;
    bool hadPreviousServer_ = false;
    bool serverSet_ = false;
    bool available_ = false;
    QString failure_;
    std::unique_ptr<QProcess> daemon_;
    // Low-latency readers of the monitors, which keep the sinks rendering in small blocks.
    std::vector<std::unique_ptr<QProcess>> listeners_;
};

// The server of the whole test process. Qt Multimedia gives up on a lost server once a retry finds
// none, so the server is not stopped between suites: each suite takes the one running, and starts
// one only when there is none.
std::unique_ptr<PulseNullSink>& sharedPulseNullSink();

} // namespace testenv
