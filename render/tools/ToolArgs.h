#pragma once
// The argument vectors handed to SoX, ffmpeg, ffprobe and kid3-cli, one pure function per operation (the
// program path is not part of the vector). Flag order and spelling are what the tools are known to accept;
// numbers are printed with strUt_doublePrint, counts and rates as plain integers. Every file name goes
// through toolFilePaths::forTool, so none can be taken for an option.

#include "render/tools/BWEqBandSettings.h"
#include "render/tools/Mp3Tag.h"

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace soxArgs {

// The gain a mix of nSources gets back after -m divided each by their number: none beyond five.
std::optional<QString> mixGain(qsizetype nSources);

// The threshold form of the silence effect: 10^(0.05 dB) with "%" behind it. The ratio is not
// scaled to a percentage, so -25 dB gives "0.05623413251903491%".
QString silenceThreshold(double dB);

// Format flags ([-b BITS] [-c N] [-r RATE]) stand before the output and apply to it alone.
QStringList convert(const QString& src, const QString& dst, std::optional<int> frequency,
                    std::optional<int> nChannels, std::optional<int> bitsPerSample, bool normalize);
// The second number of trim is a length.
QStringList trim(const QString& src, double inPoint, double outPoint, const QString& dst);
// Without -b the null input makes 32-bit files. Defaults 44100 Hz, 2 channels, 1.0 s.
QStringList generateSilence(const QString& dst, std::optional<int> frequency, std::optional<int> channels,
                            std::optional<double> duration);
QStringList pad(const QString& src, const QString& dst, double seconds);
// Inputs must share rate and channel count. The fade effect is passed even with zero lengths.
QStringList concatenate(const QStringList& srcs, const QString& dst, std::optional<int> frequency,
                        std::optional<int> nChannels, std::optional<int> bitsPerSample, double fadeInSecs,
                        double fadeOutSecs);
// Gain makes up for -m scaling each of 2 to 5 inputs down; -c and -r come after the effects.
QStringList mixdown(const QStringList& srcs, const QString& dst, bool removePauses, double length,
                    double threshold, std::optional<int> nChannels, std::optional<int> frequency);
// -l keeps the allowed silence at each cut.
QStringList removePauses(const QString& src, const QString& dst, double length, double dBThreshold);
// A span of the source with fades, written to tmp. Gain, when not 0, is bound to -40...20 dB.
QStringList clusterShape(const QString& src, const QString& tmp, double startSec, double endSec,
                         double fadeInSecs, double fadeOutSecs, bool normalize, double gain,
                         std::optional<int> frequency, std::optional<int> nChannels,
                         std::optional<int> bitsPerSample);
// A looping span in one run: the source `repeats` times end to end, trimmed from startSec for
// `length` seconds, gained, preceded by its silence (above 0.01 s) and faded out over its end.
QStringList loopCluster(const QString& src, int repeats, double startSec, double length,
                        double silenceDuration, double gain, double fadeOutSecs, const QString& dst,
                        std::optional<int> frequency, std::optional<int> nChannels,
                        std::optional<int> bitsPerSample);
// Leading silence only above 0.01 s; otherwise a plain copy.
QStringList clusterPad(const QString& tmp, const QString& dst, double silenceDuration);
QStringList bandPass(const QString& src, const QString& dst, double lowFreqCut, double hiFreqCut,
                     bool isForSync);
// Bands with frequency 0 are skipped; removeHum is the hum frequency, 0 for none.
QStringList equalize(const QString& src, const QString& dst, const std::vector<BWEqBandSettings>& bands,
                     double removeHum);
QStringList compressor(const QString& src, const QString& dst, double ratio, double gain, double attack,
                       double decay);
QStringList eqComp(const QString& src, const QString& dst, double ratio, double gain, double attack,
                   double decay, const std::vector<BWEqBandSettings>& bands, double removeHum);
QStringList noiseProfile(const QString& src, const QString& profile);
QStringList denoise(const QString& src, const QString& profile, const QString& dst, double amount);
QStringList combineLRChannels(const QString& left, const QString& right, const QString& dst);
QStringList joinChannels(const QStringList& srcs, const QString& dst);
// Channels count from 1.
QStringList extractChannel(const QString& src, const QString& dst, int channelN);
QStringList gain(const QString& src, const QString& dst, double gain);
// Printed on standard error.
QStringList stats(const QString& src);
// SoX numbers the pieces: dst "a.wav" gives a001.wav, a002.wav...
QStringList splitAtSilence(const QString& src, const QString& dst, double silenceDuration);
QStringList channelCount(const QString& src);

} // namespace soxArgs

namespace ffArgs {

// Decodes to plain little-endian integer WAV without metadata (a 44-byte header up to 16 bits, stereo
// and 48 kHz). bitsPerSample 8, 24 and 32 choose those depths, anything else 16.
QStringList decodeToWav(const QString& src, const QString& dst, int nChannels, int bitsPerSample,
                        std::optional<int> resampleTo);
// AAC in an MP4 file; bitrate in bits per second.
QStringList encodeAAC(const QString& src, const QString& dst, int bitrate);
// No -y: an existing destination is left alone (the question it asks reads end of file).
QStringList encodeMp3(const QString& src, const QString& dst, int kbitrate, std::optional<int> channels);
// The encode with an audio filter chain in front of the encoder ("" for none).
QStringList encodeMp3Filtered(const QString& src, const QString& dst, int kbitrate, const QString& filter);
// Standard input as raw 16-bit little-endian PCM of this rate and channel count.
QStringList rawPcmInput(int rate, int channels);
// Encodes such frames read from standard input, through the filter when one is given.
QStringList encodeMp3FromPipe(int rate, int channels, const QString& dst, int kbitrate,
                              const QString& filter);
// The stream description (with a broadcast WAV's time_reference), printed on standard error.
QStringList describe(const QString& path);
// First audio stream to 32-bit float WAV (RF64 past 4 GB). "file:" keeps a name that starts with "-"
// from reading as an option.
QStringList decodeToFloatWav(const QString& src, const QString& dst);
// Copies the audio of tmp and takes every tag and chapter from the FFMETADATA1 file; ID3v2.3 only:
// ffmpeg would write ID3v1 as raw UTF-8 cut at 30 bytes, which ID3v1 readers show garbled.
QStringList appendMetadata(const QString& tmp, const QString& metadata, const QString& dst);

} // namespace ffArgs

namespace ffprobeArgs {

// The format and first audio stream as JSON; "file:" as in ffArgs::decodeToFloatWav.
QStringList probeJson(const QString& path);

} // namespace ffprobeArgs

namespace kid3Args {

// kid3 reads a value in double quotes only when its backslashes and quotes are escaped; otherwise the
// quotes are silently taken as part of the text.
QString value(const QString& raw);
// "picture:'<path>'", the path escaped the same way for single quotes.
QString pictureTag(const QString& picturePath);
// One "-c" "set <tag> <value>" per tag, the file last. Clearing sets the bare tag name (what comes
// before a ":") to "".
QStringList setTags(const QString& filePath, const std::vector<Mp3Tag>& tags, bool add);
QStringList convertToID3(const QString& filePath);

} // namespace kid3Args

namespace zipArgs {

// A flat archive (-j drops the folders) of absolute paths, without extra attributes; files that are
// already compressed are stored rather than deflated again.
QStringList create(const QString& zipPath, const QStringList& files);
// unzip's zipinfo mode, one long line per entry: type and mode, sizes, encryption and name.
QStringList list(const QString& zipPath);
// Everything into folder, overwriting, quietly.
QStringList extract(const QString& zipPath, const QString& folder);

} // namespace zipArgs
