#pragma once
// A show in a temporary working folder, published as zendrelShow, with a scripted door. Resets the
// shell's globals afterwards so that tests do not leak state into each other.

#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"
#include "project/model/Globals.h"
#include "support/ScriptedSession.h"

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>

class ShowFixture : public ::testing::Test, protected ScriptedSession {
protected:
    void SetUp() override {
        folder = dir.path() + "/Work Folder/";
        QDir().mkpath(folder);
        AEIngest::workFolder = folder;
        AEIngest ingest(folder + "AssetIngests");
        zendrelShow = std::make_shared<AEShow>("Test Show");
        mustUpdate = false;
    }

    void TearDown() override {
        mainVC = nullptr;
        zendrelShow.reset();
        slowder.reset();
        AEEpisodeSelected.reset();
        AEEpisodeSelectedId.reset();
        TimelineWindowStatus = AEWindowStatus::closed;
        mustUpdate = false;
    }

    // Dates in days from now.
    std::shared_ptr<AEEpisode> addEpisode(const QString& code, int created, int modified, int published,
                                          AEEpisodeStatus status = AEEpisodeStatus::published) {
        auto e = std::make_shared<AEEpisode>(code, "Title " + code, "", folder);
        const QDateTime now = QDateTime::currentDateTime();
        e->creationDate = now.addDays(created);
        e->modificationDate = now.addDays(modified);
        e->publicationDate = now.addDays(published);
        e->status = status;
        zendrelShow->episodes.push_back(e);
        return e;
    }

    QString showPath() const { return folder + "show.AEShow"; }

    // Episode ids of the show file on disk, sorted; empty when there is no file.
    QStringList savedIds() const {
        QStringList ids;
        if (!QFileInfo::exists(showPath())) return ids;
        const auto show = AEShow::load(showPath());
        for (const auto& e : show->episodes)
            ids << e->episodeId;
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    QTemporaryDir dir;
    QString folder;
};
