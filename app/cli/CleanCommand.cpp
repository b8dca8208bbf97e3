#include "app/cli/CleanCommand.h"

#include "app/cli/CommandLine.h"
#include "cleaning/Brightwash.h"
#include "cleaning/BrightwashBatch.h"
#include "foundation/Execution.h"
#include "foundation/Interaction.h"
#include "foundation/Prog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTextStream>
#include <QThread>
#include <atomic>
#include <memory>
#include <optional>

namespace {

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

std::optional<BrightwashSetting> settingsFrom(const QString& path, QString& why) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        why = file.errorString();
        return std::nullopt;
    }
    auto settings = BrightwashSetting::decodeString(QString::fromUtf8(file.readAll()));
    if (!settings) why = "not a cleaning settings JSON";
    return settings;
}

// All files side by side; this thread keeps the event loop turning (the progress refresh and the
// batch's end live on it) and prints the total on one terminal line, rewritten in place.
std::shared_ptr<BrightwashBatch> cleanAll(const QStringList& files, const BrightwashSetting& settings) {
    std::vector<BWBatchData> data;
    for (const QString& file : files)
        data.push_back({QFileInfo(file).absoluteFilePath(), settings});
    auto batch = BrightwashBatch::make(data);
    std::atomic<bool> done{false};
    batch->start([&done] { done = true; });
    QString last;
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        const QString line = QString("%1 of %2 files done, %3%")
                                 .arg(batch->getCompleted())
                                 .arg(batch->count())
                                 .arg(int(batch->getPercentage() * 100.0));
        if (line != last) out() << "\r\033[K" << line << Qt::flush;
        last = line;
        QThread::msleep(100);
    }
    out() << "\r\033[K" << Qt::flush;
    return batch;
}

class DoorGuard {
public:
    DoorGuard() : previous_(userInteraction()) {
        if (!previous_) setUserInteraction(std::make_shared<ScriptedInteraction>());
    }
    ~DoorGuard() { setUserInteraction(previous_); }

private:
    std::shared_ptr<UserInteraction> previous_;
};

} // namespace

int runCleanCommand(const QStringList& arguments) {
    std::unique_ptr<QCoreApplication> app;
    int argc = 1;
    char name[] = "zendrel";
    char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) app = std::make_unique<QCoreApplication>(argc, argv);
    // Nobody is there to answer a dialog: questions get the scripted answers and are logged.
    const DoorGuard door;

    QCommandLineParser parser;
    parser.setApplicationDescription("Cleans speech files: noise, hum, levels and dead air.");
    const QCommandLineOption settingsOption("settings",
                                            "Cleaning settings as JSON instead of the saved ones.", "FILE");
    const QCommandLineOption mp3Option("mp3", "Write the result as MP3 (128 kbit/s).");
    parser.addOption(settingsOption);
    parser.addOption(mp3Option);
    parser.addPositionalArgument("files", "Sound files to clean.", "FILE…");
    if (const int status = cli_parse(parser, "clean", arguments); status >= 0) return status;
    QStringList files = parser.positionalArguments();
    if (!files.isEmpty() && files.front() == "clean") files.removeFirst();
    if (files.isEmpty()) {
        return cli_fail("clean", "no file given (see --help)", kCliUsage);
    }

    BrightwashSetting settings = Brightwash::loadSettings();
    if (parser.isSet(settingsOption)) {
        QString why;
        const auto loaded = settingsFrom(parser.value(settingsOption), why);
        if (!loaded) {
            return cli_fail("clean", parser.value(settingsOption) + ": " + why, kCliUsage);
        }
        settings = *loaded;
    }
    if (parser.isSet(mp3Option)) settings.exportFormat = BWExportFormats::mp3;

    const auto batch = cleanAll(files, settings);
    int failures = 0;
    for (size_t i = 0; i < batch->count(); ++i) {
        const QString& file = files[int(i)];
        if (const QString error = batch->jobError(i); !error.isEmpty()) {
            cli_fail("clean", file + ": " + error, kCliFailed);
            ++failures;
        } else {
            out() << file << " -> " << batch->jobResultPath(i) << Qt::endl;
        }
    }
    return failures == 0 ? 0 : 1;
}
