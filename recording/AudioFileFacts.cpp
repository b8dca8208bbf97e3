#include "recording/AudioFileFacts.h"

#include "dsp/SndFile.h"
#include "recording/MediaProbe.h"

#include <QDateTime>
#include <QFileInfo>
#include <map>
#include <mutex>
#include <tuple>

namespace {

struct SubFormatInfo {
    int subFormat;
    const char* text;
    AudioEncoding encoding;
    int width;
};

const SubFormatInfo kSubFormats[] = {
    {SF_FORMAT_PCM_S8, "8-bit signed integer PCM", AudioEncoding::pcm, 8},
    {SF_FORMAT_PCM_U8, "8-bit unsigned integer PCM", AudioEncoding::pcm, 8},
    {SF_FORMAT_PCM_16, "16-bit signed integer PCM", AudioEncoding::pcm, 16},
    {SF_FORMAT_PCM_24, "24-bit signed integer PCM", AudioEncoding::pcm, 24},
    {SF_FORMAT_PCM_32, "32-bit signed integer PCM", AudioEncoding::pcm, 32},
    {SF_FORMAT_FLOAT, "32-bit float PCM", AudioEncoding::pcm, 32},
    {SF_FORMAT_DOUBLE, "64-bit float PCM", AudioEncoding::pcm, 64},
    {SF_FORMAT_ULAW, "8-bit u-law", AudioEncoding::pcm, 8},
    {SF_FORMAT_ALAW, "8-bit A-law", AudioEncoding::pcm, 8},
    {SF_FORMAT_ALAC_16, "ALAC, 16-bit source", AudioEncoding::lossless, 16},
    {SF_FORMAT_ALAC_20, "ALAC, 20-bit source", AudioEncoding::lossless, 20},
    {SF_FORMAT_ALAC_24, "ALAC, 24-bit source", AudioEncoding::lossless, 24},
    {SF_FORMAT_ALAC_32, "ALAC, 32-bit source", AudioEncoding::lossless, 32},
    {SF_FORMAT_VORBIS, "Vorbis", AudioEncoding::lossy, 0},
    {SF_FORMAT_OPUS, "Opus", AudioEncoding::lossy, 0},
    {SF_FORMAT_MPEG_LAYER_I, "MPEG layer I", AudioEncoding::lossy, 0},
    {SF_FORMAT_MPEG_LAYER_II, "MPEG layer II", AudioEncoding::lossy, 0},
    {SF_FORMAT_MPEG_LAYER_III, "MPEG layer III", AudioEncoding::lossy, 0},
};

QString fileTypeIDFor(int major, int sub, const QString& path) {
    switch (major) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
        return "WAVE";
    case SF_FORMAT_RF64:
        return "RF64";
    case SF_FORMAT_AIFF:
        // Anything but plain big-endian integers needs the compressed variant of the container.
        return (sub == SF_FORMAT_PCM_S8 || sub == SF_FORMAT_PCM_16 || sub == SF_FORMAT_PCM_24 ||
                sub == SF_FORMAT_PCM_32)
                   ? "AIFF"
                   : "AIFC";
    case SF_FORMAT_AU:
        return "NeXT";
    case SF_FORMAT_CAF:
        return "caff";
    case SF_FORMAT_W64:
        return "W64";
    case SF_FORMAT_FLAC:
        return "FLAC";
    case SF_FORMAT_OGG:
        return "OggS";
    case SF_FORMAT_MPEG:
        return sub == SF_FORMAT_MPEG_LAYER_I ? "MPG1" : sub == SF_FORMAT_MPEG_LAYER_II ? "MPG2" : "MPG3";
    default:
        return QFileInfo(path).suffix().toUpper().left(4);
    }
}

