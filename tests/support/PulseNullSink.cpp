#include "support/PulseNullSink.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QThread>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>

namespace testenv {

namespace {
constexpr int kStartTimeoutMs = 5000;
constexpr int kStopTimeoutMs = 3000;
} // namespace

PulseNullSink::PulseNullSink() : dir_(QDir::tempPath() + "/zendrel-pulse-XXXXXX") {
    failure_ = start();
    if (failure_.isEmpty())
        available_ = true;
    else
        stop();
}

// Why the server is not usable, "" once it is.
QString PulseNullSink::start() {
    if (!dir_.isValid()) return "no temporary folder for the sound server";
    for (const char* tool : {"pulseaudio", "pactl", "parec"})
        if (QStandardPaths::findExecutable(tool).isEmpty()) return QString(tool) + " is not installed";
    const QString d = dir_.path();
    QDir().mkpath(d + "/home");
    QDir().mkpath(d + "/run");
    QFile::setPermissions(d + "/run", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    server_ = "unix:" + (d + "/native").toUtf8();

    // othersink is loaded first so that the server's own order does not already put the default first.
    // nullmic is there because Qt lists no monitor among the inputs. The sinks start suspended: see
    // the listeners below.
    QFile script(d + "/null.pa");
    if (!script.open(QIODevice::WriteOnly)) return "cannot write the sound server's configuration";
    script.write(QStringLiteral("load-module module-native-protocol-unix auth-anonymous=1 socket=%1/native\n"
                                "load-module module-null-sink sink_name=%2 rate=%3 channels=2 "
                                "sink_properties=device.description=%5\n"
                                "load-module module-null-sink sink_name=%4 rate=%3 channels=2 "
                                "sink_properties=device.description=%6\n"
                                "load-module module-remap-source master=%4.monitor source_name=%7\n"
                                "set-default-sink %4\n"
                                "set-default-source %7\n"
                                "suspend-sink %2 1\n"
                                "suspend-sink %4 1\n")
                     .arg(d, kOtherSink)
                     .arg(kRate)
                     .arg(kSink, kOtherSinkDescription, kSinkDescription, kSource)
                     .toUtf8());
    script.close();

    hadPreviousServer_ = qEnvironmentVariableIsSet("PULSE_SERVER");
    previousServer_ = qgetenv("PULSE_SERVER");
    qputenv("PULSE_SERVER", server_);
    serverSet_ = true;

    // In the foreground, so the daemon is our child: it can be killed by pid and dies with us.
    daemon_ = process("pulseaudio", {"-n", "-F", d + "/null.pa", "--daemonize=no", "--system=no",
                                     "--use-pid-file=no", "--exit-idle-time=-1", "--realtime=no",
                                     "--high-priority=no", "--log-target=file:" + d + "/daemon.log"});
    daemon_->setStandardOutputFile(QProcess::nullDevice());
    daemon_->setStandardErrorFile(d + "/daemon.stderr");
    daemon_->start();
    if (!daemon_->waitForStarted(kStartTimeoutMs))
        return "pulseaudio did not start: " + daemon_->errorString();
    bool ok = false;
    for (const QDeadlineTimer deadline(kStartTimeoutMs); !ok; QThread::msleep(20)) {
        pactl({"info"}, 1000, &ok);
        if (!ok && (daemon_->state() == QProcess::NotRunning || deadline.hasExpired()))
            return "pulseaudio did not come up: " + logTail();
    }

    // A null sink renders in blocks as long as its lowest requested latency, 2 s when nobody asks, and
    // a block under way is not cut short: a stream arriving then stalls until it ends. So the sinks
    // wake only once low-latency listeners are on their monitors, and render in small blocks from
    // the start.
    for (const char* sink : {kSink, kOtherSink}) {
        auto listener = process("parec", {"--raw", "--latency-msec=20", "-d", QString(sink) + ".monitor"});
        listener->setStandardOutputFile(QProcess::nullDevice());
        listener->start();
        if (!listener->waitForStarted(kStartTimeoutMs))
            return "parec did not start: " + listener->errorString();
        listeners_.push_back(std::move(listener));
    }
    for (const QDeadlineTimer listening(kStartTimeoutMs);; QThread::msleep(10)) {
        const QByteArray streams = pactl({"list", "short", "source-outputs"}, 1000, &ok);
        if (ok && streams.trimmed().split('\n').size() >= 2) break;
        if (listening.hasExpired()) return "the monitor listeners did not connect: " + logTail();
    }
    for (const char* sink : {kSink, kOtherSink}) {
        pactl({"suspend-sink", sink, "0"}, kStartTimeoutMs, &ok);
        if (!ok) return QString("the sink %1 did not wake: ").arg(sink) + logTail();
    }
    return {};
}

PulseNullSink::~PulseNullSink() {
    stop();
}

void PulseNullSink::stop() {
    for (auto& listener : listeners_) {
        listener->terminate();
        if (!listener->waitForFinished(kStopTimeoutMs)) {
            listener->kill();
            listener->waitForFinished(kStopTimeoutMs);
        }
    }
    listeners_.clear();
    if (daemon_ && daemon_->state() != QProcess::NotRunning) {
        bool ok = false;
        pactl({"exit"}, kStopTimeoutMs, &ok);
        if (!daemon_->waitForFinished(kStopTimeoutMs)) {
            daemon_->kill();
            daemon_->waitForFinished(kStopTimeoutMs);
        }
    }
    daemon_.reset();
    if (serverSet_) {
        serverSet_ = false;
        if (hadPreviousServer_)
            qputenv("PULSE_SERVER", previousServer_);
        else
            qunsetenv("PULSE_SERVER");
    }
    available_ = false;
}

std::unique_ptr<QProcess> PulseNullSink::process(const QString& program, const QStringList& arguments) const {
    auto p = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("PULSE_SERVER", QString::fromUtf8(server_));
    env.insert("HOME", dir_.path() + "/home");
    env.insert("XDG_RUNTIME_DIR", dir_.path() + "/run");
    env.insert("XDG_CONFIG_HOME", dir_.path() + "/home/.config");
    p->setProcessEnvironment(env);
    p->setProgram(program);
    p->setArguments(arguments);
    p->setStandardInputFile(QProcess::nullDevice());
    // A test that crashes or is killed takes its servers and recorders with it.
    p->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    return p;
}

QByteArray PulseNullSink::pactl(const QStringList& arguments, int timeoutMs, bool* ok) const {
    *ok = false;
    auto p = process("pactl", arguments);
    p->setStandardErrorFile(QProcess::nullDevice());
    p->start();
    if (!p->waitForFinished(timeoutMs)) {
        p->kill();
        p->waitForFinished(kStopTimeoutMs);
        return {};
    }
    *ok = p->exitStatus() == QProcess::NormalExit && p->exitCode() == 0;
    return p->readAllStandardOutput();
}

QString PulseNullSink::logTail() const {
    QString text;
    for (const char* name : {"/daemon.log", "/daemon.stderr"}) {
        QFile f(dir_.path() + name);
        if (f.open(QIODevice::ReadOnly)) text += QString::fromUtf8(f.readAll());
    }
    return text.right(1500).trimmed();
}

std::vector<float> PulseNullSink::record(const QByteArray& sink, int ms) const {
    std::vector<float> samples;
    if (!available_) return samples;
    auto recorder =
        process("parec", {"--raw", "--format=float32le", "--rate=" + QString::number(kRate), "--channels=2",
                          "--latency-msec=20", "-d", QString::fromUtf8(sink) + ".monitor"});
    recorder->setStandardErrorFile(QProcess::nullDevice());
    recorder->start();
    if (!recorder->waitForStarted(kStartTimeoutMs)) return samples;
    const qint64 wanted = qint64(kRate) * ms / 1000 * 2 * qint64(sizeof(float));
    QByteArray bytes;
    const QDeadlineTimer deadline(ms + kStartTimeoutMs);
    while (bytes.size() < wanted && !deadline.hasExpired() && recorder->state() == QProcess::Running) {
        recorder->waitForReadyRead(50);
        bytes += recorder->readAllStandardOutput();
    }
    recorder->kill();
    recorder->waitForFinished(kStopTimeoutMs);
    bytes.truncate(std::min<qint64>(bytes.size(), wanted) / qint64(sizeof(float)) * qint64(sizeof(float)));
    samples.resize(static_cast<size_t>(bytes.size()) / sizeof(float));
    std::memcpy(samples.data(), bytes.constData(), static_cast<size_t>(bytes.size()));
    return samples;
}

std::unique_ptr<PulseNullSink>& sharedPulseNullSink() {
    static std::unique_ptr<PulseNullSink> server;
    return server;
}

int PulseNullSink::addSource(const QByteArray& source, const QByteArray& sink) const {
    if (!available_) return -1;
    bool ok = false;
    const QByteArray index =
        pactl({"load-module", "module-remap-source", "master=" + QString::fromUtf8(sink) + ".monitor",
               "source_name=" + QString::fromUtf8(source)},
              kStartTimeoutMs, &ok);
    return ok ? index.trimmed().toInt() : -1;
}

bool PulseNullSink::unloadModule(int index) const {
    bool ok = false;
    pactl({"unload-module", QString::number(index)}, kStopTimeoutMs, &ok);
    return ok;
}

} // namespace testenv
