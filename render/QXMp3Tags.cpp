#include "render/QXMp3Tags.h"

#include "foundation/Log.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <exception>
#include <taglib/attachedpictureframe.h>
#include <taglib/chapterframe.h>
#include <taglib/commentsframe.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tableofcontentsframe.h>
#include <taglib/textidentificationframe.h>

namespace {

using TagLib::ID3v2::Frame;

TagLib::String tagString(const QString& text) {
    return TagLib::String(text.toStdString(), TagLib::String::UTF8);
}

TagLib::ByteVector tagBytes(const QByteArray& bytes) {
    return TagLib::ByteVector(bytes.constData(), static_cast<unsigned>(bytes.size()));
}

std::unique_ptr<Frame> textFrame(const char* id, const QString& text) {
    auto frame = std::make_unique<TagLib::ID3v2::TextIdentificationFrame>(TagLib::ByteVector(id),
                                                                          TagLib::String::UTF8);
    frame->setText(tagString(text));
    return frame;
}

// The tag takes ownership of what it is given, so `frames` goes in as copies made through the
// frame's own byte form: writeTags can run more than once.
Frame* copied(const Frame& frame) {
    TagLib::ID3v2::Header version4;
    return TagLib::ID3v2::FrameFactory::instance()->createFrame(frame.render(), &version4);
}

bool samePath(const QString& a, const QString& b) {
    const QString realA = QFileInfo(a).canonicalFilePath();
    return a == b || (!realA.isEmpty() && realA == QFileInfo(b).canonicalFilePath());
}

bool placeAudio(const std::optional<QString>& source, const QString& destPath) {
    if (!source || samePath(*source, destPath)) return true;
    if (QFileInfo::exists(destPath) && !QFile::remove(destPath)) return false;
    return QFile::copy(*source, destPath);
}

} // namespace

int64_t QXMp3Chapter::milliseconds(float seconds) {
    // Rounded: a marker at 2.001 s (2.00099993 as a float) starts at 2001 ms, not 2000.
    return std::llround(std::max(static_cast<double>(seconds), 0.0) * 1000.0);
}

QString QXMp3Chapter::getFFMpegText() const {
    return "[CHAPTER]\nTIMEBASE=1/1000\nSTART=" + QString::number(milliseconds(time)) +
           "\nEND=" + QString::number(milliseconds(endTime)) + "\ntitle=" + QXMp3Tags::escapeFFMetadata(text);
}

std::unique_ptr<TagLib::ID3v2::ChapterFrame> QXMp3Chapter::getFrame(const QString& elementId) const {
    TagLib::ID3v2::FrameList title;
    title.append(textFrame("TIT2", text).release());
    const unsigned noOffset = 0xFFFFFFFF;
    return std::make_unique<TagLib::ID3v2::ChapterFrame>(
        tagBytes(elementId.toLatin1()), static_cast<unsigned>(milliseconds(time)),
        static_cast<unsigned>(milliseconds(endTime)), noOffset, noOffset, title);
}

QXMp3Tags::QXMp3Tags(std::optional<QString> mp3FileUrl, float fileDuration)
    : mp3FileUrl(std::move(mp3FileUrl)), fileDuration(fileDuration) {}

QXMp3Tags::~QXMp3Tags() = default;
QXMp3Tags::QXMp3Tags(QXMp3Tags&&) noexcept = default;
QXMp3Tags& QXMp3Tags::operator=(QXMp3Tags&&) noexcept = default;

void QXMp3Tags::addChapter(float time, const QString& text) {
    chapterList.push_back(QXMp3Chapter{time, time, text});
    setTimes();
}

void QXMp3Tags::setTimes() {
    std::stable_sort(chapterList.begin(), chapterList.end(),
                     [](const QXMp3Chapter& a, const QXMp3Chapter& b) { return a.time < b.time; });
    for (size_t n = 0; n < chapterList.size(); ++n) {
        chapterList[n].endTime = n + 1 == chapterList.size() ? fileDuration : chapterList[n + 1].time - 0.01f;
    }
}

void QXMp3Tags::addTitle(const QString& title) {
    ffmpegText += "title=" + escapeFFMetadata(title) + "\n";
    frames.push_back(textFrame("TIT2", title));
}

void QXMp3Tags::addGenre(const QString& genre) {
    ffmpegText += "genre=" + escapeFFMetadata(genre) + "\n";
    frames.push_back(textFrame("TCON", genre));
}

