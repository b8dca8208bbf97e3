#pragma once
// Cleans each channel of a multichannel file on its own and joins the results, in channel order, into
// "<name>_<suffix>.wav" (or ".mp3") beside the source. The channels are split in parallel by the sound tool,
// then cleaned one after the other on the thread that finished the split; the callback comes on that thread.
// cancel() may come from any thread: the channel in flight stops and every channel file goes.

#include "cleaning/BrightwashSetting.h"

#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class Brightwash;
class Prog;

class BrightwashMC : public std::enable_shared_from_this<BrightwashMC> {
public:
    // The callback gets dstPath; error() says whether the file is there.
    using Callback = std::function<void(const QString& dstPath)>;
    // A Prog, when given, hears every channel's phases in turn: give it getNphases × channels.
    static std::shared_ptr<BrightwashMC> make(const QString& srcPath, const BrightwashSetting& pcSettings,
                                              Callback callback, std::shared_ptr<Prog> prog = nullptr);

    QString srcPath;
    QString dstPath;
    BrightwashSetting pcSettings;
    std::optional<int> nChannels;
    int pcDone = 0;
    QStringList channelPaths;
    QStringList cleandedPaths;
    Callback callback;

    // Returns at once.
    void start();
    void splitDone(const QStringList& channelPaths);
    void brightwasherDone(const QString& cleanedPath);
    void allBrightwashesDone();
    void cancel();
    QString error() const;

private:
    BrightwashMC(const QString& srcPath, const BrightwashSetting& pcSettings, Callback callback,
                 std::shared_ptr<Prog> prog);
    void finish(const QString& failure);

    bool mp3_ = false; // the joined file is delivered as MP3, dstPath then naming it
    std::shared_ptr<Prog> prog_;
    std::atomic<bool> cancelled_{false};
    mutable std::mutex mutex_; // guards current_ and error_
    std::shared_ptr<Brightwash> current_;
    QString error_;
};
