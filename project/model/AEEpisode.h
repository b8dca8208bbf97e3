#pragma once
// One episode of the show: its metadata, the ids and (once opened) the records of its own assets,
// and its timeline, which lives in a file of its own beside the show. An episode is light after
// decoding: assets and timeline stay on disk until it is opened. Main thread, but decoding, which
// runs on the show loader's background queue.

#include "foundation/KeyedArchive.h"

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

class AEAsset;
class AETimeLine;

enum class AENChannels { mono = 1, stereo = 2 };
enum class AEEpisodeStatus { notReady = 0, ready = 1, published = 2 };
class AEEpisode;

// What an import brought: the episode appended to the show, or one line saying why nothing was.
struct AEEpisodeImport {
    std::shared_ptr<AEEpisode> episode;
    QString error;
};

enum class AEEpisodeSortBy { episodeId, title, creationDate, modificationDate };

class AEEpisode : public KeyedObject, public std::enable_shared_from_this<AEEpisode> {
public:
    // pathFolder: the folder of the timeline file.
    explicit AEEpisode(const QString& episodeId, const QString& title = QString(),
                       const QString& imagePath = QString(), const QString& pathFolder = QString());

    static constexpr const char* kClassName = "AEEpisode";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AEEpisode> decode(KeyedUnarchiver& coder);

    QString episodeId;
    QString id;
    QString title;
    QString notes;
    QString url;
    QString imagePath;
    QImage image;
    QDateTime creationDate;
    QDateTime modificationDate;
    QDateTime publicationDate;
    QString timelineDataPath;
    std::shared_ptr<AETimeLine> timeline;
    QStringList assetIDs;
    std::vector<std::shared_ptr<AEAsset>> assets;
    // Whether `assets` has been filled since decoding; until then the archive keeps assetIDs.
    bool assetsLoaded = false;
    double duration = 0;
    AENChannels nChannels = AENChannels::stereo;
    AEEpisodeStatus status = AEEpisodeStatus::notReady;
    bool deleted = false;

    void forceLoadEpisodeAsset(const std::shared_ptr<AEAsset>& asset);
    void loadTimelineAssets();
    void forceLoadAssets();
    void loadImage(const QString& path);
    void modified();
    // Reads the timeline file off the main thread; the timeline is put in place, and `callback`
    // runs, on the main thread.
    void loadTimelineAsync(std::function<void()> callback);
    // Reads the timeline file; an unreadable one gives a new empty timeline.
    void loadTimeline();
    void saveTimeline() const;
    bool assetInTimeline(const std::shared_ptr<AEAsset>& asset);
    void removeEpisodeAssets();
    // Adds the asset to the list unless it is a silence or its id is already there.
    static void appendAsset(std::vector<std::shared_ptr<AEAsset>>& assets,
                            const std::shared_ptr<AEAsset>& asset);
    std::vector<std::shared_ptr<AEAsset>> getAllAssets() const;
    // Brings back lost copies (or asks for lost originals) of every asset of the episode; main thread.
    void checkAssets();
    bool assetInEpisode(const QString& id) const;
    bool assetInEpisodeByFilePath(const QString& filePath) const;

    // Bundles (EpisodeBundle.cpp). Export writes a flat zip of the episode, its timeline, its assets'
    // records and media (and the common assets the timeline uses, with includeCommon); "" or the reason
    // it failed. Any thread; progress gets the fraction done.
    QString exportEpisode(const QString& path, bool includeCommon = true,
                          const std::function<void(double)>& progress = {});
    // Unpacks a bundle beside itself, checks all of it, then brings media and records into the working
    // folder and appends the episode to zendrelShow (the caller saves the show). Main thread.
    static AEEpisodeImport importEpisode(const QString& path);
};
