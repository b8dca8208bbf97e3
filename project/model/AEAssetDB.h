#pragma once
// The asset store: one ".aeasset" archive per asset in the ingest folder, and one live instance per
// id for the life of the process. Safe from the show loader's queue and the main thread alike.

#include <QString>
#include <memory>
#include <vector>

class AEAsset;

class AEAssetDB {
public:
    static std::shared_ptr<AEAsset> loadAsset(const QString& assetId);
    // Archives the asset (the result is not looked at) and makes it the live instance of its id.
    static void saveAsset(const std::shared_ptr<AEAsset>& asset);
    static void checkAsset(const std::shared_ptr<AEAsset>& asset);
    static QString getPath(const AEAsset& asset);
    // A copy of AEIngest::ingestPath taken at first use; the working folder with its trailing "/".
    static QString ingestFolder();
    static QString zendrelFolder();
    static std::vector<std::shared_ptr<AEAsset>> db();
};
