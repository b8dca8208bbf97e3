#include "render/ChapterFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QXmlStreamWriter>

std::vector<ChapterEntry> chapters_entries(const std::vector<QXMp3Chapter>& chapters) {
    std::vector<ChapterEntry> out;
    out.reserve(chapters.size());
    for (const QXMp3Chapter& chapter : chapters)
        out.push_back({QXMp3Chapter::milliseconds(chapter.time), chapter.text, {}, {}});
    return out;
}

QByteArray chapters_podcastJson(const std::vector<ChapterEntry>& chapters) {
    QJsonArray list;
    for (const ChapterEntry& chapter : chapters) {
        QJsonObject entry{{"startTime", static_cast<double>(chapter.startMs) / 1000.0},
                          {"title", chapter.title}};
        if (!chapter.img.isEmpty()) entry["img"] = chapter.img;
        if (!chapter.url.isEmpty()) entry["url"] = chapter.url;
        list.append(entry);
    }
    return QJsonDocument(QJsonObject{{"version", "1.2.0"}, {"chapters", list}})
        .toJson(QJsonDocument::Indented);
}

QString chapters_normalPlayTime(int64_t ms) {
    ms = std::max<int64_t>(ms, 0);
    return QString("%1:%2:%3.%4")
        .arg(ms / 3600000, 2, 10, QChar('0'))
        .arg(ms / 60000 % 60, 2, 10, QChar('0'))
        .arg(ms / 1000 % 60, 2, 10, QChar('0'))
        .arg(ms % 1000, 3, 10, QChar('0'));
}

QByteArray chapters_podloveXml(const std::vector<ChapterEntry>& chapters) {
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeNamespace("http://podlove.org/simple-chapters", "psc");
    xml.writeStartElement("http://podlove.org/simple-chapters", "chapters");
    xml.writeAttribute("version", "1.2");
    for (const ChapterEntry& chapter : chapters) {
        xml.writeEmptyElement("http://podlove.org/simple-chapters", "chapter");
        xml.writeAttribute("start", chapters_normalPlayTime(chapter.startMs));
        xml.writeAttribute("title", chapter.title);
        if (!chapter.url.isEmpty()) xml.writeAttribute("href", chapter.url);
        if (!chapter.img.isEmpty()) xml.writeAttribute("image", chapter.img);
    }
    xml.writeEndElement();
    xml.writeEndDocument();
    return out;
}

bool chapters_write(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(content);
    return file.commit();
}
