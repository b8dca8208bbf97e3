#pragma once
// Chapters beside the MP3 for the apps that do not read ID3 CHAP frames: a Podcasting 2.0 JSON
// chapters file and Podlove Simple Chapters (XML). Both come from the same chapter list as the ID3
// frames, with the same millisecond rounding, so every reader sees the same starts. Pure functions.

#include "render/QXMp3Tags.h"

#include <QByteArray>
#include <QString>
#include <vector>

struct ChapterEntry {
    int64_t startMs = 0;
    QString title;
    QString img; // "" when the chapter has none
    QString url;
};

// The chapters as the ID3 frames place them (rounded to the millisecond).
std::vector<ChapterEntry> chapters_entries(const std::vector<QXMp3Chapter>& chapters);

// {"version": "1.2.0", "chapters": [{"startTime": s, "title": ..., "img"?: ..., "url"?: ...}]}
QByteArray chapters_podcastJson(const std::vector<ChapterEntry>& chapters);
// <psc:chapters version="1.2"> with one <psc:chapter start="HH:MM:SS.mmm" title=...> per chapter.
QByteArray chapters_podloveXml(const std::vector<ChapterEntry>& chapters);
// "HH:MM:SS.mmm"
QString chapters_normalPlayTime(int64_t ms);

// Writes atomically; false when the file cannot be written.
bool chapters_write(const QString& path, const QByteArray& content);
