// How rows of a sectioned list are moved within their section.
#include "Interface/SectionedListDelegate.h"
#include "Interface/SectionedListView.h"
#include "Interface/StylePainting.h"
#include "Interface/TextStyle.h"
#include "Interface/Theme.h"
#include "Interface/WindowHold.h"

#include <QDrag>
#include <QDragMoveEvent>
#include <QMimeData>
#include <QPainter>

#include <algorithm>

namespace stillwick {

/// The selected rows of the section in which the current one stands.
QModelIndexList SectionedListView::rowsToMove() const {
    QModelIndexList rows;
    if (!currentIndex().isValid())
        return rows;
    const int section = m_model->placeOf(currentIndex().row()).section;
    for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
        if (m_model->placeOf(index.row()).section == section)
            rows.push_back(index);
    }
    return rows;
}

void SectionedListView::requestMove(const MovingRows& rows, int destination) {
    const int first = rows.offsets.first();
    const int last = rows.offsets.last();
    const bool isOneBlock = last - first + 1 == rows.offsets.size();
    if (isOneBlock && destination >= first && destination <= last + 1)
        return; // it stands there already
    emit moveRequested(m_model->sections().at(rows.section).id, rows.offsets, destination);
}

void SectionedListView::moveByOne(bool isDown) {
    const QModelIndexList indexes = rowsToMove();
    if (indexes.isEmpty())
        return;
    MovingRows rows{m_model->placeOf(indexes.first().row()).section, {}};
    for (const QModelIndex& index : indexes)
        rows.offsets.push_back(m_model->placeOf(index.row()).offset);
    std::ranges::sort(rows.offsets);
    const auto count = int(m_model->sections().at(rows.section).rows.size());
    const int destination = isDown ? rows.offsets.last() + 2 : rows.offsets.first() - 1;
    requestMove(rows, std::clamp(destination, 0, count));
    scrollTo(currentIndex());
}

QPixmap SectionedListView::dragPicture(int rowCount) const {
    const QRect row = visualRect(currentIndex());
    const qreal ratio = devicePixelRatioF();
    QPixmap picture((QSizeF(row.size()) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(0.85);
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = QRect(QPoint(0, 0), row.size());
    option.state |= QStyle::State_Selected | QStyle::State_Active;
    itemDelegate()->paint(&painter, option, currentIndex());
    if (rowCount > 1) {
        const QString count = QString::number(rowCount);
        painter.setOpacity(1);
        painter.setFont(styledFont(TextStyle::headline));
        const int width = std::max(22, painter.fontMetrics().horizontalAdvance(count) + 12);
        const QRectF pill(row.width() - width - 16, (row.height() - 22) / 2.0, width, 22);
        fillRounded(painter, pill, 11, themeColor(ThemeColor::onAccent, palette()));
        painter.setPen(themeColor(ThemeColor::accentFill, palette()));
        painter.drawText(pill, Qt::AlignCenter, count);
    }
    return picture;
}

void SectionedListView::startDrag(Qt::DropActions /*actions*/) {
    const QModelIndexList rows = rowsToMove();
    if (rows.isEmpty())
        return;
    const WindowHold hold(*this); // dragging runs a loop, in which the window may be closed
    auto* drag = new QDrag(this);
    drag->setMimeData(m_model->mimeData(rows));
    drag->setPixmap(dragPicture(int(rows.size())));
    drag->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) -
                     visualRect(currentIndex()).topLeft());
    drag->exec(Qt::MoveAction);
    setDestination(std::nullopt);
    setState(NoState);
}

/// Before which of the dragged rows' section the position is; none outside of it.
std::optional<int> SectionedListView::destinationAt(const QPoint& position) const {
    const auto count = int(m_model->sections().value(m_dragged->section).rows.size());
    const QModelIndex index = indexAt(position);
    if (!index.isValid()) { // below the last row
        const bool isLast = m_dragged->section == int(m_model->sections().size()) - 1;
        return isLast ? std::optional(count) : std::nullopt;
    }
    const auto place = m_model->placeOf(index.row());
    const bool isUpperHalf = position.y() < visualRect(index).center().y();
    if (place.section == m_dragged->section)
        return place.offset < 0 ? 0 : place.offset + (isUpperHalf ? 0 : 1);
    if (place.offset < 0 && place.section == m_dragged->section + 1 && isUpperHalf)
        return count;
    return std::nullopt;
}

/// The height of the line before that row, in the viewport.
int SectionedListView::lineAt(int destination) const {
    const ListSection& section = m_model->sections().at(m_dragged->section);
    if (destination < section.rows.size())
        return visualRect(m_model->indexOf(section.rows.at(destination))).top();
    return visualRect(m_model->indexOf(section.rows.last())).bottom();
}

void SectionedListView::setDestination(std::optional<int> destination) {
    if (destination == m_destination)
        return;
    m_destination = destination;
    viewport()->update();
}

/// Whether its own rows are dragged, and not, say, a film that is meant for the window.
bool SectionedListView::takes(const QDropEvent& event) {
    m_dragged = m_model->movingRows(*event.mimeData());
    return m_dragged.has_value();
}

void SectionedListView::dragEnterEvent(QDragEnterEvent* event) {
    event->setDropAction(Qt::MoveAction);
    event->setAccepted(takes(*event));
}

void SectionedListView::dragMoveEvent(QDragMoveEvent* event) {
    if (!takes(*event)) {
        event->ignore();
        return;
    }
    QListView::dragMoveEvent(event); // scrolls near the edges
    setDestination(destinationAt(event->position().toPoint()));
    event->setDropAction(Qt::MoveAction);
    event->setAccepted(m_destination.has_value());
}

void SectionedListView::dragLeaveEvent(QDragLeaveEvent* event) {
    QListView::dragLeaveEvent(event);
    setDestination(std::nullopt);
}

void SectionedListView::dropEvent(QDropEvent* event) {
    const std::optional<int> destination =
        takes(*event) ? destinationAt(event->position().toPoint()) : std::nullopt;
    stopAutoScroll();
    setState(NoState);
    setDestination(std::nullopt);
    event->setAccepted(destination.has_value());
    if (destination)
        requestMove(*m_dragged, *destination);
}

} // namespace stillwick
