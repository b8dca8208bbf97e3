// Episode bundles between working folders: made here, imported by `zendrel import` in a child process
// with no display, and rendered by `zendrel export` on both sides. Hostile bundles are made with
// Python's zipfile and must change nothing outside the bundle's own scratch folder.

#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "recording/AudioProbes.h"
#include "render/tools/FlatZip.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFixture.h"
#include "support/HeadlessCommand.h"
#include "support/TestEnvironment.h"
#include "timeline/model/AETimeLineItem.h"
#include "timeline/model/TimelineFixture.h"

#include <QDirIterator>

using testenv::CommandRun;
using testenv::zendrel;

namespace {

QStringList entriesOf(const QString& zip) {
    QProcess process;
    process.start("/usr/bin/unzip", {"-Z1", zip});
    process.waitForFinished(30000);
    QStringList names = QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    names.sort();
    return names;
}

// Every path below root, folders and links included, with the size of each file.
QStringList listing(const QString& root) {
    QStringList out;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        out << it.filePath() + " " + QString::number(it.fileInfo().isSymLink() ? -1 : it.fileInfo().size());
    }
    out.sort();
    return out;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

// Folder A is the asset store's folder (the store keeps one for the life of the process).
class EpisodeBundleTest : public ToolFixture {
protected:
    void SetUp() override {
        ToolFixture::SetUp();
        testenv::useStoreWorkFolder();
        a = testenv::storeWorkFolder();
        b = path("Folder B/");
        QDir().mkpath(b);
        speech = savedAsset("bundle-speech", tone("speech.wav", 6.0, 330.0, 44100, 2, 0.3));
        jingle = savedAsset("bundle-jingle", tone("jingle.wav", 2.0, 880.0, 44100, 2, 0.2));
        jingle->type = AEAssetType::jingle;
        zendrelShow = std::make_shared<AEShow>("Bundle Show");
        zendrelShow->commonAssets = {jingle};
        AEAssetListVCGlobal = zendrelShow->commonAssets;
        episode = std::make_shared<AEEpisode>("E01", "Moving Day", "", a);
        episode->assets = {speech};
        episode->assetsLoaded = true;
        episode->timeline->appendItemInMainLane(speech, std::nullopt, false);
        episode->timeline->appendItemInMainLane(jingle, std::nullopt, false);
        ASSERT_TRUE(episode->timeline->save(episode->timelineDataPath));
        zendrelShow->episodes.push_back(episode);
        ASSERT_TRUE(zendrelShow->save(a + "show.AEShow"));
    }

    void TearDown() override {
        for (const QString& name : {QString("show.AEShow"), QString("show.AEShow.bak")})
            QFile::remove(a + name);
        QFile::remove(episode->timelineDataPath);
        zendrelShow.reset();
        AEAssetListVCGlobal.clear();
    }

    std::shared_ptr<AEAsset> savedAsset(const QString& id, const QString& file) {
        auto asset = tlfixture::asset(id, 0);
        asset->duration = aUt_getAudioDuration(file);
        asset->originalFilePath = file;
        asset->ingestedFilePath = AEIngest::ingestMedia(file).value_or("");
        asset->ingested = !asset->ingestedFilePath.isEmpty();
        EXPECT_TRUE(asset->ingested);
        AEAssetDB::saveAsset(asset);
        return asset;
    }

    QString bundle(const QString& name, bool includeCommon = true) {
        const QString out = path(name);
        EXPECT_EQ(episode->exportEpisode(out, includeCommon), "");
        return out;
    }

    Decoded rendered(const QString& folder, const QString& name) {
        const QString out = path(name);
        const CommandRun run =
            zendrel({"export", "--work-folder", folder, "--episode", "E01", "--no-normalise", out});
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
        return decode(out);
    }

    QString a;
    QString b;
    std::shared_ptr<AEAsset> speech;
    std::shared_ptr<AEAsset> jingle;
    std::shared_ptr<AEEpisode> episode;
};

TEST_F(EpisodeBundleTest, ImportedElsewhereRendersTheSameSamples) {
    const QString file = bundle("E01.zendepisode");
    const QStringList entries = entriesOf(file);
    for (const QString& expected :
         QStringList{"episode", "itemList", "commonItemList", episode->id + ".AETimeLine",
                     "bundle-speech.aeasset", "bundle-jingle.aeasset"})
        EXPECT_TRUE(entries.contains(expected)) << expected.toStdString();
    EXPECT_TRUE(entries.contains(QFileInfo(jingle->ingestedFilePath).fileName()));

    const CommandRun imported = zendrel({"import", "--work-folder", b, file});
    ASSERT_EQ(imported.status, 0) << imported.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(file + ".folder"));
    const auto show = AEShow::load(b + "show.AEShow");
    ASSERT_EQ(show->episodes.size(), 1u);
    EXPECT_EQ(show->episodes[0]->title, "Moving Day");
    ASSERT_EQ(show->commonAssets.size(), 1u);
    EXPECT_EQ(show->commonAssets[0]->id, "bundle-jingle");

