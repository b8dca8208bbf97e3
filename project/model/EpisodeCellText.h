#pragma once
// What one row of the episode list says about an episode, and which status icon it shows.
// Window-free so the rule can be read and tested apart from the painting.

#include <QDateTime>
#include <QString>

class AEEpisode;

struct AEEpisodeCellText {
    QString episodeId;
    QString title;
    QString duration;
    QString created;
    QString modified;
    // "Planned: ..." for a publication date after `now`, else "Published: ...".
    QString published;
    // Image name of the status icon.
    QString statusIcon;
};

AEEpisodeCellText episodeCell_text(const AEEpisode& episode, const QDateTime& now);
