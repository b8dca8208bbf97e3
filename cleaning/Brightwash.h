#pragma once
// Cleans one speech file: a fixed chain of stages over a mono 16-bit working copy, leaving one result
// beside the source ("<name>_<suffix>.wav", or ".mp3"). The class names files, decides which stages run,
// reports progress and cleans up; the signal work is the sound tool's and the cluster analysis's.
//
// One object serves one run. start() blocks: run it on the pool (startAsync), never on the main thread.
// cancel() may come from any thread; the tool process in flight is killed, the run stops and leaves no
// temporary file. The source file is only ever read.

#include "cleaning/BrightwashSetting.h"
#include "render/TempFU.h"

#include <QString>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

class Prog;

class Brightwash : public std::enable_shared_from_this<Brightwash> {
public:
    using Callback = std::function<void(const QString& resultPath)>;

    static std::shared_ptr<Brightwash> make(const QString& srcFilePath, const BrightwashSetting& settings,
                                            std::shared_ptr<Prog> prog, Callback callback);
    ~Brightwash();

    BrightwashSetting settings;
    std::shared_ptr<Prog> prog;
    QString srcFilePath;
    QString originalFilePath;
    int64_t destFileSize = 0;
    QString fileIngestPathS;
    QString fileDenoisePathS;
    QString fileGatePathS;
    QString fileCompEqPathS;
    QString fileDePausesPathS;
    QString fileDeUhmPathS;
    Callback callbackHandler;
    QString currentFilePath;
    QString srcFolder;
    TempFU tempFU;

    // Runs the whole chain on this thread, then calls the callback with resultPath().
    void start();
    void startAsync();
    void cancel() { cancelled_ = true; }
    // Empty after a run that left its result; else one line saying what went wrong.
    QString error() const;
    // The chain's result name: the source without extension + "_" + suffix + ".wav".
    QString resultPath() const;
    // Where the result finally is: resultPath(), or its ".mp3" when exporting to MP3.
    QString deliveredPath() const;

    static int getNphases(const BrightwashSetting& settings);
    static BrightwashSetting loadSettings();
    static void saveSettings(const BrightwashSetting& settings);
    static void disableUhm();
    static void disableRemovePauses();
    // The mono 16-bit working copy; with a callback on the pool, then the callback there.
    static void ingestFile(const QString& source, const QString& target, std::function<void()> callback = {});

private:
    Brightwash(const QString& srcFilePath, const BrightwashSetting& settings, std::shared_ptr<Prog> prog,
               Callback callback);

    void progressNewPhase(const QString& label);
    void progressNewSubPhase(const QString& label, const QString& target);
    void ingest();
    void denoise();
    void gate();
    void compEq();
    void cleaning();
    void pausesRemoving();
    void uhmRemoving();
    void exporting();
    QString temporaryPath(const QString& suffix) const;
    // After a stage: false (with the error set) when it left no sound or the run was cancelled.
    bool stageDone(const QString& stage, const QString& output);
    void fail(const QString& message);
    void removeTemporaries();

    std::atomic<bool> cancelled_{false};
    QString error_;
};
