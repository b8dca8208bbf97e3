#pragma once
// The raw 16-bit view of a canonical 16-bit WAV, header included.

#include <QString>
#include <cstdint>
#include <vector>

// The file's bytes as signed 16-bit values (bytes ÷ 2 of them): the first values are the header,
// which callers skip or tolerate. With 2 channels only the even-indexed values (the left channel)
// are kept. An unreadable file gives an empty array.
std::vector<int16_t> readAudioFile(const QString& path, int nChannels);
