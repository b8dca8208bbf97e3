#pragma once
// The tags of a finished MP3, gathered once and written two ways: as the FFMETADATA1 text ffmpeg reads
// (title, genre, date, chapters) and as ID3v2 frames TagLib writes into the file itself (the same plus
// show notes and picture). Chapters are kept sorted by time and re-ended at each addition, so none
// touches the next. One object per export, used by one thread at a time.

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace TagLib::ID3v2 {
class ChapterFrame;
class Frame;
} // namespace TagLib::ID3v2

struct QXMp3Chapter {
    float time = 0;
    float endTime = 0;
    QString text;

    // Seconds to whole milliseconds, rounded to the nearest, as every chapter writer stores them.
    static int64_t milliseconds(float seconds);
    // "[CHAPTER]\nTIMEBASE=1/1000\nSTART=…\nEND=…\ntitle=…", no newline at the end.
    QString getFFMpegText() const;
    // A CHAP frame named elementId, times in milliseconds, no byte offsets, a UTF-8 title subframe.
    std::unique_ptr<TagLib::ID3v2::ChapterFrame> getFrame(const QString& elementId) const;
};

class QXMp3Tags {
public:
    // fileDuration ends the last chapter; 0 when unknown.
    explicit QXMp3Tags(std::optional<QString> mp3FileUrl = std::nullopt, float fileDuration = 0);
    ~QXMp3Tags();
    QXMp3Tags(QXMp3Tags&&) noexcept;
    QXMp3Tags& operator=(QXMp3Tags&&) noexcept;

    std::optional<QString> mp3FileUrl;
    std::optional<QString> destFileUrl;
    std::vector<QXMp3Chapter> chapterList;
    // Frames other than chapters, in the order added.
    std::vector<std::unique_ptr<TagLib::ID3v2::Frame>> frames;
    float fileDuration = 0;
    QString ffmpegText = ";FFMETADATA1\n";

    void addChapter(float time, const QString& text);
    // Sorts by time; the last chapter ends at fileDuration, each other 0.01 s before the next.
    void setTimes();
    void addTitle(const QString& title);
    void addGenre(const QString& genre);
    void addYear(const QString& year);
    void addShowNotes(const QString& notes);
    // Skipped, with a log line, when the file is missing or empty.
    void addPicture(const QString& description, const QString& path);

    // CHAP frames "chp0", "chp1", … in time order, then the CTOC frame "toc" listing them.
    std::vector<std::unique_ptr<TagLib::ID3v2::Frame>> getChapterFrames() const;
    QString getFFMpegString() const;
    // Replaces the ID3v2 tag of destPath (a copy of mp3FileUrl when that is another file) with the
    // chapter frames and then `frames`, as ID3v2.4. False, and a log line, when anything fails.
    bool writeTags(const QString& destPath);

    // The show-notes text of the frame: newline, "=", ",", ";", "#" each behind a backslash.
    static QString escapeShowNotes(const QString& notes);
    // A value as the FFMETADATA1 reader takes it back whole: backslash and line ends escaped.
    static QString escapeFFMetadata(const QString& value);
};
