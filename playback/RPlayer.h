#pragma once
// The file player of one timeline item. Until playback lands it only knows its file: items are
// built with one exactly where they will later play.

#include <QString>

class RPlayer {
public:
    explicit RPlayer(const QString& filePath) : filePath(filePath) {}
    const QString filePath;
};
