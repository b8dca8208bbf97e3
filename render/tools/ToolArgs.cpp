#include "render/tools/ToolArgs.h"

#include "foundation/StrUt.h"
#include "render/tools/ToolFilePaths.h"

#include <algorithm>
#include <cmath>

using toolFilePaths::forTool;

namespace {

QString num(double value) {
    return strUt_doublePrint(value);
}

QStringList files(const QStringList& paths) {
    QStringList out;
    for (const QString& path : paths)
        out << forTool(path);
    return out;
}

QStringList formatFlags(std::optional<int> frequency, std::optional<int> nChannels,
                        std::optional<int> bitsPerSample) {
    QStringList out;
    if (bitsPerSample) out << "-b" << QString::number(*bitsPerSample);
    if (nChannels) out << "-c" << QString::number(*nChannels);
    if (frequency) out << "-r" << QString::number(*frequency);
    return out;
}

QStringList equalizerBands(const std::vector<BWEqBandSettings>& bands, double removeHum) {
    QStringList out;
    for (const BWEqBandSettings& band : bands) {
        if (band.frequency == 0.0) continue;
        out << "equalizer" << num(band.frequency) << "0.7q" << num(band.gain);
    }
    if (removeHum != 0.0) out += QStringList{"equalizer", num(removeHum), "10q", "-24"};
    return out;
}

// Fixed curve but for the point at -30 dB, which the ratio lowers.
QStringList compand(double ratio, double gain, double attack, double decay) {
    return {"compand",
            num(attack) + "," + num(decay),
            "-90,-90,-70,-70,-30," + num(-30.0 / ratio) + ",0,0",
            num(gain),
            "-90",
            "0.1"};
}

QString pcmCodec(int bitsPerSample) {
    switch (bitsPerSample) {
    case 8:
        return "pcm_u8"; // 8-bit WAV is unsigned
    case 24:
        return "pcm_s24le";
    case 32:
        return "pcm_s32le";
    default:
        return "pcm_s16le";
    }
}

} // namespace

