#pragma once
// A framed area that takes image files dropped on it and shows one image. What a drop means is the
// owner's business: it gets the local paths through onDropped. Main thread.

#include <QFrame>
#include <QImage>
#include <QStringList>
#include <functional>

class QHBoxLayout;
class QLayout;

class DragImageAreaView : public QFrame {
public:
    explicit DragImageAreaView(QWidget* parent = nullptr);

    std::function<void(const QStringList& paths)> onDropped;

    void setImage(const QImage& image);
    const QImage& image() const { return image_; }

    static bool isImageFile(const QString& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QImage image_;
    bool hovering_ = false;
};

// The artwork panels' layout: the image area, its caption and its choose button in a column to the
// left of `fields`.
QHBoxLayout* imageBesideFields(DragImageAreaView* area, QWidget* caption, QWidget* choose, QLayout* fields);
