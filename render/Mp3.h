#pragma once
// The finished MP3: encoder settings, the encode, and the two ways tags get in. The normal route hands
// ffmpeg an FFMETADATA1 file (title, genre, date, chapters); the in-place route writes ID3 frames into
// a finished file and then lets kid3-cli set the tags again and turn the tag into ID3v2.3.
//
// Class-level only. The settings are read by the render thread while the settings panel writes them
// on the main thread, hence the lock. Every other operation blocks on its tool and may run on any
// thread; failures reach the person through the interaction door and never as exceptions.

#include "render/QXMp3Tags.h"
#include "render/tools/Mp3Tag.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

enum class Mp3Channels { mono = 1, stereo = 2 };

struct Mp3EncodingSettings {
    Mp3Channels channels = Mp3Channels::stereo;
    int bitrate = 128; // kbit/s
};

class Mp3 {
public:
    Mp3() = delete;

    static Mp3EncodingSettings encodingSettings();
    static void setEncodingSettings(const Mp3EncodingSettings& settings);
    // From the preferences "Mp3EncodingSettings.channels" (2) and "Mp3EncodingSettings.bitrate" (128).
    static void loadSettings();
    static void saveSettings();

    // Fetches kid3-cli and ffmpeg into the components store behind a "please wait" window.
    static void setup();

    // Without tags, with the stored settings.
    static void encode(const QString& from, const QString& to);
    static void convertToMp3(const QString& src, const QString& dst, int kbitrate, Mp3Channels channels);

    // The normal route, with the stored bit rate. The MP3 keeps the channels of the WAV; the picture
    // and show notes do not reach the file on this route. True when the destination was made.
    // audioFilter, an ffmpeg filter chain, shapes the sound on its way into the encoder.
    static bool encodeWithTags(const QString& from, const QString& to, const QString& title,
                               const QString& picturePath, const QString& showNotes,
                               const std::vector<QXMp3Chapter>& chapters, const QString& audioFilter = {});
    // The same fed from a stream: `pcm` gives 16-bit little-endian frames at rate and channels until
    // it gives nothing; `duration` (seconds) ends the last chapter.
    static bool encodeStreamWithTags(const std::function<QByteArray()>& pcm, int rate, int channels,
                                     double duration, const QString& to, const QString& title,
                                     const QString& showNotes, const std::vector<QXMp3Chapter>& chapters,
                                     const QString& audioFilter = {});
    static bool convertToMp3WithTags(const QString& src, const QString& dst, int kbitrate,
                                     Mp3Channels channels, const QString& title, const QString& picturePath,
                                     const QString& showNotes, const std::vector<QXMp3Chapter>& chapters,
                                     const QString& audioFilter = {});
    // The FFMETADATA1 text of that route: title, genre, this year, chapters; a chapter left without an
    // end, because the duration was unknown, ends at ten hours.
    static QString metadataText(const QString& dst, float duration, const QString& title,
                                const QString& showNotes, const std::vector<QXMp3Chapter>& chapters);

    // kid3-cli sets each tag to its value; with add false each listed tag is cleared instead.
    static void addTags(const QString& filePath, const std::vector<Mp3Tag>& tagList, bool add);
    // Turns an ID3v2.4 tag into ID3v2.3. kid3 works on a whole folder, so the file is moved alone into
    // a private folder for the run and back afterwards.
    static void convertToID3(const QString& filePath);

    // Expected size at the stored bit rate, in bytes.
    static int64_t fileSizeByDuration(double duration);

    // The tool locator's kid3-cli.
    static QString kid3Path();

private:
    // The encoder run `encode(tmp)`, then the FFMETADATA1 file put in by a remux to `dst`.
    static bool withTags(const QString& dst, float duration, const QString& title, const QString& showNotes,
                         const std::vector<QXMp3Chapter>& chapters,
                         const std::function<void(const QString& tmp)>& encode);
};
