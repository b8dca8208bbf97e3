#pragma once
// The main() of every bench: preferences and folders of the run go to a private home, never the
// user's, before Qt reads them.

#include "render/tools/ProcessRunner.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdlib>

inline int runBenchmarks(int argc, char** argv) {
    static QTemporaryDir home(QDir::tempPath() + "/zendrel-bench-home-XXXXXX");
    const QByteArray h = home.path().toUtf8();
    setenv("HOME", h.constData(), 1);
    setenv("XDG_CONFIG_HOME", (h + "/.config").constData(), 1);
    setenv("XDG_DATA_HOME", (h + "/.local/share").constData(), 1);
    setenv("XDG_CACHE_HOME", (h + "/.cache").constData(), 1);
    setenv("XDG_DOCUMENTS_DIR", (h + "/Documents").constData(), 1);
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

// Runs a tool to its end, its output discarded and its errors shown; true when it exited with 0.
inline bool runTool(const QString& program, const QStringList& arguments) {
    const ProcessResult r =
        runProcess(ProcessRequest{.program = program, .arguments = arguments, .keepOutput = false});
    return r.finished && r.exitCode == 0;
}
