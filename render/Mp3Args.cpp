#include "render/Mp3Args.h"

#include "render/tools/ToolFilePaths.h"

using toolFilePaths::forTool;

namespace mp3Args {

QStringList appendMetadata(const QString& tmp, const QString& metadata, const QString& dst) {
    QStringList out{"-i", forTool(tmp), "-i", forTool(metadata), "-map_metadata", "1", "-c:a", "copy"};
    out += QStringList{"-id3v2_version", "3", "-write_id3v1", "0", forTool(dst)};
    return out;
}

QString kid3Value(const QString& value) {
    QString text = value;
    text.replace("\\", "\\\\");
    text.replace("\"", "\\\"");
    return "\"" + text + "\"";
}

QString kid3PictureTag(const QString& picturePath) {
    QString text = forTool(picturePath);
    text.replace("\\", "\\\\");
    text.replace("'", "\\'");
    return "picture:'" + text + "'";
}

QStringList kid3SetTags(const QString& filePath, const std::vector<Mp3Tag>& tags, bool add) {
    QStringList out;
    for (const Mp3Tag& tag : tags) {
        const QString name = add ? tag.tag : tag.tag.section(u':', 0, 0);
        out += QStringList{"-c", "set " + name + " " + kid3Value(add ? tag.value : QString())};
    }
    out << forTool(filePath);
    return out;
}

QStringList kid3ConvertToID3(const QString& filePath) {
    QStringList out{"-c", "filter 'ID3v2.4.0 Tag'", "-c", "select all", "-c", "to23"};
    out += QStringList{"-c", "set arranger ''", forTool(filePath)};
    return out;
}

} // namespace mp3Args