namespace soxArgs {

std::optional<QString> mixGain(qsizetype nSources) {
    switch (nSources) {
    case 2:
        return "4";
    case 3:
        return "6";
    case 4:
        return "8";
    case 5:
        return "10";
    default:
        return std::nullopt;
    }
}

QString silenceThreshold(double dB) {
    return num(std::pow(10.0, 0.05 * dB)) + "%";
}

QStringList convert(const QString& src, const QString& dst, std::optional<int> frequency,
                    std::optional<int> nChannels, std::optional<int> bitsPerSample, bool normalize) {
    QStringList out{"-V0", forTool(src)};
    out << formatFlags(frequency, nChannels, bitsPerSample) << forTool(dst);
    if (normalize) out << "norm";
    return out;
}

QStringList trim(const QString& src, double inPoint, double outPoint, const QString& dst) {
    return {"-V0", forTool(src), forTool(dst), "trim", num(inPoint), num(outPoint - inPoint)};
}

QStringList generateSilence(const QString& dst, std::optional<int> frequency, std::optional<int> channels,
                            std::optional<double> duration) {
    QStringList out{"-n"};
    out << "-r" << (frequency ? QString::number(*frequency) : "44100");
    out << "-c" << (channels ? QString::number(*channels) : "2");
    out += QStringList{forTool(dst), "trim", "0.0", (duration ? num(*duration) : "1.0")};
    return out;
}

QStringList pad(const QString& src, const QString& dst, double seconds) {
    return {"-V0", forTool(src), forTool(dst), "pad", num(seconds)};
}

QStringList concatenate(const QStringList& srcs, const QString& dst, std::optional<int> frequency,
                        std::optional<int> nChannels, std::optional<int> bitsPerSample, double fadeInSecs,
                        double fadeOutSecs) {
    QStringList out = files(srcs);
    out << formatFlags(frequency, nChannels, bitsPerSample) << forTool(dst);
    out << "fade" << num(fadeInSecs) << "0" << num(fadeOutSecs);
    return out;
}

QStringList mixdown(const QStringList& srcs, const QString& dst, bool removePauses, double length,
                    double threshold, std::optional<int> nChannels, std::optional<int> frequency) {
    QStringList out{"-m"};
    out << files(srcs) << forTool(dst);
    if (removePauses) {
        const QString pct = silenceThreshold(threshold);
        out += QStringList{"silence", "1", num(length), pct, "-1", num(length), pct};
    }
    if (const auto g = mixGain(srcs.size())) out << "gain" << *g;
    if (nChannels) out << "-c" << QString::number(*nChannels);
    if (frequency) out << "-r" << QString::number(*frequency);
    return out;
}

QStringList removePauses(const QString& src, const QString& dst, double length, double dBThreshold) {
    const QString pct = silenceThreshold(dBThreshold);
    return {forTool(src), forTool(dst), "silence", "-l", "1", num(length), pct, "-1", num(length), pct};
}

QStringList clusterShape(const QString& src, const QString& tmp, double startSec, double endSec,
                         double fadeInSecs, double fadeOutSecs, bool normalize, double gain,
                         std::optional<int> frequency, std::optional<int> nChannels,
                         std::optional<int> bitsPerSample) {
    const QString length = num(endSec - startSec);
    QStringList out{"-V0", forTool(src)};
    out << formatFlags(frequency, nChannels, bitsPerSample) << forTool(tmp);
    out << "trim" << num(startSec) << length << "fade" << num(fadeInSecs) << length << num(fadeOutSecs);
    if (normalize) out << "norm";
    if (gain != 0.0) out << "gain" << num(std::clamp(gain, -40.0, 20.0));
    return out;
}

QStringList loopCluster(const QString& src, int repeats, double startSec, double length,
                        double silenceDuration, double gain, double fadeOutSecs, const QString& dst,
                        std::optional<int> frequency, std::optional<int> nChannels,
                        std::optional<int> bitsPerSample) {
    QStringList out{"-V0"};
    for (int n = 0; n < std::max(repeats, 1); ++n)
        out << forTool(src);
    out << formatFlags(frequency, nChannels, bitsPerSample) << forTool(dst);
    out << "trim" << num(startSec) << num(length);
    if (gain != 0.0) out << "gain" << num(std::clamp(gain, -40.0, 20.0));
    if (silenceDuration > 0.01) out << "pad" << num(silenceDuration);
    out << "fade" << num(0.0) << "0" << num(fadeOutSecs);
    return out;
}

QStringList clusterPad(const QString& tmp, const QString& dst, double silenceDuration) {
    QStringList out{forTool(tmp), forTool(dst)};
    if (silenceDuration > 0.01) out << "pad" << num(silenceDuration);
    return out;
}

QStringList bandPass(const QString& src, const QString& dst, double lowFreqCut, double hiFreqCut,
                     bool isForSync) {
    QStringList out{"-V0", forTool(src)};
    if (isForSync) out += QStringList{"-b", "16", "-c", "1"};
    out << forTool(dst) << "lowpass" << num(hiFreqCut) << "highpass" << num(lowFreqCut);
    if (isForSync) out += QStringList{"equalizer", "500", "10q", "24"};
    return out;
}

QStringList equalize(const QString& src, const QString& dst, const std::vector<BWEqBandSettings>& bands,
                     double removeHum) {
    QStringList out{"-V0", forTool(src), forTool(dst)};
    out << equalizerBands(bands, removeHum);
    return out;
}

QStringList compressor(const QString& src, const QString& dst, double ratio, double gain, double attack,
                       double decay) {
    QStringList out{"-V0", forTool(src), forTool(dst)};
    out << compand(ratio, gain, attack, decay);
    return out;
}

QStringList eqComp(const QString& src, const QString& dst, double ratio, double gain, double attack,
                   double decay, const std::vector<BWEqBandSettings>& bands, double removeHum) {
    QStringList out{"-V0", forTool(src), forTool(dst)};
    out << equalizerBands(bands, removeHum) << compand(ratio, gain, attack, decay);
    return out;
}

QStringList noiseProfile(const QString& src, const QString& profile) {
    return {"-V0", forTool(src), "-n", "noiseprof", forTool(profile)};
}

QStringList denoise(const QString& src, const QString& profile, const QString& dst, double amount) {
    return {"-V0", forTool(src), forTool(dst), "noisered", forTool(profile), num(amount)};
}

QStringList combineLRChannels(const QString& left, const QString& right, const QString& dst) {
    return {"-M", forTool(left), forTool(right), forTool(dst)};
}

QStringList joinChannels(const QStringList& srcs, const QString& dst) {
    QStringList out{"-M"};
    out << files(srcs) << forTool(dst);
    return out;
}

QStringList extractChannel(const QString& src, const QString& dst, int channelN) {
    return {forTool(src), forTool(dst), "remix", QString::number(channelN)};
}

QStringList gain(const QString& src, const QString& dst, double gain) {
    return {forTool(src), forTool(dst), "gain", num(gain)};
}

QStringList stats(const QString& src) {
    return {forTool(src), "-n", "stats"};
}

QStringList splitAtSilence(const QString& src, const QString& dst, double silenceDuration) {
    QStringList out{forTool(src), forTool(dst)};
    out += QStringList{"silence", "1", "0.1", "0.1%", "1", num(silenceDuration), "0.1%"};
    out += QStringList{":", "newfile", ":", "restart"};
    return out;
}

QStringList channelCount(const QString& src) {
    return {"--i", "-c", forTool(src)};
}

} // namespace soxArgs

