#include "project/panels/AEEpisodeCell.h"

#include "project/panels/EpisodeListModel.h"
#include "ui/AEColors.h"
#include "ui/IHImages.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

namespace {
constexpr int kMargin = 12;
constexpr int kCover = 68;
constexpr int kButton = 30;
constexpr int kDatesWidth = 210;
constexpr int kStatusIcon = 16;
// Covers are scaled once; a show with more distinct covers than this starts the cache afresh.
constexpr int kCoverCacheLimit = 4000;

QRect coverRect(const QRect& row) {
    return {row.left() + kMargin, row.top() + (row.height() - kCover) / 2, kCover, kCover};
}

QFont scaledFont(QFont font, double factor, bool bold) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    return font;
}

void drawRoundButton(QPainter* painter, const QRect& rect, bool pressed, const QColor& base,
                     const QColor& glyph, bool cross) {
    painter->setPen(Qt::NoPen);
    painter->setBrush(pressed ? base.darker(140) : base);
    painter->drawEllipse(rect);
    painter->setPen(QPen(glyph, 2.0, Qt::SolidLine, Qt::RoundCap));
    const QRectF g = QRectF(rect).adjusted(10, 10, -10, -10);
    if (cross) {
        painter->drawLine(g.topLeft(), g.bottomRight());
        painter->drawLine(g.topRight(), g.bottomLeft());
    } else {
        const double x = g.center().x();
        painter->drawLine(QPointF(x, g.top() + 4), QPointF(x, g.bottom()));
        painter->setBrush(glyph);
        painter->setPen(Qt::NoPen);
        painter->drawEllipse(QPointF(x, g.top()), 1.6, 1.6);
    }
}
} // namespace

QRect AEEpisodeCell::removeButtonRect(const QRect& row) {
    return {row.right() - kMargin - kButton, row.top() + (row.height() - kButton) / 2, kButton, kButton};
}

QRect AEEpisodeCell::infoButtonRect(const QRect& row) {
    return removeButtonRect(row).translated(-(kButton + 10), 0);
}

AEEpisodeCell::Button AEEpisodeCell::buttonAt(const QRect& row, const QPoint& pos) {
    if (removeButtonRect(row).contains(pos)) return Button::remove;
    if (infoButtonRect(row).contains(pos)) return Button::info;
    return Button::none;
}

QSize AEEpisodeCell::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {640, kRowHeight};
}

