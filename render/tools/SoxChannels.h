#pragma once
// Splitting files into channels and joining channels into files, with SoX. Each call replaces its
// destination and blocks until done, except soxUt_splitChannels.

#include <QString>
#include <QStringList>
#include <functional>

// Two mono files become the left and right of one stereo file.
void soxUt_combineLRChannels(const QString& srcLeftPath, const QString& srcRightPath, const QString& dstPath);
// Each source's channels in turn become channels of one file.
void soxUt_joinChannels(const QStringList& srcPaths, const QString& dstPath);
// One channel, counted from 1, as a mono file.
void soxUt_extractChannel(const QString& srcPath, const QString& dstPath, int channelN);
// The source's channel count as SoX reads it; 0 when it cannot read the file.
int soxUt_getNChannels(const QString& srcPath);

// Returns at once; every channel n (from 1) is extracted in parallel on the background pool to
// "<dst without extension>_<n>.<extension>". callback gets the paths in the order the jobs finished,
// on the thread of the last job; a file without channels gives an empty list on the calling thread.
void soxUt_splitChannels(const QString& srcPath, const QString& dstPath,
                         std::function<void(const QStringList& paths)> callback);