std::optional<AudioFileFacts> factsFromSndFile(const QString& path) {
    const SndFile file(path);
    if (!file.isOpen()) return std::nullopt;
    AudioFileFacts facts;
    facts.fileTypeID = fileTypeIDFor(file.majorFormat(), file.subFormat(), path);
    facts.channels = file.channels();
    facts.frequency = file.sampleRate();
    facts.duration = static_cast<double>(file.frames()) / file.sampleRate();
    facts.dataFormat = "coded audio";
    facts.encoding = AudioEncoding::lossy;
    for (const SubFormatInfo& info : kSubFormats) {
        if (info.subFormat == file.subFormat()) {
            facts.dataFormat = info.text;
            facts.encoding = info.encoding;
            facts.sampleWidth = info.width;
        }
    }
    // FLAC reports the width of its source as a PCM subformat.
    if (file.majorFormat() == SF_FORMAT_FLAC) {
        facts.encoding = AudioEncoding::lossless;
        facts.dataFormat = QString("FLAC, %1-bit source").arg(facts.sampleWidth);
    }
    if (facts.encoding == AudioEncoding::pcm)
        facts.bitrate = int64_t{facts.frequency} * facts.channels * facts.sampleWidth;
    return facts;
}

int64_t bitrateFromSize(int64_t fileBytes, double duration) {
    return duration > 0.0 ? static_cast<int64_t>(static_cast<double>(fileBytes) * 8.0 / duration) : 0;
}

std::optional<AudioFileFacts> probeFacts(const QString& path, int64_t fileBytes, bool withBitrate) {
    if (auto facts = factsFromSndFile(path)) {
        if (withBitrate && facts->encoding != AudioEncoding::pcm) {
            // The decoder library keeps the coded rate to itself; the prober reads it from the stream.
            const auto probed = audioFactsFromProbeJson(runMediaProbe(path), fileBytes);
            facts->bitrate = probed ? probed->bitrate : bitrateFromSize(fileBytes, facts->duration);
        }
        return facts;
    }
    return audioFactsFromProbeJson(runMediaProbe(path), fileBytes);
}

// One version of one file: a damaged file costs a decoder pass (about a second for a broken MP3),
// so each version is probed once however many of the probes ask.
struct FactsKey {
    QString path;
    int64_t size = 0;
    int64_t modified = 0;
    bool operator<(const FactsKey& o) const {
        return std::tie(path, size, modified) < std::tie(o.path, o.size, o.modified);
    }
};

struct RememberedFacts {
    std::optional<AudioFileFacts> facts;
    bool withBitrate = false;
};

constexpr size_t kMostRemembered = 512;
std::mutex rememberedMutex;
std::map<FactsKey, RememberedFacts> remembered;

std::optional<std::optional<AudioFileFacts>> rememberedFacts(const FactsKey& key, bool withBitrate) {
    std::lock_guard lock(rememberedMutex);
    const auto found = remembered.find(key);
    if (found == remembered.end() || (withBitrate && !found->second.withBitrate)) return std::nullopt;
    return found->second.facts;
}

void remember(const FactsKey& key, bool withBitrate, const std::optional<AudioFileFacts>& facts) {
    std::lock_guard lock(rememberedMutex);
    if (remembered.size() >= kMostRemembered) remembered.clear();
    remembered[key] = RememberedFacts{facts, withBitrate};
}

} // namespace

int AudioFileFacts::bitsPerSample() const {
    if (encoding != AudioEncoding::lossy) return sampleWidth;
    if (channels <= 0 || frequency <= 0) return 0;
    return static_cast<int>(bitrate / channels / frequency);
}

std::optional<AudioFileFacts> readAudioFileFacts(const QString& path, bool withBitrate) {
    if (path.isEmpty() || !QFileInfo(path).isFile()) return std::nullopt;
    const QFileInfo info(path);
    const FactsKey key{path, info.size(), info.lastModified().toMSecsSinceEpoch()};
    if (const auto known = rememberedFacts(key, withBitrate)) return *known;
    const auto facts = probeFacts(path, key.size, withBitrate);
    remember(key, withBitrate, facts);
    return facts;
}
