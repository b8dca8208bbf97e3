// An episode as one ".zendepisode" file: a flat zip of the episode record, its timeline, its assets'
// records and media, and the lists of the files that came from the episode and from the show's common
// assets. Import reads a file that may have been made to harm: every name that becomes a path is
// checked, everything is unpacked and decoded before the working folder is touched, and the show
// changes only once all of it has been read.

#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AECache.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "render/tools/FlatZip.h"
#include "timeline/model/AETimeLine.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <map>

namespace {

// Well past an episode of several hours in uncompressed multitrack audio.
constexpr int64_t kBundleMaxBytes = int64_t{64} * 1024 * 1024 * 1024;

const QString kEpisodeEntry = "episode";
const QString kItemListEntry = "itemList";
const QString kCommonItemListEntry = "commonItemList";

// The root of "itemList" and "commonItemList": the paths the files had when the bundle was made.
class AEBundleFileList : public KeyedObject {
public:
    static constexpr const char* kClassName = "AEBundleFileList";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override { coder.encodeStringArray("paths", paths); }
    static std::shared_ptr<AEBundleFileList> decode(KeyedUnarchiver& coder) {
        const auto paths = coder.decodeStringArray("paths");
        if (!paths) return nullptr;
        auto list = std::make_shared<AEBundleFileList>();
        list->paths = *paths;
        return list;
    }
    QStringList paths;
};
const bool registered = registerArchiveClass<AEBundleFileList>();

QString lastComponent(const QString& path) {
    return path.section('/', -1);
}

// Moves over whatever is there (the unpacked folder goes afterwards anyway), copying across volumes; a
// link in the way is replaced, never followed.
bool moveReplacing(const QString& from, const QString& to) {
    QFile::remove(to);
    return QFile::rename(from, to) || QFile::copy(from, to);
}

// A file read from the bundle that is to land in the working folder.
struct Planned {
    QString fileName;
    std::shared_ptr<AEAsset> asset; // for a ".aeasset"
};

// Reads one list and decodes each asset record it names; the error when the list cannot be read.
std::optional<std::vector<Planned>> planList(const QString& folder, const QString& entry,
                                             const QSet<QString>& unpacked, QString& error) {
    const auto list = KeyedUnarchiver::unarchive<AEBundleFileList>(folder + entry);
    if (!list) {
        error = "its \"" + entry + "\" is damaged";
        return std::nullopt;
    }
    std::vector<Planned> planned;
    for (const QString& path : list->paths) {
        Planned p{lastComponent(path), nullptr};
        // Names the bundle does not hold are skipped, as a missing file would be.
        if (!unpacked.contains(p.fileName) || p.fileName == kEpisodeEntry || p.fileName == kItemListEntry ||
            p.fileName == kCommonItemListEntry)
            continue;
        if (QFileInfo(p.fileName).suffix() == "aeasset") {
            p.asset = KeyedUnarchiver::unarchive<AEAsset>(folder + p.fileName);
            if (!p.asset) continue;
            // The id names the record's file: it must stay a plain name.
            if (!flatZip_nameProblem(p.asset->id + ".aeasset").isEmpty()) {
                error = "an asset record has an id that is no file name";
                return std::nullopt;
            }
            const QString stored =
                !p.asset->ingestedFilePath.isEmpty() ? p.asset->ingestedFilePath : p.asset->originalFilePath;
            if (!flatZip_nameProblem(lastComponent(stored)).isEmpty()) {
                p.asset->ingestedFilePath.clear();
                p.asset->ingested = false;
            } else {
                p.asset->ingestedFilePath = AEIngest::ingestPath + lastComponent(stored);
                p.asset->ingested = true;
            }
        }
        planned.push_back(p);
    }
    return planned;
}

bool assetKnown(const QString& id) {
    for (const auto& asset : AEAssetListVCGlobal)
        if (asset && asset->id == id) return true;
    return QFileInfo::exists(AEAssetDB::ingestFolder() + id + ".aeasset");
}

} // namespace

