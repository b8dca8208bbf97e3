#include "recording/AudioFileFacts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace {

const QStringList kLosslessCodecs = {"flac", "alac",   "wavpack", "ape", "tta",
                                     "mlp",  "truehd", "shorten", "tak"};

int sampleFormatWidth(const QString& sampleFmt) {
    QString base = sampleFmt;
    if (base.endsWith('p')) base.chop(1);
    if (base == "u8") return 8;
    if (base == "s16") return 16;
    if (base == "s32" || base == "flt") return 32;
    if (base == "s64" || base == "dbl") return 64;
    return 0;
}

// Numbers come as JSON strings ("44100") or numbers depending on the field.
double number(const QJsonValue& value) {
    if (value.isDouble()) return value.toDouble();
    bool ok = false;
    const double parsed = value.toString().toDouble(&ok);
    return ok ? parsed : 0.0;
}

QString fileTypeIDFor(const QJsonObject& format) {
    const QString name = format.value("format_name").toString();
    const QString first = name.section(',', 0, 0);
    if (name.startsWith("mov,mp4")) {
        const QString brand = format.value("tags").toObject().value("major_brand").toString();
        if (brand.startsWith("M4A") || brand.startsWith("M4B")) return "m4af";
        return brand.startsWith("qt") ? "moov" : "mp4f";
    }
    static const QList<QPair<QString, QString>> ids = {{"aac", "adts"},  {"mp3", "MPG3"},  {"wav", "WAVE"},
                                                       {"aiff", "AIFF"}, {"flac", "FLAC"}, {"ogg", "OggS"},
                                                       {"caf", "caff"},  {"w64", "W64"},   {"au", "NeXT"}};
    for (const auto& [format, id] : ids) {
        if (first == format) return id;
    }
    return first;
}

} // namespace

std::optional<AudioFileFacts> audioFactsFromProbeJson(const QByteArray& json, int64_t fileBytes) {
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    const QJsonArray streams = root.value("streams").toArray();
    if (streams.isEmpty()) return std::nullopt;
    const QJsonObject stream = streams.first().toObject();
    const QJsonObject format = root.value("format").toObject();
    if (stream.value("codec_type").toString() != "audio") return std::nullopt;

    AudioFileFacts facts;
    facts.fileTypeID = fileTypeIDFor(format);
    facts.channels = static_cast<int>(number(stream.value("channels")));
    facts.frequency = static_cast<int>(number(stream.value("sample_rate")));
    if (facts.channels <= 0 || facts.frequency <= 0) return std::nullopt;
    facts.duration = number(stream.value("duration"));
    if (facts.duration <= 0.0) facts.duration = number(format.value("duration"));

    // A stream the prober cannot name (an unknown format tag) decodes to nothing.
    const QString codec = stream.value("codec_name").toString();
    if (codec.isEmpty() || codec == "none") return std::nullopt;
    const QString longName = stream.value("codec_long_name").toString();
    facts.dataFormat = longName.isEmpty() ? codec : longName;
    // bits_per_sample is 0 for anything coded; lossless coders carry their source width elsewhere.
    if (codec.startsWith("pcm_")) {
        facts.encoding = AudioEncoding::pcm;
        facts.sampleWidth = static_cast<int>(number(stream.value("bits_per_sample")));
        if (facts.sampleWidth <= 0)
            facts.sampleWidth = sampleFormatWidth(stream.value("sample_fmt").toString());
    } else if (kLosslessCodecs.contains(codec)) {
        facts.encoding = AudioEncoding::lossless;
        facts.sampleWidth = static_cast<int>(number(stream.value("bits_per_raw_sample")));
        if (facts.sampleWidth <= 0)
            facts.sampleWidth = sampleFormatWidth(stream.value("sample_fmt").toString());
    } else {
        facts.encoding = AudioEncoding::lossy;
    }

    if (facts.encoding == AudioEncoding::pcm) {
        facts.bitrate = int64_t{facts.frequency} * facts.channels * facts.sampleWidth;
    } else {
        facts.bitrate = static_cast<int64_t>(number(stream.value("bit_rate")));
        if (facts.bitrate <= 0) facts.bitrate = static_cast<int64_t>(number(format.value("bit_rate")));
        if (facts.bitrate <= 0 && facts.duration > 0.0)
            facts.bitrate = static_cast<int64_t>(static_cast<double>(fileBytes) * 8.0 / facts.duration);
    }
    return facts;
}
