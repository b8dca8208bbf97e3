// A small stand-in for libFuzzer where the compiler has none: runs the target's seeds and every file
// of the given corpus folders, then, for --seconds, mutates inputs from that pool and runs them.
// Mutations know the archive is JSON (values swapped for values of other kinds, references copied
// to other places, keys dropped, elements repeated) and also work on raw bytes. An input that
// is still JSON joins the pool. On a crash the input at fault is written to crash-<target>-<n> in the
// working directory, to be kept as a regression case.
//
//   fuzz_<target> [--seconds N] [--write-seeds DIR] [CORPUS_DIR_OR_FILE...]

#include "DecoderFuzz.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

QByteArray current;
char crashPath[256];

void writeCurrentAndDie(int sig) {
    // Only async-signal-safe calls: the process is going down.
    const int fd = ::open(crashPath, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd >= 0) {
        [[maybe_unused]] const auto written =
            ::write(fd, current.constData(), static_cast<size_t>(current.size()));
        ::close(fd);
    }
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

void run(const QByteArray& input) {
    current = input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.constData()),
                           static_cast<size_t>(input.size()));
}

QRandomGenerator& generator() {
    static QRandomGenerator generator(20261123u);
    return generator;
}

int below(qsizetype n) {
    return n <= 0 ? 0 : static_cast<int>(generator().bounded(static_cast<quint32>(n)));
}

// Every value of the document, as a path of keys and indexes from the top.
using Path = std::vector<QJsonValue>;
void collect(const QJsonValue& value, Path& at, std::vector<Path>& out) {
    out.push_back(at);
    if (value.isObject()) {
        const QJsonObject o = value.toObject();
        for (auto it = o.begin(); it != o.end(); ++it) {
            at.push_back(it.key());
            collect(it.value(), at, out);
            at.pop_back();
        }
    } else if (value.isArray()) {
        const QJsonArray a = value.toArray();
        for (qsizetype i = 0; i < a.size(); ++i) {
            at.push_back(static_cast<double>(i));
            collect(a[i], at, out);
            at.pop_back();
        }
    }
}

QJsonValue valueAt(const QJsonValue& root, const Path& path) {
    QJsonValue v = root;
    for (const auto& step : path)
        v = step.isString() ? v.toObject().value(step.toString())
                            : v.toArray().at(static_cast<qsizetype>(step.toDouble()));
    return v;
}

// Replaces (or, with `remove`, deletes) the value at path[from...] inside `node`.
QJsonValue replaced(const QJsonValue& node, const Path& path, size_t from, const QJsonValue& with,
                    bool remove) {
    if (from == path.size()) return with;
    const QJsonValue& step = path[from];
    const bool last = from + 1 == path.size();
    if (step.isString()) {
        QJsonObject o = node.toObject();
        if (last && remove)
            o.remove(step.toString());
        else
            o[step.toString()] = replaced(o.value(step.toString()), path, from + 1, with, remove);
        return o;
    }
    QJsonArray a = node.toArray();
    const auto i = static_cast<qsizetype>(step.toDouble());
    if (i >= a.size()) return a;
    if (last && remove)
        a.removeAt(i);
    else if (last && with.isUndefined())
        a.insert(i, a.at(i)); // undefined: repeat the element
    else
        a[i] = replaced(a.at(i), path, from + 1, with, remove);
    return a;
}

QJsonValue interesting(const QJsonValue& root, const std::vector<Path>& paths) {
    static const QJsonArray kinds =
        QJsonDocument::fromJson(R"([0, -1, 1, 1e9, -1e300, 1e300, 9007199254740993,
        0.5, true, false, "", "AESilence", "../../x", null, [], {}, {"int": -7}, {"double": 1e18},
        {"bool": true}, {"string": "x"}, {"ref": 0}, {"ref": 1}])")
            .array();
    // Half the time a value from elsewhere in the same file: references, ranges and lists move around.
    if (generator().bounded(2))
        return valueAt(root, paths[static_cast<size_t>(below(static_cast<qsizetype>(paths.size())))]);
    return kinds[below(kinds.size())];
}