    const Decoded original = rendered(a, "a.wav");
    const Decoded moved = rendered(b, "b.wav");
    ASSERT_TRUE(original.open && moved.open);
    EXPECT_NEAR(original.seconds(), 8.0, 0.05);
    // The mix is dithered afresh at each render: equal within two 16-bit steps.
    ASSERT_EQ(original.samples.size(), moved.samples.size());
    float worst = 0;
    for (size_t i = 0; i < original.samples.size(); ++i)
        worst = std::max(worst, std::fabs(original.samples[i] - moved.samples[i]));
    EXPECT_LE(worst, 2.0f / 32768.0f);
}

TEST_F(EpisodeBundleTest, EdgeCasesOfExportAndImport) {
    // Without the common assets: no list of them, and the import goes on without it.
    const QString lean = bundle("lean.zendepisode", false);
    EXPECT_FALSE(entriesOf(lean).contains("commonItemList"));
    EXPECT_FALSE(entriesOf(lean).contains("bundle-jingle.aeasset"));
    ASSERT_EQ(zendrel({"import", "--work-folder", b, lean}).status, 0);
    EXPECT_TRUE(AEShow::load(b + "show.AEShow")->commonAssets.empty());

    // Back into the folder it came from: a second episode with the same id.
    const QString full = bundle("full.zendepisode");
    ASSERT_EQ(zendrel({"import", "--work-folder", a, full}).status, 0);
    const auto again = AEShow::load(a + "show.AEShow");
    ASSERT_EQ(again->episodes.size(), 2u);
    EXPECT_EQ(again->episodes[0]->id, again->episodes[1]->id);
    EXPECT_EQ(again->commonAssets.size(), 1u); // the common asset it knew is not added twice

    // Media gone at export: neither the file nor its record travels.
    const QString media = speech->ingestedFilePath;
    ASSERT_TRUE(QFile::rename(media, media + ".away"));
    QFile::remove(speech->originalFilePath);
    const QString missing = bundle("missing.zendepisode");
    QFile::rename(media + ".away", media);
    EXPECT_FALSE(entriesOf(missing).contains(QFileInfo(media).fileName()));
    EXPECT_FALSE(entriesOf(missing).contains("bundle-speech.aeasset"));
}

// Each bundle is made by a Python snippet with `z` an open zipfile.ZipFile and `good` the folder of a
// sound bundle's files; `patch` then rewrites bytes of the finished file.
struct HostileCase {
    const char* name;
    const char* python;
    const char* reason;
};

class HostileBundleTest : public EpisodeBundleTest, public ::testing::WithParamInterface<HostileCase> {};

TEST_P(HostileBundleTest, RefusedWithItsReasonAndNothingChanged) {
    const HostileCase& c = GetParam();
    const QString good = path("good/");
    QDir().mkpath(good);
    run("/usr/bin/unzip", {"-qq", bundle("good.zendepisode"), "-d", good});
    ASSERT_EQ(zendrel({"import", "--work-folder", b, path("good.zendepisode")}).status, 0);

    const QString sandbox = path("sandbox");
    QDir().mkpath(sandbox);
    const QString hostile = sandbox + "/hostile.zendepisode";
    const QString script = QString(R"(
import sys, os, zipfile, shutil, json
good, out = sys.argv[1], sys.argv[2]
def sound(z, skip=()):
    for n in os.listdir(good):
        if n not in skip: z.write(os.path.join(good, n), n)
def patch_sizes(data, size):
    i = data.find(b'PK\x01\x02')
    while i >= 0:
        data[i+24:i+28] = size.to_bytes(4, 'little')
        i = data.find(b'PK\x01\x02', i + 4)
    i = data.find(b'PK\x03\x04')
    while i >= 0:
        data[i+22:i+26] = size.to_bytes(4, 'little')
        i = data.find(b'PK\x03\x04', i + 4)
z = zipfile.ZipFile(out, 'w', zipfile.ZIP_DEFLATED)
%1
z.close()
)")
                               .arg(QString(c.python).replace("%ID%", episode->id));
    run("/usr/bin/python3", {"-c", script, good, hostile});
    ASSERT_TRUE(QFileInfo::exists(hostile));

    const QStringList before = listing(path(""));
    const QByteArray show = contents(b + "show.AEShow");
    const CommandRun result = zendrel({"import", "--work-folder", b, hostile});
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(result.err.count('\n'), 1) << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(c.reason)) << result.err.toStdString();
    EXPECT_EQ(listing(path("")), before);
    EXPECT_EQ(contents(b + "show.AEShow"), show);
}

