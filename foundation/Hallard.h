#pragma once
// Ids and digests: 32 lower-case hexadecimal digits of MD5.

#include <QString>

// A fresh unique id: time, application name, a random number, a salt and the caller's prefix.
QString hallard_getNewId(const QString& prefix = QString());
// MD5 of the UTF-8 bytes of a string.
QString hallard_md5(const QString& text);
// MD5 of a regular file's content, read in slices (constant memory); "" for a special file (never
// opened, so a pipe cannot block) or when the file cannot be read.
QString hallard_fileMd5(const QString& path);
// Copies from into to (which must not exist) and takes the MD5 of what it read, in one read of the
// source; "" and no file at `to` when either side fails.
QString hallard_copyFileWithMd5(const QString& from, const QString& to);
