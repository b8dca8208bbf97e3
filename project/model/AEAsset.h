#pragma once
// One sound file the project knows: where the user's original lies, its private copy in the ingest
// folder, its audio properties, its waveform summary and its role. AEAssetDB keeps one live instance
// per id, which is how a background ingest reaches the records in use.
//
// Threads: records are built and decoded on the main thread or on the show loader's queue before
// they are published. After that, fields change on the main thread only: background completions
// (ingest, summaries) hop there before they touch the record.

#include "foundation/KeyedArchive.h"
#include "project/model/AEAssetType.h"

#include <QColor>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

class AEAssetDucking;
class AEBGMSettings;
class AEMarker;
class AESubsamples;

class AEAsset : public KeyedObject, public std::enable_shared_from_this<AEAsset> {
public:
    struct Args {
        QString filePath;
        QString name;
        AEAssetType type = AEAssetType::speech;
        bool generateSubsamples = true;
        int subsamplesPerSecond = 300;
        double duration = 0;
        int64_t fileSize = 0;
        int frequency = 0;
        int nChannels = 0;
        int bitDepth = 0;
        QString ingestedFilePath;
        bool ingest = true;
        // The file is its own ingested copy (a render made in the ingest folder): usable as it
        // stands, nothing to ingest.
        bool isIngestedCopy = false;
        bool temporary = false;
        QString userString;
        bool recording = false;
        std::shared_ptr<AEAsset> originalAsset;
        std::shared_ptr<AEBGMSettings> bgmSettings;
        bool isNew = false;
        BWStatus bwStatus = BWStatus::none;
    };
    // Builds the record and starts what it needs: ingest, summary, the store for a new asset.
    // A file the media check refuses gives nullptr, the person told why, nothing copied or stored.
    static std::shared_ptr<AEAsset> make(const Args& args);
    // Default fields and nothing started: stands for an asset that cannot be found.
    static std::shared_ptr<AEAsset> makePlaceholder();

    static constexpr const char* kClassName = "AEAsset";
    QString archiveClassName() const override { return kClassName; }
    void encode(KeyedArchiver& coder) const override;
    static std::shared_ptr<AEAsset> decode(KeyedUnarchiver& coder);

    QString originalFilePath;
    QString id;
    QString name;
    AEAssetType type = AEAssetType::speech;
    bool recording = false;
    QString ingestedFilePath;
    bool ingested = false;
    QString proxyFilePath;
    double duration = 0;
    int frequency = 0;
    int nChannels = 0;
    int bitDepth = 0;
    int64_t fileSize = 0;
    std::shared_ptr<AEBGMSettings> bgmSettings;
    bool userBool = false;
    bool temporary = false;
    QString userString;
    double volumeGain = 0;
    bool doAutoGain = false;
    std::shared_ptr<AESubsamples> subsamples;
    QColor plotBGColor;
    QColor plotFGColor;
    bool drawOverlay = false;
    QColor plotOverlayColor{255, 255, 0, 50};
    std::vector<std::shared_ptr<AEMarker>> markers;
    double bgmStart = 0;
    QString bgmId;
    bool present = true;
    std::shared_ptr<AEAsset> originalAsset;
    BWStatus bwStatus = BWStatus::none;
    std::optional<QColor> customColor;
    std::shared_ptr<AEAssetDucking> assetDucking;

    static void appendToGlobalList(const std::shared_ptr<AEAsset>& asset);
    static std::shared_ptr<AEAsset> getAssetByOriginalFilePath(const QString& path);
    static std::vector<std::shared_ptr<AEAsset>> globalList();

    void forceIngest();
    void ingestCallback(const QString& originalPath, const std::optional<QString>& ingestedPath);
    void performSubasmples(std::function<void()> callback = {});
    // A fresh summary from the files, bypassing the cache (a copy has just been restored).
    void regenerateSubsamples();
    // Same file, same id, a copy of the markers and settings.
    std::shared_ptr<AEAsset> duplicate() const;
    void removeIngestedFile();
    QString fileName() const;
    // The path to read audio from, repairing a lost copy; nothing when no file can be reached.
    std::optional<QString> getUsableFilePath();
    void autoGain(bool async);
    // False, the person told why and the record untouched, when the media check refuses the file.
    bool relink(const QString& newPath);
    void chooseAndRelink();

private:
    AEAsset() = default;
    // knownMd5: the original's digest when it was just taken, so the copy need not read it again.
    void startIngest(const QString& knownMd5 = QString());
    void createDucking();
};
