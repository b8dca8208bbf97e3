#pragma once
// A private folder for the intermediate files of one job, made beside its result so that the many
// files land on the same volume as the result and the final moves are renames. The folder goes with
// the object, so a job that is never performed or stops half way leaves nothing behind.

#include <QString>

class TempFU {
public:
    // Makes "<parentPath>/<prefix><digits>/" at once; check created().
    TempFU(const QString& parentPath, const QString& prefix);
    ~TempFU();
    TempFU(const TempFU&) = delete;
    TempFU& operator=(const TempFU&) = delete;

    QString tempFolder; // "<prefix><digits>"
    QString tempPath;   // the folder's full path, ending in "/"
    QString parentPath;

    bool created() const;
    // The folder plus the file part of `name`.
    QString getPath(const QString& name) const;
    // Copies the file of that name from the folder to parentPath; false when it did not happen.
    bool copyOutside(const QString& name) const;
    // Deletes the folder and everything in it; again at destruction.
    void remove() const;
};
