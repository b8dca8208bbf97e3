#include "project/model/AEShow.h"

#include "foundation/Execution.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/Slowder.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/Globals.h"

#include <QFileInfo>
#include <QSet>
#include <algorithm>
#include <limits>

std::vector<std::shared_ptr<AEAsset>> AEShow::totalAssetList;

namespace {
const bool registered = registerArchiveClass<AEShow>();

const QDateTime& dateFor(const AEEpisode& e, sortEpisodesBy by) {
    switch (by) {
    case sortEpisodesBy::created:
        return e.creationDate;
    case sortEpisodesBy::modified:
        return e.modificationDate;
    case sortEpisodesBy::published:
        break;
    }
    return e.publicationDate;
}
} // namespace

AEShow::AEShow(const QString& name) : name(name) {
    (void)registered;
}

void AEShow::encode(KeyedArchiver& coder) const {
    coder.encodeString("name", name);
    coder.encodeString("notes", notes);
    coder.encodeString("notesSuffix", notesSuffix);
    coder.encodeString("url", url);
    coder.encodeString("feed", feed);
    coder.encodeObjectArray("episodes", episodes);
    coder.encodeString("imagePath", AEIngest::savePath(imagePath));
    coder.encodeString("ingestedImagePath", AEIngest::savePath(ingestedImagePath));
    QStringList ids;
    for (const auto& asset : commonAssets)
        ids.append(asset->id);
    coder.encodeStringArray("assetIds", ids);
    coder.encodeObject("recorderSettings", recorderSettings);
}

std::shared_ptr<AEShow> AEShow::decode(KeyedUnarchiver& coder) {
    const auto name = coder.decodeString("name");
    const auto notes = coder.decodeString("notes");
    const auto episodes = coder.decodeObjectArray<AEEpisode>("episodes");
    const auto assetIds = coder.decodeStringArray("assetIds");
    if (!name || !notes || !episodes || !assetIds) return nullptr;

    auto show = std::make_shared<AEShow>(*name);
    show->notes = *notes;
    show->episodes = *episodes;
    for (const auto& assetId : *assetIds)
        show->commonAssets.push_back(AEAssetDB::loadAsset(assetId));
    show->url = coder.decodeString("url").value_or("");
    show->feed = coder.decodeString("feed").value_or("");
    // The ingested copy is read first but the cover always comes from the original file.
    show->imagePath = AEIngest::loadPath(coder.decodeString("ingestedImagePath").value_or(""));
    if (fu_isRegularFile(show->ingestedImagePath)) show->image = QImage(show->ingestedImagePath);
    show->imagePath = AEIngest::loadPath(coder.decodeString("imagePath").value_or(""));
    // A path from a file may name a pipe or a device: reading one would never end.
    if (fu_isRegularFile(show->imagePath)) {
        show->image = QImage(show->imagePath);
        show->ingestedImagePath = AEIngest::ingest(show->imagePath).value_or("");
    }
    if (const auto suffix = coder.decodeString("notesSuffix")) show->notesSuffix = *suffix;
    if (auto settings = coder.decodeObject<AudioRecorderSettings>("recorderSettings"))
        show->recorderSettings = std::move(settings);
    return show;
}

std::shared_ptr<AEShow> AEShow::load(const QString& path) {
    auto show = fu_fileExists(path) ? KeyedUnarchiver::unarchive<AEShow>(path) : nullptr;
    if (!show) return std::make_shared<AEShow>("");
    std::erase_if(show->episodes, [](const auto& e) { return e->deleted; });
    show->sortEpisodes();
    show->checkOrhpanAssets();
    return show;
}

bool AEShow::save(const QString& path) const {
    qxLog("Saving show...");
    qxLog("Episodes: " + QString::number(episodes.size()));
    // The archiver holds its objects by shared pointer; a shallow copy shares the episodes.
    const QByteArray data = KeyedArchiver::archivedData(std::make_shared<AEShow>(*this));
    const bool written = KeyedArchiver::writeAtomically(data, path);
    if (written)
        KeyedArchiver::writeAtomically(data, path + ".bak");
    else
        qxLog("PROBLEMS!");
    if (slowder) slowder->saveItemsN(static_cast<int>(episodes.size() + commonAssets.size()));
    return written;
}

double AEShow::getTotalDuration() const {
    double total = 0;
    for (const auto& e : episodes)
        total += e->duration;
    return total;
}

double AEShow::getAverageDuration() const {
    if (episodes.empty()) return std::numeric_limits<double>::quiet_NaN();
    return getTotalDuration() / static_cast<double>(episodes.size());
}

void AEShow::sortEpisodes() {
    const auto by = sort.by;
    auto sorted = episodes;
    if (sort.ascending)
        std::stable_sort(sorted.begin(), sorted.end(),
                         [by](const auto& a, const auto& b) { return dateFor(*a, by) > dateFor(*b, by); });
    else
        std::stable_sort(sorted.begin(), sorted.end(),
                         [by](const auto& a, const auto& b) { return dateFor(*a, by) < dateFor(*b, by); });
    episodes = std::move(sorted);
}

void AEShow::checkOrhpanAssets() const {
    // The claimed paths are gathered here, so the background pass reads no live episode.
    QSet<QString> claimed;
    for (const auto& e : episodes)
        for (const auto& asset : e->assets)
            claimed.insert(asset->ingestedFilePath);
    const QString folder = AEIngest::workFolder;
    Queue::execute([claimed, folder] {
        for (const auto& file : fu_listFilesRecursively(folder))
            if (QFileInfo(file).suffix() == "wav" && !claimed.contains(file))
                qxLog("checkOrhpanAssets: not in any episode: " + file);
    });
}
