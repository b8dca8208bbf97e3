#pragma once
// Interim asset record: the show and its episodes keep asset ids and hand them back untouched.
// The full record (paths, audio properties, summaries, archive) and the store replace this.

#include <QString>

#include <memory>

enum class AEAssetType { speech = 0, jingle = 1, music = 2, bgm = 3, ad = 4, effect = 5, silence = 6 };

class AEAsset {
public:
    explicit AEAsset(QString id, AEAssetType type = AEAssetType::speech) : id(std::move(id)), type(type) {}

    QString id;
    AEAssetType type;
    QString ingestedFilePath;

    // Deletes the private copy in the ingest folder.
    void removeIngestedFile();
};

class AEAssetDB {
public:
    // One live instance per id for the life of the process.
    static std::shared_ptr<AEAsset> loadAsset(const QString& assetId);
};