void QXMp3Tags::addYear(const QString& year) {
    ffmpegText += "date=" + escapeFFMetadata(year) + "\n";
    frames.push_back(textFrame("TDRC", year));
}

void QXMp3Tags::addShowNotes(const QString& notes) {
    // COMM with an empty description is what players and feed tools show as the comment.
    auto frame = std::make_unique<TagLib::ID3v2::CommentsFrame>(TagLib::String::UTF8);
    frame->setLanguage("eng");
    frame->setText(tagString(escapeShowNotes(notes)));
    frames.push_back(std::move(frame));
}

void QXMp3Tags::addPicture(const QString& description, const QString& path) {
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly) || file.size() == 0) {
        qxLog("QXMp3Tags.addPicture: no picture at " + path);
        return;
    }
    const QByteArray image = file.readAll();
    const QString extension = QFileInfo(path).suffix().toLower();
    auto frame = std::make_unique<TagLib::ID3v2::AttachedPictureFrame>();
    frame->setTextEncoding(TagLib::String::Latin1);
    frame->setMimeType(extension == "jpeg" || extension == "jpg" ? "image/jpeg" : "image/png");
    frame->setDescription(tagString(description));
    frame->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
    frame->setPicture(tagBytes(image));
    frames.push_back(std::move(frame));
}

std::vector<std::unique_ptr<Frame>> QXMp3Tags::getChapterFrames() const {
    std::vector<std::unique_ptr<Frame>> out;
    if (chapterList.empty()) return out;
    TagLib::ByteVectorList children;
    for (size_t n = 0; n < chapterList.size(); ++n) {
        const QString elementId = "chp" + QString::number(n);
        children.append(tagBytes(elementId.toLatin1()));
        out.push_back(chapterList[n].getFrame(elementId));
    }
    auto toc = std::make_unique<TagLib::ID3v2::TableOfContentsFrame>(TagLib::ByteVector("toc"), children);
    toc->setIsTopLevel(true);
    toc->setIsOrdered(true);
    out.push_back(std::move(toc));
    return out;
}

QString QXMp3Tags::getFFMpegString() const {
    QString text = ffmpegText;
    for (const QXMp3Chapter& chapter : chapterList)
        text += chapter.getFFMpegText() + "\n";
    return text;
}

bool QXMp3Tags::writeTags(const QString& destPath) {
    destFileUrl = destPath;
    try {
        if (!placeAudio(mp3FileUrl, destPath)) {
            qxLog("QXMp3Tags.writeTags: cannot copy " + mp3FileUrl.value_or("") + " to " + destPath);
            return false;
        }
        TagLib::MPEG::File file(QFile::encodeName(destPath).constData(), false);
        // TagLib alone would put a tag on any file; without one MPEG frame it is not ours to tag.
        if (!file.isValid() || file.firstFrameOffset() < 0) {
            qxLog("QXMp3Tags.writeTags: not an MPEG file: " + destPath);
            return false;
        }
        TagLib::ID3v2::Tag* tag = file.ID3v2Tag(true);
        // The tag is ours alone: what the encoder left (its name, a stale title) goes.
        // A plain copy of the pointers: a TagLib list copy would share, and later free, the frames.
        const std::vector<Frame*> existing(tag->frameList().begin(), tag->frameList().end());
        for (Frame* frame : existing)
            tag->removeFrame(frame, true);
        for (auto& frame : getChapterFrames())
            tag->addFrame(frame.release());
        for (const auto& frame : frames)
            if (Frame* copy = copied(*frame)) tag->addFrame(copy);
        if (!file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripNone, TagLib::ID3v2::v4,
                       TagLib::File::DoNotDuplicate)) {
            qxLog("QXMp3Tags.writeTags: cannot save " + destPath);
            return false;
        }
        return true;
    } catch (const std::exception& error) {
        qxLog("QXMp3Tags.writeTags: " + QString::fromUtf8(error.what()));
    } catch (...) {
        qxLog("QXMp3Tags.writeTags: unknown failure on " + destPath);
    }
    return false;
}

QString QXMp3Tags::escapeShowNotes(const QString& notes) {
    QString text = notes;
    text.replace("\n", "\\n");
    text.replace("=", "\\=");
    text.replace(",", "\\,");
    text.replace(";", "\\;");
    text.replace("#", "\\#");
    return text;
}

QString QXMp3Tags::escapeFFMetadata(const QString& value) {
    QString text = value;
    text.replace("\\", "\\\\");
    text.replace("\n", "\\\n");
    text.replace("\r", "\\\r");
    return text;
}
