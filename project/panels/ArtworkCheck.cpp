#include "project/panels/ArtworkCheck.h"

#include "foundation/Interaction.h"

#include <QFileInfo>
#include <QImageReader>
#include <QStringList>

QString artwork_problem(const QString& imagePath) {
    QImageReader reader(imagePath);
    const QByteArray format = reader.format();
    const QSize size = reader.size();
    QStringList problems;
    if (format != "jpeg" && format != "png")
        problems << "it is " + (format.isEmpty() ? QString("not a readable image")
                                                 : format.toUpper() + ", not JPEG or PNG");
    if (size.isValid()) {
        if (size.width() != size.height())
            problems << QString("it is not square (%1 × %2 px)").arg(size.width()).arg(size.height());
        const int side = std::max(size.width(), size.height());
        if (side < 1400) problems << QString("it is smaller than 1400 px (%1 px)").arg(side);
        if (side > 3000) problems << QString("it is larger than 3000 px (%1 px)").arg(side);
    }
    if (problems.isEmpty()) return {};
    return "Podcast directories may reject " + QFileInfo(imagePath).fileName() + ": " + problems.join("; ") +
           ".";
}

void artwork_warnIfRejected(const QString& imagePath) {
    if (const QString problem = artwork_problem(imagePath); !problem.isEmpty()) Warning("Artwork", problem);
}
