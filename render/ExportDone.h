#pragma once
// The in-place route: an MP3 encoded without tags gets its tags, picture and chapters afterwards,
// first as ID3 frames written by TagLib, then once more through kid3-cli, which also turns the tag
// into ID3v2.3. The window around it (dock animation, loading window, the closing alert) is the
// caller's. Blocks on the tools; any thread.

#include "render/QXMp3Tags.h"

#include <QString>
#include <memory>
#include <vector>

class AEEpisode;
class AEShow;
class AETimeLine;

// The chapter markers of the timeline, in time order, the last ending where the timeline ends.
std::vector<QXMp3Chapter> exportChapters(const std::shared_ptr<AETimeLine>& timeline);

// The episode's notes, a blank line, the show's notes; no blank line when either is empty.
QString exportNotes(const QString& episodeNotes, const QString& showNotes);

// Tags mp3Path from the episode (title, year of publication, notes followed by the show's notes,
// picture: the episode's, else the show's) and the timeline's chapters, then deletes the
// "<name>_temp.<ext>" beside it. False, after the "Error" alert and with kid3 left out, when the
// frames could not be written (not an MP3, not writable); show may be null.
bool exportDone(const QString& mp3Path, const std::shared_ptr<AETimeLine>& timeline,
                const std::shared_ptr<AEEpisode>& episode, const std::shared_ptr<AEShow>& show);
