// Real `zendrel` processes on one preference store: a later start hands its bundle to the running one
// and ends, and a socket left by a killed instance does not keep the next one from starting.
#include "project/model/AEShow.h"
#include "support/EventWait.h"
#include "tests/project/panels/ShowFixture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <memory>

namespace {

class SingleInstanceTest : public ShowFixture {
protected:
    void SetUp() override {
        ShowFixture::SetUp();
        const QString home = dir.path() + "/home";
        runtime = dir.path() + "/run";
        appWork = dir.path() + "/App Work/";
        for (const QString& path : {home + "/.config/zendrel", runtime, appWork})
            QDir().mkpath(path);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        ASSERT_TRUE(AEShow("App Show").save(appWork + "show.AEShow"));
        const QJsonObject folder{{"string", appWork}};
        QFile prefs(home + "/.config/zendrel/preferences.json");
        ASSERT_TRUE(prefs.open(QIODevice::WriteOnly));
        prefs.write(QJsonDocument(QJsonObject{{"WorkingFolder", folder}, {"workFolder", folder}}).toJson());
        env = QProcessEnvironment::systemEnvironment();
        const std::pair<const char*, QString> vars[] = {{"HOME", home},
                                                        {"XDG_CONFIG_HOME", home + "/.config"},
                                                        {"XDG_DATA_HOME", home + "/.local/share"},
                                                        {"XDG_CACHE_HOME", home + "/.cache"},
                                                        {"XDG_RUNTIME_DIR", runtime},
                                                        {"QT_QPA_PLATFORM", "offscreen"},
                                                        {"ZENDREL_HEADLESS_DIALOGS", "1"}};
        for (const auto& [name, value] : vars)
            env.insert(name, value);
    }

    std::unique_ptr<QProcess> start(const QStringList& arguments) {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(env);
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->start(ZENDREL_BINARY, arguments);
        return process;
    }

    // Until the episode list is up, with its lock and socket.
    static bool listed(QProcess& app, QByteArray& log) {
        return testenv::waitUntil(
            [&] {
                log += app.readAll();
                return log.contains("MainViewController.update: ");
            },
            60000);
    }

    QStringList appEpisodes() const {
        QStringList ids;
        if (const auto show = AEShow::load(appWork + "show.AEShow"))
            for (const auto& e : show->episodes)
                ids << e->episodeId;
        return ids;
    }

    QString runtime;
    QString appWork;
    QProcessEnvironment env;
};

TEST_F(SingleInstanceTest, ALaterStartHandsItsBundleToTheRunningOneEvenAfterACrash) {
    addEpisode("E07", -3, -2, -1);
    saveShow();
    const QString bundle = dir.path() + "/E07.zendepisode";
    ASSERT_EQ(zendrelShow->episodes.front()->exportEpisode(bundle), "");

    QByteArray log;
    auto crashed = start({});
    ASSERT_TRUE(listed(*crashed, log)) << log.toStdString();
    crashed->kill();
    crashed->waitForFinished();
    ASSERT_EQ(QDir(runtime).entryList({"*.sock"}, QDir::System).size(), 1) << "a stale socket is left";

    log.clear();
    auto running = start({});
    ASSERT_TRUE(listed(*running, log)) << "the stale socket blocked the start: " << log.toStdString();
    auto second = start({bundle});
    ASSERT_TRUE(second->waitForFinished(20000));
    EXPECT_EQ(second->exitCode(), 0) << second->readAll().toStdString();
    EXPECT_TRUE(testenv::waitUntil([&] { return appEpisodes() == QStringList{"E07"}; }, 30000))
        << (log + running->readAll()).toStdString();
    EXPECT_EQ(running->state(), QProcess::Running);
    running->terminate();
    if (!running->waitForFinished(10000)) running->kill();
}

} // namespace