QString AEEpisode::exportEpisode(const QString& path, bool includeCommon,
                                 const std::function<void(double)>& progress) {
    (void)registered;
    const QString destination = QFileInfo(path).absoluteFilePath();
    QTemporaryDir temp(QFileInfo(destination).absolutePath() + "/.zendrel-export-XXXXXX");
    if (!temp.isValid()) return "cannot make a temporary folder beside " + destination;
    const QString tempPath = temp.path() + "/";
    auto report = [&](double fraction) {
        if (progress) progress(fraction);
    };

    if (!timeline || (timeline->mainLane.empty() && timeline->attachedItems.empty())) loadTimeline();
    if (!assetsLoaded) forceLoadAssets();
    loadTimelineAssets();

    QStringList items;
    QStringList commonItems;
    auto copyAsset = [&](const std::shared_ptr<AEAsset>& asset, QStringList& list) {
        qxLog("exportEpisode.copyAsset (asset: " + asset->name + ")");
        const auto usable = asset->getUsableFilePath();
        if (!usable) return;
        const QString media = tempPath + QFileInfo(*usable).fileName();
        // The zip only reads the media: a link spares copying gigabytes into the temporary folder.
        if (!QFileInfo::exists(media) && !fu_linkOrCopyFile(*usable, media)) return;
        list << media;
        const QString record = tempPath + asset->id + ".aeasset";
        AEAssetDB::saveAsset(asset);
        if (fu_copyFile(AEAssetDB::getPath(*asset), record)) list << record;
    };

    QSet<QString> commonIds;
    if (zendrelShow) {
        for (const auto& common : zendrelShow->commonAssets) {
            if (!common) continue;
            commonIds.insert(common->id);
            if (includeCommon && assetInTimeline(common)) copyAsset(common, commonItems);
        }
    }
    report(0.1);
    const auto all = getAllAssets();
    for (size_t i = 0; i < all.size(); ++i) {
        if (!commonIds.contains(all[i]->id) && all[i]->present) copyAsset(all[i], items);
        report(0.1 + 0.4 * static_cast<double>(i + 1) / static_cast<double>(all.size()));
    }

    const QString timelineFile = tempPath + timeline->id + ".AETimeLine";
    if (!timeline->save(timelineFile)) return "cannot write the timeline";
    items << timelineFile;
    if (!KeyedArchiver::archiveRootObject(shared_from_this(), tempPath + kEpisodeEntry))
        return "cannot write the episode";
    items << tempPath + kEpisodeEntry;
    if (!imagePath.isEmpty() && fu_isRegularFile(imagePath)) {
        const QString image = tempPath + QFileInfo(imagePath).fileName();
        if (QFileInfo::exists(image) || fu_copyFile(imagePath, image)) items << image;
    }

    auto writeList = [&](const QStringList& paths, const QString& entry) {
        auto list = std::make_shared<AEBundleFileList>();
        list->paths = paths;
        return KeyedArchiver::archiveRootObject(list, tempPath + entry);
    };
    if (!writeList(items, kItemListEntry)) return "cannot write the list of files";
    if (includeCommon && !writeList(commonItems, kCommonItemListEntry))
        return "cannot write the list of files";
    QStringList files = items + commonItems;
    files << tempPath + kItemListEntry;
    if (includeCommon) files << tempPath + kCommonItemListEntry;
    files.removeDuplicates();
    report(0.5);

    // Made inside the temporary folder, then renamed over the destination: never half a bundle.
    const QString made = tempPath + "bundle.zip";
    const FlatZipResult zipped = flatZip_create(made, files);
    if (!zipped.ok) return zipped.error;
    QFile::remove(destination);
    if (!QFile::rename(made, destination)) return "cannot write " + destination;
    report(1.0);
    return {};
}

