// Writes the working folder of the start-up smoke test: a show of three episodes whose publication
// order differs from both their creation order and their order in the file.
// Usage: make_smoke_show <working folder>

#include "project/model/AEEpisode.h"
#include "project/model/AEIngest.h"
#include "project/model/AEShow.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_smoke_show <working folder>\n");
        return 2;
    }
    QString folder = QString::fromLocal8Bit(argv[1]);
    if (!folder.endsWith('/')) folder += '/';
    QDir().mkpath(folder);
    AEIngest::workFolder = folder;
    AEIngest ingest(folder + "AssetIngests");

    const QDateTime now = QDateTime::currentDateTime();
    struct Fixture {
        const char* code;
        const char* title;
        int createdDaysAgo;
        int publishedInDays;
        AEEpisodeStatus status;
        double duration;
    };
    // Newest publication first: E03 (planned), E02, E01.
    const Fixture rows[] = {
        {"E01", "The first one", 1, -30, AEEpisodeStatus::published, 1834.0},
        {"E02", "Second thoughts", 40, -3, AEEpisodeStatus::published, 2410.5},
        {"E03", "Coming soon", 20, 7, AEEpisodeStatus::ready, 0.0},
    };
    AEShow show("Smoke Show");
    for (const Fixture& row : rows) {
        auto episode = std::make_shared<AEEpisode>(row.code, row.title, "", folder);
        episode->creationDate = now.addDays(-row.createdDaysAgo);
        episode->modificationDate = episode->creationDate;
        episode->publicationDate = now.addDays(row.publishedInDays);
        episode->status = row.status;
        episode->duration = row.duration;
        show.episodes.push_back(episode);
    }
    if (!show.save(folder + "show.AEShow")) {
        std::fprintf(stderr, "make_smoke_show: cannot write %s\n", qPrintable(folder + "show.AEShow"));
        return 1;
    }
    return 0;
}
