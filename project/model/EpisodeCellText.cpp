#include "project/model/EpisodeCellText.h"

#include "foundation/DateText.h"
#include "foundation/Timecode.h"
#include "project/model/AEEpisode.h"

AEEpisodeCellText episodeCell_text(const AEEpisode& episode, const QDateTime& now) {
    AEEpisodeCellText cell;
    cell.episodeId = episode.episodeId;
    cell.title = episode.title;
    cell.duration = tc_getDurationShort(episode.duration);
    cell.created = "Created: " + du_getSimpleDate(episode.creationDate, true);
    cell.modified = "Modified: " + du_getSimpleDate(episode.modificationDate, true);
    const QString date = du_getSimpleDate(episode.publicationDate, true);
    if (episode.publicationDate > now) {
        cell.published = "Planned: " + date;
        cell.statusIcon =
            episode.status == AEEpisodeStatus::notReady ? "ZD_EpisodeStatus_00001" : "ZD_EpisodeStatus_00002";
    } else {
        // Once the date has passed the episode counts as out, whatever its status says.
        cell.published = "Published: " + date;
        cell.statusIcon = "ZD_EpisodeStatus_00003";
    }
    return cell;
}
