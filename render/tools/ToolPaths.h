#pragma once
// Where the sound tool and the media converter live: always the items of the components store, never
// whatever the search path offers. Each lookup asks the store afresh, which answers at once when the
// item is in place and fetches it otherwise (blocking the caller).

#include <QString>
#include <QStringList>

inline const QString soxUt_ffmpegName = "fmh";
inline const QString soxUt_soxName = "sxh";

// Makes sure both tools are in the store.
void soxUt_init();
QString soxUt_getSoxPath();
QString soxUt_getFFMpegPath();
// The ffprobe beside the file the converter item really is (the item may be a link to it).
QString soxUt_getFFProbePath();

// The one way each tool is run: shell over the tool's path, blocking; standard output comes back.
QString soxUt_runSox(const QStringList& arguments);
QString soxUt_runFFMpeg(const QStringList& arguments);
