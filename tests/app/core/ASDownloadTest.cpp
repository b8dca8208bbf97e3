// Fetching components from a local HTTP server: unzip in place, broken and missing archives, blanks in
// paths, the preload sequence with its panel, and the connection check.

#include "ComponentsFixture.h"
#include "LocalHttpServer.h"
#include "app/core/ASCommands.h"
#include "app/core/CheckConnection.h"
#include "app/core/PreloadsVC.h"
#include "foundation/Execution.h"
#include "foundation/QXTimer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {

const QByteArray goodContent = "good component\n";
// About a second and a half at the server's pace: several ticks of the idle timer.
const int largeSize = 120 * 1024;

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// An archive holding one file named `id`, as the server would offer it; stored, not compressed.
void makeArchive(const QString& staging, const QString& id, const QString& archivePath,
                 const QByteArray& content = goodContent) {
    writeFile(staging + "/" + id, content);
    QDir().mkpath(QFileInfo(archivePath).absolutePath());
    ASSERT_EQ(QProcess::execute("/usr/bin/zip", {"-q", "-0", "-j", archivePath, staging + "/" + id}), 0);
}

} // namespace

class ASDownloadTest : public ComponentsFixture {
protected:
    static void SetUpTestSuite() {
        served = new QTemporaryDir;
        staging = new QTemporaryDir;
        const QString root = served->path();
        makeArchive(staging->path(), "zgood", root + "/ZendrelUtils/zgood.zip");
        makeArchive(staging->path(), "zblank", root + "/dir with blank/zblank.zip");
        writeFile(root + "/ZendrelUtils/zplain", goodContent);
        makeArchive(staging->path(), "zlarge", root + "/ZendrelUtils/zlarge.zip", QByteArray(largeSize, 'x'));
        writeFile(root + "/ZendrelUtils/zbroken.zip", "PK\x03\x04 this is not really an archive");
        server = new LocalHttpServer(root);
    }

    static void TearDownTestSuite() {
        delete server;
        delete staging;
        delete served;
    }

    void SetUp() override {
        ComponentsFixture::SetUp();
        ASSERT_NE(server->port(), 0) << "the local HTTP server did not start";
        prefs_setValueString("AS.repositoryBase", server->url());
        PreloadsVC::preloadsDone = false;
    }

    static inline QTemporaryDir* served = nullptr;
    static inline QTemporaryDir* staging = nullptr;
    static inline LocalHttpServer* server = nullptr;
};

TEST_F(ASDownloadTest, GrowingSizeReachesTheCallbackOnTheMainThreadUntilTheEnd) {
    struct Tick {
        int64_t bytes;
        bool onMain;
    };
    std::mutex mutex;
    std::vector<Tick> ticks;
    std::atomic<bool> ended{false};
    Queue::execute([&] {
        AS::httpDownload(AS::remotePathFor("zlarge"), AS::getItemInASFolder("zlarge"), true,
                         [&](int64_t bytes) {
                             std::lock_guard lock(mutex);
                             ticks.push_back({bytes, XMain::isMain()});
                         });
        ended = true;
    });
    ASSERT_TRUE(testenv::waitUntil([&] { return ended.load(); }, 20000));

    std::lock_guard lock(mutex);
    ASSERT_GE(ticks.size(), 2u);
    for (size_t i = 0; i < ticks.size(); ++i) {
        EXPECT_TRUE(ticks[i].onMain);
        EXPECT_LE(ticks[i].bytes, largeSize + 1024);
        if (i > 0) {
            EXPECT_GE(ticks[i].bytes, ticks[i - 1].bytes);
        }
    }
    EXPECT_GT(ticks.back().bytes, ticks.front().bytes);
    EXPECT_EQ(QFileInfo(AS::getItemInASFolder("zlarge")).size(), largeSize);
    EXPECT_FALSE(QXTimer::getTimerNameList().contains("ApplicationSupport.idle"));
}

TEST_F(ASDownloadTest, MissingRemoteLeavesNeitherItemNorErrorPage) {
    const QString item = AS::getItemInASFolder("zmissing");
    AS::httpDownload(AS::remotePathFor("zmissing"), item, true, nullptr);
    EXPECT_FALSE(QFileInfo::exists(item));
    EXPECT_FALSE(QFileInfo::exists(item + ".zip"));

    // Kept zipped, the server's "not found" page would otherwise pass for the archive.
    AS::httpDownload(AS::remotePathFor("zmissing"), item, false, nullptr);
    EXPECT_FALSE(QFileInfo::exists(item + ".zip"));
}

TEST_F(ASDownloadTest, BrokenArchiveGoesUnnoticedAndIsFetchedAgainNextTime) {
    const std::vector<ASItem> list{AS::itemFor("zbroken")};
    for (int run = 1; run <= 2; ++run) {
        bool completed = false;
        PreloadsVC::preload(list, [&] { completed = true; });
        ASSERT_TRUE(testenv::waitUntil([&] { return completed; }, 20000)) << "run " << run;
        EXPECT_FALSE(QFileInfo::exists(AS::getItemInASFolder("zbroken")));
        EXPECT_FALSE(QFileInfo::exists(AS::getItemInASFolder("zbroken") + ".zip"));
        EXPECT_EQ(loggedStartingWith("Download " + AS::remotePathFor("zbroken")), run);
    }
    EXPECT_EQ(transcript().filter("alert:").size(), 0);
    EXPECT_TRUE(PreloadsVC::preloadsDone);
}