QByteArray mutateJson(const QByteArray& input) {
    const QJsonDocument doc = QJsonDocument::fromJson(input);
    if (doc.isNull()) return {};
    QJsonValue root = doc.isObject() ? QJsonValue(doc.object()) : QJsonValue(doc.array());
    const int rounds = 1 + below(3);
    for (int r = 0; r < rounds; ++r) {
        std::vector<Path> paths;
        Path at;
        collect(root, at, paths);
        if (paths.size() < 2) break;
        const Path& target = paths[static_cast<size_t>(1 + below(static_cast<qsizetype>(paths.size()) - 1))];
        switch (below(4)) {
        case 0:
            root = replaced(root, target, 0, QJsonValue(), true);
            break;
        case 1:
            root = replaced(root, target, 0, QJsonValue(QJsonValue::Undefined), false);
            break;
        default:
            root = replaced(root, target, 0, interesting(root, paths), false);
        }
    }
    const QJsonDocument out =
        root.isObject() ? QJsonDocument(root.toObject()) : QJsonDocument(root.toArray());
    return out.toJson(QJsonDocument::Compact);
}

QByteArray mutateBytes(QByteArray bytes) {
    if (bytes.isEmpty()) return QByteArray(1, static_cast<char>(below(256)));
    switch (below(4)) {
    case 0:
        bytes[below(bytes.size())] = static_cast<char>(bytes[below(bytes.size())] ^ (1 << below(8)));
        break;
    case 1:
        bytes.remove(below(bytes.size()), 1 + below(16));
        break;
    case 2:
        bytes.insert(below(bytes.size()), bytes.mid(below(bytes.size()), 1 + below(32)));
        break;
    default:
        bytes.truncate(below(bytes.size()));
    }
    return bytes;
}

void addFile(const QString& path, std::vector<QByteArray>& pool) {
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) pool.push_back(file.readAll());
}

} // namespace

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    double seconds = 0;
    QString seedFolder;
    std::vector<QByteArray> pool = fuzzSeeds();
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (arg == "--seconds" && i + 1 < argc) {
            seconds = QString::fromLocal8Bit(argv[++i]).toDouble();
        } else if (arg == "--write-seeds" && i + 1 < argc) {
            seedFolder = QString::fromLocal8Bit(argv[++i]);
        } else if (QFileInfo(arg).isDir()) {
            for (const auto& name : QDir(arg).entryList(QDir::Files, QDir::Name))
                addFile(QDir(arg).filePath(name), pool);
        } else {
            addFile(arg, pool);
        }
    }
    if (!seedFolder.isEmpty()) {
        QDir().mkpath(seedFolder);
        const auto seeds = fuzzSeeds();
        for (size_t n = 0; n < seeds.size(); ++n) {
            QFile out(QDir(seedFolder).filePath(QString("seed-%1.json").arg(n)));
            if (out.open(QIODevice::WriteOnly)) out.write(seeds[n]);
        }
        return 0;
    }
    std::snprintf(crashPath, sizeof crashPath, "crash-%s-%d", fuzzTargetName(), static_cast<int>(getpid()));
    for (int sig : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(sig, writeCurrentAndDie);
    // The decoders log every step; the driver reports on stderr.
    if (!std::freopen("/dev/null", "w", stdout)) return 2;

    for (const auto& input : pool)
        run(input);
    std::fprintf(stderr, "%s: %zu seeds and corpus files replayed\n", fuzzTargetName(), pool.size());

    QElapsedTimer clock;
    clock.start();
    long runs = 0;
    constexpr size_t kPoolLimit = 4096;
    while (clock.elapsed() < seconds * 1000.0) {
        const QByteArray& parent = pool[static_cast<size_t>(below(static_cast<qsizetype>(pool.size())))];
        QByteArray child = generator().bounded(4) ? mutateJson(parent) : mutateBytes(parent);
        if (child.isEmpty()) child = mutateBytes(parent);
        run(child);
        ++runs;
        if (pool.size() < kPoolLimit && !QJsonDocument::fromJson(child).isNull()) pool.push_back(child);
    }
    std::fprintf(stderr, "%s: %ld mutated inputs in %.0f s, no fault\n", fuzzTargetName(), runs, seconds);
    return 0;
}
