#include "render/ExportDone.h"

#include "foundation/Interaction.h"
#include "foundation/Log.h"
#include "project/model/AEEpisode.h"
#include "project/model/AEMarker.h"
#include "project/model/AEShow.h"
#include "render/Mp3.h"
#include "render/tools/ToolArgs.h"
#include "render/tools/ToolFilePaths.h"
#include "timeline/model/AETimeLine.h"

#include <QFile>
#include <QFileInfo>

namespace {

float durationOf(const AETimeLine& timeline) {
    return static_cast<float>(timeline.getTimelineOutTime());
}

void addChapterMarkers(QXMp3Tags& tags, const AETimeLine& timeline) {
    for (const auto& marker : timeline.getMarkerList())
        if (marker->type == AEMarkerType::chapter)
            tags.addChapter(static_cast<float>(marker->inTime), marker->notes);
}

QString pictureOf(const AEEpisode& episode, const AEShow* show) {
    if (!episode.imagePath.isEmpty() || !show) return episode.imagePath;
    return show->imagePath;
}

bool usablePicture(const QString& path) {
    const QFileInfo info(path);
    return !path.isEmpty() && info.isFile() && info.size() > 0;
}

QString tempSibling(const QString& path) {
    const QString extension = QFileInfo(path).suffix();
    return toolFilePaths::withoutExtension(path) + "_temp" + (extension.isEmpty() ? "" : "." + extension);
}

} // namespace

QString exportNotes(const QString& episodeNotes, const QString& showNotes) {
    if (showNotes.isEmpty()) return episodeNotes;
    if (episodeNotes.isEmpty()) return showNotes;
    return episodeNotes + "\n\n" + showNotes;
}

std::vector<QXMp3Chapter> exportChapters(const std::shared_ptr<AETimeLine>& timeline) {
    if (!timeline) return {};
    QXMp3Tags tags(std::nullopt, durationOf(*timeline));
    addChapterMarkers(tags, *timeline);
    return tags.chapterList;
}

bool exportDone(const QString& mp3Path, const std::shared_ptr<AETimeLine>& timeline,
                const std::shared_ptr<AEEpisode>& episode, const std::shared_ptr<AEShow>& show) {
    qxLog("exportDone " + mp3Path);
    if (!timeline || !episode) return false;
    const QString title = episode->title;
    const QDateTime date = episode->publicationDate;
    const QString year = date.isValid() ? QString::number(date.date().year()) : QString();
    const QString notes = exportNotes(episode->notes, show ? show->notes : QString());
    const QString picture = pictureOf(*episode, show.get());

    QXMp3Tags tags(mp3Path, durationOf(*timeline));
    tags.addTitle(title);
    tags.addGenre("Podcast");
    tags.addYear(year);
    tags.addShowNotes(notes);
    tags.addPicture(title, picture);
    addChapterMarkers(tags, *timeline);
    if (!tags.writeTags(mp3Path)) {
        userInteraction()->alert("Error", "Internal Error 117: Cannot Insert Metadata into MP3 File.");
        // kid3 would tag whatever the file is; what TagLib refused is no MP3 to finish.
        QFile::remove(tempSibling(mp3Path));
        return false;
    }

    // "date" is the year frame (TYER once the tag is v2.3); kid3 knows no "year" and would add TXXX:year.
    std::vector<Mp3Tag> tagList{
        {"title", title}, {"genre", "Podcast"}, {"comment", notes}, {"lyrics", notes}, {"date", year}};
    // kid3 makes an empty picture frame of a missing file.
    if (usablePicture(picture)) tagList.push_back({kid3Args::pictureTag(picture), title});
    Mp3::addTags(mp3Path, tagList, true);
    Mp3::convertToID3(mp3Path);

    QFile::remove(tempSibling(mp3Path));
    return QFileInfo::exists(mp3Path);
}
