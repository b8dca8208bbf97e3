// Real `zendrel` processes on one preference store: a later start hands its bundle to the running one
// and ends, and a socket left by a killed instance does not keep the next one from starting.
#include "project/model/AEShow.h"
#include "support/EventWait.h"
#include "tests/project/panels/ShowFixture.h"

#include <QProcess>
#include <memory>

namespace {

class SingleInstanceTest : public ShowFixture {
protected:
    std::unique_ptr<QProcess> start(const QStringList& arguments) {
        auto env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_CONFIG_HOME", dir.path()); // a preference store of their own
        env.insert("XDG_RUNTIME_DIR", dir.path());
        env.insert("QT_QPA_PLATFORM", "offscreen");
        env.insert("ZENDREL_HEADLESS_DIALOGS", "1");
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(env);
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->start(ZENDREL_BINARY, arguments);
        return process;
    }

    // Until the episode list is up (and so the lock and the socket).
    static bool listed(QProcess& app) {
        QByteArray log;
        return testenv::waitUntil(
            [&] { return (log += app.readAll()).contains("MainViewController.update: "); }, 60000);
    }
};

TEST_F(SingleInstanceTest, ALaterStartHandsItsBundleToTheRunningOneEvenAfterACrash) {
    const auto episode = addEpisode("E07", -3, -2, -1);
    saveShow();
    const QString bundle = dir.path() + "/E07.zendepisode";
    ASSERT_EQ(episode->exportEpisode(bundle), "");
    const QString appWork = dir.path() + "/App Work/";
    ASSERT_TRUE(QDir().mkpath(appWork) && QDir().mkpath(dir.path() + "/zendrel"));
    ASSERT_TRUE(AEShow("App Show").save(appWork + "show.AEShow"));
    QFile prefs(dir.path() + "/zendrel/preferences.json");
    ASSERT_TRUE(prefs.open(QIODevice::WriteOnly));
    prefs.write(QString(R"({"WorkingFolder": {"string": "%1"}})").arg(appWork).toUtf8());
    prefs.close();

    auto crashed = start({});
    ASSERT_TRUE(listed(*crashed));
    crashed->kill();
    crashed->waitForFinished();
    ASSERT_EQ(QDir(dir.path()).entryList({"*.sock"}, QDir::System).size(), 1) << "a stale socket is left";

    auto running = start({});
    ASSERT_TRUE(listed(*running)) << "the stale socket blocked the start";
    auto second = start({bundle});
    ASSERT_TRUE(second->waitForFinished(20000));
    EXPECT_EQ(second->exitCode(), 0) << second->readAll().toStdString();
    EXPECT_TRUE(testenv::waitUntil(
        [&] {
            const auto show = AEShow::load(appWork + "show.AEShow");
            return show && show->episodes.size() == 1 && show->episodes.front()->episodeId == "E07";
        },
        30000));
    EXPECT_EQ(running->state(), QProcess::Running);
    running->kill();
    running->waitForFinished();
}

} // namespace
