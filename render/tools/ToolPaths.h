#pragma once
// Where the sound tools live. One locator answers for every tool: the application installs the
// components store's at start-up (each lookup asks the store afresh, which answers at once when the
// item is in place and fetches it otherwise, blocking the caller); until one is installed the tools
// are looked up on the search path.

#include <QString>
#include <QStringList>
#include <functional>

inline const QString soxUt_ffmpegName = "fmh";
inline const QString soxUt_soxName = "sxh";
inline const QString soxUt_kid3Name = "kd3.app";

// The tool's program for a tool id; "" when there is none.
using ToolLocator = std::function<QString(const QString& id)>;
// Call before any tool runs (the locator is read without a lock); nullptr restores the search path.
void soxUt_setToolLocator(ToolLocator locator);
// The search path's sox, ffmpeg or kid3-cli for the three ids.
QString soxUt_searchPathLocator(const QString& id);
QString soxUt_toolPath(const QString& id);

// Makes sure both tools are in place.
void soxUt_init();
QString soxUt_getSoxPath();
QString soxUt_getFFMpegPath();
// The ffprobe beside the file the converter item really is (the item may be a link to it).
QString soxUt_getFFProbePath();
QString soxUt_getKid3Path();

// The one way each tool is run: shell over the tool's path, blocking; standard output comes back.
QString soxUt_runSox(const QStringList& arguments);
QString soxUt_runFFMpeg(const QStringList& arguments);