INSTANTIATE_TEST_SUITE_P(
    Bundles, HostileBundleTest,
    ::testing::Values(
        HostileCase{"ParentFolder", "sound(z)\nz.writestr('../escaped', 'x')", "folder in its name"},
        HostileCase{"AbsolutePath", "sound(z)\nz.writestr(os.path.dirname(out) + '/abs', 'x')",
                    "folder in its name"},
        HostileCase{"SymbolicLink",
                    "sound(z)\ni = zipfile.ZipInfo('link')\ni.external_attr = 0o120777 << 16\n"
                    "z.writestr(i, '/etc/passwd')",
                    "symbolic link"},
        HostileCase{
            "Fifo",
            "sound(z)\ni = zipfile.ZipInfo('pipe')\ni.external_attr = 0o010644 << 16\nz.writestr(i, '')",
            "device, pipe or socket"},
        HostileCase{"DuplicateNames",
                    "import warnings\nwarnings.simplefilter('ignore')\nsound(z)\nz.writestr('episode', 'x')",
                    "two entries named \"episode\""},
        HostileCase{"DeclaredBomb",
                    "sound(z)\nfor k in range(20): z.writestr('big%d' % k, 'x')\nz.close()\n"
                    "d = bytearray(open(out, 'rb').read())\npatch_sizes(d, 0xFFFFFFF0)\n"
                    "open(out, 'wb').write(d)",
                    "would unpack to more than"},
        HostileCase{"RealBomb",
                    "z.writestr('zeros', bytes(64 << 20))\nz.close()\nd = bytearray(open(out, 'rb').read())\n"
                    "patch_sizes(d, 1000)\nopen(out, 'wb').write(d)",
                    "declares"},
        HostileCase{"DamagedEpisode", "sound(z, ['episode'])\nz.writestr('episode', '{\"not\": 1')",
                    "\"episode\" is damaged"},
        HostileCase{"DamagedItemList", "sound(z, ['itemList'])\nz.writestr('itemList', 'garbage')",
                    "\"itemList\" is damaged"},
        HostileCase{
            "EpisodeIdLeavesTheFolder",
            "sound(z, ['episode'])\n"
            "z.writestr('episode', open(os.path.join(good, 'episode')).read().replace('%ID%', '../../evil'))",
            "id that is no file name"},
        HostileCase{"NotAZip", "z.close()\nopen(out, 'wb').write(b'not a zip at all')", "not a zip archive"}),
    [](const ::testing::TestParamInfo<HostileCase>& info) { return std::string(info.param.name); });

TEST(FlatZipTest, ListingNamesAndKindsAsZipinfoPrintsThem) {
    const QByteArray text = "Archive:  /x/a b.zip\n"
                            "Zip file size: 634 bytes, number of entries: 3\n"
                            "-rw-r--r--  3.0 unx     1234 tx      567 defN 26-Nov-24 00:43 a b.wav\n"
                            "lrwxrwxrwx  2.0 unx       11 bX       11 stor 80-Jan-01 00:00 link\n"
                            "?rw-------  2.0 unx 5000000000 B-    1000 defN 26-Nov-24 00:43 ctl^Jname\n"
                            "3 files, 16 bytes uncompressed, 16 bytes compressed:  0.0%\n";
    const auto listing = flatZip_parseListing(text);
    ASSERT_TRUE(listing);
    ASSERT_EQ(listing->entries.size(), 3u);
    EXPECT_EQ(listing->declaredEntries, 3);
    EXPECT_EQ(listing->entries[0].name, "a b.wav");
    EXPECT_EQ(listing->entries[0].size, 1234);
    EXPECT_EQ(listing->entries[0].compressedSize, 567);
    EXPECT_EQ(listing->entries[1].kind, 'l');
    EXPECT_TRUE(listing->entries[2].encrypted);
    EXPECT_EQ(listing->entries[2].size, 5000000000);
    EXPECT_FALSE(flatZip_parseListing("caution: not a zipfile"));
    EXPECT_EQ(zipArgs::extract("/a b.zendepisode", "/a b.zendepisode.folder"),
              QStringList({"-qq", "-o", "/a b.zendepisode", "-d", "/a b.zendepisode.folder"}));
    EXPECT_EQ(zipArgs::list("/a.zip"), QStringList({"-Z", "-l", "/a.zip"}));
    EXPECT_EQ(zipArgs::create("/o.zip", {"/t/x.wav"}),
              QStringList({"-q", "-j", "-X", "-n", ".mp3:.m4a:.aac:.ogg:.flac:.jpg:.jpeg:.png", "/o.zip",
                           "/t/x.wav"}));
}
