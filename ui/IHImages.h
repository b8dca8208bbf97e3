#pragma once
// Images of the interface by name, as the rest of the program refers to them ("miniIcon_sort
// (0-00-00-00)"). They are SVG files compiled into the resources under icons/<name>.svg.

#include <QIcon>
#include <QPixmap>
#include <QString>

bool ih_imageExists(const QString& name);
// An empty icon for an unknown name.
QIcon ih_icon(const QString& name);
// Rendered at `size` device-independent pixels for the given pixel ratio.
QPixmap ih_pixmap(const QString& name, const QSize& size, qreal devicePixelRatio = 1.0);
