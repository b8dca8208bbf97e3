#pragma once
// The fu_ family: thin wrappers of the file system that log instead of throwing.

#include <QString>
#include <QStringList>
#include <cstdint>

bool fu_fileExists(const QString& path);
// A regular file, links resolved, from metadata alone: false for folders, pipes, sockets, devices and
// dangling links. Whatever reads a path it did not make asks this before opening it.
bool fu_isRegularFile(const QString& path);
// Creates the folder and its parents; true when it exists afterwards.
bool fu_createFolder(const QString& path);
// Copies without overwriting; false (and a log line) when the copy did not happen.
bool fu_copyFile(const QString& from, const QString& to);
// A second name for the same file where the volume allows it (nothing is copied), a copy elsewhere.
bool fu_linkOrCopyFile(const QString& from, const QString& to);
bool fu_deleteFile(const QString& path);
bool fu_deleteFolder(const QString& path);
int64_t fu_getFileSize(const QString& path);
// "512 bytes", "1.5 KB", "12.3 MB", "1.2 GB".
QString fu_getReadableFileSizeBySize(int64_t bytes);
// Every file below a folder, recursively, as absolute paths.
QStringList fu_listFilesRecursively(const QString& folder);