namespace ffArgs {

QStringList decodeToWav(const QString& src, const QString& dst, int nChannels, int bitsPerSample,
                        std::optional<int> resampleTo) {
    // -nostdin: never stop on a question; metadata off and bitexact keep the header plain.
    QStringList out{"-nostdin", "-v", "error", "-y", "-i", forTool(src), "-vn"};
    out += QStringList{"-map_metadata", "-1", "-fflags", "+bitexact"};
    out << "-c:a" << pcmCodec(bitsPerSample) << "-ac" << QString::number(nChannels);
    if (resampleTo) out << "-ar" << QString::number(*resampleTo);
    out << forTool(dst);
    return out;
}

QStringList encodeAAC(const QString& src, const QString& dst, int bitrate) {
    QStringList out{"-nostdin", "-v", "error", "-y", "-i", forTool(src), "-vn"};
    out += QStringList{"-c:a", "aac", "-b:a", QString::number(bitrate), forTool(dst)};
    return out;
}

QStringList encodeMp3(const QString& src, const QString& dst, int kbitrate, std::optional<int> channels) {
    QStringList out{"-i", forTool(src), "-b:a", QString::number(kbitrate) + "k"};
    // This ffmpeg takes -channels for raw inputs only and would ignore it here.
    if (channels) out << "-ac" << QString::number(*channels);
    out << forTool(dst);
    return out;
}

QStringList rawPcmInput(int rate, int channels) {
    return {"-f", "s16le", "-ar", QString::number(rate), "-ac", QString::number(channels), "-i", "pipe:0"};
}

QStringList encodeMp3FromPipe(int rate, int channels, const QString& dst, int kbitrate,
                              const QString& filter) {
    QStringList out = QStringList{"-v", "error", "-y"} + rawPcmInput(rate, channels);
    if (!filter.isEmpty()) out << "-af" << filter;
    out << "-b:a" << QString::number(kbitrate) + "k" << forTool(dst);
    return out;
}

QStringList encodeMp3Filtered(const QString& src, const QString& dst, int kbitrate, const QString& filter) {
    QStringList out{"-i", forTool(src)};
    if (!filter.isEmpty()) out << "-af" << filter;
    out << "-b:a" << QString::number(kbitrate) + "k" << forTool(dst);
    return out;
}

QStringList describe(const QString& path) {
    return {"-i", forTool(path)};
}

QStringList decodeToFloatWav(const QString& src, const QString& dst) {
    return {"-nostdin",  "-v",    "error", "-i", "file:" + src, "-map", "0:a:0",      "-c:a",
            "pcm_f32le", "-rf64", "auto",  "-f", "wav",         "-y",   "file:" + dst};
}

QStringList appendMetadata(const QString& tmp, const QString& metadata, const QString& dst) {
    QStringList out{"-i", forTool(tmp), "-i", forTool(metadata), "-map_metadata", "1", "-c:a", "copy"};
    out += QStringList{"-id3v2_version", "3", "-write_id3v1", "0", forTool(dst)};
    return out;
}

} // namespace ffArgs

namespace ffprobeArgs {

QStringList probeJson(const QString& path) {
    return {"-v",  "error",       "-print_format", "json", "-show_format", "-show_streams", "-select_streams",
            "a:0", "file:" + path};
}

} // namespace ffprobeArgs

namespace kid3Args {

QString value(const QString& raw) {
    QString text = raw;
    text.replace("\\", "\\\\");
    text.replace("\"", "\\\"");
    return "\"" + text + "\"";
}

QString pictureTag(const QString& picturePath) {
    QString text = forTool(picturePath);
    text.replace("\\", "\\\\");
    text.replace("'", "\\'");
    return "picture:'" + text + "'";
}

QStringList setTags(const QString& filePath, const std::vector<Mp3Tag>& tags, bool add) {
    QStringList out;
    for (const Mp3Tag& tag : tags) {
        const QString name = add ? tag.tag : tag.tag.section(u':', 0, 0);
        out += QStringList{"-c", "set " + name + " " + value(add ? tag.value : QString())};
    }
    out << forTool(filePath);
    return out;
}

QStringList convertToID3(const QString& filePath) {
    QStringList out{"-c", "filter 'ID3v2.4.0 Tag'", "-c", "select all", "-c", "to23"};
    out += QStringList{"-c", "set arranger ''", forTool(filePath)};
    return out;
}

} // namespace kid3Args

namespace zipArgs {

QStringList create(const QString& zipPath, const QStringList& files) {
    return QStringList{"-q", "-j", "-X", "-n", ".mp3:.m4a:.aac:.ogg:.flac:.jpg:.jpeg:.png", zipPath} + files;
}

QStringList list(const QString& zipPath) {
    return {"-Z", "-l", zipPath};
}

QStringList extract(const QString& zipPath, const QString& folder) {
    return {"-qq", "-o", zipPath, "-d", folder};
}

} // namespace zipArgs
