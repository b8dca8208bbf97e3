#pragma once
// Paints one row of the episode list (cover, id, title, duration, the three dates with the status
// icon, an info and a remove button) and turns clicks on the two buttons into signals. Painting
// instead of a widget per row keeps a list of a thousand episodes as quick as one of ten.
// Main thread.

#include <QHash>
#include <QPixmap>
#include <QStyledItemDelegate>

class AEEpisodeCell : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kRowHeight = 92;

    // Where the buttons sit within a row's rectangle.
    static QRect removeButtonRect(const QRect& row);
    static QRect infoButtonRect(const QRect& row);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

signals:
    void removePressed(int row);
    void infoPressed(int row);

private:
    enum class Button { none, info, remove };
    static Button buttonAt(const QRect& row, const QPoint& pos);
    QPixmap cover(const QImage& image, qreal dpr) const;
    QPixmap statusIcon(const QString& name, qreal dpr) const;

    int pressedRow_ = -1;
    Button pressedButton_ = Button::none;
    mutable QHash<qint64, QPixmap> covers_;
    mutable QHash<QString, QPixmap> icons_;
};
