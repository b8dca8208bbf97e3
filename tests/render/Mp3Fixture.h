#pragma once
// MP3 tests: MP3s and pictures made with the installed sox and ffmpeg, and what ended up in a file read
// back two independent ways, by TagLib (frames, ID3 version) and by ffprobe (what players see).

#include "render/tools/ToolFixture.h"

#include <QByteArray>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <map>
#include <optional>
#include <taglib/attachedpictureframe.h>
#include <taglib/chapterframe.h>
#include <taglib/commentsframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tableofcontentsframe.h>
#include <taglib/unsynchronizedlyricsframe.h>

// Readable failure messages.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

struct ReadChapter {
    QString id;
    unsigned start = 0;
    unsigned end = 0;
    QString title;
};

struct ReadPicture {
    QString mime;
    QString description;
    QByteArray bytes;
};

struct ReadTags {
    bool valid = false;
    int version = 0;                     // 3 or 4
    std::map<QString, QStringList> text; // frame id -> every text field of every such frame
    QStringList comments;
    QStringList lyrics;
    std::vector<ReadPicture> pictures;
    std::vector<ReadChapter> chapters;
    QStringList tocChildren;
    bool tocTopLevel = false;
    bool tocOrdered = false;

    QString first(const QString& id) const {
        const auto found = text.find(id);
        return found == text.end() || found->second.isEmpty() ? QString() : found->second.front();
    }
};

struct ProbedChapter {
    long long start = 0;
    long long end = 0;
    QString title;
};

struct Probed {
    QJsonObject formatTags;
    std::vector<ProbedChapter> chapters;
    QString tag(const QString& key) const { return formatTags.value(key).toString(); }
};

class Mp3Fixture : public ToolFixture {
protected:
    // The two chapters the tests write, as ffprobe reads them back: "One" from 10 s to 10 ms before
    // the second, which runs from 20 s to the end at 30 s.
    static void expectTwoChapters(const Probed& probed,
                                  const std::optional<QString>& secondTitle = std::nullopt) {
        ASSERT_EQ(probed.chapters.size(), 2u);
        EXPECT_EQ(probed.chapters[0].start, 10000);
        EXPECT_EQ(probed.chapters[0].end, 19990);
        EXPECT_EQ(probed.chapters[0].title, "One");
        EXPECT_EQ(probed.chapters[1].start, 20000);
        EXPECT_EQ(probed.chapters[1].end, 30000);
        if (secondTitle) {
            EXPECT_EQ(probed.chapters[1].title, *secondTitle);
        }
    }

    static QString qs(const TagLib::String& s) { return QString::fromStdString(s.to8Bit(true)); }
    static QString qs(const TagLib::ByteVector& b) { return QString::fromLatin1(b.data(), int(b.size())); }

    static ReadTags readTags(const QString& file) {
        ReadTags out;
        TagLib::MPEG::File mpeg(QFile::encodeName(file).constData(), false);
        TagLib::ID3v2::Tag* tag = mpeg.isValid() ? mpeg.ID3v2Tag(false) : nullptr;
        if (!tag) return out;
        out.valid = true;
        out.version = static_cast<int>(tag->header()->majorVersion());
        for (TagLib::ID3v2::Frame* frame : tag->frameList()) {
            const QString id = qs(frame->frameID());
            if (auto* chap = dynamic_cast<TagLib::ID3v2::ChapterFrame*>(frame)) {
                ReadChapter c{qs(chap->elementID()), chap->startTime(), chap->endTime(), {}};
                const auto titles = chap->embeddedFrameList("TIT2");
                if (!titles.isEmpty()) c.title = qs(titles.front()->toString());
                out.chapters.push_back(c);
            } else if (auto* toc = dynamic_cast<TagLib::ID3v2::TableOfContentsFrame*>(frame)) {
                for (const auto& child : toc->childElements())
                    out.tocChildren << qs(child);
                out.tocTopLevel = toc->isTopLevel();
                out.tocOrdered = toc->isOrdered();
            } else if (auto* comm = dynamic_cast<TagLib::ID3v2::CommentsFrame*>(frame)) {
                out.comments << qs(comm->text());
            } else if (auto* uslt = dynamic_cast<TagLib::ID3v2::UnsynchronizedLyricsFrame*>(frame)) {
                out.lyrics << qs(uslt->text());
            } else if (auto* apic = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frame)) {
                const TagLib::ByteVector data = apic->picture();
                out.pictures.push_back({qs(apic->mimeType()), qs(apic->description()),
                                        QByteArray(data.data(), static_cast<qsizetype>(data.size()))});
            } else {
                out.text[id] << qs(frame->toString());
            }
        }
        return out;
    }

    static Probed probeTags(const QString& file) {
        QProcess process;
        process.start("/usr/bin/ffprobe",
                      {"-v", "error", "-show_chapters", "-show_format", "-of", "json", file});
        process.waitForFinished(30000);
        const QJsonObject root = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
        Probed out;
        out.formatTags = root.value("format").toObject().value("tags").toObject();
        for (const QJsonValue& value : root.value("chapters").toArray()) {
            const QJsonObject c = value.toObject();
            out.chapters.push_back({static_cast<long long>(c.value("start").toDouble()),
                                    static_cast<long long>(c.value("end").toDouble()),
                                    c.value("tags").toObject().value("title").toString()});
        }
        return out;
    }

    // A small picture made by ffmpeg; the extension chooses the format.
    QString picture(const QString& name, const QString& color = "red") const {
        const QString out = path(name);
        run("/usr/bin/ffmpeg", {"-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i",
                                "color=" + color + ":s=16x16", "-frames:v", "1", out});
        return out;
    }

    static QByteArray bytesOf(const QString& file) {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    // Byte 3 of the file's ID3v2 header: the major version; 0 without a tag at the start.
    static int headerVersion(const QString& file) {
        const QByteArray head = bytesOf(file).left(4);
        return head.startsWith("ID3") ? head[3] : 0;
    }

    // A stereo 30 s tone encoded without tags (ffmpeg still writes its own ID3v2.4 encoder frame).
    QString plainMp3(const QString& name, double seconds = 30.0) {
        return mp3From(tone(name + ".wav", seconds, 440.0, 44100, 2, 0.3), name);
    }

    QStringList filesIn(const QString& folder) const {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
};
