#pragma once
// The show of a working folder: its metadata, its episodes in display order and the ids of the
// common assets. Lives in "show.AEShow" (and an identical "show.AEShow.bak"); episodes sit inside
// it, each timeline and asset in a file of its own. Main thread, but the start-up load, which
// decodes on a background queue before the show is published.

#include "foundation/KeyedArchive.h"
#include "recording/AudioRecorderSettings.h"

#include <QImage>
#include <QString>
#include <memory>
#include <vector>

class AEAsset;
class AEEpisode;

enum class sortEpisodesBy { created, modified, published };

struct SortEpisodes {
    sortEpisodesBy by = sortEpisodesBy::published;
    // true lists the newest first: the word keeps the meaning it has always had here.
    bool ascending = true;
};

class AEShow : public KeyedObject {
public:
    explicit AEShow(const QString& name);

    static constexpr const char* kClassName = "AEShow";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AEShow> decode(KeyedUnarchiver& coder);

    QString name;
    QString notes;
    QString notesSuffix;
    std::vector<std::shared_ptr<AEEpisode>> episodes;
    QString url;
    QString feed;
    QString imagePath;
    QString ingestedImagePath;
    QImage image;
    std::vector<std::shared_ptr<AEAsset>> commonAssets;
    SortEpisodes sort;
    // The recording choices of this show; never null.
    std::shared_ptr<AudioRecorderSettings> recorderSettings = std::make_shared<AudioRecorderSettings>();

    static std::vector<std::shared_ptr<AEAsset>> totalAssetList;

    // A missing, unreadable or foreign file gives a new show named "".
    static std::shared_ptr<AEShow> load(const QString& path);
    // Writes path, then path + ".bak" when the first write succeeded; "PROBLEMS!" in the log otherwise.
    bool save(const QString& path) const;
    double getTotalDuration() const;
    // NaN for a show without episodes.
    double getAverageDuration() const;
    void sortEpisodes();
    // Lists .wav files of the working folder that no episode claims; changes nothing.
    void checkOrhpanAssets() const;
};