QPixmap AEEpisodeCell::cover(const QImage& image, qreal dpr) const {
    if (image.isNull()) return ih_pixmap("ZD_EpisodePlaceholder", {kCover, kCover}, dpr);
    const qint64 key = image.cacheKey();
    if (auto found = covers_.constFind(key); found != covers_.constEnd()) return *found;
    if (covers_.size() > kCoverCacheLimit) covers_.clear();
    const int side = qRound(kCover * dpr);
    // Fills the square and crops the overflow evenly on both sides.
    const QImage filled = image.scaled(side, side, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    QPixmap scaled = QPixmap::fromImage(
        filled.copy((filled.width() - side) / 2, (filled.height() - side) / 2, side, side));
    scaled.setDevicePixelRatio(dpr);
    covers_.insert(key, scaled);
    return scaled;
}

QPixmap AEEpisodeCell::statusIcon(const QString& name, qreal dpr) const {
    if (auto found = icons_.constFind(name); found != icons_.constEnd()) return *found;
    const QPixmap icon = ih_pixmap(name, {kStatusIcon, kStatusIcon}, dpr);
    icons_.insert(name, icon);
    return icon;
}

void AEEpisodeCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect;
    const QPalette& pal = option.palette;
    const qreal dpr = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;

    QColor background = index.row() % 2 ? pal.color(QPalette::AlternateBase) : pal.color(QPalette::Base);
    if (option.state & QStyle::State_Selected)
        background = pal.color(QPalette::Highlight).darker(130);
    else if (option.state & QStyle::State_MouseOver)
        background = background.lighter(115);
    painter->fillRect(row, background);
    painter->setPen(pal.color(QPalette::Mid));
    painter->drawLine(row.bottomLeft(), row.bottomRight());

    const QRect coverArea = coverRect(row);
    QPainterPath clip;
    clip.addRoundedRect(coverArea, 6, 6);
    painter->save();
    painter->setClipPath(clip);
    painter->drawPixmap(coverArea, cover(index.data(EpisodeListModel::ImageRole).value<QImage>(), dpr));
    painter->restore();

    const QRect info = infoButtonRect(row);
    const int datesLeft = info.left() - 20 - kDatesWidth;
    const int textLeft = coverArea.right() + 16;
    const QRect textArea(textLeft, coverArea.top(), std::max(40, datesLeft - 16 - textLeft), kCover);
    const QColor text = pal.color(QPalette::Text);
    const QColor dim = pal.color(QPalette::PlaceholderText);

    const QFont base = option.font;
    const QFont idFont = scaledFont(base, 0.9, true);
    const QFont titleFont = scaledFont(base, 1.2, true);
    const int idHeight = QFontMetrics(idFont).height();
    const int titleHeight = QFontMetrics(titleFont).height();
    painter->setFont(idFont);
    painter->setPen(AEColors::accent);
    painter->drawText(QRect(textArea.left(), textArea.top() + 2, textArea.width(), idHeight),
                      Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(idFont).elidedText(index.data(EpisodeListModel::EpisodeIdRole).toString(),
                                                      Qt::ElideRight, textArea.width()));
    painter->setFont(titleFont);
    painter->setPen(text);
    const QRect titleRect(textArea.left(), textArea.top() + 2 + idHeight + 2, textArea.width(), titleHeight);
    painter->drawText(titleRect, Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(titleFont).elidedText(index.data(EpisodeListModel::TitleRole).toString(),
                                                         Qt::ElideRight, textArea.width()));
    painter->setFont(base);
    painter->setPen(dim);
    painter->drawText(
        QRect(textArea.left(), titleRect.bottom() + 4, textArea.width(), QFontMetrics(base).height()),
        Qt::AlignLeft | Qt::AlignVCenter, index.data(EpisodeListModel::DurationRole).toString());

    const QFontMetrics fm(base);
    const int line = fm.height() + 3;
    const int datesTop = row.top() + (row.height() - 3 * line) / 2;
    const int datesTextLeft = datesLeft + kStatusIcon + 6;
    const int datesTextWidth = kDatesWidth - kStatusIcon - 6;
    painter->drawText(QRect(datesTextLeft, datesTop, datesTextWidth, line), Qt::AlignLeft | Qt::AlignVCenter,
                      index.data(EpisodeListModel::CreatedRole).toString());
    painter->drawText(QRect(datesTextLeft, datesTop + line, datesTextWidth, line),
                      Qt::AlignLeft | Qt::AlignVCenter,
                      index.data(EpisodeListModel::ModifiedRole).toString());
    const QRect publishedRect(datesTextLeft, datesTop + 2 * line, datesTextWidth, line);
    painter->drawPixmap(
        QRect(datesLeft, publishedRect.center().y() - kStatusIcon / 2 + 1, kStatusIcon, kStatusIcon),
        statusIcon(index.data(EpisodeListModel::StatusIconRole).toString(), dpr));
    painter->setPen(text);
    painter->drawText(publishedRect, Qt::AlignLeft | Qt::AlignVCenter,
                      index.data(EpisodeListModel::PublishedRole).toString());

    const bool pressedHere = pressedRow_ == index.row();
    const QColor buttonBase = pal.color(QPalette::Button).lighter(115);
    drawRoundButton(painter, info, pressedHere && pressedButton_ == Button::info, buttonBase, text, false);
    drawRoundButton(painter, removeButtonRect(row), pressedHere && pressedButton_ == Button::remove,
                    buttonBase, QColor(0xe0, 0x6c, 0x60), true);
    painter->restore();
}

bool AEEpisodeCell::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                                const QModelIndex& index) {
    if (event->type() != QEvent::MouseButtonPress && event->type() != QEvent::MouseButtonRelease)
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton) return false;
    const Button hit = buttonAt(option.rect, mouse->position().toPoint());
    if (event->type() == QEvent::MouseButtonPress) {
        pressedRow_ = hit == Button::none ? -1 : index.row();
        pressedButton_ = hit;
        return hit != Button::none;
    }
    // A button acts only when released over the button that was pressed.
    const bool act = hit != Button::none && hit == pressedButton_ && pressedRow_ == index.row();
    pressedRow_ = -1;
    pressedButton_ = Button::none;
    if (!act) return false;
    if (hit == Button::remove)
        emit removePressed(index.row());
    else
        emit infoPressed(index.row());
    return true;
}

bool AEEpisodeCell::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                              const QModelIndex& index) {
    switch (buttonAt(option.rect, event->pos())) {
    case Button::remove:
        QToolTip::showText(event->globalPos(), tr("Remove this episode"), view);
        return true;
    case Button::info:
        QToolTip::showText(event->globalPos(), tr("Episode details"), view);
        return true;
    case Button::none:
        break;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}
