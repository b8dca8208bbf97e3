#include "ui/IHImages.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>

// Resources compiled into a static library are not registered unless something refers to them.
static void registerInterfaceResources() {
    Q_INIT_RESOURCE(zendrel);
}

namespace {
QString pathFor(const QString& name) {
    static const bool registered = [] {
        registerInterfaceResources();
        return true;
    }();
    (void)registered;
    return ":/icons/" + name + ".svg";
}
} // namespace

bool ih_imageExists(const QString& name) {
    return QFile::exists(pathFor(name));
}

QIcon ih_icon(const QString& name) {
    const QString path = pathFor(name);
    return QFile::exists(path) ? QIcon(path) : QIcon();
}

QPixmap ih_pixmap(const QString& name, const QSize& size, qreal devicePixelRatio) {
    QSvgRenderer renderer(pathFor(name));
    if (!renderer.isValid()) return {};
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.fill(Qt::transparent);
    {
        QPainter painter(&pixmap);
        renderer.render(&painter);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}