AEEpisodeImport AEEpisode::importEpisode(const QString& path) {
    (void)registered;
    const QString bundle = QFileInfo(path).absoluteFilePath();
    const QString folderPath = bundle + ".folder";
    const QFileInfo existing(folderPath);
    auto fail = [&](const QString& why) {
        qxLog("importEpisode " + bundle + ": " + why);
        return AEEpisodeImport{nullptr, QFileInfo(bundle).fileName() + ": " + why};
    };
    if (existing.isSymLink() || (existing.exists() && !existing.isDir()))
        return fail("\"" + existing.fileName() + "\" is in the way beside it");
    // What a failed import may have left.
    if (existing.exists()) QDir(folderPath).removeRecursively();
    if (!QDir().mkpath(folderPath)) return fail("cannot make a folder beside it");
    struct RemoveFolder {
        QString path;
        ~RemoveFolder() { QDir(path).removeRecursively(); }
    } removeFolder{folderPath};
    const QString folder = folderPath + "/";

    const FlatZipResult unpacked = flatZip_extract(bundle, folderPath, kBundleMaxBytes);
    if (!unpacked.ok) return fail(unpacked.error);
    const QSet<QString> names(unpacked.files.cbegin(), unpacked.files.cend());

    // Everything is read before anything is written.
    QString error;
    const auto items = planList(folder, kItemListEntry, names, error);
    if (!items) return fail(error);
    std::optional<std::vector<Planned>> commons;
    if (names.contains(kCommonItemListEntry)) {
        commons = planList(folder, kCommonItemListEntry, names, error);
        if (!commons) return fail(error);
    }
    const auto episode = names.contains(kEpisodeEntry)
                             ? KeyedUnarchiver::unarchive<AEEpisode>(folder + kEpisodeEntry)
                             : nullptr;
    if (!episode) return fail("its \"episode\" is damaged");
    // The id names the timeline file in the working folder.
    if (!flatZip_nameProblem(episode->id + ".AETimeLine").isEmpty())
        return fail("its \"episode\" has an id that is no file name");
    QString timelineName;
    for (const Planned& p : *items)
        if (QFileInfo(p.fileName).suffix() == "AETimeLine") timelineName = p.fileName;

    // The working folder changes from here on.
    auto bringIn = [&](const std::vector<Planned>& planned, bool common) {
        for (const Planned& p : planned) {
            const QString from = folder + p.fileName;
            if (p.asset) {
                if (common && assetKnown(p.asset->id)) continue;
                AEAssetDB::saveAsset(p.asset);
                if (common) AEAssetListVCGlobal.push_back(p.asset);
            } else if (QFileInfo(p.fileName).suffix() == "AETimeLine") {
                if (!common) moveReplacing(from, AEIngest::workFolder + p.fileName);
            } else if (!common || !QFileInfo::exists(AEIngest::ingestPath + p.fileName)) {
                // The common assets of the receiving show are never overwritten.
                moveReplacing(from, AEIngest::ingestPath + p.fileName);
            }
        }
    };
    // Media before records: a record saved makes its asset live, and it should find its file.
    std::vector<Planned> media;
    std::vector<Planned> records;
    for (const Planned& p : *items)
        (p.asset ? records : media).push_back(p);
    bringIn(media, false);
    bringIn(records, false);
    AECache::clearCache();
    if (commons) bringIn(*commons, true);

    episode->forceLoadAssets();
    for (const auto& asset : episode->assets) {
        if (!asset || asset->getUsableFilePath()) continue;
        const QString carried = folder + asset->fileName();
        if (fu_isRegularFile(carried)) {
            if (const auto ingested = AEIngest::ingestMedia(carried)) {
                asset->ingestedFilePath = *ingested;
                asset->ingested = true;
                AEAssetDB::saveAsset(asset);
            }
        }
    }
    episode->timelineDataPath =
        AEIngest::workFolder + (timelineName.isEmpty() ? episode->id + ".AETimeLine" : timelineName);
    if (!episode->imagePath.isEmpty() && names.contains(lastComponent(episode->imagePath))) {
        episode->imagePath = AEIngest::ingestPath + lastComponent(episode->imagePath);
        episode->image = QImage(episode->imagePath);
    }

    if (!zendrelShow) zendrelShow = std::make_shared<AEShow>("");
    zendrelShow->commonAssets = AEAssetListVCGlobal;
    zendrelShow->episodes.push_back(episode);
    return {episode, {}};
}
