#pragma once
// Arrays as bare files: the memory image of the elements in little-endian order, no header, no count.
// The length of the file divided by the element size gives the count; trailing bytes that make no whole
// element are ignored. Saves replace the file atomically (not synced to disk) and return false, with
// an "error: " log line, when the write fails. Loads give an empty array when the file cannot be read. Any
// thread.

#include <QString>
#include <cstdint>
#include <span>
#include <vector>

class SaveArray {
public:
    static bool saveDouble(std::span<const double> values, const QString& path);
    static bool saveFloat(std::span<const float> values, const QString& path);
    static bool saveInt(std::span<const int64_t> values, const QString& path);
    static bool saveInt16(std::span<const int16_t> values, const QString& path);

    static std::vector<double> loadDouble(const QString& path);
    static std::vector<float> loadFloat(const QString& path);
    static std::vector<int64_t> loadInt(const QString& path);
    static std::vector<int16_t> loadInt16(const QString& path);
};
