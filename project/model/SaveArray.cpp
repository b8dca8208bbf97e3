#include "project/model/SaveArray.h"

#include "foundation/Log.h"

#include <QFile>
#include <QTemporaryFile>
#include <bit>
#include <filesystem>

// The files are memory images; a big-endian port would have to swap here.
static_assert(std::endian::native == std::endian::little);

namespace {

// Written beside the target and renamed over it, so a reader never sees half a file. Not synced to
// disk: these files are caches and analyses that can be made again, and a sync costs more than the write.
template <class T> bool save(std::span<const T> values, const QString& path) {
    QTemporaryFile file(path + ".XXXXXX");
    const auto bytes = static_cast<qint64>(values.size_bytes());
    if (!file.open() || file.write(reinterpret_cast<const char*>(values.data()), bytes) != bytes ||
        !file.flush()) {
        qxLog("error: SaveArray cannot write " + path + ": " + file.errorString());
        return false;
    }
    // A temporary file is private to its owner; the array is not.
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(file.fileName()).toStdString(),
                            QFile::encodeName(path).toStdString(), error);
    if (error) {
        qxLog("error: SaveArray cannot write " + path + ": " + QString::fromStdString(error.message()));
        return false;
    }
    file.setAutoRemove(false); // it has become the target
    return true;
}

template <class T> std::vector<T> load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    std::vector<T> values(static_cast<size_t>(file.size()) / sizeof(T));
    const auto wanted = static_cast<qint64>(values.size() * sizeof(T));
    const qint64 got = file.read(reinterpret_cast<char*>(values.data()), wanted);
    values.resize(got <= 0 ? 0 : static_cast<size_t>(got) / sizeof(T));
    return values;
}

} // namespace

bool SaveArray::saveDouble(std::span<const double> values, const QString& path) {
    return save(values, path);
}
bool SaveArray::saveFloat(std::span<const float> values, const QString& path) {
    return save(values, path);
}
bool SaveArray::saveInt(std::span<const int64_t> values, const QString& path) {
    return save(values, path);
}
bool SaveArray::saveInt16(std::span<const int16_t> values, const QString& path) {
    return save(values, path);
}

std::vector<double> SaveArray::loadDouble(const QString& path) {
    return load<double>(path);
}
std::vector<float> SaveArray::loadFloat(const QString& path) {
    return load<float>(path);
}
std::vector<int64_t> SaveArray::loadInt(const QString& path) {
    return load<int64_t>(path);
}
std::vector<int16_t> SaveArray::loadInt16(const QString& path) {
    return load<int16_t>(path);
}
