#include "Interface/SectionedListDelegate.h"

#include "Interface/Checkerboard.h"
#include "Interface/Labels.h"
#include "Interface/ProgressIndicator.h"
#include "Interface/SectionedListView.h"
#include "Interface/StylePainting.h"
#include "Interface/Symbol.h"
#include "Interface/TextStyle.h"
#include "Interface/Theme.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace stillwick {

namespace {

constexpr QSize boxSize(64, 36);
constexpr double boxRadius = 4;
constexpr int sideMargin = 6;
constexpr int padding = 8;
constexpr int spacing = 8;
constexpr int textPadding = 4;
constexpr int smallSymbol = 14;
constexpr int boxSymbol = 18;

QRect centred(const QSize& size, const QRect& room) {
    QRect rect(QPoint(0, 0), size);
    rect.moveCenter(room.center());
    return rect;
}

} // namespace

struct SectionedListDelegate::Look {
    ThemeColor ground = ThemeColor::fieldBackground;
    ThemeColor text = ThemeColor::text;
    ThemeColor faint = ThemeColor::secondaryText;
    bool isSelected = false;
    bool isHovered = false;
    bool isFramed = false;
    QPalette palette;
};

SectionedListDelegate::SectionedListDelegate(SectionedListView& view)
    : QStyledItemDelegate(&view), m_view(view) {}

QSize SectionedListDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                      const QModelIndex& index) const {
    const int row = index.row();
    if (!m_view.listModel().isHeader(row))
        return {1, rowHeight};
    const QWidget* host = m_view.headerHost(row);
    return {1, host == nullptr ? rowHeight : host->sizeHint().height()};
}

void SectionedListDelegate::updateEditorGeometry(QWidget* editor,
                                                 const QStyleOptionViewItem& option,
                                                 const QModelIndex& /*index*/) const {
    editor->setGeometry(option.rect);
}

SectionedListDelegate::Look SectionedListDelegate::lookOf(const QStyleOptionViewItem& option) {
    Look look;
    look.palette = option.palette;
    look.isSelected = option.state.testFlag(QStyle::State_Selected);
    look.isHovered = option.state.testFlag(QStyle::State_MouseOver);
    look.isFramed = showsFocus(option);
    const bool isActive = option.widget == nullptr || option.widget->hasFocus();
    if (look.isSelected && isActive) {
        look.ground = ThemeColor::accentFill;
        look.text = ThemeColor::onAccent;
        look.faint = ThemeColor::onAccent;
    } else if (look.isSelected) {
        look.ground = ThemeColor::selectionTint;
    } else if (look.isHovered) {
        look.ground = ThemeColor::controlBackground;
    }
    return look;
}

void SectionedListDelegate::paintGround(QPainter& painter, const QStyleOptionViewItem& option,
                                        const Look& look) {
    const QRectF ground = QRectF(option.rect).adjusted(sideMargin, 1, -sideMargin, -1);
    if (look.isSelected || look.isHovered)
        fillRounded(painter, ground, controlRadius, themeColor(look.ground, look.palette));
    if (!look.isFramed)
        return;
    const bool isOnAccent = look.ground == ThemeColor::accentFill;
    strokeRounded(painter, isOnAccent ? ground.adjusted(2, 2, -2, -2) : ground,
                  isOnAccent ? controlRadius - 2 : controlRadius,
                  themeColor(isOnAccent ? ThemeColor::onAccent : ThemeColor::accent, look.palette),
                  isOnAccent ? 1.5 : 2);
}

