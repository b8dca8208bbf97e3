#include "dsp/RawAudio.h"

#include <QFile>
#include <cstring>

std::vector<int16_t> readAudioFile(const QString& path, int nChannels) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray bytes = file.readAll();
    std::vector<int16_t> values(static_cast<size_t>(bytes.size()) / 2);
    std::memcpy(values.data(), bytes.constData(), values.size() * sizeof(int16_t));
    if (nChannels != 2) return values;
    std::vector<int16_t> mono((values.size() + 1) / 2);
    for (size_t i = 0; i < mono.size(); ++i)
        mono[i] = values[2 * i];
    return mono;
}