TEST_F(ASDownloadTest, BlanksArriveAsPercentTwentyAndAreTurnedBack) {
    QTemporaryDir target;
    const QString encodedTarget = "file://" + target.path() + "/with%20blank/zblank";
    AS::httpDownload(server->url() + "/dir%20with%20blank/zblank.zip", encodedTarget, true, nullptr);

    EXPECT_EQ(readFile(target.path() + "/with blank/zblank"), goodContent);
    EXPECT_FALSE(QFileInfo::exists(target.path() + "/with%20blank"));
    EXPECT_EQ(AS::getItemInASFolder("two%20words"), AS::applicationSupportFolder() + "/two words");
}

TEST_F(ASDownloadTest, PreloadShowsThePanelAndFetchesMissingItemsInOrder) {
    bool completed = false;
    PreloadsVC::preload({AS::itemFor("zgood"), AS::itemFor("zmissing")}, [&] { completed = true; });
    ASSERT_TRUE(testenv::waitUntil([&] { return completed; }, 20000));

    EXPECT_TRUE(PreloadsVC::preloadsDone);
    // The archive is unzipped in place and goes.
    EXPECT_EQ(readFile(AS::getItemInASFolder("zgood")), goodContent);
    EXPECT_FALSE(QFileInfo::exists(AS::getItemInASFolder("zgood") + ".zip"));
    QStringList panel;
    for (const QString& line : transcript()) {
        if (line.startsWith("progress: ") || line.endsWith(" | ")) panel << line;
    }
    EXPECT_EQ(panel, QStringList({"progress: Preloading | zgood", "progress update: zgood | ",
                                  "progress update: zmissing | ", "progress: hidden"}));
    EXPECT_EQ(exitStatus, -1);
}

TEST_F(ASDownloadTest, SynchronousPreloadWaitsBehindPleaseWait) {
    EXPECT_TRUE(AS::preload({AS::itemFor("zgood")}, nullptr));
    EXPECT_FALSE(AS::preload({AS::itemFor("zmissing")}, nullptr));

    EXPECT_EQ(transcript(),
              QStringList({"pleaseWait: Downloading... | Downloading additional components. Please wait.",
                           "pleaseWait: hidden",
                           "pleaseWait: Downloading... | Downloading additional components. Please wait.",
                           "pleaseWait: hidden"}));
    EXPECT_TRUE(logged().contains("Downloads: 1"));
}

TEST_F(ASDownloadTest, RequestResourceFetchesOnlyWhenMissingOrForced) {
    QTemporaryDir folder;
    const QString item = folder.path() + "/zgood";
    writeFile(item, "kept");
    EXPECT_EQ(AS::requestResource("zgood", folder.path(), AS::remotePathFor("zgood"), false, nullptr), item);
    EXPECT_EQ(readFile(item), "kept");
    EXPECT_EQ(loggedStartingWith("httpDownload: "), 0);

    EXPECT_EQ(AS::requestResource("zgood", folder.path(), AS::remotePathFor("zgood"), true, nullptr), item);
    EXPECT_EQ(readFile(item), goodContent);
}

TEST_F(ASDownloadTest, FetchesNeverWriteThroughALinkToAnInstalledTool) {
    QTemporaryDir folder;
    QTemporaryDir installed;
    for (const bool zipped : {true, false}) {
        const QString tool = installed.path() + "/tool";
        const QString link = folder.path() + "/zgood";
        writeFile(tool, "installed tool");
        QFile::remove(link);
        ASSERT_TRUE(QFile::link(tool, link));

        const QString remote = zipped ? AS::remotePathFor("zgood") : server->url() + "/ZendrelUtils/zplain";
        AS::httpDownload(remote, link, zipped, nullptr);

        EXPECT_EQ(readFile(tool), "installed tool") << "zipped " << zipped;
        EXPECT_FALSE(QFileInfo(link).isSymLink());
        EXPECT_EQ(readFile(link), goodContent);
    }
}

TEST_F(ASDownloadTest, ConnectedOnlyWhenTheConfiguredServerAnswers) {
    EXPECT_TRUE(CheckConnection::isConnected());

    prefs_setValueString("AS.repositoryBase", "");
    EXPECT_FALSE(CheckConnection::isConnected());

    QTemporaryDir empty;
    QString closedUrl;
    {
        LocalHttpServer shortLived(empty.path());
        ASSERT_NE(shortLived.port(), 0);
        closedUrl = shortLived.url();
    }
    prefs_setValueString("AS.repositoryBase", closedUrl);
    EXPECT_FALSE(CheckConnection::isConnected());
}