void SectionedListDelegate::paintBox(QPainter& painter, const QRect& rect, const ThumbnailBox& box,
                                     const Look& look) const {
    painter.save();
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect), boxRadius, boxRadius);
    painter.setClipPath(shape);
    if (box.isOnCheckerboard)
        paintCheckerboard(painter, QRectF(rect));
    else
        painter.fillRect(rect, themeColor(ThemeColor::controlBackground, look.palette));
    switch (box.content) {
    case ThumbnailBox::Content::picture: {
        const int inset = box.padding;
        const QRect room = rect.adjusted(inset, inset, -inset, -inset);
        const QSize size = box.picture.size().scaled(room.size(), Qt::KeepAspectRatio);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(centred(size, room), box.picture);
        break;
    }
    case ThumbnailBox::Content::progress: {
        const QRect square = centred(QSize(boxSymbol, boxSymbol), rect);
        // The board is light in every theme.
        const QPalette palette =
            box.isOnCheckerboard ? themePalette(ColorScheme::light) : look.palette;
        paintProgressIndicator(painter, QRectF(square), m_view.progressStep(), palette);
        m_view.noteProgress(square);
        break;
    }
    case ThumbnailBox::Content::symbol: {
        const QRect square = centred(QSize(boxSymbol, boxSymbol), rect);
        const ColorScheme scheme =
            box.isOnCheckerboard ? ColorScheme::light : schemeOf(look.palette);
        const auto color = box.isOnCheckerboard ? ThemeColor::text : ThemeColor::secondaryText;
        symbolIcon(box.symbol, themeColor(color, scheme)).paint(&painter, square);
        break;
    }
    case ThumbnailBox::Content::nothing:
        break;
    }
    painter.restore();
    strokeRounded(painter, QRectF(rect), boxRadius, QColor(0, 0, 0, 36));
}

int SectionedListDelegate::paintBadge(QPainter& painter, const QRect& room, const QString& badge,
                                      const Look& look) {
    if (badge.isEmpty())
        return 0;
    painter.setFont(styledFont(TextStyle::caption));
    const QFontMetrics metrics = painter.fontMetrics();
    const int height = metrics.height() + 2;
    const int width = std::max(height, metrics.horizontalAdvance(badge) + 12);
    const QRectF pill(room.right() - width + 1, room.center().y() - height / 2.0 + 0.5, width,
                      height);
    const bool isOnAccent = look.text == ThemeColor::onAccent;
    fillRounded(painter, pill, height / 2.0,
                isOnAccent ? themeColor(ThemeColor::accentPressed, look.palette)
                           : themeColor(ThemeColor::separator, look.palette));
    painter.setPen(themeColor(isOnAccent ? ThemeColor::onAccent : ThemeColor::text, look.palette));
    painter.drawText(pill, Qt::AlignCenter, badge);
    return width + spacing;
}

void SectionedListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    if (m_view.listModel().isHeader(index.row()))
        return;
    const ListRow row = m_view.listModel().content(index.row());
    const Look look = lookOf(option);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintGround(*painter, option, look);

    QRect room = option.rect.adjusted(sideMargin + padding, 0, -sideMargin - padding, 0);
    for (int i = 0; i < int(row.boxes.size()); ++i) {
        if (i > 0 && !row.symbolBetween.isEmpty()) {
            const QRect column(room.left(), room.top(), smallSymbol, room.height());
            symbolIcon(row.symbolBetween, themeColor(look.faint, look.palette))
                .paint(painter, centred(QSize(smallSymbol, smallSymbol), column));
            room.setLeft(column.right() + 1 + spacing);
        }
        const QRect box(QPoint(room.left(), room.center().y() - boxSize.height() / 2 + 1), boxSize);
        paintBox(*painter, box, row.boxes.at(i), look);
        room.setLeft(box.right() + 1 + spacing);
    }
    room.adjust(textPadding, 0, -textPadding, 0);
    room.setRight(room.right() - paintBadge(*painter, room, row.badge, look));

    painter->setFont(option.font);
    painter->setPen(themeColor(look.text, look.palette));
    const QFontMetrics metrics(option.font);
    const int baseline = room.top() + (room.height() - metrics.height()) / 2 + metrics.ascent();
    drawFixedDigits(*painter, QPointF(room.left(), baseline),
                    metrics.elidedText(row.text, Qt::ElideRight, room.width()));
    painter->restore();
}

} // namespace stillwick
